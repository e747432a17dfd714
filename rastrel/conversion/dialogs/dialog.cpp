#include "rastrel/conversion/dialogs/dialog.h"

#include "rastrel/platform/host/host.h"
#include "rastrel/platform/host/translation.h"

using namespace rastrel::host;

namespace {

// Enough to keep up, few enough to leave the view's loop its turn.
constexpr std::size_t MessagesAtOnce = 64;

bool ReportsByMessage(ControlKind kind) {
  return kind == ControlKind::DecimalEdit || kind == ControlKind::IntegerEdit ||
         kind == ControlKind::ColorPicker;
}

bool ReportsByCommand(ControlKind kind) {
  return kind == ControlKind::Radio || kind == ControlKind::CheckBox ||
         kind == ControlKind::ComboBox;
}

}  // namespace

CDialog::CDialog(const DialogResource& resource, CWnd* parent)
    : m_Resource(resource), m_pParent(parent) {}

CDialog::~CDialog() = default;

int CDialog::DoModal() {
  m_Ended = false;
  m_Result = CancelCommand;
  try {
    Show();
  } catch (...) {
    Leave();
    throw;
  }
  Leave();
  return m_Result;
}

void CDialog::Show() {
  m_pView = GetHost().GetDialogViews().MakeView(*this);
  if (m_pView == nullptr) return;
  // A view may cancel within each call, from its making on.
  if (!m_Ended) OnInitDialog();
  if (!m_Ended) m_pView->RunModal();
  if (!m_Ended) Command(CancelCommand);
}

// The view goes first: it must not see a dialog that is being cleared up.
void CDialog::Leave() noexcept {
  m_pView.reset();
  m_Ended = true;
  OnLeave();
  while (TakeMessage()) {
  }
}

void CDialog::EndDialog(int result) {
  if (m_Ended) return;
  m_Result = result;
  m_Ended = true;
}

std::intptr_t CDialog::SendMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
  const auto control = message == CommandMessage ? static_cast<int>(wParam) : 0;
  for (const Message& entry : GetMessageMap())
    if (entry.message == message && entry.control == control)
      return entry.handler(*this, wParam, lParam);
  if (control == OkCommand) OnOK();
  if (control == CancelCommand) OnCancel();
  return 0;
}

std::span<const CDialog::Message> CDialog::GetMessageMap() const { return {}; }

void CDialog::DoDataExchange(bool /*fromControls*/) {}

bool CDialog::OnInitDialog() {
  DoDataExchange(false);
  return true;
}

void CDialog::OnOK() { EndDialog(OkCommand); }

void CDialog::OnCancel() { EndDialog(CancelCommand); }

void CDialog::OnLeave() noexcept {}

const DialogResource& CDialog::GetResource() const { return m_Resource; }

std::size_t CDialog::HandleMessages() {
  std::size_t count = 0;
  while (!m_Ended && count < MessagesAtOnce) {
    const auto message = TakeMessage();
    if (!message) break;
    SendMessage(message->message, message->wParam, message->lParam);
    ++count;
  }
  return count;
}

void CDialog::Command(int control) {
  if (!m_Ended) SendMessage(CommandMessage, static_cast<std::uintptr_t>(control), 0);
}

void CDialog::ControlChanged(int control) {
  if (m_Ended) return;
  for (const DialogControl& known : m_Resource.controls) {
    if (known.id != control) continue;
    if (ReportsByMessage(known.kind))
      SendMessage(EditChangedMessage, static_cast<std::uintptr_t>(control), 0);
    else if (ReportsByCommand(known.kind))
      Command(control);
    return;
  }
}

void CDialog::SetText(int control, const std::wstring& text) {
  if (m_pView) m_pView->SetText(control, text);
}

void CDialog::SetRange(int control, int lowest, int highest) {
  if (m_pView) m_pView->SetRange(control, lowest, highest);
}

void CDialog::SetPosition(int control, int position) {
  if (m_pView) m_pView->SetPosition(control, position);
}

void CDialog::SetValue(int control, const ControlValue& value) {
  if (m_pView) m_pView->SetValue(control, value);
}

void CDialog::SetItems(int control, std::span<const std::wstring> items) {
  if (m_pView) m_pView->SetItems(control, items);
}

void CDialog::SetEnabled(int control, bool enabled) {
  if (m_pView) m_pView->SetEnabled(control, enabled);
}

void CDialog::SetVisible(int control, bool visible) {
  if (m_pView) m_pView->SetVisible(control, visible);
}

ControlValue CDialog::GetValue(int control) const {
  return m_pView ? m_pView->GetValue(control) : ControlValue();
}

void CDialog::TranslateDialog() {
  SetText(TitleControl, TranslatedText(m_Resource.title));
  for (const DialogControl& control : m_Resource.controls)
    if (*control.text != L'\0') SetText(control.id, TranslatedText(control.text));
}
