#include "cli/job/control_prompt.h"

#include <algorithm>
#include <array>
#include <utility>
#include <variant>
#include <vector>

#include "cli/console/standard_streams.h"
#include "cli/console/values.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/shown_text.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

using host::ControlKind;
using standalone::ControlState;

constexpr std::size_t MaxLine = 4096;  // bytes of a typed line
constexpr std::size_t BytesAtOnce = 512;
constexpr int ShownDecimals = 4;
constexpr double HighestLevel = 255;
constexpr double Percent = 100;

// As it is said in a line: without its mark, the sign of its key and the colon at its end.
std::string SpokenText(std::wstring text) {
  constexpr std::wstring_view Mark = L"(*v*)";
  if (text.starts_with(Mark)) text.erase(0, Mark.size());
  std::wstring spoken;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == L'&' && at + 1 < text.size()) ++at;
    spoken += text[at];
  }
  if (spoken.ends_with(L':')) spoken.pop_back();
  return os::CleanLine(os::Utf8FromWide(spoken));
}

std::string Trimmed(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(" \t\r");
  if (begin == std::string::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t\r") + 1 - begin);
}

// A point or a comma before the decimals.
std::optional<double> TypedNumber(std::string text) {
  std::ranges::replace(text, ',', '.');
  const bool isNegative = text.starts_with('-');
  const auto number = NumberOf(std::string_view(text).substr(isNegative ? 1 : 0));
  return number && isNegative ? std::optional(-*number) : number;
}

std::string TextOf(const host::PickedColor& color) {
  const bool isRgb = color.type == host::PickerType::Rgb;
  std::string text = isRgb ? "rgb:" : "cmyk:";
  for (std::size_t part = 0; part < (isRgb ? 3U : 4U); ++part) {
    if (part > 0) text += ",";
    const double scale = isRgb ? 1 : Percent;
    text += os::ShortDecimal(color.components[part] * scale, ShownDecimals) + (isRgb ? "" : "%");
  }
  return text;
}

// A color of the picker's kind, as the options take one; the model may be left out.
std::optional<host::PickedColor> TypedColor(host::PickerType type, const std::string& typed) {
  const bool isRgb = type == host::PickerType::Rgb;
  const std::string model = isRgb ? "rgb" : "cmyk";
  const std::string whole = typed.find(':') == typed.npos ? model + ":" + typed : typed;
  const auto [given, list] = SplitColor(whole);
  if (given != model) return std::nullopt;
  const auto parts = ParseComponents("", list, isRgb ? 3 : 4, whole);
  if (!parts) return std::nullopt;
  host::PickedColor color{type, {}};
  for (std::size_t part = 0; part < parts->size(); ++part)
    color.components[part] = (*parts)[part] * (isRgb ? HighestLevel : 1);
  return color;
}

bool IsField(ControlKind kind) {
  return kind == ControlKind::DecimalEdit || kind == ControlKind::IntegerEdit ||
         kind == ControlKind::ComboBox || kind == ControlKind::ColorPicker;
}

// From 1 to `count`.
std::optional<std::size_t> TypedIndex(const std::string& typed, std::size_t count) {
  const auto number = NumberOf(typed);
  if (!number || *number < 1 || *number > static_cast<double>(count)) return std::nullopt;
  const auto index = static_cast<std::size_t>(*number);
  if (static_cast<double>(index) != *number) return std::nullopt;
  return index - 1;
}

}  // namespace

bool HasInputControls(const host::DialogLogic& dialog) {
  return std::ranges::any_of(dialog.GetResource().controls, [](const host::DialogControl& one) {
    return IsField(one.kind) || one.kind == ControlKind::Radio || one.kind == ControlKind::CheckBox;
  });
}

ControlPrompt::ControlPrompt(host::DialogLogic& dialog, HANDLE input, HANDLE stop)
    : m_Dialog(dialog),
      m_Input(input),
      m_Stop(stop),
      m_States(dialog.GetResource()),
      m_Title(SpokenText(dialog.GetResource().title)) {}

