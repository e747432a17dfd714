#pragma once

#include "rastrel/export.h"
#include "rastrel/imports/placed_text.h"
#include "rastrel/platform/values/document_values.h"
#include "rastrel/platform/values/world.h"

/// What the importers have in common that are made on a path, parse it at once, and import when
/// they are told to. A derived class parses in its own constructor and keeps the result in
/// m_bParsed. Runs on the host's thread, inside one command; nothing here throws.
class RASTREL_API CXMLImport {
 public:
  /// `fileName` is kept as it is given, not copied: it must live as long as the importer. May be
  /// null, which no importer can parse.
  explicit CXMLImport(const wchar_t* fileName);
  CXMLImport(const CXMLImport&) = delete;
  CXMLImport& operator=(const CXMLImport&) = delete;

  virtual ~CXMLImport();
  /// Makes of the records what the importer is for. 1 if it could, 0 if not, also when the parse
  /// failed.
  virtual int ImportXMLFile() = 0;
  /// Frees all records.
  virtual void ClearPlates() = 0;
  /// The first record, and the one behind the last that was given; null at the end. The type is the
  /// derived class's, and the record stays its own.
  virtual void* GetFirstPlate() = 0;
  virtual void* GetNextPlate() = 0;

  /// Opens a paragraph in the frame between two corners in text units. `justification` is "Left",
  /// "Right" or "Center", anything else and null is left. `lineFit` is "Each Line Individually",
  /// "All Lines Equally" or "Equal Height Lines", anything else and null is all lines. Non-zero for
  /// success; then `StopAddText` must follow.
  int StartAddText(const NewWorldPt& first, const NewWorldPt& second, const wchar_t* justification,
                   const wchar_t* lineFit);
  /// Pastes text in a font, given by a file name that is cut in place (GetFontType), at a size in
  /// inches. Does nothing while no text is open, or without the font.
  void AddText(wchar_t* fontName, double size, const wchar_t* text);
  /// Closes the paragraph and adds it to the document. Its object, or 0 if no text is open. The
  /// flag that text is open stays set; who calls takes it back.
  rastrel::host::ObjectHandle StopAddText();
  /// The text engine's number for the kind of a font file, by the extension of its name. The name
  /// loses its extension in place, so that a second call finds none and gives 2.
  int GetFontType(wchar_t** fontName);
  /// Text units of a margin of so many per mille of the open frame's width, less where the other
  /// margin leaves less. The left one is 0.0 while no text is open.
  double CalcAbsoluteFromPercentLeftMargin(int perMille);
  double CalcAbsoluteFromPercentRightMargin(int perMille);

 protected:
  /// Reads the file into records. False if it can't be read, is refused, or is another format.
  virtual bool ParseFile(const wchar_t* fileName) = 0;

  const wchar_t* m_pFileName;           // as given
  rastrel::imports::PlacedText m_Text;  // the paragraph that is open, and whether one is
  bool m_bParsed = false;               // what ParseFile said
};
