#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// The records of a plate XML of ABB (docs/formats/abb-plates.md), with the values as the file has
/// them. Lengths are inches. A value that the file does not have is 0 or empty. No text has more
/// than AbbTextSize - 1 characters, and none is cut: a file with a longer one is refused.

/// Characters that a text may have, a terminator included.
inline constexpr std::size_t AbbTextSize = 256;

/// The plate itself.
struct tagABB_PLATE {
  std::wstring color;          ///< a color name of the palette
  std::wstring toolName;       ///< kept and not used
  double width = 0;            ///< inches
  double height = 0;           ///< inches
  std::wstring textColor;      ///< a color name of the palette
  std::int32_t hasText = 0;    ///< 1 once a line was not empty
  std::int32_t textFrame = 0;  ///< side margin in percent of the frame's width; 0 is the default
};

/// A line of text.
struct tagTEXTDATA {
  std::int32_t line = 0;  ///< kept; the file's order counts
  std::wstring data;      ///< the characters
  std::wstring toolName;  ///< kept and not used
  std::wstring fontName;  ///< a font's file name; an import cuts the extension off
  double size = 0;        ///< inches
};

/// A hole.
struct tagDRILLPOINT {
  std::wstring color;     ///< a color name of the palette
  std::wstring toolName;  ///< kept and not used
  double x = 0;           ///< inches from the pane's left
  double y = 0;           ///< inches down from the pane's top
  double diameter = 0;    ///< inches; 0 is the default
};

/// One plate with its texts and holes. The lists own their elements.
struct tagABB_PLATE_DATA {
  std::vector<std::unique_ptr<tagABB_PLATE>> plates;        ///< always one
  std::vector<std::unique_ptr<tagTEXTDATA>> texts;          ///< in the file's order
  std::vector<std::unique_ptr<tagDRILLPOINT>> drillPoints;  ///< in the file's order
};
