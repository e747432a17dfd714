#pragma once

#include <list>
#include <memory>
#include <string>

#include "host/document/notices.h"
#include "host/document/shapes.h"
#include "host/graphics/picture.h"

namespace rastrel::render {

/// Placed files, opened when they are first drawn and kept open while there is room: opening one
/// may run a program.
class PictureCache {
 public:
  /// `notices` must outlive the cache.
  explicit PictureCache(document::Notices& notices) : m_Notices(notices) {}

  /// The picture of a placed file; null for one that can't be drawn, of which a notice is made.
  /// Valid until the next call.
  [[nodiscard]] const graphics::Picture* Get(const document::GraphicShape& shape);

 private:
  struct Entry {
    std::shared_ptr<const std::string> bytes;
    document::GraphicKind kind;
    std::unique_ptr<graphics::Picture> picture;
  };
  void MakeRoom();

  document::Notices& m_Notices;
  std::list<Entry> m_Entries;  // the last used first
};

}  // namespace rastrel::render
