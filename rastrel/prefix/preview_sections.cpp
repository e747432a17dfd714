#include "rastrel/prefix/preview_sections.h"

#include "rastrel/job/format_string.h"
#include "rastrel/prefix/cutter.h"

namespace rastrel::prefix {

namespace {

constexpr double RgbScale = 255.0;
constexpr double CmykScale = 1000.0;
constexpr const wchar_t* NoCutter = L"mark false $setcutter\n\n";

std::wstring Selection(const CJobData& settings) {
  if (!settings.CutterEnabled) return NoCutter;
  const auto& color = settings.CutterColor;
  formatstringT<wchar_t> text;
  switch (settings.CutterColorModel) {
    case CutterRgb:
      text.Format(L"mark %.3f %.3f %.3f [1 0 0 1 0 0] /DeviceRGB $setcutter\n\n",
                  color[0] / RgbScale, color[1] / RgbScale, color[2] / RgbScale);
      return text;
    case CutterCmyk:
      text.Format(L"mark %.4f %.4f %.4f %.4f [1 0 0 1 0 0] /DeviceCMYK $setcutter\n\n",
                  color[0] / CmykScale, color[1] / CmykScale, color[2] / CmykScale,
                  color[3] / CmykScale);
      return text;
    case CutterNamed:
      if (settings.CutterSeparation.empty()) return NoCutter;
      text.Format(L"mark [1 0 0 1 0 0] (%s) /Separation $setcutter\n\n",
                  settings.CutterSeparation.c_str());
      return text;
    default: return NoCutter;
  }
}

}  // namespace

std::wstring CutDataSection(const CJobData& settings) {
  return L"\nstatusdict /SeparateCutData true put\n"
         L"\n% -- Cutter --\n"
         L"%\n" +
         Selection(settings) +
         L"% Disable $setcutter\n"
         L"userdict/$setcutter {cleartomark}put\n"
         L"% -- End of $setcutter Override --\n\n";
}

std::wstring PreviewHeader(int dpi) {
  formatstringT<wchar_t> resolution;
  resolution.Format(L"%d dup SetXYResolution \n", dpi);
  return L"\n% PS header for TIF preview.\n"
         L"8 SetBPS    % 8 bits per pixel.\n"
         L"3Color      % 3Color = RGB\n" +
         resolution;
}

}  // namespace rastrel::prefix
