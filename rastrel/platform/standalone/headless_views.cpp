#include "rastrel/platform/standalone/headless_views.h"

#include <array>
#include <chrono>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/shown_text.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/wait.h"

namespace rastrel::standalone {

namespace {

// Without a descriptor to wait for.
constexpr std::chrono::milliseconds PollInterval{100};
// With one: an end whose message could not be posted shows at the next look.
constexpr std::chrono::milliseconds LookInterval{1000};

}  // namespace

void HeadlessView::SetText(int, const std::wstring&) {}

void HeadlessView::SetRange(int, int, int) {}

void HeadlessView::SetPosition(int, int) {}

void HeadlessView::RunModal() {
  while (!m_Dialog.HasEnded()) {
    // In this order: the dialog's worker posts its last message before it ends.
    const bool mayEnd = m_Dialog.MayEndByItself();
    if (m_Dialog.HandleMessages() > 0) continue;
    if (!mayEnd) {
      m_Dialog.Command(host::CancelCommand);
      continue;
    }
    const std::array<HANDLE, 1> posted{m_Dialog.GetPostedHandle()};
    const bool canWait = posted[0] != INVALID_HANDLE_VALUE;
    static_cast<void>(
        os::WaitReadable(posted, os::Deadline::After(canWait ? LookInterval : PollInterval)));
  }
}

std::unique_ptr<host::DialogView> HeadlessViews::MakeView(host::DialogLogic& dialog) {
  return std::make_unique<HeadlessView>(dialog);
}

void HeadlessViews::ShowMessage(CWnd*, const std::wstring& text, const std::wstring& title) {
  os::WriteToStandardError(os::CleanLine(os::Utf8FromWide(title + L": " + text)) + "\n");
}

}  // namespace rastrel::standalone
