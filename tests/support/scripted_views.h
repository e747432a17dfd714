#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "rastrel/platform/host/dialogs.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/wait.h"
#include "rastrel/platform/standalone/standalone_host.h"

namespace rastrel::test {

/// Views that write down all that they are to show, one line each, and act as a script says, on the
/// dialog's thread between two turns of their loop:
///   "make 1003", "text 2021 Converting", "text 0 Processing", "range 2022 0 100",
///   "position 2022 42", "run", "end", "message Separation: RIP executable missing".
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
    Face(ScriptedViews& script, host::DialogLogic& dialog) : m_Script(script), m_Dialog(dialog) {}
    void SetText(int control, const std::wstring& text) override {
      m_Script.Tell("text " + std::to_string(control) + " " + os::Utf8FromWide(text));
    }
    void SetRange(int control, int lowest, int highest) override {
      m_Script.Tell("range " + std::to_string(control) + " " + std::to_string(lowest) + " " +
                    std::to_string(highest));
    }
    void SetPosition(int control, int position) override {
      m_Script.Tell("position " + std::to_string(control) + " " + std::to_string(position));
    }
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
  };

  void Tell(std::string line) { m_Told.push_back(std::move(line)); }
  void Act(host::DialogLogic& dialog) {
    if (m_OnTurn) m_OnTurn(dialog);
    for (auto& [line, action] : m_Actions) {
      if (!action || !HasTold(line)) continue;
      std::exchange(action, nullptr)(dialog);
    }
  }
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
