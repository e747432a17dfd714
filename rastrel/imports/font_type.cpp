#include "rastrel/imports/font_type.h"

#include <array>
#include <string_view>

#include "rastrel/platform/host/text_compose.h"

namespace rastrel::imports {
namespace {

struct FontExtension {
  std::wstring_view beginning;
  int type;
};

constexpr std::array<FontExtension, 15> FontExtensions{{
    {L"ttf", host::FONTTYPE_TRUETYPE},
    {L"otf", host::FONTTYPE_TRUETYPE},
    {L"pfb", host::FONTTYPE_TYPE1},
    {L"wfn", host::FONTTYPE_WFN},
    {L"vef", host::FONTTYPE_VEF},
    {L"fnt", host::FONTTYPE_FNT},
    {L"clf", host::FONTTYPE_CLF},
    {L"be", host::FONTTYPE_BE},
    {L"fon", host::FONTTYPE_FON},
    {L"cff", host::FONTTYPE_CFF},
    {L"ft9", host::FONTTYPE_FT9},
    {L"shx", host::FONTTYPE_SHX},
    {L"chr", host::FONTTYPE_CHR},
    {L"f3s", host::FONTTYPE_CHR},
    {L"1c", host::FONTTYPE_1C},
}};

}  // namespace

int FontTypeOf(wchar_t* fontName) {
  const std::wstring_view name(fontName);
  const std::size_t dot = name.rfind(L'.');
  if (dot == std::wstring_view::npos) return host::FONTTYPE_TRUETYPE;
  const std::wstring_view extension = name.substr(dot + 1);
  fontName[dot] = L'\0';
  for (const FontExtension& known : FontExtensions)
    if (extension.starts_with(known.beginning)) return known.type;
  return host::FONTTYPE_TRUETYPE;
}

}  // namespace rastrel::imports
