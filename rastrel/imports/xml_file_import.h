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
/// objects with panes, centred text, drill points. The constructor parses; nothing is imported
/// until it is asked for. Runs on the host's user interface thread. Nothing throws but for want of
/// memory, and the user is told nothing: why a file was refused is in the application log.
class RASTREL_API CXMLFileImport {
 public:
  /// Parses the file and keeps the result. The name need not live on. Null fails.
  explicit CXMLFileImport(const wchar_t* fileName);
  CXMLFileImport(const CXMLFileImport&) = delete;
  CXMLFileImport& operator=(const CXMLFileImport&) = delete;
  ~CXMLFileImport();

  /// Builds all plates in the document. A plate of the size of the one before becomes a further
  /// pane of its object, also the one before in an earlier run. 0, with an untouched document, if
  /// the parse failed or the host has no document; else 1, also when the host refused a plate as
  /// too large for its blank, which is then left out and logged. Each run adds everything again;
  /// fonts lost their extensions in the first, and so count as TrueType from the second on.
  int ImportXMLFile();

  /// The first record, and the one behind the last that was given; null at the end, where the place
  /// stays. Records are the importer's.
  tagABB_PLATE_DATA* GetFirstPlate();
  tagABB_PLATE_DATA* GetNextPlate();
  /// Frees all records.
  void ClearPlates();

  /// Opens a paragraph in the frame between two corners in text units, its lines centred, with side
  /// margins in percent of its width, 0 for the default of 22. Non-zero for success; then
  /// `StopAddText` must follow.
  int StartAddText(const NewWorldPt& first, const NewWorldPt& second, int marginPercent);
  /// Pastes text in a font, given by a file name that is cut in place (GetFontType), at a size in
  /// inches. Does nothing while no text is open, or without the font.
  void AddText(wchar_t* fontName, double size, const wchar_t* text);
  /// Closes the paragraph and adds it to the document. Its object, or 0 if no text is open. The
  /// flag that text is open stays set until the importer's own next step.
  rastrel::host::ObjectHandle StopAddText();
  /// The text engine's number for the kind of a font file, by the extension of its name. The name
  /// loses its extension in place, so that a second call finds none and gives 2.
  int GetFontType(wchar_t** fontName);
  /// Text units of a margin of so many per mille of the open frame's width, less where the other
  /// margin leaves less. The left one is 0.0 while no text is open.
  double CalcAbsoluteFromPercentLeftMargin(int perMille);
  double CalcAbsoluteFromPercentRightMargin(int perMille);

 private:
  bool ParseFile(const wchar_t* fileName);

  rastrel::imports::LastPlate m_Last;
  bool m_bParsed = false;
  std::vector<std::unique_ptr<tagABB_PLATE_DATA>> m_Plates;
  rastrel::imports::PlacedText m_Text;
  std::size_t m_Place = 0;  // of GetFirstPlate and GetNextPlate
};
