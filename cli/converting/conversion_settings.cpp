#include "cli/converting/conversion_settings.h"

#include <algorithm>
#include <fstream>

#include "cli/console/options.h"
#include "cli/console/values.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

constexpr std::string_view LineEnd = "\r\n";
constexpr double ChannelScale = 255.0;
constexpr std::size_t MaximumOfHeader = 65536;  // bytes

// The lines that every job header begins and ends with, as the library writes them.
struct HeaderFrame {
  std::string heading;  // without its version
  std::string end;
};

HeaderFrame FrameOfHeaders() {
  const CPS2CutData noCut;
  std::string header =
      os::AnsiFromWide(conversion::JobHeaderText(nullptr, &noCut, &noCut, nullptr));
  header.resize(header.rfind(LineEnd));
  const std::string_view first = std::string_view(header).substr(0, header.find(LineEnd));
  return {.heading = std::string(first.substr(0, first.rfind(' '))),
          .end = header.substr(header.rfind(LineEnd) + LineEnd.size())};
}

}  // namespace

bool ConversionSettings::Any() const {
  return page || resolution || cut.enabled != 0 || halfCut.enabled != 0;
}

std::wstring ConversionSettings::Header() const {
  return conversion::JobHeaderText(page ? &*page : nullptr, &cut, &halfCut,
                                   resolution ? &*resolution : nullptr);
}

Expected<CPS2CutData> ParseCutData(std::string_view option, std::string_view text) {
  const auto [model, rest] = SplitColor(text);
  CPS2CutData cut;
  cut.enabled = 1;
  if (model == "rgb") {
    const auto parts = ParseComponents(option, rest, 3, text);
    if (!parts) return parts.Error();
    cut.colorKind = CutColorRgb;
    cut.color.SetColor((*parts)[0] * ChannelScale, (*parts)[1] * ChannelScale,
                       (*parts)[2] * ChannelScale, COLORSPACE_RGB);
  } else if (model == "cmyk") {
    const auto parts = ParseComponents(option, rest, 4, text);
    if (!parts) return parts.Error();
    cut.colorKind = CutColorCmyk;
    cut.color.SetColor((*parts)[0], (*parts)[1], (*parts)[2], (*parts)[3], COLORSPACE_CMYK);
  } else if (model == "spot") {
    const auto name = ParseSpotName(option, rest, text);
    if (!name) return name.Error();
    if (os::WideFromAnsi(os::AnsiFromWide(*name)) != *name)
      return RefusedValue(option, text,
                          "a job header holds characters of Windows-1252 only, and the spot "
                          "colour's name has others");
    cut.colorKind = CutColorNamed;
    cut.color.SetColorName(*name);
  } else {
    return RefusedValue(option, text,
                        "a cut colour is given as rgb:R,G,B, cmyk:C,M,Y,K or spot:NAME");
  }
  return cut;
}

Expected<ConversionSettings> ReadConversionSettings(const Invocation& invocation) {
  ConversionSettings settings;
  const auto value = [&invocation](OptionId id) { return invocation.ValueOr(id, ""); };
  if (invocation.Has(OptionId::PageSize)) {
    const auto size = ParseSize("--page-size", value(OptionId::PageSize));
    if (!size) return size.Error();
    settings.page = ::PageSize{.height = size->heightCm, .width = size->widthCm};
  }
  if (invocation.Has(OptionId::Resolution)) {
    const auto dpi = ParseDpi(value(OptionId::Resolution));
    if (!dpi) return dpi.Error();
    settings.resolution = *dpi;
  }
  if (invocation.Has(OptionId::CutColor)) {
    auto cut = ParseCutData("--cut-color", value(OptionId::CutColor));
    if (!cut) return cut.Error();
    settings.cut = *std::move(cut);
  }
  if (invocation.Has(OptionId::HalfCutColor)) {
    auto cut = ParseCutData("--half-cut-color", value(OptionId::HalfCutColor));
    if (!cut) return cut.Error();
    settings.halfCut = *std::move(cut);
  }
  return settings;
}

std::string HeaderOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string head(MaximumOfHeader, '\0');
  file.read(head.data(), static_cast<std::streamsize>(head.size()));
  head.resize(static_cast<std::size_t>(file.gcount()));
  const HeaderFrame frame = FrameOfHeaders();
  const std::size_t last = head.find(frame.end);
  if (!head.starts_with(frame.heading) || last == head.npos) return {};
  return head.substr(0, last) + frame.end + std::string(LineEnd);
}

}  // namespace rastrel::cli
