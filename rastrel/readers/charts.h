#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

#include "rastrel/export.h"

// Reference charts of ring and jewellery engraving, XML files (docs/formats/charts.md). Each class
// here looks one answer up in a chart, at construction, and holds it. No object keeps its chart
// open.
//
// Common to all five:
// - `m_bValid` is the result of the constructor's ParseFile. If the host calls ParseFile itself, it
//   returns its own result and replaces the answer if it finds one; `m_bValid` does not change.
// - ParseFile returns false, with the answer unchanged, if the path is null or shorter than 5
//   characters, if there is no such file, if the XML layer refuses the document (the application
//   log has the reason), if its root is not the chart's, if the chart has no entries, or if none of
//   them matches.
// - `path` is a library path (platform/os/path.h). `log` is kept for callers that pass a stream:
//   nothing is written to it, and it may be null. A null text to look up counts as empty.
// - Texts are compared whole and by case. Numbers are read as _wtof reads them. Heights and sizes
//   are in the chart's unit, which it does not name.
// - A copy copies the answer. An object belongs to one thread at a time. Nothing throws but
//   std::bad_alloc.

/// Which trademark file goes with a mark and a quality.
class RASTREL_API CHTrademarkXMLReader {
 public:
  /// Size of the answer in wide characters, the terminator among them.
  static constexpr std::size_t FileSize = 260;

  /// Looks up the file of `mark` and `quality`.
  CHTrademarkXMLReader(wchar_t* mark, wchar_t* quality, const wchar_t* path, FILE* log);
  CHTrademarkXMLReader(const CHTrademarkXMLReader&);
  CHTrademarkXMLReader& operator=(const CHTrademarkXMLReader&);
  virtual ~CHTrademarkXMLReader();

  /// Takes the first entry whose mark is `mark` and whose quality contains `quality`: "Fine" finds
  /// "Extra Fine", and an empty quality finds any. Also false if the file's name has more than
  /// FileSize - 1 characters, which the application log records.
  bool ParseFile(wchar_t* mark, wchar_t* quality, const wchar_t* path, FILE* log);
  /// Copies the answer to `target`, which has room for FileSize characters, with its terminator.
  /// False, with `target` unchanged, if it is null or the constructor found no answer.
  bool GetTrademarkFile(wchar_t* target);

  bool m_bValid = false;                   ///< whether the constructor found an answer
  wchar_t m_TrademarkFile[FileSize] = {};  ///< the answer; empty without one
};

/// The heights of symbol, trademark and signature on a ring of a given size.
class RASTREL_API CHSymbolChartXMLReader {
 public:
  /// Looks up the heights on a ring of `size`, which is compared as text.
  CHSymbolChartXMLReader(wchar_t* size, const wchar_t* path, FILE* log);
  CHSymbolChartXMLReader(const CHSymbolChartXMLReader&);
  CHSymbolChartXMLReader& operator=(const CHSymbolChartXMLReader&);
  virtual ~CHSymbolChartXMLReader();

  /// Takes the first ring of that size. A height that the chart does not have stays as it was, and
  /// is 0 by default.
  bool ParseFile(wchar_t* size, const wchar_t* path, FILE* log);

  bool m_bValid = false;   ///< whether the constructor found an answer
  double m_Height = 0;     ///< of the symbol, in the chart's unit
  double m_Trademark = 0;  ///< of the trademark
  double m_SigHeight = 0;  ///< of the signature
};

/// The font of a node, by the node's name.
class RASTREL_API CHFontXMLReader {
 public:
  /// Size of the caller's buffer in wide characters, the terminator among them. A longer name of a
  /// font is refused.
  static constexpr std::size_t FontSize = 256;

  /// Replaces the node's name in `font` by the font's name. `font` must have room for FontSize
  /// characters, since no length is passed. Null fails.
  CHFontXMLReader(wchar_t* font, const wchar_t* path, FILE* log);
  CHFontXMLReader(const CHFontXMLReader&);
  CHFontXMLReader& operator=(const CHFontXMLReader&);
  virtual ~CHFontXMLReader();

  /// Takes the first entry of that node. If it names several fonts, the last counts; if it names
  /// none, the result is true and `font` is unchanged. False, with `font` unchanged, if a name is
  /// too long, which the application log records.
  bool ParseFile(wchar_t* font, const wchar_t* path, FILE* log);

  bool m_bValid = false;  ///< whether the constructor found an answer
};

/// The font size of a copyright engraving.
class RASTREL_API CHCopyrightEngravingXMLReader {
 public:
  /// Looks up the size for an engraving of this ring style and size, font, number of rows, and
  /// finger size.
  CHCopyrightEngravingXMLReader(wchar_t* ringStyle, wchar_t* styleSize, wchar_t* font,
                                wchar_t* numRows, wchar_t* fingerSize, const wchar_t* path,
                                FILE* log);
  CHCopyrightEngravingXMLReader(const CHCopyrightEngravingXMLReader&);
  CHCopyrightEngravingXMLReader& operator=(const CHCopyrightEngravingXMLReader&);
  virtual ~CHCopyrightEngravingXMLReader();

  /// Takes the first entry with the same four texts whose rule the finger size satisfies: "L6" is
  /// less than 6, "G6" greater than 6, and "5,7" from 5 to 7, to within 0.01.
  bool ParseFile(wchar_t* ringStyle, wchar_t* styleSize, wchar_t* font, wchar_t* numRows,
                 wchar_t* fingerSize, const wchar_t* path, FILE* log);

  bool m_bValid = false;  ///< whether the constructor found an answer
  double m_FontSize = 0;  ///< the answer, in the chart's unit; 0 if the entry has none
};

/// Words that keep special capitals, as the chart lists them.
class RASTREL_API CHCapRulesXMLReader {
 public:
  /// Appends the chart's words to `words`.
  CHCapRulesXMLReader(std::vector<std::wstring>& words, const wchar_t* path, FILE* log);
  CHCapRulesXMLReader(const CHCapRulesXMLReader&);
  CHCapRulesXMLReader& operator=(const CHCapRulesXMLReader&);
  virtual ~CHCapRulesXMLReader();

  /// Appends each word in the chart's order; an entry without text becomes an empty word. Unlike
  /// with the other charts, the result is true for a document with another root, and no words are
  /// appended: hosts treat it as a chart without rules.
  bool ParseFile(std::vector<std::wstring>& words, const wchar_t* path, FILE* log);

  bool m_bValid = false;  ///< the result of the constructor's ParseFile
};
