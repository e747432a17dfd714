#pragma once

#include <cstdio>

#include "rastrel/export.h"

/// Imports a Crown Trophy template of the second generation (docs/formats/crown-trophy.md), a file
/// that ends in ".zml", into the host: a new document takes the place of the open one, with the
/// sign blank, plate objects with a pane for each plate, a cut line on each pane, and text. Graphic
/// frames of this format do not appear. The constructor does all of it.
///
/// Called on the host's user interface thread, inside one command. Nothing throws but
/// std::bad_alloc. Without a document of the host the constructor changes nothing, and logs why.
class RASTREL_API CCR2FileImportVers2 {
 public:
  /// Imports the file at a library path (platform/os/path.h), which may be null. `log` is not
  /// used, and may be null too.
  ///
  /// A file that is refused, for its name or its content, leaves the document as it was, without a
  /// message. A cut line that can't be loaded is shown to the user and left out. A font that can't
  /// be had is replaced as the user says; a user who says no ends the import at that plate, with a
  /// message. If code page 1252 lacks a character, a message at the end says so.
  CCR2FileImportVers2(const wchar_t* fileName, std::FILE* log);
  CCR2FileImportVers2(const CCR2FileImportVers2&) = delete;
  CCR2FileImportVers2& operator=(const CCR2FileImportVers2&) = delete;
  virtual ~CCR2FileImportVers2();
};
