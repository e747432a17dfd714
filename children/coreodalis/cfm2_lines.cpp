#include "children/coreodalis/cfm2_lines.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <utility>

#include "rastrel/platform/os/whitespace.h"

namespace rastrel::odalis {
namespace {

constexpr std::string_view Whitespace = "\t \n\r\a\f\v";
constexpr std::string_view Separator = ":=";
constexpr std::size_t QuotedLimit = 80;

/// The text in quotes, short enough for a log line.
std::string Quoted(std::string_view text) {
  if (text.size() <= QuotedLimit) return "'" + std::string(text) + "'";
  return "'" + std::string(text.substr(0, QuotedLimit)) + "...'";
}

Failure AtLine(std::size_t line, const std::string& what) {
  return FailureOf("line " + std::to_string(line) + ": " + what);
}

std::optional<TicketType> TicketTypeOf(std::string_view word) {
  constexpr std::array<std::pair<std::string_view, TicketType>, 4> words = {{
      {"once", TicketType::Once},
      {"reprint", TicketType::Reprint},
      {"only", TicketType::Only},
      {"delete", TicketType::Delete},
  }};
  for (const auto& [known, type] : words) {
    if (known == word) return type;
  }
  return std::nullopt;
}

std::optional<unsigned> CopiesOf(std::string_view value) {
  unsigned copies = 0;
  const char* end = value.data() + value.size();
  const auto [stop, error] = std::from_chars(value.data(), end, copies);
  if (error != std::errc() || stop != end || copies > MaximumCopies) return std::nullopt;
  return copies;
}

/// A title is one name in its directory: were it a path, "once" could remove a directory that is no
/// page's.
bool IsDirectoryName(std::string_view title) {
  return title.find_first_of("/\\") == std::string_view::npos && title != "." && title != "..";
}

class Reader {
 public:
  Expected<Cfm2Document> Read(std::string_view text) {
    if (os::Trim(text, Whitespace).empty())
      return FailureOf("line 1: the input is empty, and no CFM2");
    while (!text.empty()) {
      const std::size_t end = std::min(text.find('\n'), text.size());
      ++m_Line;
      if (auto taken = TakeLine(text.substr(0, end)); !taken) return taken.Error();
      text.remove_prefix(std::min(end + 1, text.size()));
    }
    if (m_InPage) return AtLine(m_Page.line, "the page that begins here has no end");
    return std::move(m_Document);
  }

 private:
  Expected<void> TakeLine(std::string_view line) {
    if (line.find('\0') != std::string_view::npos) return AtLine(m_Line, "holds a zero byte");
    // Only the first column opens a comment: a value may hold any number of '>'.
    if (!line.empty() && line.front() == '>') return {};
    const std::string_view whole = os::Trim(line, Whitespace);
    if (whole.empty()) return {};
    const std::size_t separator = line.find(Separator);
    const bool hasValue = separator != std::string_view::npos;
    const std::string_view keyword =
        hasValue ? os::Trim(line.substr(0, separator), Whitespace) : whole;
    const std::string_view value =
        hasValue ? os::Trim(line.substr(separator + Separator.size()), Whitespace) : "";
    return m_InPage ? TakeInPage(keyword, value, hasValue) : TakeOutside(keyword, value, hasValue);
  }

  Expected<void> TakeOutside(std::string_view keyword, std::string_view value, bool hasValue) {
    if (keyword != "begin") {
      return AtLine(m_Line, Quoted(keyword) + " is neither a comment nor the begin of a page");
    }
    m_Page = PageEntry{};
    m_Page.line = m_Line;
    m_InPage = true;
    if (!hasValue) return {};
    if (const auto type = TicketTypeOf(value)) {
      m_Page.type = *type;
    } else {
      Warn("unknown ticket type " + Quoted(value) + ", taken as reprint");
    }
    return {};
  }

  Expected<void> TakeInPage(std::string_view keyword, std::string_view value, bool hasValue) {
    if (keyword == "end") return EndPage();
    if (keyword == "begin") {
      return AtLine(m_Line, "begin inside the page of line " + std::to_string(m_Page.line));
    }
    if (!hasValue)
      return AtLine(m_Line, Quoted(keyword) + " has no ':=' and is not the page's end");
    if (keyword == "id") {
      m_Page.id = value;
    } else if (keyword == "dir") {
      m_Page.directory = value;
    } else if (keyword == "title") {
      m_Page.title = value;
    } else if (keyword == "copies") {
      return TakeCopies(value);
    } else {
      Warn("unknown instruction " + Quoted(keyword) + " passed over");
    }
    return {};
  }

  Expected<void> TakeCopies(std::string_view value) {
    const auto copies = CopiesOf(value);
    if (!copies) {
      return AtLine(m_Line, Quoted(value) + " is no number of copies from 0 to " +
                                std::to_string(MaximumCopies));
    }
    m_Page.copies = *copies;
    return {};
  }

  Expected<void> EndPage() {
    if (m_Page.directory.empty()) return AtLine(m_Page.line, "the page has no dir");
    if (m_Page.title.empty()) return AtLine(m_Page.line, "the page has no title");
    if (!IsDirectoryName(m_Page.title)) {
      return AtLine(m_Page.line, "the title " + Quoted(m_Page.title) + " is no directory's name");
    }
    m_Document.entries.push_back(m_Page);
    m_InPage = false;
    return {};
  }

  void Warn(const std::string& what) {
    if (m_Document.warnings.size() >= MaximumWarnings) return;
    m_Document.warnings.push_back(Describe(AtLine(m_Line, what)));
  }

  Cfm2Document m_Document;
  PageEntry m_Page;
  bool m_InPage = false;
  std::size_t m_Line = 0;
};

}  // namespace

Expected<Cfm2Document> ReadCfm2(std::string_view text) { return Reader().Read(text); }

std::string PageDirectoryOf(const PageEntry& entry) {
  std::string path(entry.directory);
  if (path.back() != '/' && path.back() != '\\') path += '\\';
  return path.append(entry.title);
}

}  // namespace rastrel::odalis
