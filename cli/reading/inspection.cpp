#include "cli/reading/inspection.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>

#include "rastrel/platform/os/dos_eps.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/random_access_file.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/psscan/keywords.h"
#include "rastrel/psscan/line_reader.h"
#include "rastrel/psscan/ps_parser.h"
#include "rastrel/psscan/scan_from.h"
#include "rastrel/psscan/tokens.h"

namespace rastrel::cli {
namespace {

// Names that the comments declare, and those that they define, in file order.
struct CommentNames {
  std::vector<SpotName> declared;
  std::vector<SpotName> defined;
};

SpotName NameOf(std::string_view text) {
  CString name;
  (void)psscan::TextToken(text, name);
  const psscan::RawToken raw = psscan::FindTextToken(text);
  return {
      .name = os::Utf8FromWide(name),
      .postScript = raw.isString ? PostScriptText(raw.bytes) : os::Utf8FromUtf8OrAnsi(raw.bytes)};
}

// Takes groups of `numbers` values and a name.
void TakeNames(std::string_view text, int numbers, std::vector<SpotName>& names) {
  for (;;) {
    for (int number = 0; number < numbers; ++number)
      text.remove_prefix(psscan::FindTextToken(text).consumed);
    const psscan::RawToken raw = psscan::FindTextToken(text);
    if (raw.bytes.empty()) return;
    const SpotName name = NameOf(text.substr(0, raw.consumed));
    if (std::ranges::find(names, name) == names.end()) names.push_back(name);
    text.remove_prefix(raw.consumed);
  }
}

// Reads the color comments of the whole file, but for those of documents inside it.
class CommentReader {
 public:
  explicit CommentReader(CommentNames& names) : m_Names(names) {}

  void Read(std::string_view line, bool behindSkipped) {
    if (behindSkipped) m_Target = nullptr;
    if (line.starts_with("%%BeginDocument")) ++m_Depth;
    if (line.starts_with("%%EndDocument") && m_Depth > 0) --m_Depth;
    if (m_Depth > 0) return;
    if (line.starts_with(psscan::keyword::Continuation)) {
      line.remove_prefix(psscan::keyword::Continuation.size());
    } else if (!Begin(line)) {
      m_Target = nullptr;
    }
    if (m_Target != nullptr) TakeNames(line, m_Numbers, *m_Target);
  }

 private:
  bool Begin(std::string_view& line) {
    struct Kind {
      std::string_view keyword;
      std::vector<SpotName>* target;
      int numbers;
    };
    const Kind kinds[] = {{psscan::keyword::DocumentColors, &m_Names.declared, 0},
                          {psscan::keyword::CmykColor, &m_Names.defined, 4},
                          {psscan::keyword::RgbColor, &m_Names.defined, 3}};
    for (const Kind& kind : kinds) {
      if (!line.starts_with(kind.keyword)) continue;
      if (psscan::IsDeferred(line)) return false;
      m_Target = kind.target;
      m_Numbers = kind.numbers;
      line.remove_prefix(kind.keyword.size());
      return true;
    }
    return false;
  }

