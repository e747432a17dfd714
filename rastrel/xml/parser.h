#pragma once

#include <span>
#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"
#include "rastrel/xml/elements.h"
#include "rastrel/xml/names.h"
#include "rastrel/xml/tree.h"

namespace rastrel::xml {

/// Where a document's bytes come from.
class XmlSource {
 public:
  XmlSource() = default;
  XmlSource(const XmlSource&) = delete;
  XmlSource& operator=(const XmlSource&) = delete;
  virtual ~XmlSource() = default;
  /// The next bytes, as many as there are and fit; 0 at the end.
  [[nodiscard]] virtual Expected<std::size_t> Read(std::span<char> bytes) = 0;
};

/// Receives a document's parts in order. All texts are UTF-8 and valid during the call only.
class XmlEvents {
 public:
  XmlEvents() = default;
  XmlEvents(const XmlEvents&) = delete;
  XmlEvents& operator=(const XmlEvents&) = delete;
  virtual ~XmlEvents() = default;

  /// An element. `line` is where its start tag ends, from 1.
  virtual void Start(const XmlName* name, std::span<const XmlStartAttribute> attributes,
                     std::uint32_t line) = 0;
  virtual void End() = 0;
  /// A piece of text; any number of them in a row are one text.
  virtual void Text(std::string_view bytes) = 0;
  /// A whole section, empty ones too.
  virtual void Cdata(std::string_view bytes) = 0;
  virtual void Comment(std::string_view bytes) = 0;
  virtual void Instruction(const XmlName* target, std::string_view data) = 0;

  /// A failure with the reason if the document is refused from here on. Called after
  /// each piece of reading, and at once after an element's start or end that set m_Refused.
  [[nodiscard]] virtual Expected<void> State() const = 0;
  [[nodiscard]] bool Refused() const { return m_Refused; }

 protected:
  bool m_Refused = false;
};

/// How the encoding of a document is found.
enum class XmlEncoding {
  ByDocument,  ///< by its first bytes and its declaration
  Utf8,        ///< it is UTF-8, whatever it says
};

/// Reads a document and hands its parts over. Fails if it can't be read or is refused, with the
/// line and column in the failure and without a path; all that was handed over is void then. With
/// `elements` whole elements may go there in place of their parts, which is several times as fast.
[[nodiscard]] Expected<void> ParseXml(XmlSource& source, XmlEncoding encoding, XmlNames& names,
                                      XmlEvents& events, XmlElements* elements = nullptr);

}  // namespace rastrel::xml
