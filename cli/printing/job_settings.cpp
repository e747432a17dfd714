#include "cli/printing/job_settings.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

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
constexpr double ByteScale = 255.0;         // of values that users give, and of nearly all records
constexpr double PreviewInkScale = 1000.0;  // CMYK in a preview's record

// As the RIP's prolog (share/rip/System/prolog/sections.ps) defines them; a name that is not there
// prints unscaled.
constexpr std::array<std::string_view, 9> ScaleTargets{"Letter", "Legal", "Tabloid", "A0", "A1",
                                                       "A2",     "A3",    "A4",      "A5"};

bool IsLetter(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

bool IsSameWord(std::string_view one, std::string_view other) {
  return os::LowerAscii(os::WideFromUtf8(one)) == os::LowerAscii(os::WideFromUtf8(other));
}

std::string ListOfTargets() {
  std::string list = "none";
  for (const std::string_view name : ScaleTargets)
    list += (name == ScaleTargets.back() ? " and " : ", ") + std::string(name);
  return list;
}

Expected<void> ApplySize(CJobData& settings, std::string_view text) {
  const auto size = ParseSize("--scale", text);
  if (!size) return size.Error();
  settings.ScaleWidthCm = size->widthCm;
  settings.ScaleHeightCm = size->heightCm;
  settings.ScaleMode = prefix::ScaleCustom;
  return {};
}

// In the scale of the record.
Expected<void> ApplyComponents(CJobData& settings, std::string_view list, std::size_t count,
                               double scale, std::string_view text) {
  const auto components = ParseComponents("--cut-color", list, count, text);
  if (!components) return components.Error();
  settings.CutterColor = {};
  for (std::size_t index = 0; index < count; ++index)
    settings.CutterColor.at(index) =
        static_cast<std::int32_t>(std::lround((*components)[index] * scale));
  return {};
}

struct Channel {
  OptionId option;
  std::size_t index;  // in CJobData::Levels
};

constexpr std::array Channels{Channel{OptionId::LevelsRed, 1}, Channel{OptionId::LevelsGreen, 2},
                              Channel{OptionId::LevelsBlue, 3}, Channel{OptionId::LevelsGray, 4}};

Expected<void> ApplyLevels(CJobData& settings, const Invocation& invocation) {
  if (invocation.Has(OptionId::Levels)) {
    const auto levels = ParseLevels("--levels", invocation.ValueOr(OptionId::Levels, ""));
    if (!levels) return levels.Error();
    settings.Levels.fill(*levels);
    settings.LevelsEnabled = true;
    settings.LevelsLinked = true;
  }
  for (const Channel& channel : Channels) {
    if (!invocation.Has(channel.option)) continue;
    const auto levels =
        ParseLevels(OptionOf(channel.option).name, invocation.ValueOr(channel.option, ""));
    if (!levels) return levels.Error();
    settings.Levels.at(channel.index) = *levels;
    settings.LevelsEnabled = true;
    settings.LevelsLinked = false;
  }
  return {};
}

// The numbers of a value of --levels.
struct LevelRange {
  double minimum;
  double maximum;
  const char* description;
};

constexpr std::array LevelRanges{LevelRange{0.0, ByteScale, "low end from 0 to 255"},
                                 LevelRange{MinimumGamma, MaximumGamma, "gamma from 0.01 to 100"},
                                 LevelRange{0.0, ByteScale, "high end from 0 to 255"}};

}  // namespace

Expected<void> ApplyScale(CJobData& settings, std::string_view text) {
  if (IsSameWord(text, "none")) {
    settings.ScaleMode = prefix::ScaleNone;
    return {};
  }
  if (text.empty() || !IsLetter(text.front())) return ApplySize(settings, text);
  const auto target = std::ranges::find_if(
      ScaleTargets, [text](std::string_view name) { return IsSameWord(name, text); });
  if (target == ScaleTargets.end())
    return RefusedValue("--scale", text,
                        "no size has that name; there are " + ListOfTargets() +
                            ", and sizes with a unit, as in 10x5in");
  settings.ScaleTarget = os::WideFromUtf8(*target);
  settings.ScaleMode = prefix::ScaleNamed;
  return {};
}

Expected<CLevelsData> ParseLevels(std::string_view option, std::string_view text) {
  const auto parts = Split(text, ',');
  if (parts.size() != LevelRanges.size())
    return RefusedValue(option, text, "levels are given as LOW,GAMMA,HIGH, as in 0,1.2,255");
  std::array<double, LevelRanges.size()> numbers{};
  for (std::size_t index = 0; index < numbers.size(); ++index) {
    const LevelRange& range = LevelRanges.at(index);
    const auto value = NumberOf(parts[index]);
    if (!value || *value < range.minimum || *value > range.maximum)
      return RefusedValue(option, text,
                          "'" + std::string(parts[index]) + "' is no " + range.description);
    numbers.at(index) = *value;
  }
  CLevelsData levels;
  levels.Low = numbers[0];
  levels.Gamma = numbers[1];
  levels.High = numbers[2];
  return levels;
}

Expected<void> ApplyCutColor(CJobData& settings, std::string_view text, TicketKind kind) {
  const auto [model, rest] = SplitColor(text);
  const bool preview = kind == TicketKind::Preview;
  Expected<void> applied;
  if (model == "rgb") {
    applied = ApplyComponents(settings, rest, 3, ByteScale, text);
    settings.CutterColorModel = prefix::CutterRgb;
  } else if (model == "cmyk") {
    applied = ApplyComponents(settings, rest, 4, preview ? PreviewInkScale : ByteScale, text);
    settings.CutterColorModel = prefix::CutterCmyk;
  } else if (model == "spot" && !preview) {
    applied = RefusedValue(
        "--cut-color", text,
        "a printed job takes a cut colour as rgb or cmyk only; a spot colour is for previews");
  } else if (model == "spot") {
    const auto name = ParseSpotName("--cut-color", rest, text);
    if (!name) return name.Error();
    settings.CutterSeparation = *name;
    settings.CutterColorModel = prefix::CutterNamed;
  } else {
    applied = RefusedValue(
        "--cut-color", text,
        "a cut colour is given as rgb:R,G,B or cmyk:C,M,Y,K or, for previews, spot:NAME");
  }
  if (applied) settings.CutterEnabled = true;
  return applied;
}

Expected<void> ApplyPreview(CVKJobTicket& ticket, const Invocation& invocation) {
  if (invocation.Has(OptionId::Dpi)) {
    const auto dpi = ParseDpi(invocation.ValueOr(OptionId::Dpi, ""));
    if (!dpi) return dpi.Error();
    ticket.SetDPI(*dpi);
  }
  ticket.SetPlanar(invocation.Has(OptionId::Planar));
  ticket.SetCutOnly(invocation.Has(OptionId::CutOnly));
  return {};
}

Expected<void> ApplySettings(CJobData& settings, const Invocation& invocation, TicketKind kind) {
  if (invocation.Has(OptionId::Scale)) {
    if (auto scaled = ApplyScale(settings, invocation.ValueOr(OptionId::Scale, "")); !scaled)
      return scaled;
  }
  if (auto leveled = ApplyLevels(settings, invocation); !leveled) return leveled;
  if (!invocation.Has(OptionId::CutColor)) return {};
  return ApplyCutColor(settings, invocation.ValueOr(OptionId::CutColor, ""), kind);
}

}  // namespace rastrel::cli
