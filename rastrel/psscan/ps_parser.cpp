#include "rastrel/psscan/ps_parser.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "rastrel/psscan/keywords.h"
#include "rastrel/psscan/line_reader.h"
#include "rastrel/psscan/postscript_start.h"
#include "rastrel/psscan/scan_from.h"
#include "rastrel/psscan/tokens.h"

namespace psscan = rastrel::psscan;
namespace keyword = rastrel::psscan::keyword;
using psscan::LineReader;
using psscan::ScanFrom;

namespace {

bool FirstLineHolds(const std::wstring& path, std::string_view wanted) {
  return ScanFrom(path, [&](LineReader& in, const psscan::Start&) {
    std::string line(in.NextLine());
    for (char& byte : line)
      if (byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte + ('a' - 'A'));
    return !in.Failed() && line.find(wanted) != std::string::npos;
  });
}

// Reads the numbers of a bounding box. One that is missing leaves its side as it is.
void ReadBox(std::string_view line, CRect& rect) {
  line.remove_prefix(keyword::BoundingBox.size());
  for (std::int32_t* const side : {&rect.left, &rect.bottom, &rect.right, &rect.top})
    line.remove_prefix(psscan::IntegerToken(line, *side));
}

bool FindBounds(LineReader& in, CRect& rect) {
  for (;;) {
    in.SkipLinesWithout('B', 'B');
    const std::string_view line = in.NextLine();
    if (line.starts_with(keyword::BoundingBox) && psscan::FromFirstParenthesis(line).empty()) {
      if (in.AtEnd() || in.Failed()) return false;
      ReadBox(line, rect);
      return true;
    }
    if (in.AtEnd()) return false;
  }
}

// Takes the names of a color comment and of the lines that continue it. Returns the line after,
// which is not put back.
std::string_view TakeNames(LineReader& in, std::string_view line, std::vector<CString>& names) {
  line.remove_prefix(keyword::DocumentColors.size());
  for (;;) {
    for (CString name;; names.push_back(std::move(name))) {
      line.remove_prefix(psscan::TextToken(line, name));
      if (name.empty()) break;
    }
    line = in.NextLine();
    if (in.AtEnd() || !line.starts_with(keyword::Continuation)) return line;
    line.remove_prefix(keyword::Continuation.size());
  }
}

void FindBoundsAndNames(LineReader& in, CRect& rect, std::vector<CString>& names) {
  bool colorsSeen = false;
  bool boundsSeen = false;
  while (!colorsSeen || !boundsSeen) {
    in.SkipLinesWithout('B', 'D');
    std::string_view line = in.NextLine();
    if (line.starts_with(keyword::ImageData)) return;
    if (line.starts_with(keyword::DocumentColors)) {
      colorsSeen = true;
      if (!psscan::IsDeferred(line)) line = TakeNames(in, line, names);
    }
    if (in.AtEnd()) return;
    if (line.starts_with(keyword::BoundingBox) && !psscan::IsDeferred(line)) {
      ReadBox(line, rect);
      boundsSeen = true;
    }
  }
}

// A text that ends at its first line end or zero.
std::string_view OneLine(const char* text) {
  const std::string_view whole(text);
  return whole.substr(0, whole.find_first_of("\r\n"));
}

}  // namespace

CPSParser::CPSParser(const wchar_t* path) : m_Path(path == nullptr ? L"" : path) {}
CPSParser::CPSParser(const CPSParser&) = default;
CPSParser::CPSParser(CPSParser&&) noexcept = default;
CPSParser& CPSParser::operator=(const CPSParser&) = default;
CPSParser& CPSParser::operator=(CPSParser&&) noexcept = default;
CPSParser::~CPSParser() = default;

bool CPSParser::FindEPSStart(long long& start, long long& length) {
  start = length = 0;
  return ScanFrom(m_Path, [&](LineReader& in, const psscan::Start& found) {
    const auto offset = static_cast<long long>(found.offset);
    if (found.dosLength != 0) {
      length = found.dosLength;
    } else if (const std::optional<std::uint64_t> letter = psscan::LastLetter(in)) {
      length = static_cast<long long>(*letter) + 1 - offset;
    } else {
      return false;
    }
    start = offset;
    return true;
  });
}

bool CPSParser::IsEpsFile() { return FirstLineHolds(m_Path, "epsf"); }

bool CPSParser::IsPostscriptFile() { return FirstLineHolds(m_Path, "%!ps-adobe"); }

bool CPSParser::GetBounds(CRect& rect) {
  rect.SetRectEmpty();
  return ScanFrom(m_Path,
                  [&](LineReader& in, const psscan::Start&) { return FindBounds(in, rect); });
}

bool CPSParser::GetBoundsAndStrings(CRect& rect, std::vector<CString>& names) {
  rect.SetRectEmpty();
  return ScanFrom(m_Path, [&](LineReader& in, const psscan::Start&) {
    FindBoundsAndNames(in, rect, names);
    return !in.Failed();
  });
}

void CPSParser::EPSGetLine(LineReader& in, char* line) { psscan::ReadLine(in, line); }

int CPSParser::GetEPSint(char* text, int& value) {
  return static_cast<int>(psscan::IntegerToken(text, value));
}

int CPSParser::GetEPStext(char* text, CString& out) {
  return static_cast<int>(psscan::TextToken(OneLine(text), out));
}

int IsEPSFile(const wchar_t* path) { return CPSParser(path).IsEpsFile() ? 1 : 0; }

int IsPostscriptFile(const wchar_t* path) { return CPSParser(path).IsPostscriptFile() ? 1 : 0; }
