#include "rastrel/imports/font_type.h"

#include <array>
#include <string>
#include <string_view>

#include "rastrel/platform/host/text_compose.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::imports {
namespace {

constexpr int Unknown = -1;

struct FontExtension {
  std::wstring_view beginning;
  int type;
  bool byCaseInCr2;  ///< case counts in a cr2 too
  int typeInZml;
};

constexpr FontExtension InAll(std::wstring_view beginning, int type) {
  return {beginning, type, false, type};
}

constexpr std::array<FontExtension, 15> FontExtensions{{
    InAll(L"ttf", host::FONTTYPE_TRUETYPE),
    InAll(L"otf", host::FONTTYPE_TRUETYPE),
    InAll(L"pfb", host::FONTTYPE_TYPE1),
    InAll(L"wfn", host::FONTTYPE_WFN),
    InAll(L"vef", host::FONTTYPE_VEF),
    InAll(L"fnt", host::FONTTYPE_FNT),
    InAll(L"clf", host::FONTTYPE_CLF),
    InAll(L"be", host::FONTTYPE_BE),
    InAll(L"fon", host::FONTTYPE_FON),
    {L"cff", host::FONTTYPE_CFF, false, host::FONTTYPE_1C},
    InAll(L"ft9", host::FONTTYPE_FT9),
    InAll(L"shx", host::FONTTYPE_SHX),
    {L"chr", host::FONTTYPE_CHR, true, Unknown},
    {L"f3s", host::FONTTYPE_CHR, true, Unknown},
    {L"1c", host::FONTTYPE_1C, false, Unknown},
}};

bool ComparesByCase(const FontExtension& known, FontTable table) {
  return table == FontTable::Plates || (table == FontTable::Cr2 && known.byCaseInCr2);
}

}  // namespace

int FontTypeOf(wchar_t* fontName, FontTable table) {
  const std::wstring_view name(fontName);
  const std::size_t dot = name.rfind(L'.');
  if (dot == std::wstring_view::npos) return host::FONTTYPE_TRUETYPE;
  const std::wstring extension(name.substr(dot + 1));
  const std::wstring lower = os::LowerAscii(extension);
  fontName[dot] = L'\0';
  for (const FontExtension& known : FontExtensions) {
    const int type = table == FontTable::Zml ? known.typeInZml : known.type;
    const std::wstring& compared = ComparesByCase(known, table) ? extension : lower;
    if (type != Unknown && compared.starts_with(known.beginning)) return type;
  }
  return host::FONTTYPE_TRUETYPE;
}

}  // namespace rastrel::imports
