#include "cli/conversion_settings.h"

#include <algorithm>
#include <fstream>

#include "cli/options.h"
#include "cli/values.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

constexpr double ChannelScale = 255.0;
constexpr std::string_view HeaderBegin = "%#Velumark Header";
constexpr std::string_view HeaderEnd = "%#End Job";
constexpr std::size_t MaximumOfHeader = 65536;  // bytes

}  // namespace

bool ConversionSettings::Any() const {
  return page || resolution || cut.enabled != 0 || halfCut.enabled != 0;
}

std::wstring ConversionSettings::Header() const {
  return conversion::JobHeaderText(page ? &*page : nullptr, &cut, &halfCut,
                                   resolution ? &*resolution : nullptr);
}

CPS2CutData ParseCutData(std::string_view option, std::string_view text) {
  const std::size_t colon = std::min(text.find(':'), text.size());
  const std::string_view model = text.substr(0, colon);
  const std::string_view rest = text.substr(std::min(colon + 1, text.size()));
  CPS2CutData cut;
  cut.enabled = 1;
  if (model == "rgb") {
    const auto parts = ParseComponents(option, rest, 3, text);
    cut.colorKind = CutColorRgb;
    cut.color.SetColor(parts[0] * ChannelScale, parts[1] * ChannelScale, parts[2] * ChannelScale,
                       COLORSPACE_RGB);
  } else if (model == "cmyk") {
    const auto parts = ParseComponents(option, rest, 4, text);
    cut.colorKind = CutColorCmyk;
    cut.color.SetColor(parts[0], parts[1], parts[2], parts[3], COLORSPACE_CMYK);
  } else if (model == "spot") {
    CheckSpotName(option, rest, text);
    cut.colorKind = CutColorNamed;
    cut.color.SetColorName(os::WideFromUtf8(rest));
  } else {
    RefuseValue(option, text, "a cut colour is given as rgb:R,G,B, cmyk:C,M,Y,K or spot:NAME");
  }
  return cut;
}

ConversionSettings ReadConversionSettings(const Invocation& invocation) {
  ConversionSettings settings;
  const auto value = [&invocation](OptionId id) { return invocation.ValueOr(id, ""); };
  if (invocation.Has(OptionId::PageSize)) {
    const Size size = ParseSize("--page-size", value(OptionId::PageSize));
    settings.page = ::PageSize{.height = size.heightCm, .width = size.widthCm};
  }
  if (invocation.Has(OptionId::Resolution))
    settings.resolution = ParseDpi(value(OptionId::Resolution));
  if (invocation.Has(OptionId::CutColor))
    settings.cut = ParseCutData("--cut-color", value(OptionId::CutColor));
  if (invocation.Has(OptionId::HalfCutColor))
    settings.halfCut = ParseCutData("--half-cut-color", value(OptionId::HalfCutColor));
  return settings;
}

std::string HeaderOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string head(MaximumOfHeader, '\0');
  file.read(head.data(), static_cast<std::streamsize>(head.size()));
  head.resize(static_cast<std::size_t>(file.gcount()));
  const std::size_t last = head.find(HeaderEnd);
  if (!head.starts_with(HeaderBegin) || last == head.npos) return {};
  return head.substr(0, last + HeaderEnd.size()) + "\r\n";
}

}  // namespace rastrel::cli
