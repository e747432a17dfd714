#include "host/text/font_catalog.h"

#include <fontconfig/fontconfig.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <string_view>

#include "rastrel/platform/os/text.h"

namespace rastrel::text {

namespace {

struct FontSetEnd {
  void operator()(FcFontSet* set) const { FcFontSetDestroy(set); }
};
struct PatternEnd {
  void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
struct ObjectSetEnd {
  void operator()(FcObjectSet* set) const { FcObjectSetDestroy(set); }
};

// Lower case without spaces, hyphens and underscores: "Arial Black" and "arialblack" are one name.
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

std::vector<std::string> TextsOf(FcPattern* pattern, const char* object) {
  std::vector<std::string> texts;
  FcChar8* text = nullptr;
  for (int i = 0; FcPatternGetString(pattern, object, i, &text) == FcResultMatch; ++i) {
    texts.emplace_back(reinterpret_cast<const char*>(text));  // NOLINT
  }
  return texts;
}

// The file's name without folders and extension.
std::string StemOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
  return name.substr(0, name.rfind('.'));
}

// Fontconfig's widths are percents of the normal one; Pango has nine steps.
int StretchOf(int width) {
  constexpr int steps[] = {50, 63, 75, 87, 100, 113, 125, 150, 200};
  int nearest = 0;
  for (int i = 1; i < 9; ++i) {
    if (std::abs(width - steps[i]) < std::abs(width - steps[nearest])) nearest = i;
  }
  return nearest;
}

FontFace FaceOfPattern(FcPattern* pattern) {
  FontFace face;
  face.family = TextOf(pattern, FC_FAMILY);
  int weight = FC_WEIGHT_REGULAR;
  int slant = FC_SLANT_ROMAN;
  int width = FC_WIDTH_NORMAL;
  FcPatternGetInteger(pattern, FC_WEIGHT, 0, &weight);
  FcPatternGetInteger(pattern, FC_SLANT, 0, &slant);
  FcPatternGetInteger(pattern, FC_WIDTH, 0, &width);
  face.weight = FcWeightToOpenType(weight);
  face.italic = slant != FC_SLANT_ROMAN;
  face.stretch = StretchOf(width);
  return face;
}

// How far a face is from its family's regular one.
int DistanceFromRegular(const FontFace& face) {
  return std::abs(face.weight - 400) + (face.italic ? 1000 : 0) + std::abs(face.stretch - 4) * 2000;
}

}  // namespace

std::wstring ReplacementNotice(const std::wstring& name, const FontFace& face) {
  if (Plain(os::Utf8FromWide(name)).empty()) {
    return L"a text names no font; it is set in " + os::WideFromUtf8(face.family);
  }
  return L"the font \"" + name + L"\" can't be had; " + os::WideFromUtf8(face.family) +
         L" stands in for it";
}

// Every font by the names that it may be asked for by. Where two fonts have a name, the first in
// the order of file names keeps it, so that the answer does not depend on the order of folders.
class FontCatalog::Index {
 public:
  // The configuration in force, which the layout finds its fonts by too.
  Index() {
    FcInit();
    const std::unique_ptr<FcPattern, PatternEnd> all(FcPatternCreate());
    const std::unique_ptr<FcObjectSet, ObjectSetEnd> wanted(
        FcObjectSetBuild(FC_FILE, FC_FAMILY, FC_STYLE, FC_WEIGHT, FC_SLANT, FC_WIDTH, nullptr));
    const std::unique_ptr<FcFontSet, FontSetEnd> found(
        FcFontList(nullptr, all.get(), wanted.get()));
    if (!found) return;
    std::vector<FcPattern*> fonts(found->fonts, found->fonts + found->nfont);
    std::ranges::sort(fonts, {}, [](FcPattern* font) { return TextOf(font, FC_FILE); });
    for (FcPattern* font : fonts) {
      m_Faces.try_emplace(Plain(StemOf(TextOf(font, FC_FILE))), FaceOfPattern(font));
    }
    AddStyles(fonts);
    AddFamilies(fonts);
  }

