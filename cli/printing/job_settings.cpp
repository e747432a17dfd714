#include "cli/printing/job_settings.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "cli/console/exit_status.h"
#include "cli/console/options.h"
#include "cli/console/values.h"
#include "rastrel/job/vk_job_ticket.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/prefix/cutter.h"
#include "rastrel/prefix/scaling.h"

namespace rastrel::cli {
namespace {

constexpr double MinimumGamma = 0.01;
constexpr double MaximumGamma = 100.0;
constexpr double ByteScale = 255.0;          // of values that users give, and of nearly all records
constexpr double PreviewInkScale = 1000.0;   // CMYK in a preview's record
constexpr std::size_t MaximumLetters = 100;  // of a name

bool IsLetter(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

// A target's name becomes a part of a PostScript name, with nothing around it.
bool IsTargetName(std::string_view text) {
  return !text.empty() && text.size() <= MaximumLetters && IsLetter(text.front()) &&
         std::ranges::all_of(text, [](char character) {
           return IsLetter(character) || IsDigit(character) || character == '-' ||
                  character == '_' || character == '.';
         });
}

void ApplySize(CJobData& settings, std::string_view text) {
  const Size size = ParseSize("--scale", text);
  settings.ScaleWidthCm = size.widthCm;
  settings.ScaleHeightCm = size.heightCm;
  settings.ScaleMode = prefix::ScaleCustom;
}

// In the scale of the record.
void ApplyComponents(CJobData& settings, std::string_view list, std::size_t count, double scale,
                     std::string_view text) {
  const auto components = ParseComponents("--cut-color", list, count, text);
  settings.CutterColor = {};
  for (std::size_t index = 0; index < count; ++index)
    settings.CutterColor.at(index) =
        static_cast<std::int32_t>(std::lround(components[index] * scale));
}

void ApplySpot(CJobData& settings, std::string_view name, std::string_view text) {
  CheckSpotName("--cut-color", name, text);
  settings.CutterSeparation = os::WideFromUtf8(name);
  settings.CutterColorModel = prefix::CutterNamed;
}

struct Channel {
  OptionId option;
  std::size_t index;  // in CJobData::Levels
};

constexpr std::array Channels{Channel{OptionId::LevelsRed, 1}, Channel{OptionId::LevelsGreen, 2},
                              Channel{OptionId::LevelsBlue, 3}, Channel{OptionId::LevelsGray, 4}};

void ApplyLevels(CJobData& settings, const Invocation& invocation) {
  if (invocation.Has(OptionId::Levels)) {
    settings.Levels.fill(ParseLevels("--levels", invocation.ValueOr(OptionId::Levels, "")));
    settings.LevelsEnabled = true;
    settings.LevelsLinked = true;
  }
  for (const Channel& channel : Channels) {
    if (!invocation.Has(channel.option)) continue;
    settings.Levels.at(channel.index) =
        ParseLevels(OptionOf(channel.option).name, invocation.ValueOr(channel.option, ""));
    settings.LevelsEnabled = true;
    settings.LevelsLinked = false;
  }
}

}  // namespace

void ApplyScale(CJobData& settings, std::string_view text) {
  if (text == "none") {
    settings.ScaleMode = prefix::ScaleNone;
  } else if (!text.empty() && IsLetter(text.front())) {
    if (!IsTargetName(text))
      RefuseValue("--scale", text, "a target's name holds letters, digits, '-', '_' and '.' only");
    settings.ScaleTarget = os::WideFromUtf8(text);
    settings.ScaleMode = prefix::ScaleNamed;
  } else {
    ApplySize(settings, text);
  }
}

CLevelsData ParseLevels(std::string_view option, std::string_view text) {
  const auto parts = Split(text, ',');
  if (parts.size() != 3)
    RefuseValue(option, text, "levels are given as LOW,GAMMA,HIGH, as in 0,1.2,255");
  const auto number = [&](std::size_t index, double minimum, double maximum, const char* range) {
    const auto value = NumberOf(parts[index]);
    if (!value || *value < minimum || *value > maximum)
      RefuseValue(option, text, "'" + std::string(parts[index]) + "' is no " + range);
    return *value;
  };
  CLevelsData levels;
  levels.Low = number(0, 0.0, ByteScale, "low end from 0 to 255");
  levels.Gamma = number(1, MinimumGamma, MaximumGamma, "gamma from 0.01 to 100");
  levels.High = number(2, 0.0, ByteScale, "high end from 0 to 255");
  return levels;
}

void ApplyCutColor(CJobData& settings, std::string_view text, TicketKind kind) {
  const auto [model, rest] = SplitColor(text);
  if (model == "rgb") {
    ApplyComponents(settings, rest, 3, ByteScale, text);
    settings.CutterColorModel = prefix::CutterRgb;
  } else if (model == "cmyk") {
    const bool preview = kind == TicketKind::Preview;
    ApplyComponents(settings, rest, 4, preview ? PreviewInkScale : ByteScale, text);
    settings.CutterColorModel = prefix::CutterCmyk;
  } else if (model == "spot") {
    if (kind == TicketKind::Print)
      RefuseValue(
          "--cut-color", text,
          "a printed job takes a cut colour as rgb or cmyk only; a spot colour is for previews");
    ApplySpot(settings, rest, text);
  } else {
    RefuseValue("--cut-color", text,
                "a cut colour is given as rgb:R,G,B or cmyk:C,M,Y,K or, for previews, spot:NAME");
  }
  settings.CutterEnabled = true;
}

void ApplyPreview(CVKJobTicket& ticket, const Invocation& invocation) {
  if (invocation.Has(OptionId::Dpi)) ticket.SetDPI(ParseDpi(invocation.ValueOr(OptionId::Dpi, "")));
  ticket.SetPlanar(invocation.Has(OptionId::Planar));
  ticket.SetCutOnly(invocation.Has(OptionId::CutOnly));
}

void ApplySettings(CJobData& settings, const Invocation& invocation, TicketKind kind) {
  if (invocation.Has(OptionId::Scale))
    ApplyScale(settings, invocation.ValueOr(OptionId::Scale, ""));
  ApplyLevels(settings, invocation);
  if (invocation.Has(OptionId::CutColor))
    ApplyCutColor(settings, invocation.ValueOr(OptionId::CutColor, ""), kind);
}

}  // namespace rastrel::cli
