// The window of cut jobs, looked at without a display.

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QImage>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QShortcut>
#include <QSlider>
#include <QTreeWidget>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/qt/cut_canvas.h"
#include "host/qt/cut_window.h"

namespace rastrel {
namespace {

using cutting::CutScene;
using cutting::LineTo;
using cutting::Operation;
using cutting::Point;

cutting::CutJob Job() {
  cutting::CutJob job{.width = 100, .height = 100, .paths = {}};
  job.paths.push_back({.contours = {{.start = {10, 50}, .segments = {LineTo({90, 50})}}},
                       .settings = {.tool = "knife", .passes = 2},
                       .rule = "contour"});
  job.paths.push_back({.contours = {{.start = {20, 20}, .segments = {LineTo({20, 80})}}},
                       .operation = Operation::Crease});
  return job;
}

// Two pixels above two: red, green; blue, yellow.
cutting::ShownPrint Print() {
  cutting::ShownPrint print{.width = 2, .height = 2, .bgra = {}, .place = {0, 0, 100, 100}};
  for (const unsigned color : {0xFF800000U, 0xFF008000U, 0xFF000080U, 0xFF808000U})
    for (unsigned shift = 0; shift < 32; shift += 8)
      print.bgra.push_back(static_cast<std::byte>(color >> shift));
  return print;
}

class CutWindowTest : public testing::Test {
 protected:
  CutWindowTest() {
    m_Sheets.push_back({.name = "sign\x1b.eps", .job = Job(), .print = Print()});
    m_Sheets.push_back({.name = "second", .job = {.width = 10, .height = 10, .paths = {}}});
    for (const auto& sheet : m_Sheets) m_Scenes.push_back(*CutScene::Of(sheet.job));
    m_Window = std::make_unique<qt::CutWindow>(m_Sheets, m_Scenes);
    m_Window->resize(1100, 760);
    m_Window->show();
    QApplication::processEvents();
  }

  template <typename Widget>
  Widget& Named(const char* name) {
    for (Widget* const widget : m_Window->findChildren<Widget*>())
      if (widget->accessibleName() == QLatin1String(name)) return *widget;
    throw std::runtime_error(std::string("no control is named ") + name);
  }
  qt::CutCanvas& Canvas() {
    return static_cast<qt::CutCanvas&>(Named<QWidget>("Picture of the job"));
  }
  QCheckBox& Box(const char* text) {
    for (QCheckBox* const box : m_Window->findChildren<QCheckBox*>())
      if (box->text() == QLatin1String(text)) return *box;
    throw std::runtime_error(text);
  }
  // The picture, once all of its tiles are there.
  QColor ColorAt(Point point) {
    QImage picture;
    for (int i = 0; i < 50; ++i) picture = Canvas().grab().toImage();
    return picture.pixelColor((Canvas().OnScreen(point) * picture.devicePixelRatio()).toPoint());
  }
  // Of the pixels around it the one that is nearest to a color: lines lie between pixels.
  int OffFrom(QColor color, Point point) {
    ColorAt(point);
    const QImage picture = Canvas().grab().toImage();
    const QPoint middle = (Canvas().OnScreen(point) * picture.devicePixelRatio()).toPoint();
    int least = 1000;
    for (int y = -1; y <= 1; ++y)
      for (int x = -1; x <= 1; ++x) {
        const QColor there = picture.pixelColor(middle + QPoint(x, y));
        least = std::min(least, std::abs(there.red() - color.red()) +
                                    std::abs(there.green() - color.green()) +
                                    std::abs(there.blue() - color.blue()));
      }
    return least;
  }
  void Click(Point point) {
    const QPointF at = Canvas().OnScreen(point);
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
      QMouseEvent event(type, at, Canvas().mapToGlobal(at), Qt::LeftButton, Qt::LeftButton, {});
      QApplication::sendEvent(&Canvas(), &event);
    }
  }
  void Press(int key) {
    QKeyEvent event(QEvent::KeyPress, key, {});
    QApplication::sendEvent(&Canvas(), &event);
  }

