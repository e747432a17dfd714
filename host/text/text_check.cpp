#include "host/text/text_check.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "host/document/notices.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::text {

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

// Whether a part of the text that is no whitespace is asked for in a size that is none.
bool HasSizeOfNothing(const TextShape& shape) {
  for (const document::TextLine& line : shape.lines) {
    for (const document::TextRun& run : line.runs) {
      if (HasLetters(run.text) && !(run.size > 0)) return true;
    }
  }
  return false;
}

}  // namespace

std::optional<std::wstring> MissingLettersNotice(const TextShape& shape, const TextLayout& layout) {
  std::vector<std::wstring> characters;
  std::vector<std::wstring> fonts;
  for (const PlacedRun& run : layout.Runs()) {
    for (const wchar_t character : run.missing) AddOnce(characters, CodeOf(character));
    if (!run.missing.empty()) AddOnce(fonts, Quoted(os::WideFromUtf8(run.face.family)));
  }
  if (characters.empty()) return std::nullopt;
  return NameOf(shape) + L" has characters that neither " + Listed(fonts) +
         L" nor another font has, and boxes stand in for them: " + Listed(characters);
}

std::optional<std::wstring> InvisibleTextNotice(const TextShape& shape, const TextLayout& layout,
                                                double scale) {
  if (HasSizeOfNothing(shape)) {
    return NameOf(shape) + L" has letters of the size 0, which can't be seen";
  }
  const bool hidden = std::ranges::any_of(layout.Runs(), [scale](const PlacedRun& run) {
    const double smallest = run.size * std::min(run.scaleX, run.scaleY) * scale;
    return HasLetters(run.text) && !(smallest >= SmallestVisibleLetter);
  });
  if (!hidden) return std::nullopt;
  return NameOf(shape) +
         L" can't be seen: its letters are narrower or lower than 0.1 mm in the room between its "
         L"margins";
}

std::optional<std::wstring> UnreadableFontNotice(const TextShape& shape, const TextLayout& layout) {
  std::vector<std::wstring> fonts;
  for (const PlacedRun& run : layout.Runs()) {
    if (run.isFontUnreadable) AddOnce(fonts, Quoted(os::WideFromUtf8(run.face.family)));
  }
  if (fonts.empty()) return std::nullopt;
  return L"a font of " + NameOf(shape) + L" can't be opened: " + Listed(fonts);
}

}  // namespace rastrel::text
