// Shows the progress dialog as a window over a file, as a host with windows does, and prints on
// standard output how it ended: the result, whether it was cancelled, and how many threads and
// descriptors are there afterwards more than before.

#include <cstdio>
#include <filesystem>
#include <string>

#include "rastrel/conversion/dialogs/q_progress_dlg.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/standalone/standalone_host.h"
#include "rastrel/platform/standalone/window_views.h"

namespace {

class WindowHost : public rastrel::standalone::StandaloneHost {
 public:
  explicit WindowHost(rastrel::host::DialogViews& views) : m_Views(views) {}
  [[nodiscard]] rastrel::host::DialogViews& GetDialogViews() override { return m_Views; }

 private:
  rastrel::host::DialogViews& m_Views;
};

long EntriesOf(const char* directory) {
  long count = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(directory)) ++count;
  return count;
}

}  // namespace

int main(int count, char** words) {
  if (count != 2) return 2;
  const auto views = rastrel::host::LoadWindowViews();
  if (!views) {
    std::printf("no window: %s\n", Describe(views.Error()).c_str());
    return 1;
  }
  WindowHost host(**views);
  rastrel::host::SetHost(&host);
  const auto run = [&] {
    CQProgressDlg dialog(rastrel::os::FromNative(words[1]).c_str(), nullptr);
    const int result = dialog.DoModal();
    return std::pair(result, dialog.IsCancelled());
  };
  // The toolkit keeps objects that the first window makes, so the counts begin after it.
  auto [result, cancelled] = run();
  const long threads = EntriesOf("/proc/self/task");
  const long descriptors = EntriesOf("/proc/self/fd");
  std::printf("result %d cancelled %d\n", result, cancelled ? 1 : 0);
  std::fflush(stdout);
  std::tie(result, cancelled) = run();
  std::printf("result %d cancelled %d threads %+ld descriptors %+ld\n", result, cancelled ? 1 : 0,
              EntriesOf("/proc/self/task") - threads, EntriesOf("/proc/self/fd") - descriptors);
  std::fflush(stdout);
  rastrel::host::SetHost(nullptr);
  return 0;
}
