#include "rastrel/imports/cr2/graphic_frames.h"

#include "rastrel/imports/cr2/frame_position.h"
#include "rastrel/imports/cr2/load_graphic.h"
#include "rastrel/imports/cr2/object_list.h"
#include "rastrel/imports/cr2/palette.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/os/file.h"

namespace rastrel::imports {
namespace {

/// A directory can be opened for reading, but is no graphic.
bool IsReadableFile(const std::wstring& path) {
  return os::IsReadable(path) && !os::IsDirectory(path);
}

void ColorObjects(TemplateImport& import, const ObjectList& objects, const CR2_COLORS& colors) {
  host::ObjectStore& store = import.document.store;
  if (colors.fill) AddMissingPaletteColor(import.document.application, *colors.fill);
  if (colors.stroke) AddMissingPaletteColor(import.document.application, *colors.stroke);
  for (const host::ObjectHandle object : ColoredObjects(store, objects)) {
    if (colors.stroke) store.DBSetLineColor(object, *colors.stroke);
    if (colors.fill) store.DBSetLayer(object, *colors.fill);
  }
}

void AddGraphic(TemplateImport& import, const PanePlace& pane, const std::wstring& path,
                const CR2_PLACEMENT& placement, const CR2_COLORS& colors) {
  const ObjectList objects = LoadGraphic(
      import,
      {.path = path, .purpose = LoadPurpose::Graphic, .pane = pane, .placement = placement});
  if (objects.Count() == 0) return;
  ColorObjects(import, objects, colors);
  GroupOnPage(import.document.store, objects, PageOf(import.document, pane));
}

}  // namespace

GraphicsDirectory::GraphicsDirectory(const std::vector<CR2_GRAPHIC>& graphics) {
  for (const CR2_GRAPHIC& graphic : graphics) m_ByName.emplace(graphic.name, &graphic);
}

const std::wstring* GraphicsDirectory::FileOf(const std::wstring& name) const {
  const auto found = m_ByName.find(name);
  return found == m_ByName.end() ? nullptr : &found->second->file;
}

std::optional<std::wstring> GetGraphicLocation(const GraphicsDirectory& graphics,
                                               const std::wstring& name) {
  const std::wstring* const file = graphics.FileOf(name);
  if (file == nullptr || !IsReadableFile(*file)) return std::nullopt;
  return *file;
}

std::optional<std::wstring> GetGraphicLocation(const GraphicsDirectory& graphics,
                                               const std::wstring& name,
                                               const std::wstring& imageDirectory) {
  const std::wstring* const file = graphics.FileOf(name);
  if (file == nullptr) return std::nullopt;
  if (IsReadableFile(*file)) return *file;
  std::wstring path = imageDirectory + L'\\' + *file;
  if (!IsReadableFile(path)) return std::nullopt;
  return path;
}

void AddGraphicsToPane(TemplateImport& import, const PanePlace& pane,
                       const CR2_TEMPLATE& plateTemplate, const GraphicsDirectory& graphics,
                       const OutputFilter& filter, const std::vector<CR2_GRAPHIC_FRAME>& frames) {
  for (const CR2_GRAPHIC_FRAME& frame : frames) {
    const std::optional<std::wstring> path = GetGraphicLocation(graphics, frame.graphic);
    if (!path || filter.Holds(frame.colors.fill.get())) continue;
    AddGraphic(import, pane, *path, EffectivePlacement(frame.placement, plateTemplate.margins),
               frame.colors);
  }
}

void AddGraphicsToPane(TemplateImport& import, const PanePlace& pane,
                       const GraphicsDirectory& graphics, const std::wstring& imageDirectory,
                       const std::vector<CR2_GRAPHIC_FRAME>& frames) {
  for (const CR2_GRAPHIC_FRAME& frame : frames) {
    static_cast<void>(import.document.store.DBGetPageRange(pane.plate));
    static_cast<void>(import.document.store.DBGetSheetLayer(pane.plate));
    static_cast<void>(GetGraphicLocation(graphics, frame.graphic, imageDirectory));
  }
}

}  // namespace rastrel::imports
