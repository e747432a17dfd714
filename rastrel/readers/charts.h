#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

#include "rastrel/export.h"

// Reference charts of ring and jewellery engraving, XML files (docs/formats/charts.md). Each class
// here answers one question from a chart: at construction, once, and it then holds the answer. No
// object keeps its chart open.
//
// Common to all five:
// - `m_bValid` is what the constructor's ParseFile gave. A ParseFile that the host calls itself
//   returns its result, and overwrites the answer if it finds one, but does not change `m_bValid`.
// - ParseFile is false, and the answer untouched, if the path is null or shorter than 5 characters,
//   if there is no such file, if the XML layer refuses the document, if its root is not the
//   chart's, if the chart has no entries, and if none of them matches.
// - The path is library text (platform/os/path.h). The stream is handed on and never written to; it
//   may be null. A null text of a question is an empty one.
// - Texts are compared whole and by case. Numbers are read as _wtof reads them.
// - Copies copy the answer. An object belongs to one thread at a time.

/// Which trademark file goes with a mark and a quality.
class RASTREL_API CHTrademarkXMLReader {
 public:
  /// Size of the answer in wide characters, the terminator among them.
  static constexpr std::size_t FileSize = 260;

  /// Asks for the file of `mark` and `quality`.
  CHTrademarkXMLReader(wchar_t* mark, wchar_t* quality, const wchar_t* path, FILE* log);
  CHTrademarkXMLReader(const CHTrademarkXMLReader&);
  CHTrademarkXMLReader& operator=(const CHTrademarkXMLReader&);
  virtual ~CHTrademarkXMLReader();

  /// The first entry whose mark is `mark`, and whose quality has `quality` anywhere in it: "Fine"
  /// finds "Extra Fine", and an empty quality finds any. False also if the file's name does not fit
  /// the answer; the application log tells of it.
  bool ParseFile(wchar_t* mark, wchar_t* quality, const wchar_t* path, FILE* log);
  /// Copies the answer to `target`, which holds FileSize characters. False, and `target` untouched,
  /// if there is none.
  bool GetTrademarkFile(wchar_t* target);

  bool m_bValid = false;                   ///< whether the constructor found an answer
  wchar_t m_TrademarkFile[FileSize] = {};  ///< the answer
};

/// The heights of symbol, trademark and signature on a ring of a given size.
class RASTREL_API CHSymbolChartXMLReader {
 public:
  /// Asks for the heights on a ring of `size`, which is compared as text.
  CHSymbolChartXMLReader(wchar_t* size, const wchar_t* path, FILE* log);
  CHSymbolChartXMLReader(const CHSymbolChartXMLReader&);
  CHSymbolChartXMLReader& operator=(const CHSymbolChartXMLReader&);
  virtual ~CHSymbolChartXMLReader();

  /// The first ring of that size. A height that the chart does not give stays as it was.
  bool ParseFile(wchar_t* size, const wchar_t* path, FILE* log);

  bool m_bValid = false;   ///< whether the constructor found an answer
  double m_Height = 0;     ///< of the symbol, in the chart's unit
  double m_Trademark = 0;  ///< of the trademark
  double m_SigHeight = 0;  ///< of the signature
};

/// The font that stands behind the name of a node.
class RASTREL_API CHFontXMLReader {
 public:
  /// What the caller's buffer has to hold in wide characters, the terminator among them. A longer
  /// name of a font is refused.
  static constexpr std::size_t FontSize = 256;

  /// Replaces the node's name in `font` by the font's name. The interface passes no length: `font`
  /// has room for FontSize characters.
  CHFontXMLReader(wchar_t* font, const wchar_t* path, FILE* log);
  CHFontXMLReader(const CHFontXMLReader&);
  CHFontXMLReader& operator=(const CHFontXMLReader&);
  virtual ~CHFontXMLReader();

  /// The first entry of that node. True, and `font` untouched, if it names no font; if it names
  /// several, the last counts. False, and `font` untouched, if a name does not fit; the application
  /// log tells of it.
  bool ParseFile(wchar_t* font, const wchar_t* path, FILE* log);

  bool m_bValid = false;  ///< whether the constructor found an answer
};

/// The font size of a copyright engraving.
class RASTREL_API CHCopyrightEngravingXMLReader {
 public:
  /// Asks for the size of the engraving that these five tell of.
  CHCopyrightEngravingXMLReader(wchar_t* ringStyle, wchar_t* styleSize, wchar_t* font,
                                wchar_t* numRows, wchar_t* fingerSize, const wchar_t* path,
                                FILE* log);
  CHCopyrightEngravingXMLReader(const CHCopyrightEngravingXMLReader&);
  CHCopyrightEngravingXMLReader& operator=(const CHCopyrightEngravingXMLReader&);
  virtual ~CHCopyrightEngravingXMLReader();

  /// The first entry whose four texts are those, and whose rule the finger size satisfies
  /// (readers/finger_size.h).
  bool ParseFile(wchar_t* ringStyle, wchar_t* styleSize, wchar_t* font, wchar_t* numRows,
                 wchar_t* fingerSize, const wchar_t* path, FILE* log);

  bool m_bValid = false;  ///< whether the constructor found an answer
  double m_FontSize = 0;  ///< the answer, in the chart's unit; 0 if the entry gives none
};

/// The words that keep special capitals.
class RASTREL_API CHCapRulesXMLReader {
 public:
  /// Appends the chart's words to `words`.
  CHCapRulesXMLReader(std::vector<std::wstring>& words, const wchar_t* path, FILE* log);
  CHCapRulesXMLReader(const CHCapRulesXMLReader&);
  CHCapRulesXMLReader& operator=(const CHCapRulesXMLReader&);
  virtual ~CHCapRulesXMLReader();

  /// Appends each word in the chart's order; an entry without text gives an empty word. Unlike the
  /// other charts, a document with another root is true here, and gives no words: hosts treat it as
  /// a chart without rules.
  bool ParseFile(std::vector<std::wstring>& words, const wchar_t* path, FILE* log);

  bool m_bValid = false;  ///< what the constructor's ParseFile gave
};
