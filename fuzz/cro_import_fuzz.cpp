// CRO templates of any bytes. The importer has all of a file or nothing, and its lists agree.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "rastrel/imports/cro_file_import.h"
#include "tests/support/named_document.h"
#include "tests/support/recording_host.h"

namespace {

bool IsEmpty(const CCROFileImport& importer) {
  return importer.m_PlateText.empty() && importer.m_PlateGraphics.empty() &&
         importer.m_Graphics.empty() && importer.m_TextOverrides.empty() &&
         importer.m_PlateOverrides.empty() && importer.m_DriverSettings.empty();
}

bool HasOriginOfTheTable(std::int32_t origin) { return origin >= 0 && origin <= 9; }

bool Agrees(CCROFileImport& importer) {
  for (const auto& own : importer.m_PlateOverrides)
    if (own.plate < 0 || static_cast<std::size_t>(own.plate) >= importer.m_PlateText.size())
      return false;
  for (const auto& graphic : importer.m_Graphics)
    if (!HasOriginOfTheTable(graphic->origin) || importer.GetGraphicDesc(graphic->name) == nullptr)
      return false;
  std::size_t plates = 0;
  for (const auto* lines = importer.GetFirstPlate(); lines != nullptr;
       lines = importer.GetNextPlate())
    ++plates;
  return plates == importer.m_PlateGraphics.size() && HasOriginOfTheTable(importer.m_Origin);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static rastrel::test::NamedDocument document("file.cro");
  rastrel::test::RecordingHost host;
  host.m_Calls.Limit(0);
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  CCROFileImport importer(document.Write(bytes).c_str(), nullptr);
  if (importer.m_bParsed ? !Agrees(importer) : !IsEmpty(importer)) std::abort();
  return 0;
}