  std::vector<cutting::ShownSheet> m_Sheets;
  std::vector<CutScene> m_Scenes;
  std::unique_ptr<qt::CutWindow> m_Window;
};

TEST_F(CutWindowTest, the_print_lies_under_the_paths_in_their_operations_colors) {
  Box("&Numbers and arrows").setChecked(false);
  EXPECT_EQ(ColorAt({5, 95}), QColor(0x80, 0, 0));
  EXPECT_EQ(ColorAt({95, 95}), QColor(0, 0x80, 0));
  EXPECT_EQ(ColorAt({5, 5}), QColor(0, 0, 0x80));
  EXPECT_EQ(ColorAt({95, 5}), QColor(0x80, 0x80, 0));
  EXPECT_LT(OffFrom(QColor(0xff, 0, 0), {60, 50}), 150);
  EXPECT_LT(OffFrom(QColor(0, 0xa0, 0), {20, 70}), 110);
}

TEST_F(CutWindowTest, the_keys_step_a_stroke_on_and_back) {
  auto& slider = Named<QSlider>("Place of the knife on its way");
  const auto press = [&](Qt::Key key) {
    for (auto* const shortcut : m_Window->findChildren<QShortcut*>())
      if (shortcut->key() == QKeySequence(Qt::CTRL | key)) Q_EMIT shortcut->activated();
  };
  std::vector<int> places;
  for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Right, Qt::Key_Left, Qt::Key_Right}) {
    press(key);
    places.push_back(slider.value());
  }
  EXPECT_LT(places[0], places[1]);
  EXPECT_EQ(places[2], places[0]);
  EXPECT_EQ(places[3], places[1]);
}

// Counts how often a widget is drawn.
class Draws : public QObject {
 public:
  bool eventFilter(QObject* /*watched*/, QEvent* event) override {
    if (event->type() == QEvent::Paint) ++count;
    return false;
  }
  int count = 0;
};

TEST_F(CutWindowTest, the_picture_is_drawn_anew_when_a_layer_is_taken_off_or_put_on) {
  ColorAt({5, 95});
  QApplication::processEvents();
  Draws draws;
  Canvas().installEventFilter(&draws);
  qt::CutTiles::Layers layers;
  layers.print = false;
  Canvas().SetLayers(layers);
  QApplication::processEvents();
  EXPECT_GT(draws.count, 0);
}

TEST_F(CutWindowTest, without_the_print_the_page_is_white_and_around_it_is_not) {
  Box("&Print").setChecked(false);
  EXPECT_EQ(ColorAt({5, 95}), QColor(Qt::white));
  EXPECT_NE(ColorAt({-3, 95}), QColor(Qt::white));
}

TEST_F(CutWindowTest, the_list_has_operation_tool_count_and_length_and_hides_paths) {
  QTreeWidget& groups = Named<QTreeWidget>("Operations");
  ASSERT_EQ(groups.topLevelItemCount(), 2);
  QTreeWidgetItem& cut = *groups.topLevelItem(0);
  EXPECT_EQ(cut.text(0), "Cut");
  EXPECT_EQ(cut.text(1), "knife");
  EXPECT_EQ(cut.text(2), "1");
  EXPECT_EQ(cut.text(3), "160.0 mm");  // 80 mm twice
  Box("&Numbers and arrows").setChecked(false);
  Box("&Print").setChecked(false);
  cut.setCheckState(0, Qt::Unchecked);
  EXPECT_EQ(OffFrom(Qt::white, {40, 50}), 0);
  EXPECT_TRUE(Named<QLabel>("Knife").text().startsWith("1 paths"));
  cut.setCheckState(0, Qt::Checked);
  EXPECT_LT(OffFrom(Qt::red, {40, 50}), 260);
}

TEST_F(CutWindowTest, a_click_on_a_path_says_which_it_is) {
  Click({60, 50});
  EXPECT_EQ(Named<QLabel>("Status").text(),
            "Path 1: Cut, 80.0 mm, 2 passes, tool knife, rule contour");
}

TEST_F(CutWindowTest, two_clicks_measure_from_path_to_path) {
  Named<QPushButton>("Measure between two points").click();
  Click({10, 50.3});  // close enough to the path's end to be on it
  Click({20, 80.3});
  // 10 across and 30 up: the root of 1000
  EXPECT_EQ(Named<QLabel>("Status").text(), "Distance 31.62 mm, across 10.00 mm, up 30.00 mm");
}