void ControlPrompt::SetText(int control, const std::wstring& text) {
  if (control == host::TitleControl) m_Title = SpokenText(text);
  m_States.SetText(control, text);
  // A text that was shown already has changed, a size for example.
  const auto controls = m_States.GetControls();
  for (std::size_t at = 0; m_Running && at < m_Asked; ++at) {
    const State& state = controls[at];
    if (state.control.id == control && state.control.kind == ControlKind::Text && state.visible &&
        !IsLabel(at))
      WriteErrorLine(SpokenText(text));
  }
}

void ControlPrompt::SetValue(int control, const host::ControlValue& value) {
  m_States.SetValue(control, value);
}

void ControlPrompt::SetItems(int control, std::span<const std::wstring> items) {
  m_States.SetItems(control, items);
}

void ControlPrompt::SetEnabled(int control, bool enabled) { m_States.SetEnabled(control, enabled); }

void ControlPrompt::SetVisible(int control, bool visible) { m_States.SetVisible(control, visible); }

host::ControlValue ControlPrompt::GetValue(int control) { return m_States.GetValue(control); }

void ControlPrompt::RunModal() {
  m_Running = true;
  WriteErrorLine(m_Title + " (Enter keeps the value in brackets, q cancels)");
  const std::size_t count = m_States.GetControls().size();
  while (!m_Dialog.HasEnded() && m_Asked < count) m_Asked += AskFrom(m_Asked);
  if (!m_Dialog.HasEnded()) m_Dialog.Command(host::OkCommand);
  // A dialog that stays up after OK was not satisfied with its values.
  if (!m_Dialog.HasEnded()) m_Dialog.Command(host::CancelCommand);
  m_Running = false;
}

// Asks for the control, or the group that begins with it. Returns how many controls these are.
std::size_t ControlPrompt::AskFrom(std::size_t at) {
  const State& state = m_States.GetControls()[at];
  if (state.control.kind == ControlKind::Radio) {
    const auto group = m_States.GetGroup(state.control.id);
    AskGroup(group);
    return group.size();
  }
  if (!state.IsOpen()) return 1;
  switch (state.control.kind) {
    case ControlKind::Text:
      if (!IsLabel(at) && !state.text.empty()) WriteErrorLine(SpokenText(state.text));
      break;
    case ControlKind::DecimalEdit:
    case ControlKind::IntegerEdit: AskNumber(state); break;
    case ControlKind::CheckBox: AskCheck(state); break;
    case ControlKind::ComboBox: AskItem(state); break;
    case ControlKind::ColorPicker: AskColor(state); break;
    case ControlKind::Radio:
    case ControlKind::Progress:
    case ControlKind::Button:
    case ControlKind::Fonts: break;
  }
  return 1;
}

// Asks until a line is empty or `taken` returns true for it, or the dialog has ended.
template <typename Taken>
void ControlPrompt::AskUntil(const std::string& question, Taken taken) {
  while (!m_Dialog.HasEnded()) {
    WriteErrorLines(question);
    const std::optional<std::string> line = ReadLine();
    if (!line || *line == "q" || *line == "Q") {
      // The next line of the terminal begins at its left edge.
      if (!line) WriteErrorLine("");
      m_Cancelled = true;
      return m_Dialog.Command(host::CancelCommand);
    }
    if (line->empty() || taken(*line)) return;
  }
}

bool ControlPrompt::Enter(const State& state, const host::ControlValue& value) {
  const int control = state.control.id;
  if (!m_States.CanTake(control, value)) return false;
  if (state.value == value) return true;
  m_States.SetValue(control, value);
  m_Dialog.ControlChanged(control);
  m_Dialog.HandleMessages();
  return true;
}

void ControlPrompt::AskNumber(const State& state) {
  const std::string shown = os::ShortDecimal(std::get<double>(state.value), ShownDecimals);
  AskUntil(NameOf(state) + " [" + shown + "]: ", [&](const std::string& typed) {
    const auto number = TypedNumber(typed);
    if (number && Enter(state, *number)) return true;
    const bool isWhole = state.control.kind == ControlKind::IntegerEdit;
    WriteErrorLine(std::string(isWhole ? "a whole number" : "a number") + " from " +
                   os::ShortDecimal(state.control.minimum, ShownDecimals) + " on, please");
    return false;
  });
}

