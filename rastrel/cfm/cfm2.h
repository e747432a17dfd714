#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string_view>
#include <vector>

#include "rastrel/cfm/cfm_page.h"
#include "rastrel/job/format_string.h"

/// A keyword of CFM2 text and its code.
struct CFM2Keyword {
  formatstringT<wchar_t> m_Keyword;
  std::int32_t m_Code;
};

/// A document of rendered pages, and its CFM2 text: the format in which the RIP lists its pages and
/// the output engine reads them. It is filled in one of two ways: with the RIP's text and then
/// Parse, or with pages and then Generate. Used by one thread. docs/formats/cfm2.md has the format.
class CCFM2 {
 public:
  CCFM2();
  CCFM2(const CCFM2&) = delete;
  CCFM2& operator=(const CCFM2&) = delete;

  /// Turns the text into the page list, which is emptied first; the text stays. True means at least
  /// one page and none rejected: a page without a title or id is dropped and makes the result
  /// false, the others stay. Irregularities go to the application log.
  [[nodiscard]] bool Parse();

  /// Turns pages, selection and copies into the text for the output engine. `pages` holds positions
  /// in the page list, from 0, and is sorted in place; an empty one means all and stays empty.
  /// Copies are collated: the whole run repeats. 0 copies make a text with no page, and true. False
  /// with a message in the application log if there are no pages, a position is not in the list, a
  /// directory or title is longer than PathLimit, or the text would exceed TextLimit; the text is
  /// incomplete then. The text is for the output engine only: this class's own reader
  /// would lose the first page's "begin" to the comment before it.
  [[nodiscard]] bool Generate(std::uint32_t copies, std::deque<std::int32_t>& pages);

  /// The maximum length of a directory or title that Generate writes, in characters.
  static constexpr std::size_t PathLimit = 4000;
  /// The maximum length of the text that Generate makes, in characters: 1 GiB in memory.
  static constexpr std::size_t TextLimit = std::size_t{1} << 28;

 private:
  using Keywords = std::vector<CFM2Keyword>;

  void ParseLine(std::wstring_view line, PrintingThread::CCFMPage& page) const;
  [[nodiscard]] bool ParsePage(std::wstring_view block);
  [[nodiscard]] std::wstring_view Instruction(std::int32_t code) const;
  [[nodiscard]] bool AppendPage(const PrintingThread::CCFMPage& page);

  Keywords m_Instructions;
  Keywords m_TicketTypes;

 public:
  std::vector<std::unique_ptr<PrintingThread::CCFMPage>> m_Pages;  ///< in file order
  formatstringT<wchar_t> m_Text;                                   ///< the CFM2 text

 private:
  char16_t m_LineDelimiter = u'\n';
};
