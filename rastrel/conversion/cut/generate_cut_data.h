#pragma once

#include "rastrel/export.h"

class CGenericEPS;
class CGenericPDF;
class CGenericPS;

// Cut lines of a placed object. The queue program takes the paths in the object's two cut colors
// out of its file, while a progress dialog is on show, and they become an object of the host:
// paths in the color of the cut line are lines that are cut, in that of the half-cut line lines
// that are cut through, and all others plain. On the user interface thread, within one undo step
// "Cutting", which is closed on every way out.
//
//   object       must not be null
//   resolution   dots per inch; limited so that the bitmap takes at most 0xFFFFFFF bytes
//   withPreview  non-zero: the object's preview is replaced by the bitmap of the run
//   path         library path of the object's file; null is a failure
//
// The result is the object, selected and not added to the document, which is the caller's to do. It
// is 0 if there are no cut lines, after any failure, and if the user cancelled. Nothing is shown
// but the dialog. An archive that ends too early raises CArchiveException(endOfFile).
//
// The points of the result count from the place that the archive has them from, the picture's upper
// left corner (docs/formats/cut-archive.md). That of a PostScript object is added; an EPS or PDF
// object's caller moves the result there.
//
// Files of a run are in the RIP directory under one temporary name. Unless "Keep PS Files" of
// section "RASTREL" is set:
//
//   end of the run                        stays
//   no temporary file, or no PostScript   nothing
//   no job header, EPS and PostScript     nothing
//   no job header, PDF                    goes on, without the side file
//   cancelled                             the side file
//   failed, without a preview             the temporary file, the side file
//   well, without a preview               all but the archive
//   well, with a preview                  the side file
//   preview wanted, and no bitmap         the page directory, the side file
//   archive ends too early                all
//
// The side file, ".jhdr", is the job header of a PDF object. The library removes files that stay at
// no later time; the command does, a day later.

/// Makes cut lines of a placed EPS file.
RASTREL_API unsigned long long GenerateEPSCutData(CGenericEPS* object, int resolution,
                                                  int withPreview, const wchar_t* path);
/// Makes cut lines of a placed PostScript file, and moves them to the upper left corner of its
/// bounds.
RASTREL_API unsigned long long GeneratePSCutData(CGenericPS* object, int resolution,
                                                 int withPreview, const wchar_t* path);
/// Makes cut lines of a placed PDF file. The limited resolution is 1 less than the others'.
RASTREL_API unsigned long long GeneratePDFCutData(CGenericPDF* object, int resolution,
                                                  int withPreview, const wchar_t* path);
