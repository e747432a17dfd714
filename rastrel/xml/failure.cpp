#include "rastrel/xml/failure.h"

#include <utility>

#include "rastrel/job/app_log.h"

namespace rastrel::xml {
namespace {

std::optional<XmlFailure>& Latest() {
  thread_local std::optional<XmlFailure> latest;
  return latest;
}

}  // namespace

std::wstring Describe(const XmlFailure& failure) {
  std::wstring text = failure.path;
  for (const int number : {failure.line, failure.column}) {
    if (number <= 0) continue;
    if (!text.empty()) text += L':';
    text += std::to_wstring(number);
  }
  if (!text.empty()) text += L": ";
  return text + failure.reason;
}

void ReportXmlFailure(XmlFailure failure) {
  CAppLog::Instance().Printf(L"[XML] %s", Describe(failure));
  Latest() = std::move(failure);
}

std::optional<XmlFailure> TakeXmlFailure() { return std::exchange(Latest(), std::nullopt); }

}  // namespace rastrel::xml