TEST_F(CutWindowTest, the_slider_moves_the_knife) {
  Named<QSlider>("Place of the knife on its way").setValue(10'000);
  EXPECT_TRUE(Named<QLabel>("Knife").text().startsWith("2 of 2: Crease"));
  EXPECT_LT(OffFrom(Qt::black, {20, 80}), 60);  // the middle of its cross
  Named<QSlider>("Place of the knife on its way").setValue(1);
  EXPECT_TRUE(Named<QLabel>("Knife").text().startsWith("1 of 2: lifted"));
}

TEST_F(CutWindowTest, playing_moves_the_knife_until_it_is_paused) {
  QPushButton& play = Named<QPushButton>("Run the knife along its way");
  const QString before = Named<QLabel>("Knife").text();
  play.click();
  for (int i = 0; i < 1000 && Named<QLabel>("Knife").text() == before; ++i)
    QApplication::processEvents(QEventLoop::WaitForMoreEvents);
  EXPECT_TRUE(Named<QLabel>("Knife").text().startsWith("1 of 2"));
  play.click();
  EXPECT_FALSE(play.isChecked());
}

TEST_F(CutWindowTest, keys_change_the_scale_and_move_the_picture) {
  const double fitted = Canvas().Scale();
  Press(Qt::Key_Plus);
  EXPECT_DOUBLE_EQ(Canvas().Scale(), fitted * 1.25);
  Press(Qt::Key_Minus);
  EXPECT_DOUBLE_EQ(Canvas().Scale(), fitted);
  const QPointF corner = Canvas().OnScreen({0, 0});
  Press(Qt::Key_Left);
  EXPECT_EQ(Canvas().OnScreen({0, 0}), corner + QPointF(60, 0));
  Press(Qt::Key_0);
  EXPECT_EQ(Canvas().OnScreen({0, 0}), corner);
}

TEST_F(CutWindowTest, the_point_under_the_pointer_stays_where_the_wheel_turns) {
  const QPointF pointer(200, 150);
  const Point before = Canvas().OnPage(pointer);
  Canvas().Zoom(3, pointer);
  const Point after = Canvas().OnPage(pointer);
  // The picture moves by whole pixels.
  EXPECT_NEAR(after.x, before.x, 0.51 / Canvas().Scale());
  EXPECT_NEAR(after.y, before.y, 0.51 / Canvas().Scale());
}

TEST_F(CutWindowTest, the_scale_has_limits) {
  for (int i = 0; i < 200; ++i) Press(Qt::Key_Plus);
  EXPECT_EQ(Canvas().Scale(), 400);
  for (int i = 0; i < 400; ++i) Press(Qt::Key_Minus);
  EXPECT_EQ(Canvas().Scale(), 1e-4);
  EXPECT_FALSE(Canvas().grab().isNull());
}

TEST_F(CutWindowTest, another_sheet_has_its_own_list_and_no_knife) {
  Named<QSlider>("Place of the knife on its way").setValue(5'000);
  Named<QComboBox>("Sheet").setCurrentIndex(1);
  EXPECT_EQ(Named<QTreeWidget>("Operations").topLevelItemCount(), 0);
  EXPECT_FALSE(Named<QSlider>("Place of the knife on its way").isEnabled());
  EXPECT_FALSE(Box("&Print").isEnabled());
  EXPECT_EQ(Named<QLabel>("Status").text(), "Page 10.0 x 10.0 mm");
  Named<QComboBox>("Sheet").setCurrentIndex(0);
  EXPECT_EQ(Named<QTreeWidget>("Operations").topLevelItemCount(), 2);
}

TEST_F(CutWindowTest, a_files_name_is_cleaned_in_the_title) {
  EXPECT_EQ(m_Window->windowTitle(), QStringLiteral("sign\uFFFD.eps - print and knife"));
}

TEST_F(CutWindowTest, each_control_has_a_name_for_a_screen_reader) {
  for (QWidget* const widget : m_Window->findChildren<QWidget*>()) {
    if (widget->focusPolicy() == Qt::NoFocus || !widget->isVisible()) continue;
    if (qobject_cast<QCheckBox*>(widget) != nullptr) continue;  // says its text
    EXPECT_FALSE(widget->accessibleName().isEmpty()) << widget->metaObject()->className();
  }
}

TEST_F(CutWindowTest, a_dark_palette_darkens_the_surroundings_and_leaves_the_page_white) {
  Box("&Print").setChecked(false);
  const int light = ColorAt({-3, 50}).lightness();
  QPalette dark;
  dark.setColor(QPalette::Window, QColor(0x20, 0x20, 0x20));
  m_Window->setPalette(dark);
  EXPECT_LT(ColorAt({-3, 50}).lightness(), light);
  EXPECT_EQ(ColorAt({5, 95}), QColor(Qt::white));
}

}  // namespace
}  // namespace rastrel

int main(int count, char** arguments) {
  setenv("QT_QPA_PLATFORM", "offscreen", 1);
  testing::InitGoogleTest(&count, arguments);
  const QApplication application(count, arguments);
  return RUN_ALL_TESTS();
}
