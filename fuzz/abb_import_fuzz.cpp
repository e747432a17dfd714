// Plate XML of any bytes, imported into a host that records.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "rastrel/imports/xml_file_import.h"
#include "tests/support/named_document.h"
#include "tests/support/recording_host.h"

namespace {

/// Whatever was opened is closed at the end, also by an import that the file leads astray.
void ImportTwice(CXMLFileImport& importer) {
  rastrel::test::RecordingHost recording;
  recording.m_Calls.Limit(0);
  importer.ImportXMLFile();
  importer.ImportXMLFile();
  if (!recording.LeftOpen().empty()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static rastrel::test::NamedDocument document;
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  CXMLFileImport importer(document.Write(bytes).c_str());
  ImportTwice(importer);
  int records = 0;
  for (const auto* record = importer.GetFirstPlate(); record != nullptr;
       record = importer.GetNextPlate())
    ++records;
  if (records > 0 && size < 8) std::abort();
  return 0;
}
