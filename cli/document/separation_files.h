#pragma once

#include <string>
#include <vector>

#include "cli/console/options.h"
#include "cli/document/separation_run.h"
#include "rastrel/platform/os/output_file.h"

namespace rastrel::cli {

/// The file, or files, that the planes go to.
enum class SeparationTarget {
  None,       ///< a report alone
  Directory,  ///< a TIFF file a plane
  Tiff,       ///< one file, a page a plane
  Pdf,        ///< one file, a page a plane
  Picture,    ///< a drawing or a picture for each page of the file, its planes in it
  Document,   ///< a document with copies of the planes
};

/// Where the planes go.
struct SeparationOutput {
  SeparationTarget target = SeparationTarget::None;
  std::string path;                               ///< native
  os::Existing existing = os::Existing::Refused;  ///< for names that the user did not give
};

/// Reads -o: .tif, .tiff, .pdf, .svg, .png, .rdoc, .json, and a directory for any other name or one
/// that is there. Ends the command if the place can't be had, before anything is separated.
[[nodiscard]] SeparationOutput SeparationOutputOf(const Invocation& invocation);

/// Writes the planes' files, all or none, and adds their names to the planes. `name` begins those
/// of a directory. Ends the command if they can't be written.
void WriteSeparation(SeparationRun& run, const SeparationOutput& output,
                     const Invocation& invocation, const std::string& name,
                     std::vector<SeparatedPlane>& planes);

}  // namespace rastrel::cli
