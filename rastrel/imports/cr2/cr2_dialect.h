#pragma once

namespace rastrel::imports {

/// The unit of a template's lengths, and so how they go into the records.
enum class Cr2Length {
  AsWritten,    ///< as the file has them
  Inches,       ///< times 2.54, world units
  Millimetres,  ///< divided by 10, world units
};

/// How the two generations of templates differ where a value says it. The steps that differ in more
/// than a value are virtual functions of TemplateReader.
struct Cr2Dialect {
  const wchar_t* extension;  ///< of a template's path, in lower case with its dot
  Cr2Length length;
  /// Single margins replace that side's part of `margins`; otherwise they are read only without it.
  bool hasSideMarginsOverAll;
  bool hasAxisSpacing;       ///< `Xspacing` and `Yspacing` are read where `spacing` is absent
  bool hasAnyCaseGroup;      ///< `group` of a cut line is true for "TRUE" as well
  bool keepsUnplacedFrames;  ///< a frame without a valid placement stays, with zeros; otherwise it
                             ///< is left out, and with a graphic the rest of its plate's graphics
};

inline constexpr Cr2Dialect FirstGeneration{.extension = L".cr2",
                                            .length = Cr2Length::AsWritten,
                                            .hasSideMarginsOverAll = true,
                                            .hasAxisSpacing = false,
                                            .hasAnyCaseGroup = true,
                                            .keepsUnplacedFrames = true};

inline constexpr Cr2Dialect SecondGeneration{.extension = L".zml",
                                             .length = Cr2Length::Inches,
                                             .hasSideMarginsOverAll = false,
                                             .hasAxisSpacing = true,
                                             .hasAnyCaseGroup = false,
                                             .keepsUnplacedFrames = false};

}  // namespace rastrel::imports
