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

bool HasBoundedTexts(const tagABB_PLATE_DATA& record) {
  for (const auto& line : record.texts)
    if (line->data.size() >= AbbTextSize || line->fontName.size() >= AbbTextSize) return false;
  const tagABB_PLATE& plate = *record.plates.front();
  return plate.color.size() < AbbTextSize && plate.textColor.size() < AbbTextSize;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static rastrel::test::NamedDocument document;
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  CXMLFileImport importer(document.Write(bytes).c_str());
  ImportTwice(importer);
  for (const auto* record = importer.GetFirstPlate(); record != nullptr;
       record = importer.GetNextPlate())
    if (record->plates.size() != 1 || !HasBoundedTexts(*record)) std::abort();
  return 0;
}
