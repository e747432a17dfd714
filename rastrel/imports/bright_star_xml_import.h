#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "rastrel/export.h"
#include "rastrel/imports/bright_star_data.h"
#include "rastrel/imports/xml_import.h"

/// Imports a BrightStar template (docs/formats/bright-star.md) into the host's open document: the
/// size and origin of the blank, and frames of text. The constructor parses the file; ImportXMLFile
/// imports it. Lengths in the file are inches.
///
/// Called on the host's user interface thread, inside one command. Nothing throws but
/// std::bad_alloc, and nothing is shown to the user: why a file was refused, and which text the
/// host did not take, is in the application log. At most one paragraph is open in a process.
class RASTREL_API CBrightStarXMLImport : public CXMLImport {
 public:
  /// Parses the file at a library path (platform/os/path.h) and keeps the result, which
  /// ImportXMLFile returns. The base keeps the pointer, not a copy of the path. Parsing fails, and
  /// there are no records, if the path is null, names nothing or has another extension than "xml"
  /// in any case, if the XML layer refuses the document, or if a text in it is longer than its
  /// field. A document without a template parses, and has no record.
  explicit CBrightStarXMLImport(const wchar_t* fileName);
  CBrightStarXMLImport(const CBrightStarXMLImport&) = delete;
  CBrightStarXMLImport& operator=(const CBrightStarXMLImport&) = delete;
  ~CBrightStarXMLImport() override;

  /// Sets the blank by the first record, and adds its frames and graphics to the document; further
  /// records are not imported. Returns 1, also if the host did not take a frame: that one is left
  /// out. Returns 0, with the document unchanged, if the file could not be parsed, has no record,
  /// or the host has no document. Each call does all of it again.
  int ImportXMLFile() override;
  /// Frees all records. Pointers to them are invalid then.
  void ClearPlates() override;
  /// Returns the first record, a tagBRIGHT_STAR_DATA, or null if there is none. The importer stays
  /// its owner.
  void* GetFirstPlate() override;
  /// Returns the record after the one returned last, and the second before any was. Null after the
  /// last, at every call from then on.
  void* GetNextPlate() override;

  // The steps of ImportXMLFile. Without a document of the host each does nothing.

  /// Sets the origin of the blank by its name: "TOP LEFT" 1, "TOP CENTER" 2, "TOP RIGHT" 3, "LEFT
  /// CENTER" 4, "CENTER" 5, "RIGHT CENTER" 6, "LOWER LEFT" 7, "LOWER CENTER" 8, "LOWER RIGHT" 9,
  /// compared by case. Any other text is 7.
  void SetSignBlankOrigin(const std::wstring& origin);
  /// Adds a text in a frame. Its corners count from the blank's origin, inward: downward from the
  /// top and the middle, upward from the bottom; to the left from the right side. The lines end
  /// with CR LF but for the last, and are of one font, whose type is that of its extension for the
  /// first line and 2 (TrueType) for the others. Without a line the text is empty. Nothing is added
  /// if the text engine can't open a paragraph there; a line whose font the engine does not have is
  /// left out.
  void AddFrameText(tagTEXTFRAME frame);
  /// Loads a graphic in an undo step. If its file does not exist nothing is loaded, and **the undo
  /// step stays open and the hourglass on**: a host that appends graphics to a record sees to it
  /// that their files are there.
  void AddGraphics(tagGRAPHIC graphic);

 protected:
  /// Appends the records of a file. Returns false, with nothing appended, where the constructor
  /// fails.
  bool ParseFile(const wchar_t* fileName) override;

 private:
  void PasteLines(tagTEXTFRAME& frame);

  std::vector<std::unique_ptr<tagBRIGHT_STAR_DATA>> m_Records;
  std::size_t m_Place = 0;  // of GetFirstPlate and GetNextPlate
};
