#include "rastrel/job/log_entry.h"

#include "rastrel/job/format_string.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::job {

std::string LogEntryHead(const os::LocalTime& time, std::uint32_t thread) {
  formatstringT<wchar_t> moment;
  if (time.month != 0) {
    moment.Format(L"[%02d/%02d/%04d, %02d:%02d:%02d]", time.day, time.month, time.year, time.hour,
                  time.minute, time.second);
  }
  formatstringT<wchar_t> id;
  id.Format(L"[%4u]", thread);
  return os::Utf8FromWide(moment + id);
}

}  // namespace rastrel::job
