#pragma once

#include <cstdint>

#include "rastrel/export.h"
#include "rastrel/platform/mfc/string.h"
#include "rastrel/platform/values/color.h"

class CStream;

/// The kinds of color that mark a cut line (CPS2CutData::colorKind).
enum CutColorKind : int { CutColorRgb = 0, CutColorCmyk = 1, CutColorNamed = 2 };

/// How the conversion of a PostScript object treats cut lines: the resolution it runs at, whether a
/// cut line is wanted, and which color of the artwork marks it. The host stores it with its objects
/// (docs/formats/cut-settings.md). The job header carries it to the queue program
/// (docs/formats/job-header.md). Used by one thread at a time.
class RASTREL_API CPS2CutData {
 public:
  /// 72 dots per inch, no cut line, RGB black.
  CPS2CutData() = default;
  CPS2CutData(const CPS2CutData&) = default;
  CPS2CutData& operator=(const CPS2CutData&) = default;
  ~CPS2CutData() = default;

  /// Writes the record. `stream` must not be null. The stream's exceptions pass. Returns 1.
  int Save(CStream* stream) const;
  /// Reads a record that Save wrote. `stream` must not be null. Returns 1, or 0 if the color is of
  /// an unknown kind; the color stays then. A record of a later form (version 50 and above) is
  /// skipped: the fields stay, and the result is 1. The stream's exceptions pass, and the fields
  /// stay.
  int Load(CStream* stream);

  /// Writes the PostScript that makes the RIP treat the color as cut data; nothing if `enabled` is
  /// 0. `stream` must not be null. A color's name is not escaped, so it must not hold a parenthesis
  /// or a backslash. The stream's exceptions pass.
  void PutCutterOverride(CStream* stream) const;

  /// Whether `text`, the queue program's form of the color of a cut path, is this record's color.
  /// The texts are compared, and case counts: two colors match if they print alike, RGB with three
  /// decimals and CMYK with four.
  [[nodiscard]] bool IsColorMatchKVI(const CString& text) const;

  std::int32_t resolution = 72;  ///< dots per inch
  std::int32_t colorKind = 0;    ///< one of CutColorKind
  std::int32_t enabled = 0;      ///< non-zero: a cut line is wanted
  /// The cut color.
  CVKFullColor color = CVKFullColor(0, COLORSPACE_RGB, 0, 0);
};
