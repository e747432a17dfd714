#pragma once

#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// The print mode that is used if none is named.
inline constexpr const char* DefaultMode = "RGB/300 dpi.ps";

/// A print mode: a PostScript file in a folder of the modes directory.
struct PrintMode {
  std::string folder;
  std::string name;         ///< file name
  std::string title;        ///< its "%%Title:", may be empty
  std::string description;  ///< its "%%Description:", may be empty
};

/// All of them, by folder and name.
[[nodiscard]] std::vector<PrintMode> ListModes();

/// The mode that "FOLDER/NAME" names; the extension may be left out, and case does not count where
/// no mode is spelled so. Fails, with the modes that there are, if there is none such.
[[nodiscard]] Expected<PrintMode> FindMode(const std::string& text);

}  // namespace rastrel::cli
