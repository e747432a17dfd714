#pragma once

#include <cstdio>

#include "rastrel/export.h"

/// Imports a Crown Trophy template of the first generation (docs/formats/crown-trophy.md), a file
/// that ends in ".cr2", into the host's open document: the sign blank, a plate object with a pane
/// for each plate, a cut line, graphics, and text. The constructor does all of it, and nothing is
/// left to do but to destroy the object.
///
/// Called on the host's user interface thread, inside one command. Nothing throws but
/// std::bad_alloc. Without a document of the host the constructor changes nothing, and logs why.
class RASTREL_API CCR2FileImport {
 public:
  /// Imports the file at a library path (platform/os/path.h), which may be null. `log` is not
  /// used, and may be null too.
  ///
  /// A file that is refused, for its name or its content, has no records: the sign blank and a
  /// plate object of no size are still asked for, and a host refuses both. A graphic that can't be
  /// loaded is shown to the user and left out; one that can't be found or read is left out. A font
  /// that can't be had is replaced as the user says; a user who says no ends the import at that
  /// plate, with a message, and the objects made so far stay.
  CCR2FileImport(const wchar_t* fileName, std::FILE* log);
  CCR2FileImport(const CCR2FileImport&) = delete;
  CCR2FileImport& operator=(const CCR2FileImport&) = delete;
  virtual ~CCR2FileImport();
};
