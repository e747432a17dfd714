#include "cli/converting/queue_diagnosis.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/installation/installation.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

constexpr std::uint64_t MaximumOfLog = std::uint64_t{64} << 20;

constexpr std::size_t MaximumWarnings = 1000;

constexpr std::string_view ErrorMark = "]ERROR:";
constexpr std::string_view WarningMark = "]WARNING:";
constexpr std::string_view RemarkMark = "][CLQ]";

// Whether the mark ends the head of a log entry: "[04/02/2026, 09:08:07][ 512]". A message of the
// program may hold the mark, too.
bool EndsHead(std::string_view before) {
  const auto numberEnd = before.find_last_not_of("0123456789");
  if (numberEnd == before.npos || numberEnd + 1 == before.size()) return false;
  const auto open = before.find_last_not_of(' ', numberEnd);
  return open != before.npos && open > 0 && before[open] == '[' && before[open - 1] == ']';
}

// Whether an entry's head begins here. Brackets of a message are no head.
bool BeginsHead(std::string_view text) {
  constexpr std::string_view Form = "[00/00/0000, 00:00:00][";
  if (text.size() < Form.size()) return false;
  return std::ranges::equal(text.substr(0, Form.size()), Form, [](char byte, char form) {
    return form == '0' ? byte >= '0' && byte <= '9' : byte == form;
  });
}

// The end of the entry whose text begins there: its line end, which the ticket gives to each line
// of the program, or the next entry, since the measuring gives none.
std::size_t EndOfEntry(std::string_view log, std::size_t begin) {
  const std::size_t lineEnd = std::min(log.find_first_of("\r\n", begin), log.size());
  for (std::size_t at = log.find('[', begin); at < lineEnd; at = log.find('[', at + 1))
    if (BeginsHead(log.substr(at))) return at;
  return lineEnd;
}

std::string ReadLog() {
  const std::string name =
      RipDirectory() + "/Rastrel-" + std::to_string(os::CurrentProcessId()) + ".log";
  return os::ReadWholeFile(os::FromNative(name), MaximumOfLog).ValueOr({});
}

// The texts of all entries that begin with the mark, in order; an empty one is left out.
std::vector<std::string> MessagesAt(std::string_view mark, std::string_view log) {
  std::vector<std::string> messages;
  for (std::size_t at = log.find(mark); at != log.npos; at = log.find(mark, at + 1)) {
    if (!EndsHead(log.substr(0, at))) continue;
    const std::size_t end = EndOfEntry(log, at + mark.size());
    const std::size_t begin = log.find_first_not_of(" \t", at + mark.size());
    if (begin < end) messages.emplace_back(log.substr(begin, end - begin));
  }
  return messages;
}

// The text after a keyword at the line's beginning; empty if the line begins otherwise.
std::string TextAfter(std::wstring_view keyword, std::wstring_view line) {
  if (!line.starts_with(keyword)) return {};
  line.remove_prefix(keyword.size());
  line.remove_prefix(std::min(line.find_first_not_of(L" \t"), line.size()));
  return os::Utf8FromWide(std::wstring(line.substr(0, line.find_first_of(L"\r\n"))));
}

}  // namespace

Expected<void> CheckQueueProgram() {
  const std::wstring& program = CExePaths::Instance().m_QueueExe;
  if (os::Exists(program)) return {};
  return FailureOf("the queue program is missing: '" + os::ToNative(program) +
                   "'; `rastrel doctor` tells more");
}

std::string LastErrorOfQueue() {
  const std::string text = ReadLog();
  const auto errors = MessagesAt(ErrorMark, text);
  return errors.empty() ? std::string() : errors.back();
}

std::string LastRemarkOfLibrary() {
  const auto remarks = MessagesAt(RemarkMark, ReadLog());
  return remarks.empty() ? std::string() : remarks.back();
}

std::vector<std::string> QueueWarnings::Take() {
  const std::string text = ReadLog();
  const std::size_t from = std::min(m_Taken, text.size());
  m_Taken = text.size();
  std::vector<std::string> warnings;
  for (std::string& warning : MessagesAt(WarningMark, std::string_view(text).substr(from)))
    if (std::ranges::find(warnings, warning) == warnings.end())
      warnings.push_back(std::move(warning));
  return warnings;
}

void QueueMessages::Add(std::wstring_view line) {
  if (std::string error = TextAfter(L"ERROR:", line); !error.empty())
    m_LastError = std::move(error);
  std::string warning = TextAfter(L"WARNING:", line);
  if (warning.empty() || m_Warnings.size() >= MaximumWarnings) return;
  if (std::ranges::find(m_Warnings, warning) == m_Warnings.end())
    m_Warnings.push_back(std::move(warning));
}

void WriteQueueWarnings(bool json) {
  for (const std::string& warning : QueueWarnings().Take()) {
    if (json) {
      JsonLine("warning").Add("text", warning).Write();
    } else {
      WriteErrorLine("warning: " + warning);
    }
  }
}

}  // namespace rastrel::cli
