#include "rastrel/cfm/kept_job.h"

#include <algorithm>
#include <cerrno>
#include <charconv>

#include "rastrel/cfm/page_directory.h"
#include "rastrel/job/cfm_file.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::cfm {
namespace {

constexpr std::string_view FirstLine = "Rastrel kept job 1";
constexpr std::uint64_t RecordLimit = std::uint64_t{64} << 20;  // bytes

std::string PathIn(const std::string& directory, std::string_view name) {
  return directory + "/" + std::string(name);
}

// Control characters and '%' as '%' and two digits, so that a line is a line.
std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte >= 0x20 && byte != 0x7F && byte != '%') {
      escaped += character;
    } else {
      escaped += '%';
      os::AppendHex(escaped, byte, os::HexCase::Upper);
    }
  }
  return escaped;
}

std::optional<std::string> Unescaped(std::string_view text) {
  std::string plain;
  while (!text.empty()) {
    const std::size_t escape = text.find('%');
    plain += text.substr(0, escape);
    if (escape == std::string_view::npos) break;
    if (text.size() < escape + 3) return std::nullopt;
    const auto byte = os::ByteFromHex(text[escape + 1], text[escape + 2]);
    if (!byte) return std::nullopt;
    plain += static_cast<char>(*byte);
    text.remove_prefix(escape + 3);
  }
  return plain;
}

// Takes the number at the beginning of a text, with the blank after it.
bool TakeNumber(std::string_view& text, std::uint64_t& number) {
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const auto length = static_cast<std::size_t>(stop - text.data());
  if (error != std::errc() || length >= text.size() || text[length] != ' ') return false;
  text.remove_prefix(length + 1);
  return true;
}

// A title that is a path would lead out of the job's directory.
bool IsPlainName(const std::string& name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
         name.find('\0') == std::string::npos;
}

// Reads the lines of a record one by one.
class Reader {
 public:
  explicit Reader(std::string_view text) : m_Rest(text) {}

  Expected<KeptJob> Read() {
    if (NextLine() != FirstLine) return Fault("it is no record of a kept job");
    std::uint64_t count = 0;
    std::string_view line = NextLine();
    if (TakeKey(line, "mover: ")) {
      m_Job.mover = os::ParseIdentity(line);
      if (!m_Job.mover) return Fault("it names no process");
      line = NextLine();
    }
    const std::string number = std::string(line) + " ";
    std::string_view rest = number;
    if (!TakeKey(rest, "pages: ") || !TakeNumber(rest, count) || !rest.empty())
      return Fault("it has no number of pages");
    while ((line = NextLine()) != "end")
      if (!ReadPageLine(line)) return Fault("it is no line about a page");
    if (!m_Rest.empty()) return Fault("there is text after the end");
    if (m_Job.pages.size() != count) return Fault("it has another number of pages than it says");
    return m_Job;
  }

 private:
  std::string_view NextLine() {
    ++m_Line;
    const std::size_t end = m_Rest.find('\n');
    if (end == std::string_view::npos) {
      m_Rest = {};
      return {};
    }
    const std::string_view line = m_Rest.substr(0, end);
    m_Rest.remove_prefix(end + 1);
    return line;
  }

  static bool TakeKey(std::string_view& line, std::string_view key) {
    if (!line.starts_with(key)) return false;
    line.remove_prefix(key.size());
    return true;
  }

  bool ReadPageLine(std::string_view line) {
    if (TakeKey(line, "from: ")) {
      const auto source = Unescaped(line);
      if (!source || m_Job.pages.empty()) return false;
      m_Job.pages.back().source = *source;
      return true;
    }
    KeptPage page;
    if (!TakeKey(line, "page: ") || !TakeNumber(line, page.files) || !TakeNumber(line, page.bytes))
      return false;
    const auto title = Unescaped(line);
    if (!title || !IsPlainName(*title)) return false;
    page.title = *title;
    m_Job.pages.push_back(std::move(page));
    return true;
  }

  [[nodiscard]] Failure Fault(const char* why) const {
    Failure failure{"read", {}, EINVAL, why};
    failure.line = m_Line;
    return failure;
  }

  std::string_view m_Rest;
  int m_Line = 0;
  KeptJob m_Job;
};

