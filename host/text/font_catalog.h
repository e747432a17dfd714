#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/document/notices.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/values/paragraph.h"

namespace rastrel::text {

/// A font as the text engine returns it.
struct Font : FontRecord {
  std::wstring name;         ///< as it was asked for: a file's name without extension, or a family
  int type = 2;              ///< as it was asked for, a host::FontType
  std::wstring replacement;  ///< the font in place of one that is missing, by name; else empty
};

/// The family that replaces a missing font that nothing else was chosen for. It has a picture for
/// nearly every letter, and ships with every desktop.
inline constexpr const wchar_t* DefaultReplacement = L"DejaVu Sans";

/// A font for the layout, in terms of Pango.
struct FontFace {
  std::string family;  ///< UTF-8
  int weight = 400;    ///< as OpenType has it: 400 regular, 700 bold
  int stretch = 4;     ///< a PangoStretch: 0 the narrowest, 4 normal, 8 the widest
  bool italic = false;
  bool replaced = false;  ///< true if it replaces a missing one
};

/// The notice about a font that is missing and was replaced.
[[nodiscard]] std::wstring ReplacementNotice(const std::wstring& name, const FontFace& face);

/// The fonts of this machine, by fontconfig. A font is asked for by the name of its file without
/// extension, or by its family, or family and style, in any case of letters, with or without spaces
/// and hyphens. File names come first, then family and style, then the family alone: its regular
/// font, or the one nearest to that. A missing font is replaced by the one that was chosen for its
/// name, else by DefaultReplacement, with one notice for each.
class FontCatalog {
 public:
  /// `notices` must outlive the catalogue.
  explicit FontCatalog(document::Notices& notices);
  ~FontCatalog();
  FontCatalog(const FontCatalog&) = delete;
  FontCatalog& operator=(const FontCatalog&) = delete;

  /// The font of a name and a type. Never null; the same record for the same question.
  [[nodiscard]] const Font* Get(int type, const std::wstring& name);
  /// False if the font is missing, as one without a name is.
  [[nodiscard]] bool Has(int type, const std::wstring& name) const;

  /// The face of a font that a document names. The same whatever was asked before. A missing font
  /// has the face of `replacement`, which the document names as well; with an empty one, or one
  /// that is missing too, that of the font that was chosen for its name, else of
  /// DefaultReplacement.
  [[nodiscard]] FontFace FaceOf(int type, const std::wstring& name,
                                const std::wstring& replacement = {}) const;

  /// Chooses the font that is used in place of a missing one of that name, from now on; an empty
  /// name means texts that name no font. Fails if the replacement is missing as well.
  Expected<void> Replace(const std::wstring& name, const std::wstring& replacement);
  /// Whether a font was chosen for that name.
  [[nodiscard]] bool IsChosen(const std::wstring& name) const;
  /// The families of this machine, sorted, each once.
  [[nodiscard]] std::vector<std::wstring> Families() const;

 private:
  class Index;

  document::Notices& m_Notices;
  std::unique_ptr<Index> m_Index;
  std::map<std::pair<int, std::wstring>, std::unique_ptr<Font>> m_Fonts;
  std::map<std::string, std::wstring> m_Chosen;  // by the plain name
};

}  // namespace rastrel::text
