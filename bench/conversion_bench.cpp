// A job header in front of a file of 1 GiB, in the system's cache, against cat and against writing
// the same bytes alone; and a million cut settings records, saved and loaded, against copying their
// bytes. All times are processor time, of children too.

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "bench/measure.h"
#include "bench/require.h"
#include "rastrel/conversion/cut_data.h"
#include "rastrel/conversion/job_header_writer.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/values/stream.h"
#include "tests/support/scratch_directory.h"

namespace {

namespace os = rastrel::os;
namespace bench = rastrel::bench;
using bench::Require;
using rastrel::test::ScratchDirectory;

constexpr std::size_t Whole = std::size_t{1} << 30;
constexpr std::size_t Piece = std::size_t{256} << 10;
constexpr std::size_t Records = 1'000'000;

bench::Turns TurnsAfter(bench::Work before) {
  return {.count = 7, .clock = bench::Clock::ProcessorOfChildren, .before = std::move(before)};
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

// Kilobytes that a header in front of a file adds to the peak of memory.
long PeakOf(const ScratchDirectory& scratch, const char* name) {
  std::ofstream("/proc/self/clear_refs") << "5";
  const long before = bench::StatusKilobytes("VmHWM:");
  Prepend(scratch, name);
  return bench::StatusKilobytes("VmHWM:") - before;
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
      Require(static_cast<bool>(os::WriteAll(file->Get(), {bytes.get(), Piece})), "no room");
  };
  bench::CompareBest(
      "header before 1 GiB", TurnsAfter([&] {
        std::filesystem::remove(target);
        ::sync();
      }),
      [&] { Prepend(scratch, "job.ps"); },
      {{"cat header file", [&] { Require(std::system(cat.c_str()) == 0, "cat failed"); }, 0.85},
       {"writing the same bytes alone", write, 1.6}});
  std::filesystem::remove(target);
  const long small = std::max(PeakOf(scratch, "small.ps"), 64L);
  const long large = PeakOf(scratch, "job.ps");
  const std::string peak = "peak memory that a header adds, 1 GiB";
  bench::Print({peak, static_cast<double>(large), "KiB", "4 MiB, the most that is meant", 4096, 1});
  bench::Print({peak, static_cast<double>(std::max(large, 64L)), "KiB", "the same of 4 MiB",
                static_cast<double>(small)});
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
  bench::CompareBest("save a million cut records", TurnsAfter([] {}),
                     [&cut] {
                       CMemFile file;
                       CStream stream(&file);
                       for (std::size_t count = 0; count < Records; ++count) cut.Save(&stream);
                       stream.Flush();
                     },
                     {{"copying their bytes", copy, 0}});
  bench::CompareBest("load a million cut records", TurnsAfter([&saved] { saved.Close(); }),
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
