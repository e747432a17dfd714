#include "cli/document/bitmap_conversion.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "cli/document/conversion_report.h"
#include "cli/document/direct_conversion.h"
#include "cli/document/page_preview.h"
#include "interpreter/interpreter.h"
#include "rastrel/conversion/bitmap/bitmap_settings.h"
#include "rastrel/conversion/bitmap/convert_ps_to_bmp.h"
#include "rastrel/conversion/dialogs/ps2bmp_dlg.h"
#include "rastrel/platform/host/length_units.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/standalone/filled_views.h"

namespace rastrel::cli {
namespace {

using host::PickedColor;
using host::PickerType;
using standalone::ControlStates;
using standalone::FilledValue;

double NumberOf(const ControlStates& shown, int control) {
  const host::ControlValue value = shown.GetValue(control);
  const double* number = std::get_if<double>(&value);
  return number == nullptr ? 0 : *number;
}

// A side that is left open keeps the proportions of the file.
void AddSize(const PartSize& size, const ControlStates& shown, std::vector<FilledValue>& values) {
  const host::LengthUnit unit = host::CurrentLengthUnit();
  const double width = NumberOf(shown, CPS2BmpDlg::WidthEdit);
  const double height = NumberOf(shown, CPS2BmpDlg::HeightEdit);
  const auto other = [](double length, double own, double others) {
    return own > 0 ? length / own * others : others;
  };
  if (size.heightCm) {
    const double length = host::FromCentimetres(*size.heightCm, unit);
    values.push_back({CPS2BmpDlg::HeightEdit, length});
    if (!size.widthCm) values.push_back({CPS2BmpDlg::WidthEdit, other(length, height, width)});
  }
  if (size.widthCm) {
    const double length = host::FromCentimetres(*size.widthCm, unit);
    values.push_back({CPS2BmpDlg::WidthEdit, length});
    if (!size.heightCm) values.push_back({CPS2BmpDlg::HeightEdit, other(length, width, height)});
  }
}

void AddCutLine(const CPS2CutData& cut, std::vector<FilledValue>& values) {
  if (cut.enabled == 0) return;
  values.push_back({CPS2BmpDlg::CutLineCheckBox, true});
  const std::array<double, 4>& parts = cut.color.GetComponents();
  switch (cut.colorKind) {
    case CutColorRgb:
      values.push_back({CPS2BmpDlg::RgbRadio, true});
      values.push_back({CPS2BmpDlg::RgbPicker, PickedColor{PickerType::Rgb, parts}});
      break;
    case CutColorCmyk:
      values.push_back({CPS2BmpDlg::CmykRadio, true});
      values.push_back({CPS2BmpDlg::CmykPicker, PickedColor{PickerType::Cmyk, parts}});
      break;
    default: {
      std::wstring name;
      cut.color.GetColorName(name);
      values.push_back({CPS2BmpDlg::NamedRadio, true});
      values.push_back({CPS2BmpDlg::ColorNames, name});
    }
  }
}

std::vector<FilledValue> ValuesOf(const ConversionRequest& request, const ControlStates& shown) {
  std::vector<FilledValue> values;
  AddSize(request.size, shown, values);
  if (request.resolution)
    values.push_back({CPS2BmpDlg::ResolutionEdit, static_cast<double>(*request.resolution)});
  AddCutLine(request.cut, values);
  return values;
}

// The library's conversion, on a copy of the path that it may write to.
void Convert(const InputFile& input) {
  std::wstring path = os::FromNative(input.path);
  const int kind = input.extension == ".eps" ? PS2BMP_EPS : PS2BMP_POSTSCRIPT;
  ConvertPStoBmp(path.data(), 0, kind, 0, 0, nullptr);
}

ConversionEnd EndOf(const ConversionViews& views, ConversionEnd without) {
  return views.HasWorked() || !views.Message().empty() ? ConversionEnd::Ran : without;
}

// The spot colors that a PDF paints; none if that can't be found out.
std::vector<CString> SpotsOf(const InputFile& input) {
  std::vector<CString> names;
  const auto spots = interpreter::PaintedSpots(input.path, std::nullopt);
  if (!spots) return names;
  for (const std::string& spot : *spots) names.emplace_back(os::WideFromUtf8(spot).c_str());
  return names;
}

// The library's dialog, of a file that the library's conversion does not know. A person's answers
// become the options.
ConversionEnd AskAndConvert(const InputFile& input, const ConversionRequest& request) {
  const BOUNDS page = MeasuredPage(input, request);
  PS2BmpParams params;
  params.hasBounds = 1;
  params.width = std::abs(page.xmax - page.xmin);
  params.height = std::abs(page.ymax - page.ymin);
  params.cut.resolution = conversion::KeptResolution();
  if (!conversion::EditBitmapParams(params, SpotsOf(input))) return ConversionEnd::Dismissed;
  ConversionRequest answered = request;
  answered.size = {.widthCm = params.width, .heightCm = params.height};
  answered.resolution = params.cut.resolution;
  answered.cut = params.cut;
  return ConvertOutsideDialog(input, answered);
}

ConversionEnd RunAsked(const InputFile& input, const ConversionRequest& request,
                       ConversionViews& views) {
  PagePreview preview(input.path);
  views.SetPreview(CPS2BmpDlg::ResourceId, &preview);
  ConversionEnd end = ConversionEnd::Dismissed;
  if (input.extension == ".pdf") {
    end = AskAndConvert(input, request);
  } else {
    Convert(input);
  }
  views.SetPreview(CPS2BmpDlg::ResourceId, nullptr);
  return EndOf(views, end);
}

}  // namespace

ConversionEnd RunBitmapConversion(const InputFile& input, const ConversionRequest& request,
                                  ConversionHost& host, ConversionViews& views) {
  if (request.window || request.ask) return RunAsked(input, request, views);
  if (input.extension == ".pdf") return ConvertOutsideDialog(input, request);
  standalone::FilledViews filled(
      CPS2BmpDlg::ResourceId, [&](const ControlStates& shown) { return ValuesOf(request, shown); },
      views);
  host.SetDialogViews(&filled);
  Convert(input);
  host.SetDialogViews(&views);
  // A value that it has no form for has cancelled the dialog before any file was made.
  if (filled.GetRefused()) return ConvertOutsideDialog(input, request);
  return EndOf(views, ConversionEnd::NotPrepared);
}

}  // namespace rastrel::cli
