// Reads and writes large CFM2 texts. The peers: the plain reader that searches from the beginning
// again after each comment, reading the text once, and writing the same text from a prepared page.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "rastrel/cfm/cfm2.h"
#include "rastrel/job/app_log.h"
#include "rastrel/job/exe_paths.h"
#include "tests/support/literal_cfm2.h"
#include "tests/support/scratch_directory.h"

namespace {

using Work = std::function<void()>;

void Require(bool condition, const char* what) {
  if (condition) return;
  std::printf("cfm2_bench: %s\n", what);
  std::exit(1);
}

// Processor time: nothing here waits, and what else the machine does must not count.
double MillisecondsOf(const Work& work) {
  const std::clock_t start = std::clock();
  work();
  return static_cast<double>(std::clock() - start) * 1000.0 / CLOCKS_PER_SEC;
}

struct Pair {
  double ours;
  double peer;
};

// The best of several turns, ours and the peer's in alternation.
Pair Measure(int turns, const Work& ours, const Work& peer) {
  Pair best{1e300, 1e300};
  for (int turn = 0; turn < turns; ++turn) {
    best.ours = std::min(best.ours, MillisecondsOf(ours));
    best.peer = std::min(best.peer, MillisecondsOf(peer));
  }
  return best;
}

// `limit`: the most that the ratio may be; 0 for none.
void Report(const char* name, const char* peerName, Pair pair, double limit = 0.0) {
  std::printf("bench\t%s\t%.3f\tms\t%s\t%.3f\t%.4f\t", name, pair.ours, peerName, pair.peer,
              pair.ours / pair.peer);
  if (limit > 0.0) {
    std::printf("%.2f\n", limit);
  } else {
    std::printf("-\n");
  }
  std::fflush(stdout);
}

std::wstring TextOf(int pages, bool comments) {
  std::wstring text = L">> -- C-Format 2.0 -- <<  \n";
  for (int page = 0; page < pages; ++page) {
    const std::wstring number = std::to_wstring(page);
    if (comments)
      text += page % 2 == 0 ? L">> page " + number + L" <<  \n" : L"> page " + number + L"\n";
    text += L"begin := once  \n\tid := rip" + number + L"   \n\tdir := /home/jobs/run/" + number +
            L"/   \n\ttitle := Sign Panel " + number + L"   \n\tcopies := 1   \nend   \n";
  }
  return text;
}

// Looks at every character once and keeps nothing.
std::ptrdiff_t LineCount(const std::wstring& text) {
  return std::count(text.begin(), text.end(), L'\n');
}

void MeasureParse(const char* name, int pages, bool comments) {
  CCFM2 document;
  document.m_Text = TextOf(pages, comments);
  const auto parse = [&] { Require(document.Parse(), "a text did not parse"); };
  volatile std::ptrdiff_t lines = 0;
  Report(name, "reading the text once",
         Measure(5, parse, [&] { lines = LineCount(document.m_Text); }));
  Require(document.m_Pages.size() == static_cast<std::size_t>(pages), "pages are missing");
}

void MeasureLiteral(const char* name, int pages, bool comments, double limit) {
  CCFM2 document;
  document.m_Text = TextOf(pages, comments);
  rastrel::test::LiteralReader literal(CExePaths::Instance().m_OutputDir);
  Report(name, "the literal reader",
         Measure(
             3, [&] { Require(document.Parse(), "a text did not parse"); },
             [&] { Require(literal.Parse(document.m_Text), "the literal reader failed"); }),
         limit);
  Require(literal.Pages().size() == document.m_Pages.size(), "the readers differ");
}

// Ten times the text should take ten times as long; a quadratic reader would take a hundred times.
void MeasureGrowth() {
  CCFM2 small;
  CCFM2 large;
  small.m_Text = TextOf(10'000, true);
  large.m_Text = TextOf(100'000, true);
  Pair pair = Measure(
      5, [&] { Require(large.Parse(), "a text did not parse"); },
      [&] { Require(small.Parse(), "a text did not parse"); });
  pair.peer *= 10;
  Report("cfm2 parse, 100,000 pages and comments", "ten times the time of 10,000", pair, 3.0);
}

// What a program would do that had every page's text at hand: nothing but append.
std::wstring AppendPrepared(const std::wstring& head, const std::vector<std::wstring>& pages,
                            int copies) {
  std::wstring text = head;
  for (int copy = 0; copy < copies; ++copy)
    for (const std::wstring& page : pages) text += page;
  return text;
}

void MeasureGenerate(const char* name, int pages, int copies) {
  CCFM2 document;
  std::vector<std::wstring> prepared;
  for (int page = 0; page < pages; ++page) {
    const std::wstring number = std::to_wstring(page);
    const std::wstring directory = L"/home/jobs/run/" + number + L"/";
    const std::wstring title = L"Sign Panel " + number;
    document.m_Pages.push_back(std::make_unique<PrintingThread::CCFMPage>(directory, title));
    prepared.push_back(L"begin := reprint  \n\tid := QueueCMF2Generator   \n\tdir := " + directory +
                       L"   \n\ttitle := " + title + L"   \n\tcopies := 1   \nend   \n");
  }
  std::deque<std::int32_t> all;
  Require(document.Generate(0, all), "no head");
  const std::wstring head = L">> -- C-Format 2.0 -- <<\n>> Generated by queue on <<\n>> Copies: " +
                            std::to_wstring(copies) + L" <<\n";
  std::wstring written;
  const Pair pair = Measure(
      5, [&] { Require(document.Generate(static_cast<std::uint32_t>(copies), all), "no text"); },
      [&] { written = AppendPrepared(head, prepared, copies); });
  Require(written == document.m_Text, "the texts differ");
  Report(name, "appending the same prepared text", pair);
}

}  // namespace

int main() {
  const rastrel::test::ScratchDirectory home;
  ::setenv("RASTREL_HOME", home.Path().c_str(), 1);
  ::setenv("RASTREL_RESOURCES", home.Path("none").c_str(), 1);
  MeasureParse("cfm2 parse, 100,000 pages", 100'000, false);
  MeasureParse("cfm2 parse, 100,000 pages and comments", 100'000, true);
  MeasureGrowth();
  MeasureLiteral("cfm2 parse, 100,000 pages", 100'000, false, 1.0);
  // The literal reader moves the whole rest of the text at each comment, hence fewer pages.
  MeasureLiteral("cfm2 parse, 5,000 pages and comments", 5'000, true, 1.0);
  MeasureGenerate("cfm2 generate, a million entries: 1,000 pages, 1,000 copies", 1'000, 1'000);
  MeasureGenerate("cfm2 generate, a million entries: 100,000 pages, 10 copies", 100'000, 10);
  CAppLog::DeleteInstance();
  CExePaths::DeleteInstance();
  return 0;
}
