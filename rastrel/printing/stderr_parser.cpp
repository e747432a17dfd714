#include "rastrel/printing/stderr_parser.h"

#include <algorithm>
#include <new>

#include "rastrel/cfm/cfm2_text.h"
#include "rastrel/job/scan_number.h"

using rastrel::cfm::Trimmed;

CBaseStderrParser::~CBaseStderrParser() = default;

// Only want of memory is taken for a lost stream. Any other exception of a derived class passes.
void CBaseStderrParser::OnData(const char* bytes, unsigned count) {
  try {
    rastrel::printing::AppendPiece(m_Line, bytes, count);
    ProcessLines();
  } catch (const std::bad_alloc&) {
    Lose();
  }
}

bool CBaseStderrParser::ProcessLines() {
  constexpr const wchar_t* LineEnds = L"\r\n";
  std::size_t begin = 0;
  for (;;) {
    const std::size_t end = m_Line.find_first_of(LineEnds, std::max(begin, m_Searched));
    if (end == std::wstring::npos) break;
    if (end > begin) ParseLine(m_Line.substr(begin, std::min(end - begin, LineLimit)));
    begin = end + 1;
  }
  m_Line.erase(0, begin);
  if (m_Line.size() > LineLimit) m_Line.resize(LineLimit);
  m_Searched = m_Line.size();
  return true;
}

CStderrParser::CStderrParser(CJobMessaging* messaging, HANDLE* pipe, JT_ORIGINATOR originator)
    : CBaseStderrParser(pipe), m_Originator(originator), m_pMessaging(messaging) {}

CStderrParser::~CStderrParser() = default;

bool CStderrParser::ProcessLines() {
  m_ProgressValue = 0;
  CBaseStderrParser::ProcessLines();
  if (m_ProgressValue != 0) m_pMessaging->Progress(m_ProgressValue, m_Originator);
  return true;
}

void CStderrParser::ParseLine(const std::wstring& line) {
  if (line.empty()) return;
  switch (m_Originator) {
    case JTO_RIP: m_pMessaging->Log(L"%s%s", L"[Rip]", line.c_str()); break;
    case JTO_ODALIS: m_pMessaging->Log(L"%s%s", L"[Odalis]", line.c_str()); break;
    default: m_pMessaging->Log(L"%s", line.c_str()); break;
  }
  const std::wstring_view text = line;
  const auto restAfter = [text](std::wstring_view tag) { return text.substr(tag.size()); };
  if (text.starts_with(L"ERROR:")) {
    ParseError(std::wstring(Trimmed(restAfter(L"ERROR:"))));
  } else if (text.starts_with(L"WARNING:")) {
    m_pMessaging->Warning(std::wstring(Trimmed(restAfter(L"WARNING:"))).c_str(), m_Originator);
  } else if (text.starts_with(L"INFO:")) {
    ParseInfo(std::wstring(Trimmed(restAfter(L"INFO:"))));
  } else if (text.starts_with(L"PROGRESS:")) {
    ParseProgress(restAfter(L"PROGRESS:"));
  }
}

void CStderrParser::ParseError(const std::wstring& text) {
  if (const std::int32_t code = m_ErrorMap.Find(text); code != 0) {
    m_pMessaging->Error(static_cast<JT_ERROR>(code), m_Originator);
  } else {
    m_pMessaging->Error(text.c_str(), m_Originator);
  }
}

void CStderrParser::ParseInfo(const std::wstring& keyword) {
  if (const std::int32_t code = m_InfoMap.Find(keyword); code != 0)
    m_pMessaging->Info(static_cast<JT_INFO>(code), m_Originator);
}

void CStderrParser::ParseProgress(std::wstring_view rest) {
  const std::size_t percent = rest.find(L'%');
  if (percent == std::wstring_view::npos) return;
  const auto value = rastrel::job::ScanUnsigned<std::uint16_t>(Trimmed(rest.substr(0, percent)));
  if (value) m_ProgressValue = *value;
}
