#include "interpreter/dsc_pages.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "interpreter/job_file.h"

namespace rastrel::interpreter {
namespace {

constexpr std::size_t ChunkSize = 262144;
constexpr std::size_t LineReach = 255;  // a comment is no longer
constexpr std::size_t EndReach = 1024;  // of a page's beginning and end that are looked at
constexpr std::string_view Whitespace = " \t\r\n\f";
constexpr char EndOfJob = '\x04';
constexpr std::array<std::string_view, 2> ServerWords{"exitserver", "startjob"};

Failure Refused(const std::string& reason) { return FailureOf(reason, FailureCode::BadInput); }

// Follows the comments of a document, line by line.
class Comments {
 public:
  void Take(std::string_view line, std::uint64_t at) {
    if (!line.starts_with("%%") || m_Refusal) return;
    if (Opens(line)) ++m_Depth;
    if (Closes(line)) --m_Depth;
    if (line.starts_with("%%Page:")) TakePage(at);
    if (m_Depth > 0) return;
    if (line.starts_with("%%Trailer")) TakeTrailer(at);
    if (line.starts_with("%%EndProlog") || line.starts_with("%%EndSetup")) m_HasProlog = true;
    if (line.starts_with("%%PageOrder:") && line.find("Special") != line.npos)
      Refuse("its pages depend on each other (%%PageOrder: Special)");
    if (line.starts_with("%%Pages:")) TakeCount(line.substr(8));
  }

  [[nodiscard]] Expected<DscPages> Result(std::uint64_t begin, std::uint64_t end) const {
    if (m_Refusal) return Refused(*m_Refusal);
    if (m_Pages.size() < 2) return Refused("it has no comments of two pages");
    if (!m_HasProlog) return Refused("no comment ends its prolog or setup ahead of the pages");
    if (!m_Trailer) return Refused("no comment begins its trailer");
    if (m_Depth != 0) return Refused("its comments of enclosed parts do not match");
    if (m_Count != m_Pages.size()) {
      return Refused("its comments count " + std::to_string(m_Count) + " pages and name " +
                     std::to_string(m_Pages.size()));
    }
    DscPages pages{{begin, m_Pages.front() - begin}, {}, {*m_Trailer, end - *m_Trailer}};
    for (std::size_t i = 0; i < m_Pages.size(); ++i) {
      const std::uint64_t next = i + 1 < m_Pages.size() ? m_Pages[i + 1] : *m_Trailer;
      pages.pages.push_back({m_Pages[i], next - m_Pages[i]});
    }
    return pages;
  }

 private:
  static bool Opens(std::string_view line) {
    return line.starts_with("%%BeginDocument") || line.starts_with("%%BeginData") ||
           line.starts_with("%%BeginBinary");
  }
  static bool Closes(std::string_view line) {
    return line.starts_with("%%EndDocument") || line.starts_with("%%EndData") ||
           line.starts_with("%%EndBinary");
  }
  void TakePage(std::uint64_t at) {
    if (m_Depth > 0) Refuse("a page's comment is within an enclosed part");
    if (m_Trailer) Refuse("a page's comment is after the trailer's");
    m_Pages.push_back(at);
  }
  void TakeTrailer(std::uint64_t at) {
    if (m_Trailer) Refuse("it has two trailers");
    m_Trailer = at;
  }
  // The last one counts: the first may say that it comes at the end.
  void TakeCount(std::string_view value) {
    value.remove_prefix(std::min(value.find_first_not_of(Whitespace), value.size()));
    unsigned count = 0;
    const auto read = std::from_chars(value.data(), value.data() + value.size(), count);
    if (read.ec == std::errc()) m_Count = count;
  }
  void Refuse(const char* reason) {
    if (!m_Refusal) m_Refusal = reason;
  }

  int m_Depth = 0;
  bool m_HasProlog = false;
  unsigned m_Count = 0;
  std::vector<std::uint64_t> m_Pages;
  std::optional<std::uint64_t> m_Trailer;
  std::optional<std::string> m_Refusal;
};

// Cuts bytes into lines, of which it keeps the beginnings alone.
class Lines {
 public:
  explicit Lines(Comments& comments) : m_Comments(comments) {}

