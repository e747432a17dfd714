// The unpacker of spreadsheets' packages on any bytes: it writes within its limits and its folder,
// or it refuses the package.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "spreadsheet/error.h"
#include "spreadsheet/package.h"
#include "spreadsheet/zip_directory.h"
#include "tests/support/scratch_directory.h"

namespace {

namespace fs = std::filesystem;
using rastrel::spreadsheet::Error;

void Check(bool fine) {
  if (!fine) std::abort();
}

rastrel::spreadsheet::PackageLimits SmallLimits() {
  rastrel::spreadsheet::PackageLimits limits;
  limits.entries = 20;
  limits.directoryBytes = 4096;
  limits.totalBytes = 100'000;
  limits.ratio = 50;
  limits.ratioFromBytes = 10'000;
  return limits;
}

void Unpack(const std::string& path, const rastrel::test::MemoryScratchDirectory& scratch) {
  const auto limits = SmallLimits();
  const auto package = rastrel::spreadsheet::OpenZipPackage(path, limits);
  std::uint64_t total = 0;
  for (const char* name : {"a", "b", "mimetype", "content.xml", "[Content_Types].xml",
                           "_rels/.rels", "xl/workbook.xml", "../a", "/a", "d/"}) {
    const std::string part = name;
    if (package->Find(part).empty()) continue;
    Check(part != "../a" && part != "/a");
    std::uint64_t reached = 0;
    package->Unpack(part, scratch.Path("part"), [&](std::uint64_t done, std::uint64_t whole) {
      Check(done <= whole && done > reached);
      reached = done;
    });
    const std::uint64_t size = fs::file_size(scratch.Path("part"));
    Check(size == package->SizeOf(part));
    total += size;
    Check(total <= limits.totalBytes);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const rastrel::test::MemoryScratchDirectory scratch;
  const std::string_view input(reinterpret_cast<const char*>(bytes), size);
  static_cast<void>(rastrel::spreadsheet::FindZipDirectory(input));
  scratch.Write("p.zip", input);
  try {
    Unpack(scratch.Path("p.zip"), scratch);
  } catch (const Error& error) {
    Check(error.Reason().error == 0);
    const std::string_view words = error.what();
    Check(words.starts_with(scratch.Path("p.zip: ")));
    Check(words.find_first_of("\n\t\x1b") == words.npos);
  }
  // Nothing but the package and the part.
  for (const auto& entry : fs::directory_iterator(scratch.Path()))
    Check(entry.path().filename() == "p.zip" || entry.path().filename() == "part");
  return 0;
}
