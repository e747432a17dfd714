// The output engine's reader of CFM2 text against any text. Every page that it finds is one that
// the engine can look for.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "children/coreodalis/cfm2_lines.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace rastrel::odalis;
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  const auto document = ReadCfm2(text);
  if (!document) {
    if (!Describe(document.Error()).starts_with("line ")) std::abort();
    return 0;
  }
  if (document->warnings.size() > MaximumWarnings) std::abort();
  for (const PageEntry& entry : document->entries) {
    if (entry.directory.empty() || entry.title.empty() || entry.line == 0) std::abort();
    if (entry.copies > MaximumCopies) std::abort();
    if (!PageDirectoryOf(entry).ends_with(entry.title)) std::abort();
  }
  return 0;
}
