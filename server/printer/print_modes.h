#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The print modes of the data root, as a printer on the network offers them.
namespace rastrel::server {

struct OfferedMode {
  std::string name;     ///< as the option "mode" takes it: "RGB/300 dpi.ps"
  std::string keyword;  ///< as IPP spells it: "rgb-300-dpi"
  int horizontal = 0;   ///< pixels per inch; 0: the mode does not say
  int vertical = 0;
  bool isColor = true;  ///< false: it makes gray
};

/// Lower-case letters, digits and single dashes, of a mode's name without its extension. At most
/// 64 bytes. "mode" if nothing is left.
[[nodiscard]] std::string KeywordOfMode(std::string_view name);

/// A mode of its file's text, of which the operators SetXYResolution, 1Color and 3Color are read.
[[nodiscard]] OfferedMode ModeOfText(const std::string& name, std::string_view text);

/// Those of a data root, by name, with keywords that differ; without those of the folder Screen,
/// which make previews. Empty if there are none.
[[nodiscard]] std::vector<OfferedMode> OfferedModes(const std::string& dataRoot);

}  // namespace rastrel::server
