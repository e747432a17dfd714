// The names that a screen reader says for the controls of a window, and the fields that the keys of
// labels reach.

#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QStringList>
#include <array>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/qt/color_button.h"
#include "host/qt/dialog_window.h"
#include "rastrel/conversion/dialogs/ps2bmp_dlg.h"
#include "rastrel/platform/standalone/standalone_host.h"

namespace rastrel {
namespace {

// Looks at the window instead of showing it.
class LookedAt : public qt::DialogWindow {
 public:
  LookedAt(host::DialogLogic& logic, std::function<void(QDialog&)> look)
      : DialogWindow(logic, nullptr), m_Logic(logic), m_Look(std::move(look)) {}
  void RunModal() override {
    m_Look(*this);
    m_Logic.Command(host::CancelCommand);
  }

 private:
  host::DialogLogic& m_Logic;
  std::function<void(QDialog&)> m_Look;
};

class LookingHost : public standalone::StandaloneHost, public host::DialogViews {
 public:
  explicit LookingHost(std::function<void(QDialog&)> look) : m_Look(std::move(look)) {
    host::SetHost(this);
  }
  ~LookingHost() override { host::SetHost(nullptr); }
  LookingHost(const LookingHost&) = delete;
  LookingHost& operator=(const LookingHost&) = delete;

  host::DialogViews& GetDialogViews() override { return *this; }
  std::unique_ptr<host::DialogView> MakeView(host::DialogLogic& dialog) override {
    return std::make_unique<LookedAt>(dialog, m_Look);
  }
  void ShowMessage(CWnd*, const std::wstring&, const std::wstring&) override {}

 private:
  std::function<void(QDialog&)> m_Look;
};

// The conversion's dialog with one name of a color, as it is before it is shown.
void Look(const std::function<void(QDialog&)>& look) {
  const LookingHost host(look);
  PS2BmpParams params;
  params.width = params.height = 10;
  CPS2BmpDlg(params, {L"Gold"}, nullptr).DoModal();
}

TEST(WindowNames, every_field_has_the_name_of_its_label_or_radio_button) {
  QStringList numbers;
  QStringList names;
  QStringList colors;
  Look([&](QDialog& window) {
    for (const auto* box : window.findChildren<QDoubleSpinBox*>()) numbers += box->accessibleName();
    for (const auto* box : window.findChildren<QComboBox*>()) names += box->accessibleName();
    for (const auto* button : window.findChildren<QPushButton*>()) {
      if (dynamic_cast<const qt::ColorButton*>(button) != nullptr)
        colors += button->accessibleName();
    }
  });
  EXPECT_EQ(numbers.join('|').toStdString(), "Height (cm)|Width (cm)|Resolution (dpi)");
  EXPECT_EQ(names.join('|').toStdString(), "Named colour");
  EXPECT_EQ(colors.join('|').toStdString(),
            "RGB colour: R 0  G 0  B 0|CMYK colour: C 100 %  M 100 %  Y 100 %  K 100 %");
}

TEST(WindowNames, the_key_of_a_label_reaches_its_field_alone) {
  QStringList labels;
  Look([&](QDialog& window) {
    for (const auto* label : window.findChildren<QLabel*>()) {
      if (label->buddy() == nullptr) continue;
      labels += label->text();
      EXPECT_EQ(label->buddy()->accessibleName() + ":", QString(label->text()).remove('&'));
    }
  });
  EXPECT_EQ(labels.join('|').toStdString(), "&Height (cm):|&Width (cm):|&Resolution (dpi):");
}

TEST(WindowNames, no_two_controls_have_one_key) {
  QStringList keys;
  Look([&](QDialog& window) {
    for (const auto* label : window.findChildren<QLabel*>()) {
      if (label->buddy() != nullptr) keys += label->text();
    }
    for (const auto* button : window.findChildren<QAbstractButton*>()) keys += button->text();
  });
  QString letters;
  for (const QString& text : keys) {
    const qsizetype at = text.indexOf('&');
    if (at < 0) continue;
    const QChar key = text[at + 1].toLower();
    EXPECT_FALSE(letters.contains(key)) << text.toStdString();
    letters += key;
  }
  EXPECT_EQ(letters.size(), 7) << letters.toStdString();
}

TEST(WindowNames, one_radio_button_of_the_group_is_checked) {
  int checked = 0;
  int buttons = 0;
  Look([&](QDialog& window) {
    for (const auto* button : window.findChildren<QRadioButton*>()) {
      ++buttons;
      checked += button->isChecked() ? 1 : 0;
    }
  });
  EXPECT_EQ(buttons, 3);
  EXPECT_EQ(checked, 1);
}

// A dialog of a text and a bar.
class BarDialog : public host::DialogLogic {
 public:
  enum Id { Text = 10, Bar };
  [[nodiscard]] const host::DialogResource& GetResource() const override {
    static constexpr std::array<host::DialogControl, 2> controls{
        {{Text, host::ControlKind::Text, L"(*v*)Stage"}, {Bar, host::ControlKind::Progress, L""}}};
    static constexpr host::DialogResource resource{83, L"(*v*)Trial", controls};
    return resource;
  }
  [[nodiscard]] CWnd* GetParent() const override { return nullptr; }
  [[nodiscard]] HANDLE GetPostedHandle() const override { return INVALID_HANDLE_VALUE; }
  std::size_t HandleMessages() override { return 0; }
  void Command(int control) override { m_Result = control; }
  [[nodiscard]] bool HasEnded() const override { return m_Result != 0; }
  [[nodiscard]] bool MayEndByItself() const override { return false; }
  void ControlChanged(int /*control*/) override {}

