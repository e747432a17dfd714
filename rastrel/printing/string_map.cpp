#include "rastrel/printing/string_map.h"

#include "rastrel/job/status.h"

StringMap::~StringMap() = default;

std::int32_t StringMap::Find(std::wstring_view keyword) const {
  const auto found = m_Codes.find(keyword);
  return found == m_Codes.end() ? 0 : found->second;
}

InfoStringMap::InfoStringMap() {
  m_Codes = {{L"UNDEFINED", JTI_UNDEFINED},
             {L"INITIALISING", JTI_INITIALISING},
             {L"READY", JTI_READY},
             {L"INTERPRETING", JTI_INTERPRETING},
             {L"CONVERTING", JTI_CONVERTING},
             {L"FLUSHING", JTI_FLUSHING},
             {L"PRINTING", JTI_PRINTING},
             {L"SPOOLING", JTI_SPOOLING},
             {L"VALID_RECOVERY", JTI_VALID_RECOVERY},
             {L"CLQ_success", JTI_CLQ_SUCCESS},
             {L"CLQ_failure", JTI_CLQ_FAILURE}};
}

InfoStringMap::~InfoStringMap() = default;

ErrorStringMap::ErrorStringMap() {
  m_Codes = {{L"ERROR", JTE_UNDEFINED},
             {L"RUN_INSTALL", JTE_RUN_INSTALL},
             {L"INVALID_RECOVERY", JTE_INVALID_RECOVERY}};
}

ErrorStringMap::~ErrorStringMap() = default;
