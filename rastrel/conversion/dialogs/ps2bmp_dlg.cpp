#include "rastrel/conversion/dialogs/ps2bmp_dlg.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

#include "rastrel/conversion/dialogs/bitmap_size.h"
#include "rastrel/conversion/scan_group.h"
#include "rastrel/job/format_string.h"
#include "rastrel/platform/host/settings.h"

using namespace rastrel::host;

namespace conversion = rastrel::conversion;

namespace {

using Dialog = CPS2BmpDlg;

constexpr double LengthStep = 0.1;
constexpr double LowestLength = 0;
constexpr double ResolutionStep = 1.0;
constexpr double LowestResolution = 1;
constexpr double HighestRgb = 255;
constexpr double HighestInk = 1;

using ControlTable = std::array<DialogControl, 19>;

// A label is the control before the one that it names, and radio buttons follow each other. The two
// headings are frames of groups, which can't be pressed.
constexpr ControlTable ControlsWith(const wchar_t* height, const wchar_t* width) {
  return {{
      {Dialog::SizeFrame, ControlKind::Text, L"(*v*)Size of the bitmap"},
      {Dialog::HeightLabel, ControlKind::Text, height},
      {Dialog::HeightEdit, ControlKind::DecimalEdit, L"", LengthStep, LowestLength},
      {Dialog::WidthLabel, ControlKind::Text, width},
      {Dialog::WidthEdit, ControlKind::DecimalEdit, L"", LengthStep, LowestLength},
      {Dialog::ResolutionLabel, ControlKind::Text, L"(*v*)&Resolution (dpi):"},
      {Dialog::ResolutionEdit, ControlKind::IntegerEdit, L"", ResolutionStep, LowestResolution},
      {Dialog::SizeText, ControlKind::Text, L""},
      {Dialog::CutLineCheckBox, ControlKind::CheckBox, L"(*v*)Cut &line"},
      {Dialog::CutLineText, ControlKind::Text, L"(*v*)Paths in the colour below become cut lines."},
      {Dialog::ColorFrame, ControlKind::Text, L"(*v*)Colour of the cut line"},
      {Dialog::RgbRadio, ControlKind::Radio, L"(*v*)RG&B"},
      {Dialog::CmykRadio, ControlKind::Radio, L"(*v*)&CMYK"},
      {Dialog::NamedRadio, ControlKind::Radio, L"(*v*)&Named colour"},
      {Dialog::RgbPicker, ControlKind::ColorPicker, L"(*v*)RGB colour", 1, 0, PickerType::Rgb},
      {Dialog::CmykPicker, ControlKind::ColorPicker, L"(*v*)CMYK colour", 1, 0, PickerType::Cmyk},
      {Dialog::ColorNames, ControlKind::ComboBox, L""},
      {OkCommand, ControlKind::Button, L"(*v*)OK"},
      {CancelCommand, ControlKind::Button, L"(*v*)Cancel"},
  }};
}

constexpr ControlTable InCentimetres = ControlsWith(L"(*v*)&Height (cm):", L"(*v*)&Width (cm):");
constexpr ControlTable InMillimetres = ControlsWith(L"(*v*)&Height (mm):", L"(*v*)&Width (mm):");
constexpr ControlTable InInches = ControlsWith(L"(*v*)&Height (in):", L"(*v*)&Width (in):");

constexpr const wchar_t* Title = L"(*v*)Convert to Bitmap";
constexpr DialogResource CentimetreResource{Dialog::ResourceId, Title, InCentimetres};
constexpr DialogResource MillimetreResource{Dialog::ResourceId, Title, InMillimetres};
constexpr DialogResource InchResource{Dialog::ResourceId, Title, InInches};

const DialogResource& ResourceFor(LengthUnit unit) {
  switch (unit) {
    case LengthUnit::Millimetres: return MillimetreResource;
    case LengthUnit::Inches: return InchResource;
    default: return CentimetreResource;
  }
}

constexpr const wchar_t* InkSection = L"Preferences";
constexpr const wchar_t* InkKey = L"PS CMYK Color";
constexpr std::uint32_t InkSettingSize = 256;

PickedColor KeptInks() {
  PickedColor inks{.type = PickerType::Cmyk, .components = {1.0, 1.0, 1.0, 1.0}};
  wchar_t text[InkSettingSize] = L"";
  GetStringKorvane(InkSection, InkKey, text, InkSettingSize, DS_USER, nullptr);
  static_cast<void>(conversion::ScanDecimalList(text, inks.components));
  return inks;
}

void KeepInks(const std::array<double, 4>& inks) {
  formatstringT<wchar_t> text;
  text.Format(L"%f, %f, %f, %f,", inks[0], inks[1], inks[2], inks[3]);
  static_cast<void>(WriteStringKorvane(InkSection, InkKey, text.c_str(), DS_USER, nullptr));
}

PickedColor RgbOf(const CVKFullColor& color) {
  PickedColor picked;
  auto& [red, green, blue, unused] = picked.components;
  color.GetColorChannels(&red, &green, &blue, &unused);
  return picked;
}

// The components within the picker's range; a value that is no number is none of the color.
PickedColor InRange(PickedColor color) {
  const double highest = color.type == PickerType::Cmyk ? HighestInk : HighestRgb;
  for (double& component : color.components)
    component = component > 0 ? std::min(component, highest) : 0;
  return color;
}

// A number that the edit allows.
std::optional<double> NumberOf(const ControlValue& value, double lowest) {
  const double* number = std::get_if<double>(&value);
  if (number == nullptr || !std::isfinite(*number) || *number < lowest) return std::nullopt;
  return *number;
}

std::optional<PickedColor> ColorOf(const ControlValue& value, PickerType type) {
  const PickedColor* color = std::get_if<PickedColor>(&value);
  if (color == nullptr || color->type != type) return std::nullopt;
  return InRange(*color);
}

}  // namespace

