// A host program in small: prints one file through a job ticket, shows how far it is, and gives up
// after a time limit.
//
//   print_ticket FILE [SECONDS]
//
// Build it against an installed library with
//
//   c++ -std=c++20 print_ticket.cpp $(pkg-config --cflags --libs rastrel)

#include <rastrel/rastrel.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <mutex>

namespace {

// A ticket that tells its host when the job has ended, whichever way. The library calls Info on the
// printing thread.
class WatchedTicket : public CJobTicket {
 public:
  // The thread calls the operation below, so it must be over before this part of the object is
  // gone.
  ~WatchedTicket() override { EndPrint(); }

  using CJobTicket::Error;

  void Info(JT_INFO code, JT_ORIGINATOR originator) override {
    CJobTicket::Info(code, originator);
    if (code != JTI_PROCESSING_COMPLETED && code != JTI_PRINTING_ABORTED) return;
    const std::lock_guard<std::mutex> guard(m_Mutex);
    m_Ended = true;
    m_Changed.notify_all();
  }

  // True if the job ended within the time.
  bool WaitFor(std::chrono::milliseconds time) {
    std::unique_lock<std::mutex> guard(m_Mutex);
    return m_Changed.wait_for(guard, time, [this] { return m_Ended; });
  }

 private:
  std::mutex m_Mutex;
  std::condition_variable m_Changed;
  bool m_Ended = false;
};

// The job log: one line a call, from any of the library's threads. Here it goes nowhere.
void IgnoreLogLine(const wchar_t* /*line*/) {}

void ShowProgress(const CJobTicket& ticket) {
  CString sentence;
  const int percent = ticket.GetProgress(JTO_SYSTEM, &sentence);
  std::wcout << percent << L" %  " << sentence << std::endl;
}

// Waits for the end, or aborts the job when the time is over.
void Watch(WatchedTicket& ticket, std::chrono::milliseconds limit) {
  using namespace std::chrono_literals;
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!ticket.WaitFor(200ms)) {
    ShowProgress(ticket);
    if (std::chrono::steady_clock::now() < end) continue;
    std::wcout << L"taking too long: aborting" << std::endl;
    ticket.GetPrintThread()->Abort();
    break;
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::cerr << "usage: print_ticket FILE [SECONDS]\n";
    return 2;
  }
  const double seconds = argc > 2 ? std::atof(argv[2]) : 300.0;
  const std::filesystem::path file = std::filesystem::absolute(argv[1]);

  WatchedTicket ticket;
  ticket.m_JobName = L"Example";
  ticket.m_JobFile.Directory = file.parent_path().wstring() + L"/";
  ticket.m_JobFile.FileName = file.filename().wstring();
  ticket.m_JobData.PrinterName = L"KVI Tiff Screen Preview";
  ticket.m_JobData.PrintModeFolder = L"TIFF";
  ticket.m_JobData.PrintModeName = L"tiff default.ps";
  ticket.OpenLog(IgnoreLogLine);

  if (ticket.PrintJob()) {
    Watch(ticket, std::chrono::milliseconds(static_cast<long>(seconds * 1000.0)));
    ticket.EndPrint();  // waits for the thread; the children are gone after it
  }

  CString text;
  if (ticket.GetErrorText(text) != JTE_NONE || ticket.m_Status != JS_ACTIVE) {
    std::wcout << L"not printed: " << text << std::endl;
    return 1;
  }
  std::wcout << L"printed" << std::endl;
  return 0;
}
