#pragma once

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <utility>

#include "host/document/notices.h"
#include "host/document/shapes.h"
#include "host/graphics/picture.h"

namespace rastrel::render {

/// Opens a placed file. The failure is a sentence about the file for the user.
using PictureOpener = std::function<Expected<std::unique_ptr<graphics::Picture>>(
    const document::GraphicShape& shape)>;

/// Placed files, opened when they are first drawn and kept open while there is room: opening one
/// may run a program.
class PictureCache {
 public:
  /// `notices` must outlive the cache.
  PictureCache(document::Notices& notices, PictureOpener opener)
      : m_Notices(notices), m_Opener(std::move(opener)) {}

  /// The picture of a placed file; null for one that can't be drawn, of which a notice is made.
  /// Valid until the next call.
  [[nodiscard]] const graphics::Picture* Get(const document::GraphicShape& shape);

 private:
  struct Entry {
    std::shared_ptr<const std::string> bytes;
    document::GraphicKind kind;
    bool whole;
    std::unique_ptr<graphics::Picture> picture;
  };
  void MakeRoom();

  document::Notices& m_Notices;
  PictureOpener m_Opener;
  std::list<Entry> m_Entries;  // the last used first
};

}  // namespace rastrel::render
