#pragma once

#include <string>

#include "cli/document/conversion_place.h"
#include "cli/document/conversion_request.h"
#include "cli/input/input_file.h"
#include "host/document_host.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/os/output_file.h"

namespace rastrel::cli {

/// The objects that a conversion has put into its document.
struct ConvertedObjects {
  host::ObjectHandle bitmap = 0;  ///< 0: none
  host::ObjectHandle lines = 0;   ///< a cut line or a group of them; 0: none
};

/// Where the result goes.
struct ResultPlace {
  std::string path;  ///< native; empty: standard output
  os::Existing existing = os::Existing::Refused;
};

/// The place of the result: as the user named it, or the input's name with the kind's extension in
/// the working directory. Keeps standard output for the result if that is it. Throws CommandError,
/// also if the place can't be had.
[[nodiscard]] ResultPlace PlaceOfResult(const Invocation& invocation, const ResultFile& result,
                                        const InputFile& input);

/// Pictures as large as the document's blank, without the blank itself; lines as files for cutters;
/// or the document.
class ConversionResult {
 public:
  /// All must outlive it. `place` takes the file until it is whole.
  ConversionResult(document::DocumentHost& host, const ConvertedObjects& objects,
                   const ConversionPlace& place)
      : m_Host(host), m_Objects(objects), m_Place(place) {}

  /// Makes the file, whole or not at all, with the input's permissions. A PNG and a TIFF have the
  /// bitmap's own pixels; lines are drawn into the PNG alone. Throws CommandError(NotWritten), or
  /// as ThrowUnwritten where the name is taken.
  void Write(const ResultFile& result, const ResultPlace& target, const InputFile& input) const;

 private:
  [[nodiscard]] std::string Bytes(ResultKind kind) const;
  [[nodiscard]] std::string Drawn(ResultKind kind) const;
  [[nodiscard]] std::string Lines(ResultKind kind) const;

  document::DocumentHost& m_Host;
  const ConvertedObjects& m_Objects;
  const ConversionPlace& m_Place;
};

}  // namespace rastrel::cli
