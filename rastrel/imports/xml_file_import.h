#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "rastrel/export.h"
#include "rastrel/imports/abb_plate_data.h"
#include "rastrel/imports/last_plate.h"
#include "rastrel/imports/placed_text.h"
#include "rastrel/platform/values/document_values.h"
#include "rastrel/platform/values/world.h"

/// Imports a plate XML of ABB (docs/formats/abb-plates.md) into the host's open document: plate
/// objects with panes, centred text, drill points. The constructor parses the file; ImportXMLFile
/// imports it. Widths, heights and places in the file are inches.
///
/// Called on the host's user interface thread, inside one command. Nothing throws but
/// std::bad_alloc, and nothing is shown to the user: why a file was refused is in the application
/// log. The text operations need the host's open document; at most one paragraph is open in a
/// process.
class RASTREL_API CXMLFileImport {
 public:
  /// Parses the file at a library path (platform/os/path.h) and keeps the result, which
  /// ImportXMLFile returns. The path is not kept. Parsing fails, and there are no records, if the
  /// path is null, names nothing or has another extension than "xml" in any case, if the XML layer
  /// refuses the document, or if a text in it is longer than its field. It fails too, but leaves
  /// the records of the plates, if no element announces plates.
  explicit CXMLFileImport(const wchar_t* fileName);
  CXMLFileImport(const CXMLFileImport&) = delete;
  CXMLFileImport& operator=(const CXMLFileImport&) = delete;
  ~CXMLFileImport();

  /// Adds all plates to the document. A plate of the same size as the plate before becomes a
  /// further pane of its object; the plate before may be of an earlier call. Returns 0, with the
  /// document unchanged, if the file could not be parsed or the host has no document. Else 1, also
  /// if the host refused a plate as too large for the sign blank: that plate is left out and
  /// logged. Each call adds everything again. The first call takes the extensions off the font
  /// names in the records, so from the second on all fonts count as TrueType.
  int ImportXMLFile();

  /// Returns the first record, or null if there is none. The importer stays its owner.
  tagABB_PLATE_DATA* GetFirstPlate();
  /// Returns the record after the one returned last, and the second before any was. Null after the
  /// last, at every call from then on.
  tagABB_PLATE_DATA* GetNextPlate();
  /// Frees all records. Pointers to them are invalid then.
  void ClearPlates();

  /// Opens a paragraph in the frame between two opposite corners, in text units. Its lines are
  /// centred, and both side margins are `marginPercent` of its width, 22 if that is 0. Returns 1,
  /// and `StopAddText` must follow; or 0, with nothing open, if the text engine can't open one or
  /// the host has no document.
  int StartAddText(const NewWorldPt& first, const NewWorldPt& second, int marginPercent);
  /// Adds text to the open paragraph. `fontName` is the file name of a font, which loses its
  /// extension in place (GetFontType); `size` is in inches. Does nothing while no paragraph is
  /// open, or if the text engine does not have the font.
  void AddText(wchar_t* fontName, double size, const wchar_t* text);
  /// Closes the paragraph and adds it to the document as an object, in an undo step of its own.
  /// Returns the object, or 0 if no paragraph is open or no object could be made. The importer
  /// takes the paragraph for open until its own next step.
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

 private:
  bool ParseFile(const wchar_t* fileName);

  rastrel::imports::LastPlate m_Last;
  bool m_bParsed = false;
  std::vector<std::unique_ptr<tagABB_PLATE_DATA>> m_Plates;
  rastrel::imports::PlacedText m_Text;
  std::size_t m_Place = 0;  // of GetFirstPlate and GetNextPlate
};
