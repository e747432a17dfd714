#include "cli/job_settings.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <vector>

#include "cli/exit_status.h"
#include "cli/options.h"
#include "rastrel/job/vk_job_ticket.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/prefix/cutter.h"
#include "rastrel/prefix/scaling.h"

namespace rastrel::cli {
namespace {

constexpr double MostCentimetres = 100'000.0;  // a kilometre
constexpr double LeastGamma = 0.01;
constexpr double MostGamma = 100.0;
constexpr double ByteScale = 255.0;         // what users give, and what most records hold
constexpr double PreviewInkScale = 1000.0;  // CMYK in a preview's record
constexpr int MostDpi = 4800;
constexpr std::size_t MostLetters = 100;  // of a name

[[noreturn]] void Refuse(std::string_view option, std::string_view text, const std::string& why) {
  throw CommandError(ExitStatus::WrongUse,
                     std::string(option) + " " + std::string(text) + ": " + why);
}

// Digits with a decimal point, and nothing else. The decimal point is a dot in every locale.
std::optional<double> NumberOf(std::string_view text) {
  double number = 0.0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number, std::chars_format::fixed);
  if (error != std::errc() || stop != end || !std::isfinite(number)) return std::nullopt;
  return number;
}

std::int32_t ParseDpi(std::string_view text) {
  std::int32_t dpi = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, dpi);
  if (error != std::errc() || stop != end || dpi < 1 || dpi > MostDpi)
    Refuse("--dpi", text, "not a number from 1 to " + std::to_string(MostDpi));
  return dpi;
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = std::min(text.find(separator, begin), text.size());
    parts.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return parts;
}

bool IsLetter(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

// A target's name becomes a part of a PostScript name, with nothing around it.
bool IsTargetName(std::string_view text) {
  return !text.empty() && text.size() <= MostLetters && IsLetter(text.front()) &&
         std::ranges::all_of(text, [](char character) {
           return IsLetter(character) || IsDigit(character) || character == '-' ||
                  character == '_' || character == '.';
         });
}

struct Unit {
  const char* name;
  double centimetres;
};

constexpr std::array Units{Unit{"cm", 1.0}, Unit{"mm", 0.1}, Unit{"in", 2.54}};

double Centimetres(std::string_view number, const Unit& unit, std::string_view text) {
  const auto length = NumberOf(number);
  if (!length || *length <= 0.0 || *length * unit.centimetres > MostCentimetres)
    Refuse("--scale", text,
           "'" + std::string(number) + "' is no length above 0 and up to a kilometre");
  return *length * unit.centimetres;
}

void ApplySize(CJobData& settings, std::string_view text) {
  const auto unit =
      std::ranges::find_if(Units, [text](const Unit& one) { return text.ends_with(one.name); });
  if (unit == Units.end())
    Refuse("--scale", text, "a size has its unit behind it: cm, mm or in, as in 10x5in");
  const auto sides = Split(text.substr(0, text.size() - 2), 'x');
  if (sides.size() != 2) Refuse("--scale", text, "a size is WIDTHxHEIGHT and a unit, as in 10x5in");
  settings.ScaleWidthCm = Centimetres(sides[0], *unit, text);
  settings.ScaleHeightCm = Centimetres(sides[1], *unit, text);
  settings.ScaleMode = prefix::ScaleCustom;
}

// One component in the scale of the record.
std::int32_t Component(std::string_view part, double scale, std::string_view text) {
  const bool percentage = part.ends_with('%');
  const auto number = NumberOf(percentage ? part.substr(0, part.size() - 1) : part);
  const double most = percentage ? 100.0 : ByteScale;
  if (!number || *number < 0.0 || *number > most)
    Refuse("--cut-color", text,
           "'" + std::string(part) + "' is neither a number from 0 to 255 nor a percentage");
  return static_cast<std::int32_t>(std::lround(*number / most * scale));
}

void ApplyComponents(CJobData& settings, std::string_view list, std::size_t count, double scale,
                     std::string_view text) {
  const auto parts = Split(list, ',');
  if (parts.size() != count)
    Refuse("--cut-color", text, "it takes " + std::to_string(count) + " components");
  settings.CutterColor = {};
  for (std::size_t index = 0; index < count; ++index)
    settings.CutterColor.at(index) = Component(parts[index], scale, text);
}

// The name stands in a PostScript string as it is.
void ApplySpot(CJobData& settings, std::string_view name, std::string_view text) {
  if (name.empty()) Refuse("--cut-color", text, "the spot colour has no name");
  const bool breaks = std::ranges::any_of(name, [](char character) {
    return static_cast<unsigned char>(character) < 32 || character == 127 || character == '(' ||
           character == ')' || character == '\\';
  });
  if (breaks || name.size() > MostLetters)
    Refuse("--cut-color", text,
           "a spot colour's name holds no parentheses, backslashes or control characters, and at "
           "most " +
               std::to_string(MostLetters) + " bytes");
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
      Refuse("--scale", text, "a target's name holds letters, digits, '-', '_' and '.' only");
    settings.ScaleTarget = os::WideFromUtf8(text);
    settings.ScaleMode = prefix::ScaleNamed;
  } else {
    ApplySize(settings, text);
  }
}

CLevelsData ParseLevels(std::string_view option, std::string_view text) {
  const auto parts = Split(text, ',');
  if (parts.size() != 3)
    Refuse(option, text, "levels are given as LOW,GAMMA,HIGH, as in 0,1.2,255");
  const auto number = [&](std::size_t index, double least, double most, const char* range) {
    const auto value = NumberOf(parts[index]);
    if (!value || *value < least || *value > most)
      Refuse(option, text, "'" + std::string(parts[index]) + "' is no " + range);
    return *value;
  };
  CLevelsData levels;
  levels.Low = number(0, 0.0, ByteScale, "low end from 0 to 255");
  levels.Gamma = number(1, LeastGamma, MostGamma, "gamma from 0.01 to 100");
  levels.High = number(2, 0.0, ByteScale, "high end from 0 to 255");
  return levels;
}

void ApplyCutColor(CJobData& settings, std::string_view text, TicketKind kind) {
  const std::size_t colon = std::min(text.find(':'), text.size());
  const std::string_view model = text.substr(0, colon);
  const std::string_view rest = text.substr(std::min(colon + 1, text.size()));
  if (model == "rgb") {
    ApplyComponents(settings, rest, 3, ByteScale, text);
    settings.CutterColorModel = prefix::CutterRgb;
  } else if (model == "cmyk") {
    const bool preview = kind == TicketKind::Preview;
    ApplyComponents(settings, rest, 4, preview ? PreviewInkScale : ByteScale, text);
    settings.CutterColorModel = prefix::CutterCmyk;
  } else if (model == "spot") {
    if (kind == TicketKind::Print)
      Refuse("--cut-color", text,
             "a printed job takes a cut colour as rgb or cmyk only; a spot colour is for previews");
    ApplySpot(settings, rest, text);
  } else {
    Refuse("--cut-color", text,
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
