#include "cli/job/job_event.h"

#include <array>
#include <charconv>

#include "rastrel/platform/host/translation.h"
#include "rastrel/platform/os/shown_text.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/whitespace.h"

namespace rastrel::cli {
namespace {

bool TakePrefix(std::string_view& text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

bool ReadPage(std::string_view text, JobEvent& event) {
  int page = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), page);
  if (error != std::errc() || end != text.data() + text.size() || page < 1) return false;
  event.kind = JobEventKind::Page;
  event.page = page;
  return true;
}

}  // namespace

const char* OriginatorWord(JT_ORIGINATOR originator) {
  switch (originator) {
    case JTO_RIP: return "rip";
    case JTO_ODALIS: return "odalis";
    case JTO_SYSTEM: break;
  }
  return "system";
}

const char* OriginatorName(JT_ORIGINATOR originator) {
  switch (originator) {
    case JTO_RIP: return "RIP";
    case JTO_ODALIS: return "output engine";
    case JTO_SYSTEM: break;
  }
  return "job";
}

std::string ShownText(const std::wstring& marked) {
  constexpr std::size_t limit = TStringLimit;
  if (marked.size() >= limit) return os::CleanLine(os::Utf8FromWide(marked));
  std::array<wchar_t, limit> text{};
  marked.copy(text.data(), marked.size());
  TString(marked.c_str(), text.data(), TStringLimit);
  text.back() = L'\0';
  return os::CleanLine(os::Utf8FromWide(text.data()));
}

std::optional<JobEvent> EventOfLogLine(std::wstring_view line) {
  const std::string narrow = os::Utf8FromWide(line);
  std::string_view text = narrow;
  JobEvent event;
  if (TakePrefix(text, "[Rip]")) {
    event.originator = JTO_RIP;
  } else if (TakePrefix(text, "[Odalis]")) {
    event.originator = JTO_ODALIS;
  }
  if (os::Trim(text).empty()) return std::nullopt;
  if (event.originator != JTO_SYSTEM) {
    for (const char* report : {"ERROR:", "WARNING:", "INFO:", "PROGRESS:"})
      if (text.starts_with(report)) return std::nullopt;
    std::string_view value = text;
    if (TakePrefix(value, "PAGE:") && ReadPage(os::Trim(value), event)) return event;
    value = text;
    if (event.originator == JTO_ODALIS && TakePrefix(value, "OUTPUT:") &&
        !os::Trim(value).empty()) {
      event.kind = JobEventKind::Output;
      event.path = os::Trim(value);
      return event;
    }
  }
  event.text = os::CleanLine(text);
  return event;
}

}  // namespace rastrel::cli
