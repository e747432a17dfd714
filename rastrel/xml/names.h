#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "rastrel/xml/arena.h"

namespace rastrel::xml {

/// A name as written, kept once for all nodes that bear it.
struct XmlName {
  std::wstring_view qualified;  ///< "svg:path"
  std::wstring_view local;      ///< its part "path"
  std::string_view bytes;       ///< the qualified name in UTF-8
  std::size_t prefix = 0;       ///< how many of the bytes are the prefix; 0 without one
};

/// All names of one document. Names live as long as the table.
class XmlNames {
 public:
  /// The name of that prefix (null or empty for none) and local part.
  [[nodiscard]] const XmlName* Find(const char* prefix, const char* local);

  /// The same, where the parser keeps each different text at one address for all of its life.
  [[nodiscard]] const XmlName* FindKept(const char* prefix, const char* local) {
    Known& known = m_Known[Slot(prefix, local)];
    if (known.local != local || known.prefix != prefix)
      known = {prefix, local, Find(prefix, local)};
    return known.name;
  }

  /// How many different names there are.
  [[nodiscard]] std::size_t Count() const { return m_Names.size(); }
  /// Bytes that they take.
  [[nodiscard]] std::size_t Size() const { return m_Arena.Size() + m_Names.size() * EntrySize; }

 private:
  struct Known {
    const char* prefix = nullptr;
    const char* local = nullptr;
    const XmlName* name = nullptr;
  };
  static constexpr std::size_t KnownCount = 128;
  static constexpr std::size_t EntrySize = 64;  // of the map, about

  // The parser's texts lie one after the other, so the low bits differ.
  static std::size_t Slot(const char* prefix, const char* local) {
    const auto mixed =
        reinterpret_cast<std::uintptr_t>(local) + 31 * reinterpret_cast<std::uintptr_t>(prefix);
    return (mixed ^ (mixed >> 7)) % KnownCount;
  }

  XmlArena m_Arena;
  std::unordered_map<std::string_view, const XmlName*> m_Names;
  std::array<Known, KnownCount> m_Known{};
  std::string m_Bytes;
};

}  // namespace rastrel::xml
