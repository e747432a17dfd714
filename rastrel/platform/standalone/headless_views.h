#pragma once

#include "rastrel/platform/host/dialogs.h"

namespace rastrel::standalone {

/// Shows nothing: runs a dialog to the end that its work has, and cancels it once only a person
/// could end it.
class HeadlessView : public host::DialogView {
 public:
  /// The dialog is not owned.
  explicit HeadlessView(host::DialogLogic& dialog) : m_Dialog(dialog) {}
  void SetText(int control, const std::wstring& text) override;
  void SetRange(int control, int lowest, int highest) override;
  void SetPosition(int control, int position) override;
  void RunModal() override;

 private:
  host::DialogLogic& m_Dialog;
};

/// Makes them. Messages go to the standard error stream.
class HeadlessViews : public host::DialogViews {
 public:
  [[nodiscard]] std::unique_ptr<host::DialogView> MakeView(host::DialogLogic& dialog) override;
  void ShowMessage(CWnd* parent, const std::wstring& text, const std::wstring& title) override;
};

}  // namespace rastrel::standalone
