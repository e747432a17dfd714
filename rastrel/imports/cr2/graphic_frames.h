#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "rastrel/imports/cr2/cr2_records.h"
#include "rastrel/imports/cr2/output_filter.h"
#include "rastrel/imports/cr2/pane_place.h"
#include "rastrel/imports/cr2/template_import.h"

namespace rastrel::imports {

/// The graphics directory of a template, found by name. The records must outlive it.
class GraphicsDirectory {
 public:
  explicit GraphicsDirectory(const std::vector<CR2_GRAPHIC>& graphics);
  /// The file of the first entry of that very name; null if there is none.
  [[nodiscard]] const std::wstring* FileOf(const std::wstring& name) const;

 private:
  std::unordered_map<std::wstring_view, const CR2_GRAPHIC*> m_ByName;
};

/// The path of a graphic by its name in the directory. Nothing if there is none, or the file can't
/// be read.
[[nodiscard]] std::optional<std::wstring> GetGraphicLocation(const GraphicsDirectory& graphics,
                                                             const std::wstring& name);
/// The same of the second generation (zml): a file that can't be read as it is named is looked for
/// in the image directory.
[[nodiscard]] std::optional<std::wstring> GetGraphicLocation(const GraphicsDirectory& graphics,
                                                             const std::wstring& name,
                                                             const std::wstring& imageDirectory);

/// Loads a plate's graphics on a pane, each anew, and gives them the frame's colors. Several
/// objects of a graphic become one group. A frame whose graphic can't be found, or whose fill is
/// filtered out, is left out without a message.
void AddGraphicsToPane(TemplateImport& import, const PanePlace& pane,
                       const CR2_TEMPLATE& plateTemplate, const GraphicsDirectory& graphics,
                       const OutputFilter& filter, const std::vector<CR2_GRAPHIC_FRAME>& frames);
/// The same of the second generation (zml), which looks each graphic up and adds nothing: graphic
/// frames of this format do not appear.
void AddGraphicsToPane(TemplateImport& import, const PanePlace& pane,
                       const GraphicsDirectory& graphics, const std::wstring& imageDirectory,
                       const std::vector<CR2_GRAPHIC_FRAME>& frames);

}  // namespace rastrel::imports
