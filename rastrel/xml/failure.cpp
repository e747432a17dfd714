#include "rastrel/xml/failure.h"

#include <utility>

#include "rastrel/job/app_log.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::xml {
namespace {

Expected<void>& Latest() {
  thread_local Expected<void> latest;
  return latest;
}

}  // namespace

void ReportXmlFailure(Failure failure) {
  CAppLog::Instance().Printf(L"[XML] %s", os::WideFromUtf8(Describe(failure)));
  Latest() = std::move(failure);
}

Expected<void> TakeXmlFailure() { return std::exchange(Latest(), {}); }

}  // namespace rastrel::xml
