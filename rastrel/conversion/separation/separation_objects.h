#pragma once

#include "rastrel/export.h"

// Separated planes as objects of the document, and the directory of the files that they are made
// from: "Separation" in the RIP directory. A host's virtual device "Separation" writes its jobs
// there. Only the user interface thread calls.

/// Separates the PostScript file of the setting "Output File" (section "Separation", at most 260
/// characters), and places each of its planes on one sheet layer: an empty one for separated
/// planes, or a new one. The queue program works under its progress dialog, which is modal. All of
/// it is one undo step. Returns non-zero if at least one plane was placed; 0 without a file, if the
/// user gave up, if nothing could be placed, and on a host without a document, which changes
/// nothing.
///
/// The file is deleted at the end, whatever the result, unless the setting "Delete" is 0. The
/// directory of the planes (the file's path with its last ".ps" replaced by ".cfm") stays, since
/// the objects read their planes from it; it is deleted only if the user gave up.
/// `CleanOldSepFiles` removes those that nobody needs any more.
RASTREL_API int GenerateSCObjects();

/// Copies the path of the separation directory, without a closing separator, to `buffer`, which has
/// room for `size` characters, and returns its length in characters. If `size` is not greater than
/// the length, nothing is copied, and the result is the length plus 1.
///
/// - A directory that is missing is made. **The call that makes it does not write the buffer**: it
///   returns the length of the text that the buffer holds already, and the next call copies the
///   path. So the buffer must hold a text, with its terminator within `size`; null counts as empty.
/// - If it can't be made, the path is that of the queue directory; if there is none, or `size` is
///   not greater than its length with its separator, that of the system's temporary directory. Of
///   the latter at most `size` characters are copied: **with a length of `size` or more the buffer
///   has no terminator.**
RASTREL_API int GetSeparationPath(wchar_t* buffer, int size);

/// Removes all that is in the separation directory, directories with their content. Links are
/// removed and never followed; a separation directory that is a link itself is left alone. Returns
/// the number of entries, those that could not be removed included; 0 without such a directory.
RASTREL_API int CleanOldSepFiles();
