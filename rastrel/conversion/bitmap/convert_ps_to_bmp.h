#pragma once

#include "rastrel/export.h"

/// The kinds of file that ConvertPStoBmp takes, with the host's numbers.
enum PS2BmpFileKind : int { PS2BMP_EPS = 3, PS2BMP_POSTSCRIPT = 11 };

/// Turns a placed PostScript or EPS file into a bitmap object of the document, and the paths of one
/// color into cut lines if the user asks for them: shows a dialog for size, resolution and cut
/// line, has the queue program draw the file while a progress dialog is on show, and adds the
/// results to the document as one undo step, selected. `path` is a library path and `kind` a
/// PS2BmpFileKind; the other arguments are not read.
///
/// Returns 0 if the queue program is missing, the host has no document, or `path` is null;
/// otherwise 1, also if the user cancelled or the conversion failed. A file that can't be drawn
/// changes nothing in the document. The application log has the reason of a failure.
/// docs/formats/conversion-files.md says which files stay.
///
/// On the host's user interface thread, which it blocks; the dialogs take messages meanwhile.
/// Throws for want of memory alone; the undo step is closed then, too.
RASTREL_API int ConvertPStoBmp(wchar_t* path, int unused1, int kind, double unused2, double unused3,
                               unsigned long long* unused4);
