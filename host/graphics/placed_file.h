#pragma once

#include <memory>
#include <string>

#include "host/document/document_store.h"
#include "host/graphics/drawing_process.h"
#include "rastrel/conversion/cut_data.h"
#include "rastrel/platform/host/placed_graphics.h"
#include "rastrel/platform/os/expected.h"

/// EPS, PostScript and PDF files that are placed whole, and the objects by which conversions know
/// them. Failures are sentences about the file, for the user, or the system's error.
namespace rastrel::graphics {

/// Reads a file by library path, as a graphic of the kind Eps, PostScript or Pdf in true size: the
/// first page of PostScript and PDF, the bounding box of EPS. The interpreter and the drawing
/// program measure it within their walls.
[[nodiscard]] Expected<document::GraphicShape> ReadPlacedFile(const std::wstring& path,
                                                              const DrawingLimits& limits = {});

/// Places such a file: adds its object to the document, on the page on show, with its lower left
/// corner at the origin. It is not selected. Returns its handle. Its item is that of
/// `DBGetObjectElement(handle)->GetPlaceholderItem()`: a CGenericEPS, CGenericPS or CGenericPDF.
[[nodiscard]] Expected<document::ObjectHandle> PlaceFile(document::Document& document,
                                                         const std::wstring& path,
                                                         const DrawingLimits& limits = {});

/// The cut lines of a placed file.
struct PlacedCuts {
  CPS2CutData cut;
  CPS2CutData halfCut;
};
/// Sets the cut lines of a placed file, of any kind, which its item then returns and its document
/// keeps. Fails, and changes nothing, if the object is no placed file, a resolution is not within
/// those of document::GraphicCut, or a kind of color is unknown.
[[nodiscard]] Expected<void> SetPlacedCuts(document::Document& document,
                                           document::ObjectHandle graphic, const PlacedCuts& cuts);

/// Puts the cut lines that were made of a placed EPS or PDF file where the file is. The RIP counts
/// them from the artwork's upper left corner, y upward, in the file's own size; they are moved to
/// that corner and then mapped by the file's matrix. Those of a PostScript file are in their place
/// already, and stay. Does nothing if `graphic` is no placed file. REQUIRES: not called twice.
void PlaceCutResult(document::DocumentStore& store, document::ObjectHandle graphic,
                    document::ObjectHandle result);

/// Opens an EPS file that is not in a document (Application::NewGenericEPS). Its size is that of
/// the box in its comments, or 0, until it is added; it is measured then. Null, with a loss in the
/// notices, if the file can't be read or is no PostScript. Both must outlive the item.
[[nodiscard]] std::unique_ptr<CGenericEPS> OpenEps(document::DocumentStore& store,
                                                   document::Notices& notices,
                                                   const std::wstring& path);
/// The item of an object; null for all but placed EPS, PostScript and PDF files. Both must outlive
/// it.
[[nodiscard]] std::unique_ptr<CGenericItem> ItemOf(document::DocumentStore& store,
                                                   document::Notices& notices,
                                                   document::ObjectHandle object);

}  // namespace rastrel::graphics
