#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

/// The records of a BrightStar template (docs/formats/bright-star.md), with the values as the file
/// has them. Lengths are inches. A value that the file does not have is 0 or empty. No text but a
/// line has more than BrightStarTextSize - 1 characters, and none is cut: a file with a longer one
/// is refused.

/// Characters that a text other than a line may have, a terminator included.
inline constexpr std::size_t BrightStarTextSize = 256;

/// A frame with lines of text in one font. Its corners are measured from the blank's origin, inward
/// (CBrightStarXMLImport::AddFrameText).
struct tagTEXTFRAME {
  std::wstring compression;    ///< how lines fit, a text of CXMLImport::StartAddText
  double upperX = 0;           ///< inches
  double upperY = 0;           ///< inches
  double lowerX = 0;           ///< inches
  double lowerY = 0;           ///< inches
  std::wstring fontName;       ///< a font's file name
  double size = 0;             ///< of the letters, inches
  std::wstring justification;  ///< "Left", "Right" or "Center"
  std::vector<std::wstring>
      lines;  ///< from top to bottom, of any length; an empty one is a line too
};

/// A graphic. The format has none; a host may append some to a record before it imports.
struct tagGRAPHIC {
  std::wstring file;  ///< library path
};

/// One template. The lists own their elements, which are never null.
struct tagBRIGHT_STAR_DATA {
  double width = 0;                                       ///< of the blank, inches
  double height = 0;                                      ///< of the blank, inches
  std::wstring origin;                                    ///< of the blank, "TOP LEFT" and the like
  std::vector<std::unique_ptr<tagTEXTFRAME>> textFrames;  ///< in the file's order
  std::vector<std::unique_ptr<tagGRAPHIC>> graphics;      ///< empty after parsing
};
