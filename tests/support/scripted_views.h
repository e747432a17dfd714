#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "rastrel/platform/host/dialogs.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/wait.h"
#include "rastrel/platform/standalone/control_states.h"
#include "rastrel/platform/standalone/standalone_host.h"

namespace rastrel::test {

/// Views that write down all that they are to show, one line each, and act as a script says, on the
/// dialog's thread between two turns of their loop:
///   "make 1003", "text 2021 Converting", "text 0 Processing", "range 2022 0 100",
///   "position 2022 42", "run", "end", "message Separation: RIP executable missing",
///   "value 2000 10", "value 2014 1", "value 2024 Gold", "value 2017 rgb 255 0 0",
///   "value 2018 cmyk 0 1 1 0", "items 2024 [Gold] [Silver]", "enabled 2017 0", "visible 2000 0".
/// Values that a script fills in are not written.
class ScriptedViews : public host::DialogViews {
 public:
  using Action = std::function<void(host::DialogLogic&)>;

  std::vector<std::string> m_Told;
  /// Actions, each at the first time that its line comes.
  std::vector<std::pair<std::string, Action>> m_Actions;
  /// Called at every turn of the loop.
  Action m_OnTurn;
  /// Whether a person is there to answer.
  bool m_CanAsk = true;
  /// No view can be had.
  bool m_Refuses = false;

  /// Presses a control when that line comes.
  void PressAt(const std::string& line, int control) {
    m_Actions.emplace_back(line, [control](host::DialogLogic& dialog) { dialog.Command(control); });
  }
  /// Fills in a control when that line comes, as a person does.
  void FillAt(const std::string& line, int control, const host::ControlValue& value) {
    m_Actions.emplace_back(
        line, [this, control, value](host::DialogLogic& dialog) { Fill(dialog, control, value); });
  }
  /// Gives a control of the dialog on show a value, and reports the change to the dialog. A value
  /// that a person couldn't enter fails the test.
  void Fill(host::DialogLogic& dialog, int control, const host::ControlValue& value) {
    ASSERT_NE(m_Shown, nullptr) << "no dialog is on show";
    ASSERT_TRUE(m_Shown->CanTake(control, value)) << "control " << control;
    m_Shown->SetValue(control, value);
    dialog.ControlChanged(control);
  }
  /// The controls of the dialog on show; null without one.
  [[nodiscard]] const standalone::ControlStates* GetShown() const { return m_Shown; }
  [[nodiscard]] bool HasTold(const std::string& line) const {
    return std::find(m_Told.begin(), m_Told.end(), line) != m_Told.end();
  }

  std::unique_ptr<host::DialogView> MakeView(host::DialogLogic& dialog) override {
    if (m_Refuses) return nullptr;
    Tell("make " + std::to_string(dialog.GetResource().id));
    return std::make_unique<Face>(*this, dialog);
  }
  void ShowMessage(CWnd*, const std::wstring& text, const std::wstring& title) override {
    Tell("message " + os::Utf8FromWide(title) + ": " + os::Utf8FromWide(text));
  }
  bool CanAsk() override { return m_CanAsk; }

 private:
  class Face : public host::DialogView {
   public:
    Face(ScriptedViews& script, host::DialogLogic& dialog)
        : m_Script(script),
          m_Dialog(dialog),
          m_States(dialog.GetResource()),
          m_Before(std::exchange(script.m_Shown, &m_States)) {}
    ~Face() override { m_Script.m_Shown = m_Before; }
    Face(const Face&) = delete;
    Face& operator=(const Face&) = delete;

    void SetText(int control, const std::wstring& text) override {
      m_Script.Tell("text " + std::to_string(control) + " " + os::Utf8FromWide(text));
      m_States.SetText(control, text);
    }
    void SetRange(int control, int lowest, int highest) override {
      m_Script.Tell("range " + std::to_string(control) + " " + std::to_string(lowest) + " " +
                    std::to_string(highest));
    }
    void SetPosition(int control, int position) override {
      m_Script.Tell("position " + std::to_string(control) + " " + std::to_string(position));
    }
    void SetValue(int control, const host::ControlValue& value) override {
      m_Script.Tell("value " + std::to_string(control) + " " + TextOf(value));
      m_States.SetValue(control, value);
    }
    void SetItems(int control, std::span<const std::wstring> items) override {
      std::string line = "items " + std::to_string(control);
      for (const std::wstring& item : items) line += " [" + os::Utf8FromWide(item) + "]";
      m_Script.Tell(line);
      m_States.SetItems(control, items);
    }
    void SetEnabled(int control, bool enabled) override {
      m_Script.Tell("enabled " + std::to_string(control) + (enabled ? " 1" : " 0"));
      m_States.SetEnabled(control, enabled);
    }
    void SetVisible(int control, bool visible) override {
      m_Script.Tell("visible " + std::to_string(control) + (visible ? " 1" : " 0"));
      m_States.SetVisible(control, visible);
    }
    host::ControlValue GetValue(int control) override { return m_States.GetValue(control); }
    void RunModal() override {
      m_Script.Tell("run");
      const auto begin = std::chrono::steady_clock::now();
      while (!m_Dialog.HasEnded()) {
        const HANDLE posted[] = {m_Dialog.GetPostedHandle()};
        static_cast<void>(
            os::WaitReadable(posted, os::Deadline::After(std::chrono::milliseconds(5))));
        m_Dialog.HandleMessages();
        m_Script.Act(m_Dialog);
        if (std::chrono::steady_clock::now() - begin > std::chrono::seconds(60)) {
          ADD_FAILURE() << "the dialog does not end";
          m_Dialog.Command(host::CancelCommand);
        }
      }
      m_Script.Tell("end");
    }

   private:
    ScriptedViews& m_Script;
    host::DialogLogic& m_Dialog;
    standalone::ControlStates m_States;
    standalone::ControlStates* m_Before;
  };

  static std::string TextOf(const host::ControlValue& value) {
    if (const auto* number = std::get_if<double>(&value)) return os::ShortestDecimal(*number);
    if (const auto* checked = std::get_if<bool>(&value)) return *checked ? "1" : "0";
    if (const auto* text = std::get_if<std::wstring>(&value)) return os::Utf8FromWide(*text);
    const auto* color = std::get_if<host::PickedColor>(&value);
    if (color == nullptr) return "none";
    const bool isRgb = color->type == host::PickerType::Rgb;
    std::string line = isRgb ? "rgb" : "cmyk";
    for (std::size_t part = 0; part < (isRgb ? 3U : 4U); ++part)
      line += " " + os::ShortestDecimal(color->components[part]);
    return line;
  }

  void Tell(std::string line) { m_Told.push_back(std::move(line)); }
  void Act(host::DialogLogic& dialog) {
    if (m_OnTurn) m_OnTurn(dialog);
    for (auto& [line, action] : m_Actions) {
      if (!action || !HasTold(line)) continue;
      std::exchange(action, nullptr)(dialog);
    }
  }

  standalone::ControlStates* m_Shown = nullptr;
};

/// The standalone host with scripted views; installed while it exists.
class ScriptedHost : public standalone::StandaloneHost {
 public:
  ScriptedHost() { host::SetHost(this); }
  ~ScriptedHost() override { host::SetHost(nullptr); }
  ScriptedHost(const ScriptedHost&) = delete;
  ScriptedHost& operator=(const ScriptedHost&) = delete;

  host::DialogViews& GetDialogViews() override { return m_Views; }

  ScriptedViews m_Views;
};

}  // namespace rastrel::test
