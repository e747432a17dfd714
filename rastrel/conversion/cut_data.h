#pragma once

#include <cstdint>

#include "rastrel/export.h"
#include "rastrel/platform/mfc/string.h"
#include "rastrel/platform/values/color.h"

class CStream;

/// How CPS2CutData::colorKind gives the color of a cut line.
enum CutColorKind : int { CutColorRgb = 0, CutColorCmyk = 1, CutColorNamed = 2 };

/// How the conversion of a PostScript object treats cut lines: at which resolution it runs, whether
/// a cut line is wanted, and which color of the artwork marks it. The host keeps it with its
/// objects (docs/formats/cut-settings.md); the job header carries it to the queue program
/// (docs/formats/job-header.md). Used by one thread.
class RASTREL_API CPS2CutData {
 public:
  /// 72 dots per inch, no cut line, RGB black.
  CPS2CutData() = default;
  CPS2CutData(const CPS2CutData&) = default;
  CPS2CutData& operator=(const CPS2CutData&) = default;
  ~CPS2CutData() = default;

  /// Writes the record. The stream's exceptions pass. Returns 1.
  int Save(CStream* stream) const;
  /// Reads what Save wrote. Returns 1; 0 if the color is of an unknown kind and was not taken. A
  /// record of a later form (version 50 and above) is passed over: the fields stay, and that is 1.
  /// The stream's exceptions pass, and the record stays as it was.
  int Load(CStream* stream);

  /// Writes the PostScript that has the RIP take the color as cut data. Nothing unless `enabled`.
  /// The name of a color is not escaped. The stream's exceptions pass.
  void PutCutterOverride(CStream* stream) const;

  /// Whether `text`, by which the queue program names the color of a cut path, is this record's
  /// color. Texts are compared, case and all: colors match if they print alike, RGB with three
  /// decimals and CMYK with four.
  [[nodiscard]] bool IsColorMatchKVI(const CString& text) const;

  std::int32_t resolution = 72;  ///< dots per inch
  std::int32_t colorKind = 0;    ///< one of CutColorKind
  std::int32_t enabled = 0;      ///< non-zero: a cut line is wanted
  /// The cut color.
  CVKFullColor color = CVKFullColor(0, COLORSPACE_RGB, 0, 0);
};
