#include "host/layout/template_fonts.h"

#include <algorithm>
#include <utility>

#include "host/text/font_catalog.h"
#include "rastrel/imports/font_type.h"
#include "rastrel/platform/host/text_compose.h"
#include "rastrel/platform/values/world.h"

namespace rastrel::layout {

namespace {

bool IsFileName(const std::wstring& font) {
  return font.size() > 4 && font[font.size() - 4] == L'.';
}

}  // namespace

std::optional<TemplateFonts::Face> TemplateFonts::Find(const std::wstring& font) {
  Face face;
  face.name = font.empty() ? text::DefaultReplacement : font;
  if (IsFileName(face.name)) {
    face.type = imports::FontTypeOf(face.name.data());
    face.name.resize(std::char_traits<wchar_t>::length(face.name.c_str()));
  }
  const FontRecord* record =
      m_Host.GetTextCompose()->AddFont(0, face.type, face.name.c_str(), -1, 1);
  if (!record) return std::nullopt;
  face.replacement = static_cast<const text::Font*>(record)->replacement;
  return face;
}

std::optional<document::TextRun> TemplateFonts::Run(std::wstring text, const std::wstring& font,
                                                    double size) {
  auto found = m_Faces.find(font);
  if (found == m_Faces.end()) found = m_Faces.emplace(font, Find(font)).first;
  if (!found->second) return std::nullopt;
  std::ranges::replace_if(
      text, [](wchar_t letter) { return letter == L'\r' || letter == L'\n'; }, L' ');
  document::TextRun run;
  run.text = std::move(text);
  run.font = found->second->name;
  run.fontType = found->second->type;
  run.replacement = found->second->replacement;
  run.size = host::TextFromWorld(size);
  return run;
}

}  // namespace rastrel::layout
