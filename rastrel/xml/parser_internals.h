#pragma once

#include <cstdint>
#include <string_view>

#include "rastrel/xml/library.h"

namespace rastrel::xml {

/// The only code that reads or writes members of the parser library's structures (its context, its
/// input and that one's buffers). All else here calls public functions.
///
/// Public functions don't say whether an element may begin at the parser's place, don't move that
/// place on over bytes that the parser never gets, and don't show the bytes that it holds back. The
/// members do. They were the same in all of 2.9, but the parser may use them in any way, so they
/// are touched only in versions that were checked: 2.9.14, that of Debian 12, against its source
/// and with the random documents of tests/xml/streaming_test.cpp. To add a version, read its
/// xmlParseChunk and xmlParseTryOrFinish, run those tests with it, and widen the range below.
///
/// With any other version, of the headers or of the library that is loaded, the parser reads every
/// element itself, and input_watch.h does the rest. Documents and refusals are the same
/// but for the place of a bad byte in a CDATA section, and large tables are read at the parser's
/// own speed.
///
/// A view of one context, which outlives it. One thread.
class XmlParserInternals {
 public:
  /// The versions that were checked, numbered as LIBXML_VERSION is: 2.9.14 is 20914.
  static constexpr int FirstCheckedVersion = 20914;
  static constexpr int LastCheckedVersion = 20914;

  /// Whether the version with which this was compiled and the one that is loaded both were checked.
  /// Else no object of this class may be made. False in the scope of an XmlUncheckedVersion.
  /// REQUIRES: the library is loaded.
  [[nodiscard]] static bool IsAvailable();
  /// The number at the start of a version's text, "20914" or "20914-GITv2.9.14"; 0 if there is
  /// none, and for null.
  [[nodiscard]] static int VersionNumber(const char* text);
  [[nodiscard]] static constexpr bool IsChecked(int version) {
    return version >= FirstCheckedVersion && version <= LastCheckedVersion;
  }

  /// REQUIRES: IsAvailable().
  explicit XmlParserInternals(xmlParserCtxt& context) : m_Context(context) {}

  /// Whether the bytes are UTF-8, so that the parser reads them as they were pushed.
  [[nodiscard]] bool IsUnconverted() const;
  /// Whether the parser has read all bytes that it was given, and an element may follow.
  [[nodiscard]] bool IsBetweenElements() const;
  /// Sets the place that the parser counts lines and columns on from.
  void SetPlace(int line, int column);
  /// The bytes that it holds back until more arrive, in UTF-8. Valid until the next push.
  [[nodiscard]] std::string_view HeldBack() const;
  /// Whether it is in a CDATA section.
  [[nodiscard]] bool IsInCdata() const;
  /// The bytes before its place that it still has, and how many there were of the document. They
  /// end at a fault that it found ahead of its line and column.
  [[nodiscard]] std::string_view BytesBefore() const;
  [[nodiscard]] std::uint64_t CountBefore() const;
  /// Whether the last bytes of a converted document are the begin of a character.
  [[nodiscard]] bool EndsWithinCharacter() const;

 private:
  xmlParserCtxt& m_Context;
};

/// For tests: as long as one lives, documents of its thread are read as with a version of the
/// parser that was never checked. Begun before a document is.
class XmlUncheckedVersion {
 public:
  XmlUncheckedVersion();
  ~XmlUncheckedVersion();
  XmlUncheckedVersion(const XmlUncheckedVersion&) = delete;
  XmlUncheckedVersion& operator=(const XmlUncheckedVersion&) = delete;
};

}  // namespace rastrel::xml
