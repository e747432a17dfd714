#pragma once

#include <string>

#include "rastrel/conversion/cut/cut_objects.h"
#include "rastrel/conversion/cut_data.h"
#include "rastrel/platform/values/document_values.h"

namespace rastrel::host {
class ObjectStore;
}

namespace rastrel::conversion {

/// The open document of the host in force; null if the host has none, which is written to the
/// application log.
[[nodiscard]] host::ObjectStore* FindCutDocument();

/// Makes an object of the host, not in the document, of a cut object: of one polygon its paths, of
/// several a group of them. 0 if there is no polygon, or if the host has no document or can't make
/// the object. On the user interface thread.
[[nodiscard]] host::ObjectHandle BuildCutObject(const CutObject& object);

/// Makes an object of the host, not in the document, of all cut objects: of one the object itself,
/// of several a group. Those in the color of `cut` become lines that are cut, others in that of
/// `halfCut`, which may be null, lines that are cut through; both get the record's color, which is
/// added to the palette. All others stay plain paths. So does every one with a host that makes no
/// cut lines: the log says so then. 0 if there is no cut object, or if it can't be made. On the
/// user interface thread.
[[nodiscard]] host::ObjectHandle BuildCutLines(const CCutObjects& objects, const CPS2CutData& cut,
                                               const CPS2CutData* halfCut);

/// The same of the archive at a library path, by its cut lines alone, and deletes the archive. 0 as
/// well if there is no archive, or one that ends too early; the application log has the reason why
/// one could not be read.
[[nodiscard]] host::ObjectHandle TakeCutLines(const std::wstring& archive, const CPS2CutData& cut);

}  // namespace rastrel::conversion
