#include "rastrel/conversion/job_header_writer.h"

#include <array>

#include "rastrel/conversion/cut_color_text.h"
#include "rastrel/conversion/prepend.h"
#include "rastrel/job/format_string.h"
#include "rastrel/platform/host/settings.h"
#include "rastrel/platform/values/world.h"

namespace rastrel::conversion {

namespace {

constexpr double PointsInInch = 72.0;
constexpr std::uint32_t FlatnessSize = 8;  // wide characters, terminator included

double PointsOf(double centimetres) {
  return centimetres / host::CentimetresPerInch * PointsInInch;
}

template <typename... Arguments>
std::wstring Formatted(const wchar_t* format, const Arguments&... arguments) {
  formatstringT<wchar_t> text;
  text.Format(format, arguments...);
  return text;
}

std::wstring CutLine(const CPS2CutData& cut) {
  if (cut.enabled == 0) return {};
  return CutColorText(
      cut, {L"%%# KVI_CutLine= RGB, %.3f, %.3f, %.3f\r\n",
            L"%%# KVI_CutLine= CMYK, %.4f, %.4f, %.4f, %.4f\r\n", L"%%# KVI_CutLine= SEP, %s\r\n"});
}

std::wstring FlatnessLine() {
  std::array<wchar_t, FlatnessSize> flatness{};
  if (GetStringKorvane(L"RASTREL", L"Flatness", flatness.data(), FlatnessSize, DS_USER, nullptr) ==
      0)
    return L"%# KVI_Setflat= 10\r\n";
  return Formatted(L"%%# KVI_Setflat= %s\r\n", flatness.data());
}

}  // namespace

// The lines, each with CR and LF at its end; those in brackets are optional:
//
//   %#Velumark Header 2.0
//   %#Begin Job: 0
//   %# Title: MyJob
//   %#Type=Print
//   [%#PageSize=Custom,<width>,<height>]     points
//   [%# KVI_Res= <dots per inch>]
//   [%# KVI_CutLine= <color>]                the cut line
//   [%# KVI_CutLine= <color>]                the half cut
//   [%# KVI_Setflat= <flatness>]             with either cut
//   %#End Job
std::wstring JobHeaderText(const PageSize* page, const CPS2CutData* cut, const CPS2CutData* halfCut,
                           const int* resolution) {
  std::wstring text =
      L"%#Velumark Header 2.0\r\n"
      L"%#Begin Job: 0\r\n"
      L"%# Title: MyJob\r\n"
      L"%#Type=Print\r\n";
  if (page != nullptr) {
    text += Formatted(L"%%#PageSize=Custom,%1.6f,%1.6f\r\n", PointsOf(page->width),
                      PointsOf(page->height));
  }
  if (resolution != nullptr && *resolution >= 1)
    text += Formatted(L"%%# KVI_Res= %i\r\n", *resolution);
  text += CutLine(*cut) + CutLine(*halfCut);
  if (cut->enabled != 0 || halfCut->enabled != 0) text += FlatnessLine();
  return text + L"%#End Job\r\n";
}

bool WriteJobHeader(const wchar_t* file, const PageSize* page, const CPS2CutData* cut,
                    const CPS2CutData* halfCut, const int* resolution) {
  return PrependToFile(file, JobHeaderText(page, cut, halfCut, resolution));
}

}  // namespace rastrel::conversion
