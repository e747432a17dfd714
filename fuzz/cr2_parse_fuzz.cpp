// Crown Trophy templates of the first generation, of any bytes.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "rastrel/imports/cr2/cr2_parse.h"
#include "tests/imports/cr2/template_records.h"
#include "tests/support/named_document.h"
#include "tests/support/recording_host.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static rastrel::test::NamedDocument document("file.cr2");
  static rastrel::test::RecordingHost host;
  host.m_Calls.Limit(0);
  host.m_Application.m_Palette[L"Red"] = CVKFullColor(0x0000FF, COLORSPACE_RGB, 0, 0);
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  rastrel::imports::Cr2Document records;
  const bool parsed = rastrel::imports::ParseCr2File(document.Write(bytes).c_str(), records);
  if (!rastrel::test::TemplateRecords::AreSound(records, false)) std::abort();
  if (!records.plates.empty() && !parsed) std::abort();
  return 0;
}
