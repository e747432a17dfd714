#include "rastrel/prefix/cutter.h"

#include "rastrel/job/format_string.h"

namespace rastrel::prefix {

namespace {

constexpr double ComponentScale = 255.0;

std::wstring Selection(const CJobData& settings) {
  if (!settings.CutterEnabled) return L"false $setcutter\n\n";
  const auto part = [&settings](std::size_t index) {
    return settings.CutterColor.at(index) / ComponentScale;
  };
  formatstringT<wchar_t> text;
  if (settings.CutterColorModel == CutterCmyk) {
    text.Format(L"false %.4f %.4f %.4f %.4f /DeviceCMYK $setcutter\n\n", part(0), part(1), part(2),
                part(3));
  } else {
    text.Format(L"false %.3f %.3f %.3f /DeviceRGB $setcutter\n\n", part(0), part(1), part(2));
  }
  return text;
}

}  // namespace

std::wstring CutterSection(const CJobData& settings) {
  return L"\n% -- Cutter --\n"
         L"%\n" +
         Selection(settings) +
         L"% Disable $setcutter\n"
         L"/$setcutter load /$setcutter$ exch def\n"
         L"/$setcutter {pop} def\n"
         L"% -- End of $setcutter Override --\n\n";
}

}  // namespace rastrel::prefix
