#include "host/document/palette.h"

#include <algorithm>
#include <utility>

namespace rastrel::document {

namespace {

struct UsualColor {
  const wchar_t* name;
  int red, green, blue;
};

constexpr UsualColor UsualColors[] = {
    {L"Black", 0, 0, 0},       {L"White", 255, 255, 255},  {L"Red", 255, 0, 0},
    {L"Green", 0, 128, 0},     {L"Blue", 0, 0, 255},       {L"Yellow", 255, 255, 0},
    {L"Cyan", 0, 255, 255},    {L"Magenta", 255, 0, 255},  {L"Orange", 255, 128, 0},
    {L"Brown", 128, 64, 0},    {L"Gray", 128, 128, 128},   {L"Light Gray", 204, 204, 204},
    {L"Gold", 212, 175, 55},   {L"Silver", 192, 192, 192}, {L"Bronze", 176, 127, 70},
    {L"Copper", 184, 115, 51}, {L"Brass", 181, 166, 66},
};

}  // namespace

Palette Palette::Usual() {
  Palette palette;
  for (const UsualColor& color : UsualColors) {
    palette.Add({NamedRgb(color.name, color.red, color.green, color.blue), false});
  }
  CVKFullColor cut(NamedRgb(L"CutContour", 255, 0, 255));
  palette.Add({cut, true});
  return palette;
}

const PaletteEntry* Palette::Find(const std::wstring& name) const {
  const auto entry = std::ranges::find_if(m_Entries, [&](const PaletteEntry& candidate) {
    std::wstring own;
    return candidate.color.GetColorName(own) != 0 && own == name;
  });
  return entry == m_Entries.end() ? nullptr : &*entry;
}

const PaletteEntry* Palette::Find(const CVKColor& color) const {
  const auto entry = std::ranges::find_if(m_Entries, [&](const PaletteEntry& candidate) {
    return static_cast<const CVKColor&>(candidate.color) == color;
  });
  return entry == m_Entries.end() ? nullptr : &*entry;
}

bool Palette::Add(PaletteEntry entry) {
  std::wstring name;
  if (entry.color.GetColorName(name) != 0 && Find(name)) return false;
  m_Entries.push_back(std::move(entry));
  return true;
}

CVKColor InvisibleColor() { return {-1, COLORSPACE_RGB, 0, 0}; }

CVKFullColor NamedRgb(const std::wstring& name, int red, int green, int blue) {
  CVKFullColor color(red | green << 8 | blue << 16, COLORSPACE_RGB, 0, 0);
  color.SetColorName(name);
  return color;
}

}  // namespace rastrel::document
