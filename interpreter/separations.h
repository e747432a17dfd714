#pragma once

#include <cstdint>
#include <string>

#include "interpreter/page_directory.h"

/// Pages in CMYK and spot colors. The interpreter writes a file a plane and one of all planes
/// together into the run's work directory; from these come page directories.
namespace rastrel::interpreter {

/// Whether files of the page with that number, counted from 1, lie in the work directory.
[[nodiscard]] bool HasSeparations(const std::string& workDirectory, unsigned page);

/// The plane's name in the name of its file (PlaneNameBytes) as UTF-8; bytes that are none count as
/// Windows-1252. Empty if the file name has another form.
[[nodiscard]] std::string PlaneName(const std::string& fileName);

/// Makes the page's directory: a TIFF file a plane with 8 bits, 255 for no ink; "preview.png";
/// ".info". The process colors come first, then the others by name. REQUIRES: HasSeparations, and
/// the interpreter is done with the page. Fails with EFBIG if the page has more than `pixelLimit`
/// pixels.
[[nodiscard]] Expected<void> MakeSeparationPage(const std::string& workDirectory,
                                                const std::string& runDirectory, unsigned page,
                                                const RunDescription& run,
                                                std::uint64_t pixelLimit);

}  // namespace rastrel::interpreter
