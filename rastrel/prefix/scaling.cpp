#include "rastrel/prefix/scaling.h"

#include "rastrel/job/format_string.h"

namespace rastrel::prefix {

namespace {

constexpr double CentimetresPerInch = 2.54;

std::wstring NamedTarget(const CJobData& settings) {
  formatstringT<wchar_t> text;
  text.Format(L"  /Concinna%s SetScaleTarget\n  true SetAspectPolicy\n",
              settings.ScaleTarget.c_str());
  return text;
}

std::wstring CustomSize(const CJobData& settings) {
  const double width = settings.ScaleWidthCm / CentimetresPerInch;
  const double height = settings.ScaleHeightCm / CentimetresPerInch;
  formatstringT<wchar_t> comment;
  comment.Format(L"%% User Selections >> Width: %.3lf  Height: %.3lf inches\n", width, height);
  // The comment says width then height; the box is top then right, so height comes first there.
  formatstringT<wchar_t> box;
  box.Format(L"      /BBoxInches [ 0.0 %.3lf %.3lf 0.0 ] def\n", height, width);
  return L"\n% Custom Scaling Prefix\n" + comment +
         L"\n"
         L"userdict begin\n"
         L"/ConcinnaScaleCustom\n"
         L"{\n"
         L"  0 /ConcinnaScaleCustom CncLog\n"
         L"  statusdict begin\n"
         L"    printer_desc begin\n" +
         box +
         L"      /landscape 0 def\n"
         L"      /ConcinnaPaper (ScaleCustom) def\n"
         L"    end\n"
         L"  end\n"
         L"  /CustomConcinnaScaleCustom where { pop CustomConcinnaScaleCustom } if\n"
         L"  InitRIP\n"
         L"} def\n"
         L"end\n"
         L"\n/ConcinnaScaleCustom SetScaleTarget\ntrue SetAspectPolicy\n";
}

std::wstring Body(const CJobData& settings) {
  switch (settings.ScaleMode) {
    case ScaleNone: return L"  null SetScaleTarget\n";
    case ScaleNamed: return NamedTarget(settings);
    case ScaleCustom: return CustomSize(settings);
    default: return {};
  }
}

}  // namespace

std::wstring ScalingSection(const CJobData& settings) {
  return L"\n% -- Scaling Override --\n"
         L"userdict /SetScaleTarget known {\n" +
         Body(settings) + L"} if\n\n";
}

}  // namespace rastrel::prefix
