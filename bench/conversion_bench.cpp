// A job header in front of a file of 1 GiB, in the system's cache, against cat and against writing
// the same bytes alone; and a million cut settings records, saved and loaded, against copying their
// bytes. All times are processor time, of children too.

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "rastrel/conversion/cut_data.h"
#include "rastrel/conversion/job_header.h"
#include "rastrel/platform/host/stream.h"
#include "rastrel/platform/os/file.h"
#include "tests/support/scratch_directory.h"

namespace {

namespace os = rastrel::os;
using rastrel::test::ScratchDirectory;
using Work = std::function<void()>;

constexpr int Turns = 7;
constexpr std::size_t Whole = std::size_t{1} << 30;
constexpr std::size_t Piece = std::size_t{256} << 10;
constexpr std::size_t Records = 1'000'000;

void Require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "conversion_bench: %s\n", what);
  std::exit(1);
}

double ProcessorMilliseconds() {
  double milliseconds = 0;
  for (const auto who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
    rusage usage{};
    ::getrusage(who, &usage);
    for (const timeval& time : {usage.ru_utime, usage.ru_stime})
      milliseconds +=
          static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
  }
  return milliseconds;
}

struct Peer {
  std::string name;
  Work work;
  double limit;
};

void Tell(const std::string& name, double ours, const char* unit, const Peer& peer, double theirs) {
  const std::string limit = peer.limit > 0 ? std::to_string(peer.limit) : "-";
  std::printf("bench\t%s\t%.2f\t%s\t%s\t%.2f\t%.3f\t%s\n", name.c_str(), ours, unit,
              peer.name.c_str(), theirs, ours / theirs, limit.c_str());
  std::fflush(stdout);
}

// Runs ours and all peers in turn, each after `before`, and tells the best time of each.
void Compare(const std::string& name, const Work& before, const Work& ours,
             const std::vector<Peer>& peers) {
  std::vector<double> best(peers.size() + 1, 1e300);
  for (int turn = 0; turn < Turns; ++turn) {
    for (std::size_t index = 0; index < best.size(); ++index) {
      before();
      const double start = ProcessorMilliseconds();
      (index == 0 ? ours : peers[index - 1].work)();
      best[index] = std::min(best[index], ProcessorMilliseconds() - start);
    }
  }
  for (std::size_t index = 0; index < peers.size(); ++index)
    Tell(name, best[0], "ms", peers[index], best[index + 1]);
}

void WriteFile(const std::string& path, std::size_t size) {
  std::ofstream file(path, std::ios::binary);
  std::mt19937_64 random(1);
  std::string piece(Piece, '\0');
  for (std::size_t at = 0; at + 8 <= piece.size(); at += 8) {
    const std::uint64_t word = random();
    std::memcpy(piece.data() + at, &word, 8);
  }
  for (std::size_t done = 0; done < size; done += piece.size())
    file.write(piece.data(), static_cast<std::streamsize>(piece.size()));
  Require(static_cast<bool>(file), "no room for the file");
}

void Prepend(const ScratchDirectory& scratch, const char* name) {
  const CPS2CutData none;
  Require(rastrel::conversion::WriteJobHeader(scratch.Wide(name).c_str(), nullptr, &none, &none,
                                              nullptr),
          "the header was not written");
}

// Kilobytes of a line of this process's status.
long StatusKilobytes(const std::string& label) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with(label)) return std::atol(line.c_str() + label.size());
  return 0;
}

// What a header in front of a file adds to the peak of memory, in kilobytes.
long PeakOf(const ScratchDirectory& scratch, const char* name) {
  std::ofstream("/proc/self/clear_refs") << "5";
  const long before = StatusKilobytes("VmHWM:");
  Prepend(scratch, name);
  return StatusKilobytes("VmHWM:") - before;
}

void CompareHeader() {
  const ScratchDirectory scratch;
  WriteFile(scratch.Path("job.ps"), Whole);
  WriteFile(scratch.Path("small.ps"), std::size_t{4} << 20);
  scratch.Write("header", "%#Velumark Header 2.0\r\n%#End Job\r\n");
  const std::string target = scratch.Path("copy");
  const std::string cat =
      "cat '" + scratch.Path("header") + "' '" + scratch.Path("job.ps") + "' > '" + target + "'";
  const std::unique_ptr<char[]> bytes(new char[Piece]);
  std::memset(bytes.get(), 'x', Piece);
  const auto write = [&] {
    const auto file = os::CreateForWriting(scratch.Wide("copy"));
    Require(static_cast<bool>(file), "no file");
    for (std::size_t done = 0; done < Whole; done += Piece)
      Require(os::WriteAll(file->Get(), {bytes.get(), Piece}), "no room");
  };
  Compare(
      "header before 1 GiB",
      [&] {
        std::filesystem::remove(target);
        ::sync();
      },
      [&] { Prepend(scratch, "job.ps"); },
      {{"cat header file", [&] { Require(std::system(cat.c_str()) == 0, "cat failed"); }, 0.85},
       {"writing the same bytes alone", write, 1.6}});
  std::filesystem::remove(target);
  const long small = std::max(PeakOf(scratch, "small.ps"), 64L);
  const long large = PeakOf(scratch, "job.ps");
  Tell("peak memory that a header adds, 1 GiB", static_cast<double>(large), "KiB",
       {"4 MiB, the most that is meant", {}, 1}, 4096);
  Tell("peak memory that a header adds, 1 GiB", static_cast<double>(std::max(large, 64L)), "KiB",
       {"the same of 4 MiB", {}, 0}, static_cast<double>(small));
}

void CompareRecords() {
  CPS2CutData cut;
  cut.enabled = 1;
  cut.colorKind = CutColorNamed;
  cut.color.SetColorName(L"CutContour");
  CMemFile saved;
  {
    CStream stream(&saved);
    for (std::size_t count = 0; count < Records; ++count) cut.Save(&stream);
    stream.Flush();
  }
  const std::vector<std::uint8_t>& bytes = saved.Bytes();
  const auto copy = [&bytes] {
    std::vector<std::uint8_t> target;
    constexpr std::size_t step = 65536;
    for (std::size_t at = 0; at < bytes.size(); at += step)
      target.insert(target.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at),
                    bytes.begin() + static_cast<std::ptrdiff_t>(std::min(at + step, bytes.size())));
    Require(target.size() == bytes.size(), "not all was copied");
  };
  Compare(
      "save a million cut records", [] {},
      [&cut] {
        CMemFile file;
        CStream stream(&file);
        for (std::size_t count = 0; count < Records; ++count) cut.Save(&stream);
        stream.Flush();
      },
      {{"copying their bytes", copy, 0}});
  Compare(
      "load a million cut records", [&saved] { saved.Close(); },
      [&saved] {
        CStream stream(&saved);
        CPS2CutData read;
        for (std::size_t count = 0; count < Records; ++count)
          Require(read.Load(&stream) == 1, "a record was not read");
      },
      {{"copying their bytes", copy, 0}});
}

}  // namespace

int main() {
  CompareHeader();
  CompareRecords();
}
