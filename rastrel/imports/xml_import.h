#pragma once

#include "rastrel/export.h"
#include "rastrel/imports/placed_text.h"
#include "rastrel/platform/values/document_values.h"
#include "rastrel/platform/values/world.h"

/// Base of the importers that take a path at construction, parse the file at once, and import when
/// ImportXMLFile is called. A derived class parses in its own constructor and keeps the result in
/// m_bParsed.
///
/// Texts are wide and end in a zero. Frames and margins are in the text engine's units. Called on
/// the host's user interface thread, inside one command. Nothing throws but std::bad_alloc.
///
/// The text operations need the open document of the host in force (SetHost). Without one each of
/// them fails as it says below, and changes nothing. At most one paragraph is open in a process.
class RASTREL_API CXMLImport {
 public:
  /// `fileName` is a library path (platform/os/path.h). The pointer is kept and not copied: the
  /// text must live as long as the importer. Null is allowed, and fails to parse.
  explicit CXMLImport(const wchar_t* fileName);
  CXMLImport(const CXMLImport&) = delete;
  CXMLImport& operator=(const CXMLImport&) = delete;

  virtual ~CXMLImport();
  /// Imports the records. Returns 1, or 0 if the file could not be parsed or the import failed; the
  /// reason is in the application log.
  virtual int ImportXMLFile() = 0;
  /// Frees all records. Pointers to them are invalid then.
  virtual void ClearPlates() = 0;
  /// Returns the first record, or null if there is none. Its type is the derived class's, which
  /// stays its owner.
  virtual void* GetFirstPlate() = 0;
  /// Returns the record after the one returned last, or null after the last.
  virtual void* GetNextPlate() = 0;

  /// Opens a paragraph in the frame between two opposite corners, in text units. `justification` is
  /// "Left", "Right" or "Center"; any other text, and null, is "Left". `lineFit` is "Each Line
  /// Individually", "All Lines Equally" or "Equal Height Lines"; any other text, and null, is "All
  /// Lines Equally". Both are compared by case. Returns 1, and `StopAddText` must follow; or 0,
  /// with nothing open, if the text engine can't open one.
  int StartAddText(const NewWorldPt& first, const NewWorldPt& second, const wchar_t* justification,
                   const wchar_t* lineFit);
  /// Adds text to the open paragraph. `fontName` is the file name of a font, which loses its
  /// extension in place (GetFontType); `size` is in inches. Does nothing while no paragraph is
  /// open, or if the text engine does not have the font.
  void AddText(wchar_t* fontName, double size, const wchar_t* text);
  /// Closes the paragraph and adds it to the document as an object, in an undo step of its own.
  /// Returns the object, or 0 if no paragraph is open or no object could be made. m_Text.isOpen
  /// stays set: the derived class clears it.
  rastrel::host::ObjectHandle StopAddText();
  /// Returns the text engine's number for the type of a font file, by the extension of its name,
  /// and 2 (TrueType) without one. The name loses its extension in place, so a second call returns
  /// 2. Neither pointer may be null.
  int GetFontType(wchar_t** fontName);
  /// Returns a left margin in text units: `perMille` thousandths of the open frame's width, less
  /// where the right margin leaves less. 0.0 while no paragraph is open.
  double CalcAbsoluteFromPercentLeftMargin(int perMille);
  /// The same for a right margin, beside the left one.
  double CalcAbsoluteFromPercentRightMargin(int perMille);

 protected:
  /// Reads the file into records. False if it can't be read, is refused, or is another format.
  virtual bool ParseFile(const wchar_t* fileName) = 0;

  const wchar_t* m_pFileName;           // as given
  rastrel::imports::PlacedText m_Text;  // the paragraph that is open, and whether one is
  bool m_bParsed = false;               // the result of ParseFile
};