Expected<KeptJob> NotePages(const CCFMFile& pages) {
  KeptJob job;
  for (const CCFMFileEntry& entry : pages.Entries) {
    KeptPage page;
    page.title = os::Utf8FromWide(entry.FileName);
    page.source = os::ToNative(PageDirectory(entry));
    if (!IsPlainName(page.title)) return Failure{"name", page.title, EINVAL, "it is no plain name"};
    const auto measure = os::MeasureTree(page.source);
    if (!measure) return measure.Error();
    page.files = measure->files;
    page.bytes = measure->bytes;
    job.pages.push_back(std::move(page));
  }
  if (auto mover = os::IdentityOfProcess(os::CurrentProcessId())) job.mover = *mover;
  return job;
}

std::string Sizes(std::uint64_t files, std::uint64_t bytes) {
  return std::to_string(bytes) + " bytes in " + std::to_string(files) + " files";
}

}  // namespace

// The text, where "mover" and "from" are those of an unfinished job:
//
//   Rastrel kept job 1
//   mover: IDENTITY
//   pages: COUNT
//   page: FILES BYTES TITLE     count times
//   from: DIRECTORY             after each page
//   end
std::string FormatKeptJob(const KeptJob& job) {
  std::string text(FirstLine);
  if (job.mover) text += "\nmover: " + os::FormatIdentity(*job.mover);
  text += "\npages: " + std::to_string(job.pages.size()) + "\n";
  for (const KeptPage& page : job.pages) {
    text += "page: " + std::to_string(page.files) + " " + std::to_string(page.bytes) + " " +
            Escaped(page.title) + "\n";
    if (!page.source.empty()) text += "from: " + Escaped(page.source) + "\n";
  }
  return text + "end\n";
}

// A text that means the same in another form is not of our making.
Expected<KeptJob> ParseKeptJob(std::string_view text) {
  auto job = Reader(text).Read();
  if (!job) return job;
  const std::string formatted = FormatKeptJob(*job);
  if (formatted == text) return job;
  const auto differs = std::ranges::mismatch(text, formatted).in1;
  return Failure{.what = "read",
                 .error = EINVAL,
                 .why = "it is in another form than it is written in",
                 .line = 1 + static_cast<int>(std::ranges::count(text.begin(), differs, '\n'))};
}

Expected<KeptJob> ReadKeptJob(const std::string& directory, std::string_view name) {
  const std::string path = PathIn(directory, name);
  const auto text = os::ReadWholeFile(os::FromNative(path), RecordLimit);
  if (!text) return text.Error();
  auto job = ParseKeptJob(*text);
  if (job) return job;
  Failure failure = job.Error();
  failure.where = path;
  return failure;
}

Expected<KeptJob> BeginKeptJob(const CCFMFile& pages, const std::string& directory) {
  const std::wstring record = os::FromNative(PathIn(directory, KeptJobName));
  if (const auto removed = os::RemoveFile(record); !removed && removed.Error().error != ENOENT)
    return removed.Error();
  auto job = NotePages(pages);
  if (!job) return job;
  const auto written = os::ReplaceFile(os::FromNative(PathIn(directory, UnfinishedJobName)),
                                       FormatKeptJob(*job), os::Access::Private);
  if (!written) return written.Error();
  return job;
}

Expected<void> FinishKeptJob(const KeptJob& job, const std::string& directory) {
  if (auto same = ComparePages(job, directory); !same) return same;
  KeptJob finished;
  for (const KeptPage& page : job.pages) {
    if (auto flushed = os::FlushTree(PathIn(directory, page.title)); !flushed) return flushed;
    finished.pages.push_back({page.title, page.files, page.bytes, {}});
  }
  for (const std::string& names : {directory, directory + "/.."})
    if (auto flushed = os::FlushNamesIn(names); !flushed) return flushed;
  const auto written = os::ReplaceFile(os::FromNative(PathIn(directory, KeptJobName)),
                                       FormatKeptJob(finished), os::Access::Private);
  if (written) ForgetUnfinishedJob(directory);
  return written;
}

void ForgetUnfinishedJob(const std::string& directory) {
  static_cast<void>(os::RemoveFile(os::FromNative(PathIn(directory, UnfinishedJobName))));
}

Expected<void> ComparePages(const KeptJob& job, const std::string& directory) {
  for (const KeptPage& page : job.pages) {
    const std::string path = PathIn(directory, page.title);
    const auto measure = os::MeasureTree(path);
    if (!measure) return measure.Error();
    if (measure->files == page.files && measure->bytes == page.bytes) continue;
    return Failure{"compare", path, 0,
                   "it has " + Sizes(measure->files, measure->bytes) + " in place of " +
                       Sizes(page.files, page.bytes)};
  }
  return {};
}

}  // namespace rastrel::cfm
