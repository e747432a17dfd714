// Crown Trophy templates of the first generation, of any bytes, imported into a host that records.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "rastrel/imports/cr2/cr2_file_import.h"
#include "tests/support/named_document.h"
#include "tests/support/recording_host.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static rastrel::test::NamedDocument document("file.cr2");
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  rastrel::test::RecordingHost host;
  host.m_Calls.Limit(0);
  host.m_Application.m_Palette[L"Red"] = CVKFullColor(0x0000FF, COLORSPACE_RGB, 0, 0);
  host.m_Calls.Always("LoadTHZ", static_cast<double>(size % 3));
  const CCR2FileImport importer(document.Write(bytes).c_str(), nullptr);
  // Whatever was opened is closed at the end, and changed settings are restored.
  if (!host.LeftOpen().empty()) std::abort();
  return 0;
}
