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

struct ModeList {
  std::vector<PrintMode> modes;  ///< by folder and name
  /// Fails if the modes directory or a folder of it can't be read, with the first one that can't.
  /// One that is not there has no modes.
  Expected<void> read;
};

[[nodiscard]] ModeList ListModes();

/// The mode that "FOLDER/NAME" names; the extension may be left out, and case does not count where
/// no mode is spelled so. Ends the command if there is none: with WrongUse and the modes that there
/// are, or with NotInstalled where some can't be read.
[[nodiscard]] PrintMode ModeOrEnd(const std::string& text);

}  // namespace rastrel::cli
