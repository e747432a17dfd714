#include "rastrel/platform/standalone/filled_views.h"

#include <utility>

namespace rastrel::standalone {

class FilledViews::View : public host::DialogView {
 public:
  View(FilledViews& views, host::DialogLogic& dialog)
      : m_Views(views), m_Dialog(dialog), m_States(dialog.GetResource()) {}

  void SetText(int control, const std::wstring& text) override { m_States.SetText(control, text); }
  void SetRange(int, int, int) override {}
  void SetPosition(int, int) override {}
  void SetValue(int control, const host::ControlValue& value) override {
    m_States.SetValue(control, value);
  }
  void SetItems(int control, std::span<const std::wstring> items) override {
    m_States.SetItems(control, items);
  }
  void SetEnabled(int control, bool enabled) override { m_States.SetEnabled(control, enabled); }
  void SetVisible(int control, bool visible) override { m_States.SetVisible(control, visible); }
  [[nodiscard]] host::ControlValue GetValue(int control) override {
    return m_States.GetValue(control);
  }
  void RunModal() override;

 private:
  bool Enter(const FilledValue& filled);

  FilledViews& m_Views;
  host::DialogLogic& m_Dialog;
  ControlStates m_States;
};

void FilledViews::View::RunModal() {
  m_Views.m_Refused.reset();
  for (const FilledValue& filled : m_Views.m_Fill(m_States)) {
    if (m_Dialog.HasEnded()) return;
    if (Enter(filled)) continue;
    m_Views.m_Refused = filled.control;
    return m_Dialog.Command(host::CancelCommand);
  }
  m_Dialog.HandleMessages();
  if (!m_Dialog.HasEnded()) m_Dialog.Command(host::OkCommand);
  // A dialog that stays up after OK wants something of a person.
  if (!m_Dialog.HasEnded()) m_Dialog.Command(host::CancelCommand);
}

bool FilledViews::View::Enter(const FilledValue& filled) {
  if (!m_States.CanTake(filled.control, filled.value)) return false;
  if (m_States.GetValue(filled.control) == filled.value) return true;
  m_States.SetValue(filled.control, filled.value);
  m_Dialog.ControlChanged(filled.control);
  return true;
}

FilledViews::FilledViews(int dialog, Fill fill, host::DialogViews& others)
    : m_Dialog(dialog), m_Fill(std::move(fill)), m_Others(others) {}

FilledViews::FilledViews(int dialog, std::vector<FilledValue> values, host::DialogViews& others)
    : FilledViews(
          dialog, [values = std::move(values)](const ControlStates&) { return values; }, others) {}

std::unique_ptr<host::DialogView> FilledViews::MakeView(host::DialogLogic& dialog) {
  if (dialog.GetResource().id != m_Dialog) return m_Others.MakeView(dialog);
  return std::make_unique<View>(*this, dialog);
}

void FilledViews::ShowMessage(CWnd* parent, const std::wstring& text, const std::wstring& title) {
  m_Others.ShowMessage(parent, text, title);
}

}  // namespace rastrel::standalone
