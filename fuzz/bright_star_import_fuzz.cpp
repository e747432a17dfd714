// BrightStar templates of any bytes, imported into a host that records.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "rastrel/imports/bright_star_xml_import.h"
#include "tests/support/named_document.h"
#include "tests/support/recording_host.h"

namespace {

/// Whatever was opened is closed at the end, also by an import that the file leads astray.
void ImportTwice(CBrightStarXMLImport& importer) {
  rastrel::test::RecordingHost recording;
  recording.m_Calls.Limit(0);
  importer.ImportXMLFile();
  importer.ImportXMLFile();
  if (!recording.LeftOpen().empty()) std::abort();
}

bool HasBoundedTexts(const tagBRIGHT_STAR_DATA& record) {
  for (const auto& frame : record.textFrames)
    if (frame->compression.size() >= BrightStarTextSize ||
        frame->fontName.size() >= BrightStarTextSize ||
        frame->justification.size() >= BrightStarTextSize)
      return false;
  return record.origin.size() < BrightStarTextSize && record.graphics.empty();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static rastrel::test::NamedDocument document;
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::wstring path = document.Write(bytes);
  CBrightStarXMLImport importer(path.c_str());
  ImportTwice(importer);
  for (void* record = importer.GetFirstPlate(); record != nullptr; record = importer.GetNextPlate())
    if (!HasBoundedTexts(*static_cast<const tagBRIGHT_STAR_DATA*>(record))) std::abort();
  return 0;
}
