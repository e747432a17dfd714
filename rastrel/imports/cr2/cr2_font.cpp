#include "rastrel/imports/cr2/cr2_font.h"

#include <cstddef>
#include <cwchar>

#include "rastrel/platform/host/text_compose.h"

namespace rastrel::imports {
namespace {

constexpr std::size_t ShortestFileName = 5;
constexpr std::size_t ExtensionLength = 4;  // with its dot

bool IsFileName(const std::wstring& face) {
  return face.size() >= ShortestFileName && face[face.size() - ExtensionLength] == L'.';
}

const FontRecord* FindReplacement(TemplateImport& import, const FontRequest& request) {
  if (import.replacements == nullptr) {
    import.LogMissing(L"replaces no fonts");
    return nullptr;
  }
  const FontRecord* const chosen =
      import.replacements->GetReplacementFont(request.name.c_str(), -1, -1);
  if (chosen != nullptr) return chosen;
  return import.document.text.ChooseReplacementFont(*import.replacements, request.name.c_str(), -1,
                                                    -1);
}

}  // namespace

FontRequest FontOf(const CR2_FONT_SPEC& font, FontTable table) {
  FontRequest request{.name = font.face, .type = host::FONTTYPE_TRUETYPE};
  if (!IsFileName(font.face)) {
    if (!font.style.empty()) request.name += L' ' + font.style;
    return request;
  }
  request.type = FontTypeOf(request.name.data(), table);
  request.name.resize(std::wcslen(request.name.c_str()));
  return request;
}

const FontRecord* ResolveFont(TemplateImport& import, const CR2_FONT_SPEC& font, FontTable table) {
  const FontRequest request = FontOf(font, table);
  const FontRecord* found =
      import.document.text.AddFont(0, request.type, request.name.c_str(), 0, 0);
  if (found == nullptr) found = FindReplacement(import, request);
  if (found == nullptr) import.cancelled = true;
  return found;
}

}  // namespace rastrel::imports
