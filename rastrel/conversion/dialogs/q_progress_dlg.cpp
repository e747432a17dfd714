#include "rastrel/conversion/dialogs/q_progress_dlg.h"

#include <array>

#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/host/translation.h"
#include "rastrel/platform/os/file.h"

using namespace rastrel::host;

namespace {

constexpr std::array<DialogControl, 3> Controls{{
    {CQProgressDlg::StageText, ControlKind::Text, L""},
    {CQProgressDlg::ProgressBar, ControlKind::Progress, L""},
    {CQProgressDlg::CancelButton, ControlKind::Button, L"(*v*)Cancel"},
}};
constexpr DialogResource Resource{CQProgressDlg::ResourceId, L"(*v*)Processing", Controls};

constexpr int LowestPercentage = 0;
constexpr int HighestPercentage = 100;

const wchar_t* TextOf(JT_INFO code) {
  switch (code) {
    case JTI_CLQ_SUCCESS: return L"(*v*)Done";
    case JTI_INITIALISING: return L"(*v*)Initializing";
    case JTI_INTERPRETING: return L"(*v*)Interpreting";
    case JTI_CONVERTING: return L"(*v*)Converting";
    case JTI_FLUSHING: return L"(*v*)Flushing";
    default: return nullptr;
  }
}

// Whether the dialog may end by it.
bool IsEnd(unsigned message, std::intptr_t lParam) {
  return message == CQProgressDlg::WorkEndedMessage || message == CDialog::CommandMessage ||
         (message == CQProgressDlg::StateMessage &&
          (lParam == JTI_CLQ_SUCCESS || lParam == JTI_CLQ_FAILURE));
}

}  // namespace

CQProgressDlg::CQProgressDlg(const wchar_t* file, CWnd* parent)
    : CDialog(Resource, parent), m_File(file) {
  const std::wstring& executable = CExePaths::Instance().m_QueueExe;
  if (rastrel::os::Exists(executable)) {
    m_pQueue = std::make_unique<CCmdLineQ>(executable);
  } else {
    GetHost().GetDialogViews().ShowMessage(parent, TranslatedText(L"(*v*)RIP executable missing"),
                                           TranslatedText(L"(*v*)Separation"));
  }
}

CQProgressDlg::~CQProgressDlg() {
  // While messages can still be posted to this.
  m_pQueue.reset();
}

bool CQProgressDlg::PostMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
  const std::size_t limit = IsEnd(message, lParam) ? 2 * WaitingLimit : WaitingLimit;
  return CountMessages() < limit && CDialog::PostMessage(message, wParam, lParam);
}

std::span<const CDialog::Message> CQProgressDlg::GetMessageMap() const {
  using Dialog = CQProgressDlg;
  static constexpr std::array<Message, 7> Map{{
      {StateMessage, 0,
       [](CDialog& dialog, std::uintptr_t, std::intptr_t code) {
         return static_cast<Dialog&>(dialog).OnState(static_cast<JT_INFO>(code));
       }},
      {ProgressMessage, 0,
       [](CDialog& dialog, std::uintptr_t, std::intptr_t percent) {
         return static_cast<Dialog&>(dialog).OnProgress(percent);
       }},
      {WorkEndedMessage, 0,
       [](CDialog& dialog, std::uintptr_t, std::intptr_t) {
         return static_cast<Dialog&>(dialog).OnWorkEnded();
       }},
      {OtherMessage, 0, [](CDialog&, std::uintptr_t, std::intptr_t) { return std::intptr_t{1}; }},
      {CommandMessage, CancelButton,
       [](CDialog& dialog, std::uintptr_t, std::intptr_t) {
         return static_cast<Dialog&>(dialog).OnCancelButton();
       }},
      {CommandMessage, CancelCommand,
       [](CDialog& dialog, std::uintptr_t, std::intptr_t) {
         return static_cast<Dialog&>(dialog).OnCancelButton();
       }},
      // There is nothing to agree to.
      {CommandMessage, OkCommand,
       [](CDialog&, std::uintptr_t, std::intptr_t) { return std::intptr_t{0}; }},
  }};
  return Map;
}

void CQProgressDlg::DoDataExchange(bool fromControls) { CDialog::DoDataExchange(fromControls); }

bool CQProgressDlg::OnInitDialog() {
  m_bCancelled = false;
  m_Pending = 0;
  CDialog::OnInitDialog();
  SetRange(ProgressBar, LowestPercentage, HighestPercentage);
  SetPosition(ProgressBar, LowestPercentage);
  // A view may have cancelled in each of these calls.
  if (m_pQueue && !HasEnded()) m_bUnderWay = m_pQueue->StartFor(*this, m_File.c_str());
  TranslateDialog();
  return true;
}

void CQProgressDlg::OnLeave() noexcept {
  if (m_bUnderWay) m_bCancelled = true;
  AbortJob();
}

void CQProgressDlg::AbortJob() {
  if (m_pQueue) m_pQueue->Abort();
  m_bUnderWay = false;
}

// Without memory for the message of the job's end nothing ends the dialog any more.
bool CQProgressDlg::MayEndByItself() const { return m_bUnderWay && !m_pQueue->IsEndLost(); }

std::intptr_t CQProgressDlg::OnState(JT_INFO code) {
  if (const wchar_t* text = TextOf(code)) SetText(StageText, TranslatedText(text));
  if (code == JTI_CLQ_SUCCESS) EndAfterJob(OkCommand);
  if (code == JTI_CLQ_FAILURE) EndAfterJob(CancelCommand);
  return 0;
}

std::intptr_t CQProgressDlg::OnProgress(std::intptr_t percent) {
  SetPosition(ProgressBar, static_cast<int>(percent));
  return 0;
}

std::intptr_t CQProgressDlg::OnWorkEnded() {
  m_bUnderWay = false;
  if (m_Pending != 0) EndAfterJob(m_Pending);
  return 1;
}

// Joins the job and ends the dialog. A program that has reported its end may take its time about
// it; the dialog goes on taking messages meanwhile, so that it can be cancelled even then.
void CQProgressDlg::EndAfterJob(int result) {
  if (m_Pending == 0) m_Pending = result;
  if (m_bUnderWay) return;
  if (m_pQueue) m_pQueue->Join();
  EndDialog(m_Pending);
}

std::intptr_t CQProgressDlg::OnCancelButton() {
  m_bCancelled = true;
  AbortJob();
  EndDialog(CancelCommand);
  return 0;
}