  // The face of a name, or null.
  [[nodiscard]] const FontFace* Find(const std::wstring& name) const {
    const std::string plain = Plain(os::Utf8FromWide(name));
    const auto found = plain.empty() ? m_Faces.end() : m_Faces.find(plain);
    return found == m_Faces.end() ? nullptr : &found->second;
  }

  [[nodiscard]] const std::set<std::string>& Families() const { return m_Families; }

 private:
  // A font may have several families and styles: that of the whole, and a narrower one.
  void AddStyles(const std::vector<FcPattern*>& fonts) {
    for (FcPattern* font : fonts) {
      const FontFace face = FaceOfPattern(font);
      for (const std::string& family : TextsOf(font, FC_FAMILY)) {
        for (const std::string& style : TextsOf(font, FC_STYLE)) {
          m_Faces.try_emplace(Plain(family) + Plain(style), face);
        }
      }
    }
  }

  void AddFamilies(const std::vector<FcPattern*>& fonts) {
    std::map<std::string, FontFace> families;
    for (FcPattern* font : fonts) {
      const FontFace face = FaceOfPattern(font);
      m_Families.insert(face.family);
      for (const std::string& family : TextsOf(font, FC_FAMILY)) {
        const auto [place, added] = families.try_emplace(Plain(family), face);
        if (DistanceFromRegular(face) < DistanceFromRegular(place->second)) place->second = face;
      }
    }
    m_Faces.merge(families);  // names that are taken stay
  }

  std::map<std::string, FontFace> m_Faces;
  std::set<std::string> m_Families;
};

FontCatalog::FontCatalog(document::Notices& notices)
    : m_Notices(notices), m_Index(std::make_unique<Index>()) {}

FontCatalog::~FontCatalog() = default;

bool FontCatalog::Has(int type, const std::wstring& name) const {
  return !FaceOf(type, name).replaced;
}

FontFace FontCatalog::FaceOf(int type, const std::wstring& name,
                             const std::wstring& replacement) const {
  const bool outline =
      type == host::FONTTYPE_TRUETYPE || type == host::FONTTYPE_TYPE1 || type == host::FONTTYPE_CFF;
  const FontFace* face = outline ? m_Index->Find(name) : nullptr;
  if (face) return *face;
  FontFace other;
  other.family = os::Utf8FromWide(DefaultReplacement);
  face = m_Index->Find(replacement);
  const auto chosen = m_Chosen.find(Plain(os::Utf8FromWide(name)));
  if (!face && chosen != m_Chosen.end()) face = m_Index->Find(chosen->second);
  if (face) other = *face;
  other.replaced = true;
  return other;
}

const Font* FontCatalog::Get(int type, const std::wstring& name) {
  std::unique_ptr<Font>& font = m_Fonts[{type, name}];
  if (!font) {
    font = std::make_unique<Font>();
    font->id = static_cast<std::uint16_t>(m_Fonts.size());
    font->name = name;
    font->type = type;
  }
  const FontFace face = FaceOf(type, name);
  if (!face.replaced) return font.get();
  const auto chosen = m_Chosen.find(Plain(os::Utf8FromWide(name)));
  font->replacement = chosen == m_Chosen.end() ? DefaultReplacement : chosen->second;
  m_Notices.Add(ReplacementNotice(name, face));
  return font.get();
}

Expected<void> FontCatalog::Replace(const std::wstring& name, const std::wstring& replacement) {
  if (!m_Index->Find(replacement)) {
    return FailureOf("the font \"" + os::Utf8FromWide(document::CleanMessage(replacement)) +
                     "\" is not on this machine");
  }
  m_Chosen[Plain(os::Utf8FromWide(name))] = replacement;
  return {};
}

bool FontCatalog::IsChosen(const std::wstring& name) const {
  return m_Chosen.contains(Plain(os::Utf8FromWide(name)));
}

std::vector<std::wstring> FontCatalog::Families() const {
  std::vector<std::wstring> families;
  for (const std::string& family : m_Index->Families()) {
    if (!family.empty()) families.push_back(os::WideFromUtf8(family));
  }
  return families;
}

}  // namespace rastrel::text
