#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QTimer>
#include <memory>
#include <vector>

#include "cutting/view/cut_scene.h"
#include "cutting/view/cut_window.h"
#include "cutting/view/knife_way.h"

class QBoxLayout;
class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QSlider;
class QTreeWidget;
class QTreeWidgetItem;

namespace rastrel::qt {

class CutCanvas;

/// Shows cut jobs: the print with the paths over it, a list of their operations, and the knife on
/// its way. Escape, Ctrl+W and the window's button close it.
class CutWindow : public QDialog {
 public:
  /// `sheets`, of which there is one at least, and their scenes outlive the window; the window
  /// shows and hides groups of the scenes.
  CutWindow(const std::vector<cutting::ShownSheet>& sheets, std::vector<cutting::CutScene>& scenes);
  ~CutWindow() override;

 private:
  QWidget* MakeSide();
  void MakeTop(QBoxLayout& column);
  void MakePlayer(QBoxLayout& column);
  QCheckBox* MakeBox(QBoxLayout& column, const QString& text, bool isOn);
  void MakeKeys();
  void ShowSheet(int sheet);
  void ShowGroups();
  void GroupToggled(QTreeWidgetItem* item);
  void MakeWay();
  void Seek(int position);
  void Play(bool isOn);
  void Advance();
  void StepBy(int strokes);
  void ShowKnife();
  void ShowChosen(std::size_t stroke);
  [[nodiscard]] cutting::CutScene& Scene() const;

  const std::vector<cutting::ShownSheet>& m_Sheets;
  std::vector<cutting::CutScene>& m_Scenes;
  int m_Sheet = 0;
  std::unique_ptr<cutting::KnifeWay> m_Way;
  double m_Length = 0;  // of the knife's way
  CutCanvas* m_Canvas = nullptr;
  QComboBox* m_SheetBox = nullptr;
  QTreeWidget* m_Groups = nullptr;
  QCheckBox* m_Print = nullptr;
  QCheckBox* m_Marks = nullptr;
  QCheckBox* m_Travel = nullptr;
  QPushButton* m_Measure = nullptr;
  QPushButton* m_PlayButton = nullptr;
  QSlider* m_Slider = nullptr;
  QComboBox* m_Speed = nullptr;
  QLabel* m_KnifeText = nullptr;
  QLabel* m_Status = nullptr;
  QLabel* m_ScaleText = nullptr;
  QTimer m_Timer;
  QElapsedTimer m_Clock;
};

}  // namespace rastrel::qt