 private:
  int m_Result = 0;
};

// A dialog of one list of fonts.
class FontDialog : public host::DialogLogic {
 public:
  static constexpr int List = 10;
  [[nodiscard]] const host::DialogResource& GetResource() const override {
    static constexpr std::array<host::DialogControl, 1> controls{
        {{List, host::ControlKind::Fonts, L""}}};
    static constexpr host::DialogResource resource{84, L"(*v*)Trial", controls};
    return resource;
  }
  [[nodiscard]] CWnd* GetParent() const override { return nullptr; }
  [[nodiscard]] HANDLE GetPostedHandle() const override { return INVALID_HANDLE_VALUE; }
  std::size_t HandleMessages() override { return 0; }
  void Command(int /*control*/) override {}
  [[nodiscard]] bool HasEnded() const override { return false; }
  [[nodiscard]] bool MayEndByItself() const override { return false; }
  [[nodiscard]] std::vector<std::wstring> GetEntries(int /*control*/) const override {
    return {L"Arial", L"Times"};
  }
};

TEST(WindowFonts, have_the_sample_below_their_list) {
  const LookingHost host([](QDialog&) {});
  FontDialog dialog;
  qt::DialogWindow window(dialog, nullptr);
  window.show();
  QApplication::processEvents();
  const auto* list = window.findChild<QListWidget*>();
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->count(), 2);
  const QLabel* sample = nullptr;
  for (const auto* label : window.findChildren<QLabel*>())
    if (label->text() == QLatin1String("AaBbCc 0123456")) sample = label;
  ASSERT_NE(sample, nullptr);
  EXPECT_GE(sample->geometry().top(), list->geometry().bottom());
  EXPECT_EQ(sample->width(), list->width());
}

TEST(WindowBar, has_the_range_and_place_that_the_dialog_gives_it) {
  const LookingHost host([](QDialog&) {});
  BarDialog dialog;
  qt::DialogWindow window(dialog, nullptr);
  const auto* bar = window.findChild<QProgressBar*>();
  ASSERT_NE(bar, nullptr);
  window.SetRange(BarDialog::Bar, 3, 7);
  EXPECT_EQ(bar->minimum(), 3);
  EXPECT_EQ(bar->maximum(), 7);
  window.SetPosition(BarDialog::Bar, 5);
  EXPECT_EQ(bar->value(), 5);
  window.SetPosition(BarDialog::Bar, 8);
  EXPECT_EQ(bar->value(), 7) << "never beyond its end";
  window.SetRange(BarDialog::Text, 0, 1);
  window.SetPosition(BarDialog::Text, 0);
  EXPECT_EQ(bar->maximum(), 7) << "a text has none";
}

}  // namespace
}  // namespace rastrel

int main(int count, char** words) {
  ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
  const QApplication application(count, words);
  ::testing::InitGoogleTest(&count, words);
  return RUN_ALL_TESTS();
}
