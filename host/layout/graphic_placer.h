#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/document_host.h"
#include "host/layout/placing.h"
#include "host/layout/plates.h"
#include "host/layout/template_layout.h"

namespace rastrel::layout {

/// Puts the graphics of a template on its plates. A file is loaded once in an import, by the host's
/// loader, and every further place of it gets copies of its objects. Several objects of a file
/// become a group. Graphics that can't be had are left out, with one notice for each file.
class GraphicPlacer {
 public:
  /// Both must outlive the placer.
  GraphicPlacer(document::DocumentHost& host, const FileResolver& resolve);
  ~GraphicPlacer();
  GraphicPlacer(const GraphicPlacer&) = delete;
  GraphicPlacer& operator=(const GraphicPlacer&) = delete;

  /// Where a graphic is asked for.
  struct Request {
    std::wstring file;   ///< as the template names it
    std::wstring title;  ///< for notices, such as `the graphic "Logo" of plate 3`
    Placement placement;
    CWorldRect frame;  ///< that the placement is on
    TM turn;           ///< of the frame with its content
  };
  void Place(const Request& request, const PlacedPlate& plate);

 private:
  struct Copy;
  struct Graphic;

  Graphic& Load(const std::wstring& file);
  void Read(const std::wstring& file, Graphic& graphic);
  [[nodiscard]] bool TakeRoom(const Graphic& graphic, const Request& request);
  document::ObjectHandle Insert(const Graphic& graphic, const TM& place, const PlacedPlate& plate);

  document::DocumentHost& m_Host;
  const FileResolver& m_Resolve;
  std::unordered_map<std::wstring, std::unique_ptr<Graphic>> m_Graphics;  // by their names
  std::size_t m_Room = MaximumGraphicPoints;
  bool m_IsFull = false;
};

}  // namespace rastrel::layout
