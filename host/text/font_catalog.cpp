#include "host/text/font_catalog.h"

#include <fontconfig/fontconfig.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "rastrel/platform/host/text_compose.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::text {

namespace {

// The family of a font that has a picture for nearly every letter, and ships with every desktop.
constexpr const char* Replacement = "DejaVu Sans";

struct ConfigEnd {
  void operator()(FcConfig* config) const { FcConfigDestroy(config); }
};
struct FontSetEnd {
  void operator()(FcFontSet* set) const { FcFontSetDestroy(set); }
};
struct PatternEnd {
  void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
struct ObjectSetEnd {
  void operator()(FcObjectSet* set) const { FcObjectSetDestroy(set); }
};

// Lower case with blanks and hyphens left out: "Arial Black" and "arialblack" are one name.
std::string Plain(std::string_view name) {
  std::string plain;
  for (const char letter : name) {
    if (letter == ' ' || letter == '-' || letter == '_') continue;
    plain += letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  }
  return plain;
}

std::string TextOf(FcPattern* pattern, const char* object) {
  FcChar8* text = nullptr;
  if (FcPatternGetString(pattern, object, 0, &text) != FcResultMatch) return {};
  return reinterpret_cast<const char*>(text);  // NOLINT: fontconfig's bytes are unsigned
}

// The file's name without folders and extension.
std::string StemOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
  return name.substr(0, name.rfind('.'));
}

FontFace FaceOfPattern(FcPattern* pattern) {
  FontFace face;
  face.family = TextOf(pattern, FC_FAMILY);
  int weight = FC_WEIGHT_REGULAR;
  int slant = FC_SLANT_ROMAN;
  FcPatternGetInteger(pattern, FC_WEIGHT, 0, &weight);
  FcPatternGetInteger(pattern, FC_SLANT, 0, &slant);
  face.weight = FcWeightToOpenType(weight);
  face.italic = slant != FC_SLANT_ROMAN;
  return face;
}

}  // namespace

// Every font by the names that it may be asked for by. The first font of a name in the order of
// file names keeps it, so that the answer does not depend on the order of folders.
class FontCatalog::Index {
 public:
  Index() : m_Config(FcInitLoadConfigAndFonts()) {
    const std::unique_ptr<FcPattern, PatternEnd> all(FcPatternCreate());
    const std::unique_ptr<FcObjectSet, ObjectSetEnd> wanted(
        FcObjectSetBuild(FC_FILE, FC_FAMILY, FC_STYLE, FC_WEIGHT, FC_SLANT, FC_WIDTH, nullptr));
    const std::unique_ptr<FcFontSet, FontSetEnd> found(
        FcFontList(m_Config.get(), all.get(), wanted.get()));
    if (!found) return;
    std::vector<FcPattern*> fonts(found->fonts, found->fonts + found->nfont);
    std::ranges::sort(fonts, {}, [](FcPattern* font) { return TextOf(font, FC_FILE); });
    for (FcPattern* font : fonts) Add(font);
  }

  // The face of a plain name, or null.
  [[nodiscard]] const FontFace* Find(const std::string& name) const {
    const auto found = m_Faces.find(name);
    return found == m_Faces.end() ? nullptr : &found->second;
  }

 private:
  void Add(FcPattern* font) {
    const FontFace face = FaceOfPattern(font);
    const std::string family = Plain(face.family);
    const std::string style = Plain(TextOf(font, FC_STYLE));
    m_Faces.try_emplace(Plain(StemOf(TextOf(font, FC_FILE))), face);
    m_Faces.try_emplace(family + style, face);
    const bool regular = face.weight >= 380 && face.weight <= 420 && !face.italic;
    if (regular) m_Faces.try_emplace(family, face);
  }

  std::unique_ptr<FcConfig, ConfigEnd> m_Config;
  std::map<std::string, FontFace> m_Faces;
};

FontCatalog::FontCatalog(document::Notices& notices)
    : m_Notices(notices), m_Index(std::make_unique<Index>()) {}

FontCatalog::~FontCatalog() = default;

FontFace FontCatalog::FaceOf(int type, const std::wstring& name) const {
  const bool outline =
      type == host::FONTTYPE_TRUETYPE || type == host::FONTTYPE_TYPE1 || type == host::FONTTYPE_CFF;
  const FontFace* face = outline ? m_Index->Find(Plain(os::Utf8FromWide(name))) : nullptr;
  if (face) return *face;
  return {Replacement, 400, false, true};
}

const Font* FontCatalog::Get(int type, const std::wstring& name) {
  std::unique_ptr<Font>& font = m_Fonts[{type, name}];
  if (font) return font.get();
  font = std::make_unique<Font>();
  font->id = static_cast<std::uint16_t>(m_Fonts.size());
  font->name = name;
  font->type = type;
  const FontFace face = FaceOf(type, name);
  if (face.replaced) {
    font->replacement = os::WideFromUtf8(face.family);
    m_Notices.Add(L"the font \"" + name + L"\" can't be had; " + font->replacement +
                  L" stands in for it");
  }
  return font.get();
}

}  // namespace rastrel::text
