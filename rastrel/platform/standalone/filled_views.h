#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "rastrel/platform/host/dialogs.h"
#include "rastrel/platform/standalone/control_states.h"

namespace rastrel::standalone {

/// A value for one control of a dialog.
struct FilledValue {
  int control;
  host::ControlValue value;
};

/// Fills in one dialog in place of a person, and presses OK. All other dialogs, a progress dialog
/// for example, and messages go to other views.
///
/// The values are entered in their order, each like a change of a person's, so that the dialog
/// enables and hides its controls meanwhile: a radio button comes before the picker that it
/// enables. Controls without a value keep the one that the dialog set. If the dialog can't take a
/// value (ControlStates::CanTake), it is cancelled, and GetRefused says which.
class FilledViews : public host::DialogViews {
 public:
  /// Makes the values from the dialog's own start values, in the dialog's units. Called once each
  /// time that the dialog is shown.
  using Fill = std::function<std::vector<FilledValue>(const ControlStates& shown)>;

  /// `dialog` is the identifier of the dialog's resource. The other views must outlive this.
  FilledViews(int dialog, Fill fill, host::DialogViews& others);
  /// With values that depend on nothing.
  FilledViews(int dialog, std::vector<FilledValue> values, host::DialogViews& others);

  [[nodiscard]] std::unique_ptr<host::DialogView> MakeView(host::DialogLogic& dialog) override;
  void ShowMessage(CWnd* parent, const std::wstring& text, const std::wstring& title) override;
  [[nodiscard]] bool CanAsk() override { return m_Others.CanAsk(); }

  /// The control whose value the dialog couldn't take when it was last shown; none if it took all.
  [[nodiscard]] std::optional<int> GetRefused() const { return m_Refused; }

 private:
  class View;

  int m_Dialog;
  Fill m_Fill;
  host::DialogViews& m_Others;
  std::optional<int> m_Refused;
};

}  // namespace rastrel::standalone
