#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "rastrel/xml/arena.h"
#include "rastrel/xml/elements.h"
#include "rastrel/xml/names.h"
#include "rastrel/xml/tree.h"

namespace rastrel::xml {

/// A prefix and the address of its namespace. The same text is always at the same address.
struct XmlBinding {
  const char* prefix;  ///< null for the namespace of names without one
  const char* uri;
  bool operator==(const XmlBinding&) const = default;
};

/// The result of scanning.
enum class XmlScan {
  Taken,       ///< there was an element, and it was taken whole
  Entered,     ///< there is a start, which was answered with Enter
  Refused,     ///< there is a start, and the document is refused for it
  NotPlain,    ///< there is something else, or the element has something that is not plain
  Incomplete,  ///< the bytes end before that can be said
};

/// Reads elements that are written as programs write the rows of a table, at several times the
/// speed of a parser: start and end tags with names of ASCII letters, attributes and text as they
/// are. The elements that it takes are well-formed, and any parser (XML 1.0, Namespaces in XML 1.0)
/// would report the same of them. All else it leaves to the parser: references, carriage returns,
/// declarations of namespaces, attributes of "xml" but for the usual "xml:space", line ends and
/// tabs in attributes, CDATA sections, comments, instructions, whatever is wrong, and whatever is
/// unusual enough that looking closer would not pay.
///
/// Bytes are UTF-8 from before an element, whitespace in front of it included. One thread.
class XmlPlainScanner {
 public:
  XmlPlainScanner(XmlNames& names, XmlElements& elements)
      : m_Names(names), m_Elements(elements), m_KeepsWhitespace(elements.KeepsWhitespace()) {}

  /// Sets the namespaces in force for the next elements, the innermost last.
  void SetScope(std::span<const XmlBinding> bindings);

  /// Reads one element. `depth` is how many are open around it, `line` where the bytes begin. Nodes
  /// point into the bytes.
  [[nodiscard]] XmlScan Scan(std::string_view bytes, int depth, std::uint32_t line);

  /// The end of the bytes read: after the element, after its start tag if it was entered, or before
  /// the closing bracket of that if it was refused.
  [[nodiscard]] const char* End() const { return m_At; }
  /// Its line.
  [[nodiscard]] std::uint32_t Line() const { return m_Line; }
  /// Whether the bytes read since the last call of this were all ASCII.
  [[nodiscard]] bool TakeIsAscii() { return std::exchange(m_IsAscii, true); }
  /// The element's name if that could be read; else null.
  [[nodiscard]] const XmlName* Name() const { return m_Name; }
  /// Whether the element is to be collected, as far as Choose was called for it.
  [[nodiscard]] bool IsWanted() const { return m_Builds; }

 private:
  // A name that may be used here.
  struct Known {
    const XmlName* name = nullptr;
    bool isSpace = false;  // "xml:space", which is an attribute's name
  };
  enum class Step { Done, NotPlain, Incomplete };
  struct Level {
    const XmlName* name;
    XmlTreeLevel node;  // without an element where nothing is collected
  };

  static constexpr std::size_t KnownCount = 128;
  static constexpr std::size_t MaximumAttributes = 32;

  bool SkipWhitespace();
  Step ReadName(Known& name);
  [[nodiscard]] Known Learn(std::string_view bytes) const;
  [[nodiscard]] bool IsInScope(std::string_view prefix) const;
  Step ReadStart(const XmlName*& name, bool& isEmpty);
  Step ReadAttributes(bool& isEmpty);
  Step ReadAttribute();
  Step ReadValue(std::string_view& value);
  [[nodiscard]] bool Repeats(const XmlName& name) const;
  Step ReadContent();
  Step ReadText(std::string_view& text);
  Step ReadEnd(const XmlName& name);
  Step ReadChild();
  XmlTreeNode* MakeElement(const XmlName* name);
  void AddText(std::string_view text);

  XmlNames& m_Names;
  XmlElements& m_Elements;
  bool m_KeepsWhitespace;
  std::vector<XmlBinding> m_Bindings;
  bool m_HasSynonyms = false;  // two prefixes of one namespace
  std::array<Known, KnownCount> m_Known{};

  const char* m_At = nullptr;
  const char* m_End = nullptr;
  const char* m_TagEnd =
      nullptr;  // position of a start tag's last bracket, or of the slash before it
  std::uint32_t m_Line = 1;
  bool m_IsAscii = true;
  int m_Depth = 0;
  const XmlName* m_Name = nullptr;
  bool m_Builds = false;
  std::array<XmlTreeAttribute, MaximumAttributes> m_Attributes{};
  std::size_t m_AttributeCount = 0;
  std::vector<Level> m_Open;
  XmlArena m_Arena;
};

}  // namespace rastrel::xml
