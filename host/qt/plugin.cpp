// The component's two exported functions, and the views that the first returns.

#include <QApplication>
#include <QMessageBox>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "cutting/view/cut_scene.h"
#include "cutting/view/cut_window.h"
#include "host/qt/cut_window.h"
#include "host/qt/dialog_window.h"
#include "host/qt/display.h"
#include "rastrel/platform/standalone/window_views.h"

namespace rastrel::qt {
namespace {

// A program with windows of its own has an application already; any other gets one.
void NeedApplication() {
  if (QCoreApplication::instance() != nullptr) return;
  static int count = 1;
  static char name[] = "rastrel";
  static char* arguments[] = {name, nullptr};
  // It lives till the process ends: its end at that time would come after its display's.
  static auto* const application = new QApplication(count, arguments);
  application->setQuitOnLastWindowClosed(false);
}

class WindowViews : public host::DialogViews {
 public:
  [[nodiscard]] std::unique_ptr<host::DialogView> MakeView(host::DialogLogic& dialog) override {
    const auto preview = m_Previews.find(dialog.GetResource().id);
    return std::make_unique<DialogWindow>(dialog,
                                          preview != m_Previews.end() ? preview->second : nullptr);
  }
  void ShowMessage(CWnd* /*parent*/, const std::wstring& text, const std::wstring& title) override {
    QMessageBox box(QMessageBox::Warning, QString::fromStdWString(title),
                    QString::fromStdWString(text), QMessageBox::Ok);
    box.setTextFormat(Qt::PlainText);
    box.exec();
  }
  [[nodiscard]] bool CanAsk() override { return true; }
  void SetPreview(int dialog, host::DialogPreview* preview) override {
    m_Previews[dialog] = preview;
  }

 private:
  std::map<int, host::DialogPreview*> m_Previews;  // by the dialogs' identifiers
};

}  // namespace
}  // namespace rastrel::qt

extern "C" __attribute__((visibility("default"))) rastrel::host::DialogViews*
RastrelMakeWindowViews(int version, const char** reason) {
  static std::string why;
  const auto usable = version == rastrel::host::WindowViewsVersion
                          ? rastrel::qt::CheckDisplay()
                          : rastrel::FailureOf("rastrel-window.so is of another version");
  if (!usable) {
    why = usable.Error().why;
    *reason = why.c_str();
    return nullptr;
  }
  rastrel::qt::NeedApplication();
  static rastrel::qt::WindowViews views;
  return &views;
}

extern "C" __attribute__((visibility("default"))) bool RastrelShowCutWindow(
    int version, const std::vector<rastrel::cutting::ShownSheet>& sheets, const char** reason) {
  static std::string why;
  const auto refuse = [reason](const rastrel::Failure& failure) {
    why = failure.why;
    *reason = why.c_str();
    return false;
  };
  if (version != rastrel::cutting::CutWindowVersion)
    return refuse(rastrel::FailureOf("rastrel-window.so is of another version"));
  if (const auto usable = rastrel::qt::CheckDisplay(); !usable) return refuse(usable.Error());
  if (sheets.empty()) return true;
  std::vector<rastrel::cutting::CutScene> scenes;
  for (const rastrel::cutting::ShownSheet& sheet : sheets) {
    auto scene = rastrel::cutting::CutScene::Of(sheet.job);
    if (!scene) return refuse(scene.Error());
    scenes.push_back(*std::move(scene));
  }
  rastrel::qt::NeedApplication();
  rastrel::qt::CutWindow(sheets, scenes).exec();
  return true;
}
