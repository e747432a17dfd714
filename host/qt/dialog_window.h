#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QTimer>
#include <map>
#include <memory>
#include <string>

#include "rastrel/platform/host/dialogs.h"

class QLabel;
class QListWidget;
class QProgressBar;
class QPushButton;
class QSocketNotifier;

namespace rastrel::qt {

/// A dialog of the library as a window: its controls from top to bottom, the time that has gone by
/// where it shows progress, its buttons at the right. A list of fonts has a sample of the chosen
/// one below it. Sizes follow the font, and so the screen's scale. Escape, the
/// window's close button and the session's end cancel the dialog, through its logic: the window
/// itself closes only when the logic has ended.
class DialogWindow : public QDialog, public host::DialogView {
 public:
  explicit DialogWindow(host::DialogLogic& logic);
  ~DialogWindow() override;

  void SetText(int control, const std::wstring& text) override;
  void SetRange(int control, int lowest, int highest) override;
  void SetPosition(int control, int position) override;
  void RunModal() override;

  /// Escape comes here.
  void reject() override;

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  QWidget* MakeControl(const host::DialogControl& control);
  QWidget* MakeFonts(int control);
  void Command(int control);
  void Work();
  void ShowElapsed();
  void CloseIfOver();

  host::DialogLogic& m_Logic;
  std::map<int, QLabel*> m_Texts;
  std::map<int, QProgressBar*> m_Bars;
  std::map<int, QPushButton*> m_Buttons;
  QLabel* m_LastText = nullptr;        // the text above the control that is being made
  QListWidget* m_FirstList = nullptr;  // where the keyboard begins
  QLabel* m_Elapsed = nullptr;
  QElapsedTimer m_Clock;
  QTimer m_Second;
  QTimer m_Fallback;
};

}  // namespace rastrel::qt
