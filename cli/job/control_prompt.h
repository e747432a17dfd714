#pragma once

#include <optional>
#include <span>
#include <string>

#include "rastrel/platform/host/dialogs.h"
#include "rastrel/platform/os/handle.h"
#include "rastrel/platform/standalone/control_states.h"

namespace rastrel::cli {

/// Whether a dialog has controls that a person fills in.
[[nodiscard]] bool HasInputControls(const host::DialogLogic& dialog);

/// Asks for the controls of a dialog line by line on a terminal, from top to bottom, and presses
/// OK. Each line shows the present value in brackets, which an empty line keeps; an invalid one is
/// asked again; hidden and disabled controls are passed over. One of several is chosen by its
/// number, and a color is typed as the command's options take it ("rgb:255,0,0",
/// "cmyk:0,100%,100%,0"). "q", the end of the input and the stop handle cancel. Questions go to
/// standard error.
class ControlPrompt : public host::DialogView {
 public:
  /// The dialog outlives this, and the handles too. Lines are read from `input`; a semaphore `stop`
  /// ends the wait for one, and its count stays.
  ControlPrompt(host::DialogLogic& dialog, HANDLE input, HANDLE stop);

  void SetText(int control, const std::wstring& text) override;
  void SetRange(int, int, int) override {}
  void SetPosition(int, int) override {}
  void RunModal() override;
  void SetValue(int control, const host::ControlValue& value) override;
  void SetItems(int control, std::span<const std::wstring> items) override;
  void SetEnabled(int control, bool enabled) override;
  void SetVisible(int control, bool visible) override;
  [[nodiscard]] host::ControlValue GetValue(int control) override;

  /// Whether a person cancelled, or the input ended, or was stopped.
  [[nodiscard]] bool IsCancelled() const { return m_Cancelled; }

 private:
  using State = standalone::ControlState;

  std::size_t AskFrom(std::size_t at);
  void AskNumber(const State& state);
  void AskCheck(const State& state);
  void AskItem(const State& state);
  void AskColor(const State& state);
  void AskGroup(std::span<const State> group);
  template <typename Taken>
  void AskUntil(const std::string& question, Taken taken);
  bool Enter(const State& state, const host::ControlValue& value);
  [[nodiscard]] bool IsLabel(std::size_t at) const;
  [[nodiscard]] std::string NameOf(const State& state) const;
  [[nodiscard]] std::optional<std::string> ReadLine();

  host::DialogLogic& m_Dialog;
  HANDLE m_Input;
  HANDLE m_Stop;
  standalone::ControlStates m_States;
  std::string m_Title;
  std::string m_Bytes;      // read, and not taken yet
  std::size_t m_Asked = 0;  // controls from the top that were asked for
  bool m_Running = false;
  bool m_Cancelled = false;
};

}  // namespace rastrel::cli
