#include <algorithm>

#include "rastrel/cfm/cfm2.h"
#include "rastrel/cfm/cfm2_instruction.h"
#include "rastrel/cfm/cfm2_text.h"
#include "rastrel/job/app_log.h"

using PrintingThread::CCFMPage;
using namespace rastrel::cfm;  // the text's pieces

namespace {

const CFM2Keyword* Find(const std::vector<CFM2Keyword>& keywords, std::wstring_view word) {
  const auto found = std::find_if(keywords.begin(), keywords.end(), [word](const CFM2Keyword& one) {
    return std::wstring_view(one.m_Keyword) == word;
  });
  return found == keywords.end() ? nullptr : &*found;
}

}  // namespace

bool CCFM2::Parse() {
  m_Pages.clear();
  bool success = true;
  bool missingEnd = false;
  const std::wstring text = WithoutComments(m_Text, m_LineDelimiter, missingEnd);
  if (missingEnd) CAppLog::Instance().Write("No comment end in CFF2");
  const std::wstring_view begin = Instruction(InstructionBegin);
  const std::wstring_view end = Instruction(InstructionEnd);
  // Both keywords are plain substrings, in any place: "Legend" ends a block too.
  for (std::size_t at = 0;;) {
    const std::size_t from = text.find(begin, at);
    if (from == std::wstring::npos) break;
    const std::size_t to = text.find(end, from);
    if (to == std::wstring::npos) break;
    at = to + end.size();
    success = ParsePage(std::wstring_view(text).substr(from, at - from)) && success;
  }
  return success && !m_Pages.empty();
}

bool CCFM2::ParsePage(std::wstring_view block) {
  auto page = std::make_unique<CCFMPage>();
  for (std::size_t at = 0; at < block.size();) {
    const std::size_t lineEnd =
        std::min(block.find(static_cast<wchar_t>(m_LineDelimiter), at), block.size());
    ParseLine(block.substr(at, lineEnd - at), *page);
    at = lineEnd + 1;
  }
  if (page->m_Directory.empty() || page->m_Title.empty() || page->m_Id.empty()) return false;
  m_Pages.push_back(std::move(page));
  return true;
}

// The table of keywords is made in the constructor (cfm2.cpp). The output engine reads the text
// with a parser of its own (children/coreodalis/cfm2_lines.cpp).
void CCFM2::ParseLine(std::wstring_view line, CCFMPage& page) const {
  const std::size_t separator = line.find(Separator);
  if (separator == std::wstring_view::npos) return;
  const std::wstring_view word = Trimmed(line.substr(0, separator));
  const std::wstring_view value = Trimmed(line.substr(separator + Separator.size()));
  const CFM2Keyword* instruction = Find(m_Instructions, word);
  if (instruction == nullptr) {
    CAppLog::Instance().Printf(L"Unknown instruction: %s, value: %s", word, value);
    return;
  }
  switch (instruction->m_Code) {
    case InstructionBegin: {
      const CFM2Keyword* type = Find(m_TicketTypes, value);
      if (type == nullptr) CAppLog::Instance().Printf(L"Unknown ticket type: %s", value);
      page.m_TicketType = type == nullptr ? PrintingThread::CFM2_REPRINT : type->m_Code;
      break;
    }
    case InstructionId: page.m_Id = std::wstring(value); break;
    case InstructionDirectory: page.SetDirectory(std::wstring(value)); break;
    case InstructionTitle: page.m_Title = std::wstring(value); break;
    default: break;  // "copies" and "end" say nothing to this reader
  }
}
