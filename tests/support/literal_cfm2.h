#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "rastrel/job/format_string.h"

/// CFM2's reader and writer in the plainest way, step by step as docs/formats/cfm2.md has them and
/// with no regard to speed: the library's are compared with them.
namespace rastrel::test {

/// The types of a page, as the format numbers them.
inline constexpr std::int32_t Once = 0;
inline constexpr std::int32_t Reprint = 1;
inline constexpr std::int32_t Only = 2;

struct LiteralPage {
  std::wstring id = L"QueueCMF2Generator";
  std::wstring directory;
  std::wstring title;
  std::int32_t type = Reprint;
  bool operator==(const LiteralPage&) const = default;
};

/// Removes the comments of a text, from the beginning again after each. Returns the log line if a
/// block comment had no end.
inline std::wstring RemoveCommentsLiterally(std::wstring& text) {
  std::wstring log;
  for (;;) {
    const std::size_t open = text.find(L'>');
    if (open == std::wstring::npos) return log;
    const bool block = open + 1 < text.size() && text[open + 1] == L'>';
    if (!block) {
      const std::size_t line = text.find(L'\n', open);
      text.erase(open, line == std::wstring::npos ? std::wstring::npos : line - open);
      continue;
    }
    const std::size_t close = text.find(L"<<", open);
    if (close == std::wstring::npos) {
      log += L"No comment end in CFF2";
      text.erase(open);
      continue;
    }
    const std::wstring removed = text.substr(open, close - open + 5);
    text.erase(open, removed.size());
    if (removed.find(L'\n') != std::wstring::npos) text.insert(open, 1, L'\n');
  }
}

inline std::wstring TrimLiterally(std::wstring text) {
  const std::wstring set = L"\t \n\r\a\f\v";
  while (!text.empty() && set.find(text.front()) != std::wstring::npos) text.erase(0, 1);
  while (!text.empty() && set.find(text.back()) != std::wstring::npos) text.pop_back();
  return text;
}

/// The reader.
class LiteralReader {
 public:
  /// The directory that "default" means.
  explicit LiteralReader(std::wstring defaultDirectory) : m_Default(std::move(defaultDirectory)) {}

  bool Parse(std::wstring text) {
    m_Pages.clear();
    m_Log = RemoveCommentsLiterally(text);
    bool success = true;
    std::size_t position = 0;
    for (;;) {
      const std::size_t begin = text.find(L"begin", position);
      if (begin == std::wstring::npos) break;
      const std::size_t end = text.find(L"end", begin);
      if (end == std::wstring::npos) break;
      position = end + 3;
      LiteralPage page;
      page.directory = DirectoryOf(L"default");
      std::wistringstream lines(text.substr(begin, position - begin));
      while (!lines.eof()) {
        std::wstring line;
        std::getline(lines, line, L'\n');
        ParseLine(line, page);
      }
      if (page.directory.empty() || page.title.empty() || page.id.empty()) {
        success = false;
      } else {
        m_Pages.push_back(page);
      }
    }
    return success && !m_Pages.empty();
  }

  [[nodiscard]] const std::vector<LiteralPage>& Pages() const { return m_Pages; }
  /// Texts for the application log, without the heads of its entries.
  [[nodiscard]] const std::wstring& Log() const { return m_Log; }

 private:
  [[nodiscard]] std::wstring DirectoryOf(const std::wstring& text) const {
    std::wstring directory = TrimLiterally(text);
    if (directory == L"default") directory = m_Default;
    if (directory.empty()) return L"\\";
    if (directory.back() != L'/' && directory.back() != L'\\') directory += L'\\';
    return directory;
  }

  void ParseLine(const std::wstring& line, LiteralPage& page) {
    static const std::map<std::wstring, int> instructions = {
        {L"begin", 1}, {L"id", 2}, {L"dir", 3}, {L"title", 4}, {L"copies", 5}, {L"end", 6}};
    static const std::map<std::wstring, int> types = {
        {L"once", 0}, {L"reprint", 1}, {L"only", 2}, {L"delete", 3}};
    const std::size_t separator = line.find(L":=");
    if (separator == std::wstring::npos) return;
    const std::wstring keyword = TrimLiterally(line.substr(0, separator));
    const std::wstring value = TrimLiterally(line.substr(separator + 2));
    const auto found = instructions.find(keyword);
    if (found == instructions.end()) {
      m_Log += L"Unknown instruction: " + keyword + L", value: " + value + L"\r\n";
      return;
    }
    if (found->second == 1) {
      const auto type = types.find(value);
      if (type == types.end()) m_Log += L"Unknown ticket type: " + value + L"\r\n";
      page.type = type == types.end() ? 1 : type->second;
    }
    if (found->second == 2) page.id = value;
    if (found->second == 3) page.directory = DirectoryOf(value);
    if (found->second == 4) page.title = value;
  }

  std::wstring m_Default;
  std::vector<LiteralPage> m_Pages;
  std::wstring m_Log;
};

/// The writer, for pages whose directories and titles are short enough and numbers that are in the
/// list.
inline std::wstring GenerateLiterally(const std::vector<LiteralPage>& pages, std::uint32_t copies,
                                      std::deque<std::int32_t> queue) {
  static const std::map<int, std::wstring> types = {
      {0, L"once"}, {1, L"reprint"}, {2, L"only"}, {3, L"delete"}};
  if (queue.empty())
    for (std::size_t page = 0; page < pages.size(); ++page)
      queue.push_back(static_cast<std::int32_t>(page));
  std::sort(queue.begin(), queue.end());
  std::wstring text;
  const auto append = [&text](const wchar_t* format, const auto&... arguments) {
    formatstringT<wchar_t> line;
    line.Format(format, arguments...);
    text += line;
  };
  append(L">> -- C-Format 2.0 -- <<\n");
  append(L">> Generated by queue on <<\n");
  append(L">> Copies: %lu <<\n", copies);
  const wchar_t* const separator = L":=";
  for (std::uint32_t copy = 0; copy < copies; ++copy) {
    for (const std::int32_t number : queue) {
      const LiteralPage& page = pages.at(static_cast<std::size_t>(number));
      append(L"%s %s %s  \n", L"begin", separator, types.at(page.type));
      append(L"\t%s %s %s   \n", L"id", separator, page.id);
      append(L"\t%s %s %s   \n", L"dir", separator, page.directory);
      append(L"\t%s %s %s   \n", L"title", separator, page.title);
      append(L"\t%s %s %i   \n", L"copies", separator, 1);
      append(L"%s   \n", L"end");
    }
  }
  return text;
}

}  // namespace rastrel::test
