#include "rastrel/xml/failure.h"

#include <utility>

#include "rastrel/job/app_log.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::xml {
namespace {

std::optional<Failure>& Latest() {
  thread_local std::optional<Failure> latest;
  return latest;
}

}  // namespace

void ReportXmlFailure(Failure failure) {
  CAppLog::Instance().Printf(L"[XML] %s", os::WideFromUtf8(Describe(failure)));
  Latest() = std::move(failure);
}

std::optional<Failure> TakeXmlFailure() { return std::exchange(Latest(), std::nullopt); }

}  // namespace rastrel::xml
