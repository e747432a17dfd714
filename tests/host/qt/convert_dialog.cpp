// Shows the dialog of a conversion to a bitmap as a window, as a host with windows does, and prints
// which controls it enables, and its result and the values that it had at its end.
//
// usage: convert_dialog [no-bounds] [names] [preview]

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "rastrel/conversion/dialogs/ps2bmp_dlg.h"
#include "rastrel/platform/mfc/window.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/standalone/standalone_host.h"
#include "rastrel/platform/standalone/window_views.h"

namespace host = rastrel::host;

namespace {

// Writes down the dialog's calls that a person would see, and passes all on.
class WrittenView : public host::DialogView {
 public:
  explicit WrittenView(std::unique_ptr<host::DialogView> window) : m_Window(std::move(window)) {}

  void SetText(int control, const std::wstring& text) override { m_Window->SetText(control, text); }
  void SetRange(int control, int lowest, int highest) override {
    m_Window->SetRange(control, lowest, highest);
  }
  void SetPosition(int control, int position) override { m_Window->SetPosition(control, position); }
  void RunModal() override { m_Window->RunModal(); }
  void SetValue(int control, const host::ControlValue& value) override {
    m_Window->SetValue(control, value);
  }
  void SetItems(int control, std::span<const std::wstring> items) override {
    m_Window->SetItems(control, items);
  }
  void SetEnabled(int control, bool enabled) override {
    m_Window->SetEnabled(control, enabled);
    std::printf("enabled %d %d\n", control, enabled ? 1 : 0);
    std::fflush(stdout);
  }
  void SetVisible(int control, bool visible) override { m_Window->SetVisible(control, visible); }
  [[nodiscard]] host::ControlValue GetValue(int control) override {
    return m_Window->GetValue(control);
  }

 private:
  std::unique_ptr<host::DialogView> m_Window;
};

class WrittenViews : public host::DialogViews {
 public:
  explicit WrittenViews(host::DialogViews& windows) : m_Windows(windows) {}
  [[nodiscard]] std::unique_ptr<host::DialogView> MakeView(host::DialogLogic& dialog) override {
    return std::make_unique<WrittenView>(m_Windows.MakeView(dialog));
  }
  void ShowMessage(CWnd* parent, const std::wstring& text, const std::wstring& title) override {
    m_Windows.ShowMessage(parent, text, title);
  }

 private:
  host::DialogViews& m_Windows;
};

class WindowHost : public rastrel::standalone::StandaloneHost {
 public:
  explicit WindowHost(host::DialogViews& views) : m_Views(views) {}
  [[nodiscard]] host::DialogViews& GetDialogViews() override { return m_Views; }

 private:
  host::DialogViews& m_Views;
};

// A page that is white, with a border in the color of the RGB picker and a gray line below its
// middle.
class BorderPreview : public host::DialogPreview {
 public:
  void Request(host::DialogView& view, int width, int height) override {
    ++m_Requests;
    host::PreviewPicture picture{.width = width / 2, .height = height, .bgra = {}, .note = {}};
    const host::ControlValue value = view.GetValue(CPS2BmpDlg::RgbPicker);
    const auto* const color = std::get_if<host::PickedColor>(&value);
    for (int y = 0; y < picture.height; ++y) {
      for (int x = 0; x < picture.width; ++x) {
        const bool isBorder =
            std::min({x, y, picture.width - 1 - x, picture.height - 1 - y}) < 6 && color;
        for (const std::size_t part : {2U, 1U, 0U})
          picture.bgra.push_back(
              static_cast<std::byte>(isBorder ? static_cast<int>(color->components[part]) : 255));
        picture.bgra.push_back(std::byte{255});
      }
    }
    picture.note = L"The page & its cut line";
    m_Picture = std::move(picture);
    m_Posted.PostMessage(1, 0, 0);
  }
  [[nodiscard]] HANDLE GetReadyHandle() const override { return m_Posted.GetMessageHandle(); }
  [[nodiscard]] std::optional<host::PreviewPicture> Take() override {
    while (m_Posted.TakeMessage()) {
    }
    ++m_Taken;
    return std::exchange(m_Picture, std::nullopt);
  }

  int m_Requests = 0;
  int m_Taken = 0;

 private:
  CWnd m_Posted;
  std::optional<host::PreviewPicture> m_Picture;
};

}  // namespace

int main(int count, char** words) {
  const std::vector<std::string_view> options(words + 1, words + count);
  const auto has = [&options](std::string_view option) {
    return std::ranges::find(options, option) != options.end();
  };
  const auto views = host::LoadWindowViews();
  if (!views) {
    std::printf("no window: %s\n", Describe(views.Error()).c_str());
    return 1;
  }
  WrittenViews written(**views);
  WindowHost windows(written);
  host::SetHost(&windows);
  BorderPreview preview;
  if (has("preview")) (*views)->SetPreview(CPS2BmpDlg::ResourceId, &preview);
  PS2BmpParams params;
  params.width = 595 / 72.0 * 2.54;
  params.height = 10;
  params.cut.resolution = 72;
  params.cut.enabled = has("cut") ? 1 : 0;
  params.hasBounds = has("no-bounds") ? 0 : 1;
  std::vector<CString> names;
  if (has("names")) names = {L"Cut & Crease", L"Gold", L"two\nlines \x202Egnorw"};
  int result = 0;
  {
    CPS2BmpDlg dialog(params, names, nullptr);
    result = dialog.DoModal();
    params = dialog.GetParams();
  }
  const CPS2CutData& cut = params.cut;
  const auto& parts = cut.color.GetComponents();
  std::wstring name;
  static_cast<void>(cut.color.GetColorName(name));
  std::setlocale(LC_NUMERIC, "C");  // the windows have taken the user's, with its decimal mark
  std::printf("ended\nresult %d\nsize %.17g %.17g\nresolution %d\ncut %d\nkind %d\n", result,
              params.width, params.height, cut.resolution, cut.enabled, cut.colorKind);
  std::printf("color %g %g %g %g\nname %s\n", parts[0], parts[1], parts[2], parts[3],
              rastrel::os::Utf8FromWide(name).c_str());
  std::printf("preview %d %d\n", preview.m_Requests > 0 ? 1 : 0, preview.m_Taken > 0 ? 1 : 0);
  host::SetHost(nullptr);
  return 0;
}