CPS2BmpDlg::CPS2BmpDlg(PS2BmpParams params, std::vector<CString> colorNames, CWnd* parent)
    : CPS2BmpDlg(CurrentLengthUnit(), std::move(params), std::move(colorNames), parent) {}

CPS2BmpDlg::CPS2BmpDlg(LengthUnit unit, PS2BmpParams params, std::vector<CString> colorNames,
                       CWnd* parent)
    : CDialog(ResourceFor(unit), parent),
      m_Unit(unit),
      m_Params(std::move(params)),
      m_ColorNames(std::move(colorNames)) {}

CPS2BmpDlg::~CPS2BmpDlg() = default;

std::span<const CDialog::Message> CPS2BmpDlg::GetMessageMap() const {
  static constexpr auto ColorKind = [](CDialog& dialog, std::uintptr_t control, std::intptr_t) {
    return static_cast<Dialog&>(dialog).OnColorKind(static_cast<int>(control));
  };
  static constexpr std::array<Message, 5> Map{{
      {EditChangedMessage, 0,
       [](CDialog& dialog, std::uintptr_t control, std::intptr_t) {
         return static_cast<Dialog&>(dialog).OnEditChanged(static_cast<int>(control));
       }},
      {CommandMessage, RgbRadio, ColorKind},
      {CommandMessage, CmykRadio, ColorKind},
      {CommandMessage, NamedRadio, ColorKind},
      {CommandMessage, CutLineCheckBox,
       [](CDialog& dialog, std::uintptr_t, std::intptr_t) {
         return static_cast<Dialog&>(dialog).OnCutLine();
       }},
  }};
  return Map;
}

void CPS2BmpDlg::DoDataExchange(bool fromControls) {
  if (fromControls) {
    for (const int edit : {HeightEdit, WidthEdit, ResolutionEdit}) TakeEdit(edit);
    return;
  }
  SetValue(HeightEdit, FromCentimetres(m_Params.height, m_Unit));
  SetValue(WidthEdit, FromCentimetres(m_Params.width, m_Unit));
  SetValue(ResolutionEdit, static_cast<double>(m_Params.cut.resolution));
}

bool CPS2BmpDlg::OnInitDialog() {
  CDialog::OnInitDialog();
  m_SizeText.clear();
  ShowSize();
  InitPickers();
  m_Params.mode = PS2BMP_CONVERSION;
  if (m_Params.hasBounds == 0) HideSizes();
  SetValue(CutLineCheckBox, m_Params.cut.enabled != 0);
  InitNames();
  const int kind = m_Params.cut.colorKind;
  if (kind >= CutColorRgb && kind <= CutColorNamed) SetValue(RgbRadio + kind, true);
  EnableColors();
  TranslateDialog();
  return true;
}

void CPS2BmpDlg::InitPickers() {
  SetValue(RgbPicker, InRange(RgbOf(m_Params.cut.color)));
  SetValue(CmykPicker, InRange(KeptInks()));
}

