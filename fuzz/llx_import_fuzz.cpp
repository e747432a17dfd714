// LLX templates of any bytes. The importer has all of a file or nothing, and codes of its tables.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "rastrel/imports/llx_file_import.h"
#include "tests/support/named_document.h"

namespace {

bool HasOriginOfTheTable(std::int32_t origin) { return origin >= 0 && origin <= 9; }

bool HasCodesOfTheTables(const CLLXFileImport& importer) {
  for (const auto& graphic : importer.m_Graphics)
    if (!HasOriginOfTheTable(graphic->origin)) return false;
  for (const auto& text : importer.m_ArcTexts)
    if (text->justify < LLXJUSTIFY_LEFT || text->justify > LLXJUSTIFY_CENTER) return false;
  return HasOriginOfTheTable(importer.m_Origin);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static rastrel::test::NamedDocument document("file.llx");
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const CLLXFileImport importer(document.Write(bytes).c_str(), nullptr);
  const CLLXFileImport copy(importer);
  if (!HasCodesOfTheTables(importer)) std::abort();
  if (copy.m_Graphics.size() != importer.m_Graphics.size()) std::abort();
  if (!importer.m_bParsed && !(importer.m_Graphics.empty() && importer.m_ArcTexts.empty()))
    std::abort();
  return 0;
}
