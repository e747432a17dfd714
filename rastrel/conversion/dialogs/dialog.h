#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "rastrel/platform/host/dialogs.h"
#include "rastrel/platform/mfc/window.h"

/// The framework's modal dialog, as far as this library needs one: the logic of a view that the
/// host makes. A derived class defines its messages and commands, and the preparations before it is
/// shown. Used on the host's thread; only PostMessage may be called on others.
class CDialog : public CWnd, public rastrel::host::DialogLogic {
 public:
  /// The resource must outlive the dialog; `parent`, which may be null, too.
  CDialog(const rastrel::host::DialogResource& resource, CWnd* parent);
  ~CDialog() override;

  /// One line of a message map.
  struct Message {
    unsigned message;  ///< number of a posted message, or CommandMessage
    int control;       ///< for CommandMessage: which control
    /// Called on the message; its result is the message's answer.
    std::intptr_t (*handler)(CDialog& dialog, std::uintptr_t wParam, std::intptr_t lParam);
  };
  /// The number of a command's message.
  static constexpr unsigned CommandMessage = 0x0111;
  /// The number of the message by which an edit or a color picker reports a change of the user's;
  /// its `wParam` is the control.
  static constexpr unsigned EditChangedMessage = 0x7E8;

  /// Shows the dialog until it has ended. Returns the argument of EndDialog, or CancelCommand if it
  /// can't be shown. A view that returns before the dialog has ended, or throws, has given it up:
  /// the dialog is cancelled, and the exception goes on to the caller. Posted messages that nobody
  /// took are gone afterwards, so the dialog may be shown again.
  virtual int DoModal();
  /// Ends the dialog; the first call counts.
  void EndDialog(int result);
  /// Acts on a message at once and returns its answer; 0 for one that is not in the map. OkCommand
  /// and CancelCommand, if they are not in the map, go to OnOK and OnCancel.
  std::intptr_t SendMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam);

  /// The messages and commands that the dialog acts on.
  [[nodiscard]] virtual std::span<const Message> GetMessageMap() const;
  /// Moves values between the dialog and its controls. Does nothing here.
  virtual void DoDataExchange(bool fromControls);
  /// Prepares the dialog before it is shown: exchanges data. Always true. Not called on a dialog
  /// that its view has cancelled already.
  virtual bool OnInitDialog();
  /// The user agreed, with values that DoDataExchange can take from the controls. Ends the dialog
  /// with OkCommand.
  virtual void OnOK();
  /// The user gave the dialog up. Ends it with CancelCommand.
  virtual void OnCancel();
  /// The dialog has ended and is about to leave DoModal, on every road out of it. A derived class
  /// ends here whatever still works for the dialog. Must not throw. Does nothing here.
  virtual void OnLeave() noexcept;

  [[nodiscard]] const rastrel::host::DialogResource& GetResource() const override;
  [[nodiscard]] CWnd* GetParent() const override { return m_pParent; }
  [[nodiscard]] HANDLE GetPostedHandle() const override { return GetMessageHandle(); }
  std::size_t HandleMessages() override;
  void Command(int control) override;
  [[nodiscard]] bool HasEnded() const override { return m_Ended; }
  [[nodiscard]] bool MayEndByItself() const override { return false; }
  /// Sends the change on: EditChangedMessage for an edit or a color picker, the control's command
  /// for a radio button, a check box or a combo box. Nothing for other controls, nor in a dialog
  /// that has ended.
  void ControlChanged(int control) override;

 protected:
  /// The controls of the view; nothing while the dialog is not on show.
  void SetText(int control, const std::wstring& text);
  void SetRange(int control, int lowest, int highest);
  void SetPosition(int control, int position);
  void SetValue(int control, const rastrel::host::ControlValue& value);
  void SetItems(int control, std::span<const std::wstring> items);
  void SetEnabled(int control, bool enabled);
  void SetVisible(int control, bool visible);
  /// The value on show; none while the dialog is not on show, or if the view has none.
  [[nodiscard]] rastrel::host::ControlValue GetValue(int control) const;
  /// Shows the dialog's fixed texts in the user's language (the host's TranslateDialog).
  void TranslateDialog();

 private:
  void Show();
  void Leave() noexcept;

  const rastrel::host::DialogResource& m_Resource;
  CWnd* m_pParent;
  std::unique_ptr<rastrel::host::DialogView> m_pView;
  int m_Result = rastrel::host::CancelCommand;
  bool m_Ended = false;
};
