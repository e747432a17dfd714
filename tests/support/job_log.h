#pragma once

#include <mutex>
#include <string>
#include <utility>

namespace rastrel::test {

/// The lines in the job log of tickets that were opened with JobLog::Take.
class JobLog {
 public:
  /// The callback for CJobTicket::OpenLog.
  static void Take(const wchar_t* text) {
    const std::scoped_lock lock(Mutex());
    Text() += text;
  }
  /// All that came since the last call.
  static std::wstring Taken() {
    const std::scoped_lock lock(Mutex());
    return std::exchange(Text(), {});
  }

 private:
  static std::mutex& Mutex() {
    static std::mutex mutex;
    return mutex;
  }
  static std::wstring& Text() {
    static std::wstring text;
    return text;
  }
};

}  // namespace rastrel::test
