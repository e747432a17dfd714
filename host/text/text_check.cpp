#include "host/text/text_check.h"

#include <algorithm>
#include <cstdio>
#include <span>
#include <vector>

#include "host/document/notices.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::text {

using document::ArcTextShape;
using document::TextShape;

namespace {

constexpr std::size_t MaximumNameLength = 40;
constexpr std::size_t MaximumListed = 8;

bool IsWhitespace(wchar_t character) {
  return character == L' ' || character == L'\t' || character == L'\x00A0';
}

std::wstring Quoted(const std::wstring& text) { return L"\"" + text + L"\""; }

// The text by its first characters.
std::wstring NameOf(const TextShape& shape) {
  std::wstring name;
  for (const document::TextLine& line : shape.lines) {
    for (const document::TextRun& run : line.runs) {
      for (const wchar_t character : run.text) {
        if (name.size() == MaximumNameLength)
          return L"the text " + Quoted(document::CleanMessage(name) + L"...");
        name += character;
      }
    }
    if (!name.empty()) name += L' ';
  }
  return L"the text " + Quoted(document::CleanMessage(name));
}

std::wstring NameOf(const ArcTextShape& shape) {
  TextShape text;
  text.lines.emplace_back().runs.push_back(shape.run);
  return NameOf(text);
}

std::wstring CodeOf(wchar_t character) {
  char code[16];
  std::snprintf(code, sizeof code, "U+%04lX", static_cast<unsigned long>(character));
  return os::WideFromUtf8(code);
}

// The first few, and how many more there are.
std::wstring Listed(const std::vector<std::wstring>& items) {
  std::wstring list;
  for (std::size_t i = 0; i < std::min(items.size(), MaximumListed); ++i) {
    list += (i == 0 ? L"" : L", ") + items[i];
  }
  if (items.size() <= MaximumListed) return list;
  return list + L" and " + std::to_wstring(items.size() - MaximumListed) + L" more";
}

void AddOnce(std::vector<std::wstring>& items, const std::wstring& item) {
  if (std::ranges::find(items, item) == items.end()) items.push_back(item);
}

bool HasLetters(const std::wstring& text) { return !std::ranges::all_of(text, IsWhitespace); }

bool HasSizeOfNothing(const document::TextRun& run) {
  return HasLetters(run.text) && !(run.size > 0);
}

// Whether a part of the text that is no whitespace is asked for in a size that is none.
bool HasSizeOfNothing(const TextShape& shape) {
  return std::ranges::any_of(shape.lines, [](const document::TextLine& line) {
    return std::ranges::any_of(line.runs,
                               [](const document::TextRun& run) { return HasSizeOfNothing(run); });
  });
}

bool IsHidden(const PlacedRun& run, double scale) {
  const double smallest = run.size * std::min(run.scaleX, run.scaleY) * scale;
  return HasLetters(run.text) && !(smallest >= SmallestVisibleLetter);
}

std::wstring SizeOfNothing(const std::wstring& name) {
  return name + L" has letters of the size 0, which can't be seen";
}

// Both below are of a text of that name.
std::optional<std::wstring> MissingLetters(const std::wstring& name,
                                           std::span<const PlacedRun> runs) {
  std::vector<std::wstring> characters;
  std::vector<std::wstring> fonts;
  for (const PlacedRun& run : runs) {
    for (const wchar_t character : run.missing) AddOnce(characters, CodeOf(character));
    if (!run.missing.empty()) AddOnce(fonts, Quoted(os::WideFromUtf8(run.face.family)));
  }
  if (characters.empty()) return std::nullopt;
  return name + L" has characters that neither " + Listed(fonts) +
         L" nor another font has, and boxes stand in for them: " + Listed(characters);
}

std::optional<std::wstring> UnreadableFonts(const std::wstring& name,
                                            std::span<const PlacedRun> runs) {
  std::vector<std::wstring> fonts;
  for (const PlacedRun& run : runs) {
    if (run.isFontUnreadable) AddOnce(fonts, Quoted(os::WideFromUtf8(run.face.family)));
  }
  if (fonts.empty()) return std::nullopt;
  return L"a font of " + name + L" can't be opened: " + Listed(fonts);
}

}  // namespace

std::optional<std::wstring> MissingLettersNotice(const TextShape& shape, const TextLayout& layout) {
  return MissingLetters(NameOf(shape), layout.Runs());
}

std::optional<std::wstring> MissingLettersNotice(const ArcTextShape& shape,
                                                 const ArcLayout& layout) {
  return MissingLetters(NameOf(shape), {&layout.Run(), 1});
}

std::optional<std::wstring> InvisibleTextNotice(const TextShape& shape, const TextLayout& layout,
                                                double scale) {
  if (HasSizeOfNothing(shape)) return SizeOfNothing(NameOf(shape));
  const bool hidden = std::ranges::any_of(
      layout.Runs(), [scale](const PlacedRun& run) { return IsHidden(run, scale); });
  if (!hidden) return std::nullopt;
  return NameOf(shape) +
         L" can't be seen: its letters are narrower or lower than 0.1 mm in the room between its "
         L"margins";
}

std::optional<std::wstring> InvisibleTextNotice(const ArcTextShape& shape, const ArcLayout& layout,
                                                double scale) {
  if (HasSizeOfNothing(shape.run)) return SizeOfNothing(NameOf(shape));
  if (!IsHidden(layout.Run(), scale)) return std::nullopt;
  return NameOf(shape) +
         L" can't be seen: its letters are narrower or lower than 0.1 mm on its circle";
}

std::optional<std::wstring> UnreadableFontNotice(const TextShape& shape, const TextLayout& layout) {
  return UnreadableFonts(NameOf(shape), layout.Runs());
}

std::optional<std::wstring> UnreadableFontNotice(const ArcTextShape& shape,
                                                 const ArcLayout& layout) {
  return UnreadableFonts(NameOf(shape), {&layout.Run(), 1});
}

}  // namespace rastrel::text