void CPS2BmpDlg::InitNames() {
  if (HasNames()) {
    SetItems(ColorNames, m_ColorNames);
    SetValue(ColorNames, m_ColorNames.front());
    return;
  }
  SetVisible(ColorNames, false);
  SetVisible(NamedRadio, false);
  if (m_Params.cut.colorKind == CutColorNamed) m_Params.cut.colorKind = CutColorRgb;
}

void CPS2BmpDlg::HideSizes() {
  for (const int control : {HeightLabel, HeightEdit, WidthLabel, WidthEdit, SizeText})
    SetVisible(control, false);
}

void CPS2BmpDlg::EnableColors() {
  const bool enabled = m_Params.cut.enabled != 0;
  for (const int control : {ColorFrame, RgbRadio, CmykRadio, NamedRadio})
    SetEnabled(control, enabled);
  const int kind = m_Params.cut.colorKind;
  SetEnabled(RgbPicker, enabled && kind == CutColorRgb);
  SetEnabled(CmykPicker, enabled && kind == CutColorCmyk);
  SetEnabled(ColorNames, enabled && kind == CutColorNamed);
}

void CPS2BmpDlg::ShowSize() {
  std::wstring text = conversion::BitmapSizeText(
      conversion::EstimatedBitmapBytes(m_Params.width, m_Params.height, m_Params.cut.resolution));
  if (text == m_SizeText) return;
  m_SizeText = std::move(text);
  SetText(SizeText, m_SizeText);
}

void CPS2BmpDlg::TakeEdit(int control) {
  if (control == ResolutionEdit) {
    constexpr double Highest = std::numeric_limits<std::int32_t>::max();
    if (const auto resolution = NumberOf(GetValue(control), LowestResolution))
      m_Params.cut.resolution = static_cast<std::int32_t>(std::min(*resolution, Highest));
    return;
  }
  if (const auto length = NumberOf(GetValue(control), LowestLength))
    (control == HeightEdit ? m_Params.height : m_Params.width) = ToCentimetres(*length, m_Unit);
}

std::intptr_t CPS2BmpDlg::OnEditChanged(int control) {
  if (control == HeightEdit || control == WidthEdit || control == ResolutionEdit) {
    TakeEdit(control);
    ShowSize();
  }
  return 0;
}

std::intptr_t CPS2BmpDlg::OnColorKind(int control) {
  // A view may report the button that another one has cleared, too.
  const ControlValue value = GetValue(control);
  const bool* checked = std::get_if<bool>(&value);
  if (checked != nullptr && !*checked) return 0;
  m_Params.cut.colorKind = control - RgbRadio;
  EnableColors();
  return 0;
}

std::intptr_t CPS2BmpDlg::OnCutLine() {
  const ControlValue value = GetValue(CutLineCheckBox);
  if (const bool* checked = std::get_if<bool>(&value)) m_Params.cut.enabled = *checked ? 1 : 0;
  EnableColors();
  return 0;
}

void CPS2BmpDlg::TakeColor() {
  CVKFullColor& color = m_Params.cut.color;
  switch (m_Params.cut.colorKind) {
    case CutColorRgb:
      if (const auto rgb = ColorOf(GetValue(RgbPicker), PickerType::Rgb)) {
        const auto& [red, green, blue, unused] = rgb->components;
        color = CVKFullColor();
        color.SetColor(red, green, blue, COLORSPACE_RGB);
      }
      break;
    case CutColorCmyk: {
      const PickedColor inks = ColorOf(GetValue(CmykPicker), PickerType::Cmyk).value_or(KeptInks());
      const auto& [cyan, magenta, yellow, black] = inks.components;
      color = CVKFullColor();
      color.SetColor(cyan, magenta, yellow, black, COLORSPACE_CMYK);
      KeepInks(inks.components);
      break;
    }
    case CutColorNamed: {
      const ControlValue value = GetValue(ColorNames);
      const std::wstring* name = std::get_if<std::wstring>(&value);
      if (name != nullptr)
        color.SetColorName(*name);
      else if (HasNames())
        color.SetColorName(m_ColorNames.front());
      break;
    }
    default: break;
  }
}

void CPS2BmpDlg::OnOK() {
  DoDataExchange(true);
  TakeColor();
  CDialog::OnOK();
}

void CPS2BmpDlg::OnCancel() { CDialog::OnCancel(); }