  CommentNames& m_Names;
  std::vector<SpotName>* m_Target = nullptr;  // of the comment that a continuation belongs to
  int m_Numbers = 0;
  int m_Depth = 0;
};

CommentNames ReadNames(const std::wstring& path) {
  CommentNames names;
  (void)psscan::ScanFrom(path, [&](psscan::LineReader& in, const psscan::Start&) {
    CommentReader comments(names);
    while (!in.AtEnd()) {
      const std::uint64_t before = in.Tell();
      in.SkipLinesWithout('%', '%');
      const bool skipped = in.Tell() != before;
      comments.Read(in.NextLine(), skipped);
    }
    return true;
  });
  return names;
}

FileSection SectionOf(const os::DosEpsPart& part) { return {part.place, part.size}; }

// The file's first bytes; those that it doesn't have are zeros.
Expected<std::string> HeadOf(const std::string& path, const std::wstring& wide) {
  auto file = os::RandomAccessFile::Open(wide);
  if (!file) return file.Error();
  std::string head(os::DosEpsHeadSize, '\0');
  const auto got = file->ReadAt(0, head);
  if (!got) return Failure{"read", path, got.Error().error};
  if (*got == 0) head.clear();
  return head;
}

std::string HeaderOf(const std::wstring& path) {
  std::string header;
  (void)psscan::ScanFrom(path, [&](psscan::LineReader& in, const psscan::Start&) {
    header = os::Utf8FromWide(os::WideFromAnsi(in.NextLine()));
    return true;
  });
  return header;
}

void SetKind(Inspection& result, const std::string& head, CPSParser& parser) {
  if (!parser.FindEPSStart(result.start, result.length)) {
    result.reason = head.empty() ? "it is empty" : "it has no \"%!PS\"";
    return;
  }
  if (os::IsDosEps(head)) {
    const os::DosEpsHead parts = os::ReadDosEpsHead(head);
    result.kind = FileKind::DosEps;
    result.reason = "it begins with a DOS EPS header";
    result.postScript = SectionOf(parts.postScript);
    result.metafile = SectionOf(parts.metafile);
    result.tiff = SectionOf(parts.tiff);
  } else if (parser.IsEpsFile()) {
    result.kind = FileKind::Eps;
    result.reason = "its first line says EPSF";
  } else {
    result.kind = FileKind::PostScript;
    result.reason = parser.IsPostscriptFile() ? "its first line says PS-Adobe, and not EPSF"
                                              : "it has \"%!\", and neither PS-Adobe nor EPSF";
  }
}

}  // namespace

const char* KindWord(FileKind kind) {
  switch (kind) {
    case FileKind::PostScript: return "PostScript";
    case FileKind::Eps: return "EPS";
    case FileKind::DosEps: return "DOS EPS";
    case FileKind::Neither: break;
  }
  return "neither";
}

std::string PostScriptText(std::string_view raw) {
  constexpr std::string_view letters = "nrtbf";
  constexpr std::string_view meanings = "\n\r\t\b\f";
  std::string bytes;
  for (std::size_t index = 0; index < raw.size(); ++index) {
    if (raw[index] != '\\' || index + 1 == raw.size()) {
      bytes.push_back(raw[index]);
      continue;
    }
    ++index;
    unsigned value = 0;
    std::size_t digits = 0;
    for (; digits < 3 && index + digits < raw.size(); ++digits) {
      const char digit = raw[index + digits];
      if (digit < '0' || digit > '7') break;
      value = value * 8 + static_cast<unsigned>(digit - '0');
    }
    if (digits > 0) {
      bytes.push_back(static_cast<char>(value));
      index += digits - 1;
    } else {
      const std::size_t letter = letters.find(raw[index]);
      bytes.push_back(letter == letters.npos ? raw[index] : meanings[letter]);
    }
  }
  return os::Utf8FromUtf8OrAnsi(bytes);
}

Expected<Inspection> InspectFile(const std::string& path) {
  Inspection result;
  result.path = path;
  const std::wstring wide = os::FromNative(path);
  const auto head = HeadOf(path, wide);
  if (!head) return head.Error();
  CPSParser parser(wide.c_str());
  SetKind(result, *head, parser);
  if (result.kind == FileKind::Neither) return result;

  result.header = HeaderOf(wide);
  CRect bounds;
  if (parser.GetBounds(bounds)) result.bounds = bounds;
  const CommentNames names = ReadNames(wide);
  result.names = names.declared;
  const auto named = [](const std::vector<SpotName>& all, const std::string& name) {
    return std::ranges::find(all, name, &SpotName::name);
  };
  for (const SpotName& name : names.declared)
    if (named(names.defined, name.name) == names.defined.end()) result.undefined.push_back(name);
  CSpotMatchList list;
  (void)parser.LoadSpotMatchItems(&list);
  for (const CSpotMatchItem& item : list) {
    const std::string name = os::Utf8FromWide(item.GetName());
    const auto found = named(names.defined, name);
    result.spots.push_back({.name = found == names.defined.end() ? SpotName{name, name} : *found,
                            .color = item.GetColor()});
  }
  return result;
}

}  // namespace rastrel::cli
