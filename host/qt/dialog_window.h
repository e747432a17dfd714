#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QTimer>
#include <map>
#include <memory>
#include <string>

#include "host/qt/input_control.h"
#include "rastrel/platform/host/dialogs.h"

class QGridLayout;
class QLabel;
class QListWidget;
class QProgressBar;
class QPushButton;
class QSocketNotifier;

namespace rastrel::qt {

class PreviewPane;

/// A dialog of the library as a window: its controls from top to bottom, the time that has gone by
/// where it shows progress, its buttons at the right. A label is at the left of its field, a radio
/// button at the left of the field that belongs to it, and a list of fonts has a sample of the
/// chosen one below it. Sizes follow the font, and so the screen's scale. Escape, the window's
/// close button and the session's end cancel the dialog, through its logic: the window itself
/// closes only when the logic has ended.
class DialogWindow : public QDialog, public host::DialogView {
 public:
  /// `preview`, which may be null, draws the picture beside the controls. It outlives the window,
  /// as the logic does.
  DialogWindow(host::DialogLogic& logic, host::DialogPreview* preview);
  ~DialogWindow() override;

  void SetText(int control, const std::wstring& text) override;
  void SetRange(int control, int lowest, int highest) override;
  void SetPosition(int control, int position) override;
  void RunModal() override;
  void SetValue(int control, const host::ControlValue& value) override;
  void SetItems(int control, std::span<const std::wstring> items) override;
  void SetEnabled(int control, bool enabled) override;
  void SetVisible(int control, bool visible) override;
  [[nodiscard]] host::ControlValue GetValue(int control) override;

  /// Escape comes here.
  void reject() override;

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void PlaceControls(QGridLayout& grid);
  std::size_t PlaceGroup(QGridLayout& grid, std::size_t at);
  void PlaceControl(QGridLayout& grid, const host::DialogControl& control, QWidget* widget);
  QWidget* MakeControl(const host::DialogControl& control);
  QWidget* MakeLabel(const host::DialogControl& control);
  QWidget* MakeButton(const host::DialogControl& control);
  QWidget* MakeInput(const host::DialogControl& control);
  QWidget* MakeFonts(int control);
  [[nodiscard]] bool HasText(int control) const;
  void Command(int control);
  void Change(int control);
  void Work();
  void ShowElapsed();
  void CloseIfOver();

  host::DialogLogic& m_Logic;
  std::map<int, QWidget*> m_Widgets;  // of every control
  std::map<int, QLabel*> m_Texts;
  std::map<int, QProgressBar*> m_Bars;
  std::map<int, QPushButton*> m_Buttons;
  std::map<int, std::unique_ptr<InputControl>> m_Inputs;
  std::map<int, int> m_Named;          // the field that is named by a label or a radio button
  QLabel* m_LastText = nullptr;        // the text above the control that is being made
  QListWidget* m_FirstList = nullptr;  // where the keyboard begins
  PreviewPane* m_Preview = nullptr;
  QLabel* m_Elapsed = nullptr;
  QElapsedTimer m_Clock;
  QTimer m_Second;
  QTimer m_Fallback;
};

}  // namespace rastrel::qt
