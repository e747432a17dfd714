#pragma once

#include <map>
#include <optional>
#include <string>

#include "host/document/shapes.h"
#include "host/document_host.h"

namespace rastrel::layout {

/// The fonts that a template names: a file's name with an extension of three letters, or a family
/// with or without a style. A text without a font is set in text::DefaultReplacement. A missing
/// font is replaced as the host is set to, with its notice.
class TemplateFonts {
 public:
  /// `host` must outlive the object.
  explicit TemplateFonts(document::DocumentHost& host) : m_Host(host) {}

  /// A run of that text, without line ends, in a font and a size (world units). Nothing if the font
  /// is missing and the host takes no other for it, which is in its notices.
  [[nodiscard]] std::optional<document::TextRun> Run(std::wstring text, const std::wstring& font,
                                                     double size);

 private:
  struct Face {
    std::wstring name;
    int type = 2;
    std::wstring replacement;
  };
  [[nodiscard]] std::optional<Face> Find(const std::wstring& font);

  document::DocumentHost& m_Host;
  std::map<std::wstring, std::optional<Face>> m_Faces;  // by the template's names
};

}  // namespace rastrel::layout