  void Add(std::string_view bytes, std::uint64_t at) {
    while (!bytes.empty()) {
      if (m_Line.empty()) m_At = at;
      const std::size_t end = std::min(bytes.find_first_of("\r\n"), bytes.size());
      m_Line += bytes.substr(0, std::min(end, LineReach - std::min(m_Line.size(), LineReach)));
      if (end == bytes.size()) return;
      Finish();
      bytes.remove_prefix(end + 1);
      at += end + 1;
    }
  }
  void Finish() {
    m_Comments.Take(m_Line, m_At);
    m_Line.clear();
  }

 private:
  Comments& m_Comments;
  std::string m_Line;
  std::uint64_t m_At = 0;
};

// The names and numbers of a text, without its comments.
std::vector<std::string> WordsOf(std::string_view text) {
  std::vector<std::string> words;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    std::string_view line = text.substr(0, text.front() == '%' ? 0 : end);
    text.remove_prefix(std::min(end + 1, text.size()));
    while (!line.empty()) {
      const std::size_t first = line.find_first_not_of(Whitespace);
      if (first == line.npos) break;
      line.remove_prefix(first);
      const std::size_t length = std::min(line.find_first_of(Whitespace), line.size());
      words.emplace_back(line.substr(0, length));
      line.remove_prefix(length);
    }
  }
  return words;
}

// "save", or "/name save def".
bool BeginsWithSave(const std::vector<std::string>& words) {
  if (words.empty()) return false;
  if (words[0] == "save") return true;
  return words.size() > 2 && words[0].starts_with('/') && words[1] == "save" && words[2] == "def";
}

// "restore", or "showpage" after it.
bool EndsWithRestore(std::vector<std::string> words) {
  if (!words.empty() && words.back() == "showpage") words.pop_back();
  return !words.empty() && words.back() == "restore";
}

Expected<void> CheckPage(int file, const FilePart& page, std::size_t number) {
  const auto reach = static_cast<std::size_t>(std::min<std::uint64_t>(EndReach, page.length));
  const auto begin = ReadPart(file, page.offset, reach);
  if (!begin) return begin.Error();
  const auto end = ReadPart(file, page.offset + page.length - reach, reach);
  if (!end) return end.Error();
  if (BeginsWithSave(WordsOf(*begin)) && EndsWithRestore(WordsOf(*end))) return {};
  return Refused("page " + std::to_string(number) + " is not within a save and its restore");
}

// Text that ends a job or leaves its server's loop, in bytes that may begin within it.
const char* ServerAction(std::string_view bytes) {
  if (bytes.find(EndOfJob) != bytes.npos) return "it holds an end of the job";
  for (const std::string_view word : ServerWords)
    if (bytes.find(word) != bytes.npos) return "it changes the interpreter for later jobs";
  return nullptr;
}

}  // namespace

Expected<DscPages> FindDscPages(int file, const JobLayout& layout) {
  Comments comments;
  Lines lines(comments);
  const std::uint64_t end = layout.offset + layout.length;
  std::string kept;  // the end of the last bytes, which a word may reach over
  for (std::uint64_t at = layout.offset; at < end;) {
    const auto read =
        ReadPart(file, at, static_cast<std::size_t>(std::min<std::uint64_t>(ChunkSize, end - at)));
    if (!read) return read.Error();
    if (read->empty()) return Refused("it has become shorter");
    if (at == layout.offset && !read->starts_with("%!PS-Adobe-"))
      return Refused("its first line does not say that it keeps to the rules of comments");
    if (const char* const reason = ServerAction(kept + *read)) return Refused(reason);
    kept = read->substr(read->size() - std::min(read->size(), ServerWords[0].size()));
    lines.Add(*read, at);
    at += read->size();
  }
  lines.Finish();
  auto pages = comments.Result(layout.offset, end);
  if (!pages) return pages;
  for (std::size_t i = 0; i < pages->pages.size(); ++i) {
    if (const auto checked = CheckPage(file, pages->pages[i], i + 1); !checked)
      return checked.Error();
  }
  return pages;
}

}  // namespace rastrel::interpreter
