// Scans of a generated file of 1 GiB, in the system's cache, against a bare walk over the same
// lines, the literal reader, wc, grep and libspectre. All times are processor time, of children
// too.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "bench/program.h"
#include "bench/require.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/psscan/ps_parser.h"
#include "tests/support/literal_ps_scans.h"
#include "tests/support/scratch_directory.h"

#ifdef RASTREL_BENCH_SPECTRE
#include <libspectre/spectre.h>
#endif

namespace {

namespace os = rastrel::os;
namespace bench = rastrel::bench;
using bench::Peer;
using bench::Require;
using bench::Work;
using rastrel::test::LiteralPsScans;

constexpr std::size_t Whole = std::size_t{1} << 30;
// The literal reader is timed on a part and its time multiplied.
constexpr std::size_t LiteralPart = Whole / 16;
constexpr std::size_t DocumentSize = std::size_t{200} << 20;

void Compare(const std::string& name, const Work& ours, const std::vector<Peer>& peers) {
  bench::CompareBest(name, {.count = 5, .clock = bench::Clock::ProcessorOfChildren}, ours, peers);
}

// Lines of 60 to 250 bytes of program text, each with `lead` in front.
std::string Lines(const char* lead) {
  std::mt19937 random(1);
  constexpr char letters[] = "0123456789 abcdefghijklmnopqrstuvwxyz moveto lineto curveto %";
  std::string text;
  while (text.size() < (std::size_t{4} << 20)) {
    text += lead;
    for (std::size_t left = 60 + random() % 191; left > 0; --left)
      text.push_back(letters[random() % (sizeof letters - 1)]);
    text.push_back('\n');
  }
  return text;
}

void WriteFile(const std::string& path, std::size_t size, const std::string& head,
               const std::string& lines, const std::string& tail) {
  std::ofstream file(path, std::ios::binary);
  file << head;
  for (std::size_t written = 0; written < size; written += lines.size()) file << lines;
  file << tail;
  Require(file.good(), "the generated file can't be written");
}

void Walk(const std::string& path) {
  constexpr std::size_t size = std::size_t{256} << 10;
  const auto window = std::make_unique<char[]>(size);
  const os::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  std::size_t lines = 0;
  for (ssize_t got = 0; (got = ::read(file.Get(), window.get(), size)) > 0;) {
    const char* const end = window.get() + got;
    for (const char* at = window.get(); at < end; ++lines) {
      const void* const found = std::memchr(at, '\n', static_cast<std::size_t>(end - at));
      if (found == nullptr) break;
      at = static_cast<const char*>(found) + 1;
    }
  }
  Require(lines > 0, "the walk found no line");
}

os::FileDescriptor TemporaryFile() {
  return os::FileDescriptor(::open("/tmp", O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
}

// Not with /dev/null as its output: grep stops at the first match then.
Work Program(std::vector<std::string> arguments) {
  return [arguments] {
    const os::FileDescriptor output = TemporaryFile();
    bench::Run(arguments, {.output = output.Get()});
  };
}

CPSParser ParserOf(const std::string& path) {
  return CPSParser(std::wstring(path.begin(), path.end()).c_str());
}

template <typename Parser>
void Bounds(Parser parser) {
  CRect rect;
  Require(parser.GetBounds(rect) && rect.right == 300, "GetBounds");
}

template <typename Parser>
void Strings(Parser parser) {
  CRect rect;
  std::vector<CString> names;
  Require(parser.GetBoundsAndStrings(rect, names) && names.empty(), "GetBoundsAndStrings");
}

template <typename Parser>
void Spots(Parser parser) {
  CSpotMatchList list;
  Require(parser.LoadSpotMatchItems(&list) && list.size() == 1, "LoadSpotMatchItems");
}

const std::string Head = "%!PS-Adobe-3.0\n%%BoundingBox: (atend)\n%%Pages: 1\n%%EndComments\n";
const std::string Tail = "%%Trailer\n%%BoundingBox: 10 20 300 400\n%%EOF\n";
const std::string ColorHead =
    "%!PS-Adobe-3.0\n%%BoundingBox: (atend)\n%%DocumentCustomColors: (A)\n";
const std::string ColorTail = "%%CMYKCustomColor: 0 1 0 0 (A)\n%%EndComments\nshowpage\n";

void CompareScans(const rastrel::test::ScratchDirectory& scratch) {
  struct Scan {
    const char* name;
    const std::string& head;
    const char* lead;
    const std::string& tail;
    Work (*ours)(const std::string&);
    Work (*literal)(const std::string&);
    double walkLimit;
  };
  using Path = std::string;
  const Scan scans[] = {
      {"GetBounds, box in the trailer, 1 GiB", Head, "", Tail,
       [](const Path& path) -> Work { return [path] { Bounds(ParserOf(path)); }; },
       [](const Path& path) -> Work { return [path] { Bounds(LiteralPsScans(path)); }; }, 1.0},
      {"GetBoundsAndStrings, no colours, 1 GiB", Head, "", Tail,
       [](const Path& path) -> Work { return [path] { Strings(ParserOf(path)); }; },
       [](const Path& path) -> Work { return [path] { Strings(LiteralPsScans(path)); }; }, 1.0},
      {"LoadSpotMatchItems, header of 1 GiB", ColorHead, "%", ColorTail,
       [](const Path& path) -> Work { return [path] { Spots(ParserOf(path)); }; },
       [](const Path& path) -> Work { return [path] { Spots(LiteralPsScans(path)); }; }, 1.2}};
  const std::string whole = scratch.Path("whole.ps");
  const std::string part = scratch.Path("part.ps");
  for (const Scan& scan : scans) {
    const std::string lines = Lines(scan.lead);
    WriteFile(whole, Whole, scan.head, lines, scan.tail);
    WriteFile(part, LiteralPart, scan.head, lines, scan.tail);
    Compare(scan.name, scan.ours(whole),
            {{"read() and memchr over the same lines", [&] { Walk(whole); }, scan.walkLimit},
             {"literal reader, 64 MiB times 16", scan.literal(part), 0.05, 16},
             {"wc -l", Program({"wc", "-l", whole}), 1.1},
             {"grep -a -c ^%%BoundingBox", Program({"grep", "-a", "-c", "^%%BoundingBox", whole}),
              0.4}});
  }
}

#ifdef RASTREL_BENCH_SPECTRE
void LoadBySpectre(const std::string& path) {
  SpectreDocument* const document = ::spectre_document_new();
  ::spectre_document_load(document, path.c_str());
  Require(::spectre_document_status(document) == SPECTRE_STATUS_SUCCESS, "libspectre failed");
  ::spectre_document_free(document);
}
#endif

// Pages of text as word processors write them, until the document is large.
void WriteDocument(const std::string& path) {
  const std::string lines = Lines("").substr(0, 100000);
  std::ofstream file(path, std::ios::binary);
  file << "%!PS-Adobe-3.0\n%%BoundingBox: (atend)\n%%Pages: (atend)\n%%EndComments\n";
  int page = 0;
  for (std::size_t written = 0; written < DocumentSize; written += lines.size()) {
    ++page;
    file << "%%Page: " << page << ' ' << page << "\n" << lines << "\nshowpage\n";
  }
  file << "%%Trailer\n%%Pages: " << page << "\n%%BoundingBox: 10 20 300 400\n%%EOF\n";
}

void CompareDocument([[maybe_unused]] const rastrel::test::ScratchDirectory& scratch) {
#ifdef RASTREL_BENCH_SPECTRE
  const std::string path = scratch.Path("document.ps");
  WriteDocument(path);
  const Peer peer{"libspectre loading it", [&] { LoadBySpectre(path); }, 0.3};
  Compare("GetBounds, 200 MB of pages", [&] { Bounds(ParserOf(path)); }, {peer});
  Compare("GetBoundsAndStrings, 200 MB of pages", [&] { Strings(ParserOf(path)); }, {peer});
  WriteFile(path, DocumentSize, ColorHead, Lines("%"), ColorTail);
  Compare("LoadSpotMatchItems, header of 200 MB", [&] { Spots(ParserOf(path)); }, {peer});
#else
  std::printf("libspectre is not installed: no comparison with it\n");
#endif
}

void CompareHeaderQuestions(const rastrel::test::ScratchDirectory& scratch) {
  const std::string text =
      "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 10 20 300 400\n%%EndComments\n" +
      Lines("").substr(0, 20000) + "%%EOF\n";
  const auto questions = [](const std::string& path) -> Work {
    return [path] {
      for (int call = 0; call < 2000; ++call) {
        Bounds(ParserOf(path));
        Require(ParserOf(path).IsEpsFile(), "IsEpsFile");
      }
    };
  };
  const auto lengths = [](const std::string& path) -> Work {
    return [path] {
      long long start = 0;
      long long length = 0;
      for (int call = 0; call < 2000; ++call)
        Require(ParserOf(path).FindEPSStart(start, length), "FindEPSStart");
    };
  };
  scratch.Write("small.eps", text);
  scratch.Write("huge.eps", text);
  const std::string huge = scratch.Path("huge.eps");
  Require(::truncate(huge.c_str(), 5L << 30) == 0, "the file system holds no file of 5 GiB");
  std::ofstream(huge, std::ios::app) << "%%EOF\n";
  const std::string small = scratch.Path("small.eps");
  Compare("header questions, 5 GiB, 2,000 times", questions(huge),
          {{"the same of 20 KB", questions(small), 1.2}});
  Compare("length, 5 GiB, 2,000 times", lengths(huge),
          {{"the same of 20 KB", lengths(small), 1.2}});
}

// KiB that the scans of a file add to a process that does nothing else.
double AddedBy(const std::string& path) {
  const os::FileDescriptor out = TemporaryFile();
  bench::Run({os::ExecutablePath(), "--peak", path}, {.output = out.Get()});
  char text[32] = {};
  Require(::pread(out.Get(), text, sizeof text - 1, 0) > 0, "--peak told nothing");
  return std::strtod(text, nullptr);
}

// The peak of this process in getrusage would include that of its starter.
int TellPeak(const std::string& path) {
  const long before = bench::StatusKilobytes("VmRSS:");
  CRect rect;
  std::vector<CString> names;
  CSpotMatchList list;
  (void)ParserOf(path).GetBounds(rect);
  (void)ParserOf(path).GetBoundsAndStrings(rect, names);
  (void)ParserOf(path).LoadSpotMatchItems(&list);
  std::printf("%ld\n", bench::StatusKilobytes("VmHWM:") - before);
  return 0;
}

void ComparePeaks(const rastrel::test::ScratchDirectory& scratch) {
  const std::string large = scratch.Path("whole.ps");
  const std::string small = scratch.Path("one.ps");
  WriteFile(small, 1, ColorHead, Lines("%"), ColorTail);
  const double ours = AddedBy(large);
  const double peer = AddedBy(small);
  const std::string peak = "peak memory that the scans add, 1 GiB";
  bench::Print({peak, ours, "KiB", "the same of 4 MiB", peer, 1.1});
  bench::Print({peak, ours, "KiB", "8 MiB", 8192, 1});
}

}  // namespace

int main(int count, char** words) {
  if (count == 3 && std::string(words[1]) == "--peak") return TellPeak(words[2]);
  const rastrel::test::ScratchDirectory scratch;
  CompareScans(scratch);
  ComparePeaks(scratch);
  CompareDocument(scratch);
  CompareHeaderQuestions(scratch);
  return 0;
}
