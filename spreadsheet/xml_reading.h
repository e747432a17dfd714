#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "rastrel/xml/stream.h"
#include "rastrel/xml/walk.h"

/// Reading the XML of spreadsheets by paths of local names.
namespace rastrel::spreadsheet {

/// A handler whose calls may throw: the parser is left in order first.
class GuardedHandler : public xml::XmlStreamHandler {
 public:
  /// As xml::StreamXmlFile by native path. Rethrows an exception of a guarded call.
  [[nodiscard]] bool ReadFrom(const std::string& path,
                              xml::XmlWhitespace blanks = xml::XmlWhitespace::Drop);

 protected:
  /// Runs `call`; an exception of it ends the reading.
  template <typename Call>
  void Guard(const Call& call) {
    try {
      call();
    } catch (...) {
      m_Thrown = std::current_exception();
      Refuse("the reading was stopped");
    }
  }

 private:
  std::exception_ptr m_Thrown;
};

/// Reads a document whose wanted elements lie at fixed paths. Each path is a list of local names,
/// the root's first; elements at a path's end are handed over as nodes.
class PathReader : public GuardedHandler {
 public:
  using Path = std::vector<std::wstring_view>;
  using OnNode = std::function<void(const XmlNode&)>;

  PathReader& On(Path path, OnNode call) {
    m_Wanted.push_back({std::move(path), std::move(call)});
    return *this;
  }
  /// Whether the root was the one that the first path wants.
  [[nodiscard]] bool FoundRoot() const { return m_FoundRoot; }
  using XmlStreamHandler::Refuse;

  xml::StreamChoice Begin(std::wstring_view baseName, const XmlNode& start, int depth) override;
  void Node(const XmlNode& node) override;
  void End(std::wstring_view baseName, int depth) override;

 private:
  struct Wanted {
    Path path;
    OnNode call;
  };
  std::vector<Wanted> m_Wanted;
  std::vector<std::wstring> m_Open;
  const Wanted* m_Current = nullptr;
  bool m_FoundRoot = false;
};

/// The latest failure of the XML layer on this thread, at a place that the caller names, as
/// "book.xlsx: xl/styles.xml"; with `otherwise` as the reason if the layer reported none.
[[nodiscard]] Failure TakeXmlFailureAt(std::string where, const std::string& otherwise);

/// An attribute by its local name, whatever its prefix; empty if there is none.
[[nodiscard]] std::string AttributeNamed(const XmlNode& node, std::wstring_view localName);
/// A whole number of zero or more that is all of the text; none otherwise.
[[nodiscard]] std::optional<std::uint64_t> WholeNumber(std::string_view text);
/// Whether a text of a schema's boolean says yes.
[[nodiscard]] bool IsYes(std::string_view text);

}  // namespace rastrel::spreadsheet