void ControlPrompt::AskCheck(const State& state) {
  const bool checked = std::get<bool>(state.value);
  AskUntil(NameOf(state) + ", y or n [" + (checked ? "y" : "n") + "]: ",
           [&](const std::string& typed) {
             const bool isYes = typed == "y" || typed == "Y" || typed == "yes";
             if (isYes || typed == "n" || typed == "N" || typed == "no") return Enter(state, isYes);
             WriteErrorLine("y or n, please");
             return false;
           });
}

void ControlPrompt::AskItem(const State& state) {
  std::string chosen;
  for (std::size_t at = 0; at < state.items.size(); ++at) {
    if (host::ControlValue(state.items[at]) == state.value && chosen.empty())
      chosen = std::to_string(at + 1);
    WriteErrorLine("  " + std::to_string(at + 1) + ": " + os::Utf8FromWide(state.items[at]));
  }
  AskUntil(NameOf(state) + ", its number [" + chosen + "]: ", [&](const std::string& typed) {
    const auto index = TypedIndex(typed, state.items.size());
    if (index && Enter(state, state.items[*index])) return true;
    WriteErrorLine("a number from 1 to " + std::to_string(state.items.size()) + ", please");
    return false;
  });
}

void ControlPrompt::AskColor(const State& state) {
  const auto shown = TextOf(std::get<host::PickedColor>(state.value));
  AskUntil(NameOf(state) + " [" + shown + "]: ", [&](const std::string& typed) {
    const auto color = TypedColor(state.control.pickerType, typed);
    if (color && Enter(state, *color)) return true;
    const bool isRgb = state.control.pickerType == host::PickerType::Rgb;
    WriteErrorLine(isRgb ? "rgb:R,G,B with parts from 0 to 255 or in percent, please"
                         : "cmyk:C,M,Y,K with parts from 0 to 255 or in percent, please");
    return false;
  });
}

void ControlPrompt::AskGroup(std::span<const State> group) {
  std::vector<const State*> open;
  std::string chosen;
  for (const State& state : group) {
    if (!state.IsOpen()) continue;
    open.push_back(&state);
    if (std::get<bool>(state.value)) chosen = std::to_string(open.size());
  }
  if (open.empty()) return;
  for (std::size_t at = 0; at < open.size(); ++at)
    WriteErrorLine("  " + std::to_string(at + 1) + ": " + NameOf(*open[at]));
  AskUntil("Number [" + chosen + "]: ", [&](const std::string& typed) {
    const auto index = TypedIndex(typed, open.size());
    if (index && Enter(*open[*index], true)) return true;
    WriteErrorLine("a number from 1 to " + std::to_string(open.size()) + ", please");
    return false;
  });
}

// A text right above a field names it.
bool ControlPrompt::IsLabel(std::size_t at) const {
  const auto controls = m_States.GetControls();
  return at + 1 < controls.size() && IsField(controls[at + 1].control.kind);
}

std::string ControlPrompt::NameOf(const State& state) const {
  return SpokenText(m_States.GetName(state.control.id));
}

// A line without its end, trimmed; nothing at the end of the input, at a stop, and for a line that
// no person types.
std::optional<std::string> ControlPrompt::ReadLine() {
  const std::array<HANDLE, 1> stops{m_Stop};
  for (;;) {
    if (const std::size_t end = m_Bytes.find('\n'); end != std::string::npos) {
      const std::string line = m_Bytes.substr(0, end);
      m_Bytes.erase(0, end + 1);
      return Trimmed(line);
    }
    std::array<char, BytesAtOnce> bytes{};
    const auto count = os::ReadSomeUnless(stops, m_Input, bytes.data(), bytes.size());
    if (!count || *count == 0 || m_Bytes.size() > MaxLine) return std::nullopt;
    m_Bytes.append(bytes.data(), *count);
  }
}

}  // namespace rastrel::cli
