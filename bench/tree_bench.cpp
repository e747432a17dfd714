// Copying and removing trees against cp -r and rm -rf, on files in memory and strictly in turn. The
// peers are programs, so that their start is part of their time: about a millisecond.
#include <filesystem>
#include <fstream>
#include <string>

#include "bench/measure.h"
#include "bench/program.h"
#include "bench/require.h"
#include "rastrel/platform/os/tree.h"
#include "tests/support/scratch_directory.h"

namespace {

namespace fs = std::filesystem;
namespace os = rastrel::os;
using rastrel::bench::Run;

void MakeTree(const fs::path& root, int count, std::size_t size) {
  fs::create_directories(root);
  const std::string content(size, 'c');
  for (int index = 0; index < count; ++index)
    std::ofstream(root / ("file" + std::to_string(index)), std::ios::binary) << content;
}

void CompareTree(const std::string& name, const fs::path& place, int count, std::size_t size) {
  const fs::path source = place / "source";
  const fs::path target = place / "target";
  MakeTree(source, count, size);
  const auto clear = [&] { fs::remove_all(target); };
  const auto copy = [&] {
    clear();
    Run({"cp", "-r", source, target});
  };
  const auto require = [](bool done) {
    rastrel::bench::Require(done, "a tree was not brought about");
  };
  rastrel::bench::Compare(
      {.name = "copy " + name, .peerName = "cp -r", .rounds = 7, .limit = 0.8}, clear,
      [&] { require(static_cast<bool>(os::CopyTreeInto(source.wstring(), target.wstring()))); },
      [&] {
        Run({"cp", "-r", source, target});
      });
  rastrel::bench::Compare(
      {.name = "remove " + name, .peerName = "rm -rf", .rounds = 7, .limit = 1.0}, copy,
      [&] { require(static_cast<bool>(os::RemoveTree(target.wstring()))); },
      [&] {
        Run({"rm", "-rf", target});
      });
  const fs::path moved = place / "moved";
  rastrel::bench::Compare(
      {.name = "move " + name, .peerName = "cp -r, rm -rf", .rounds = 3, .limit = 1.0},
      [&] {
        fs::remove_all(moved);
        copy();
      },
      [&] { require(os::TryRenameTree(target.wstring(), moved.wstring())); },
      [&] {
        Run({"cp", "-r", target, moved});
        Run({"rm", "-rf", target});
      });
  fs::remove_all(source);
  fs::remove_all(target);
  fs::remove_all(moved);
}

}  // namespace

int main() {
  const rastrel::test::ScratchDirectory scratch("/dev/shm");
  const fs::path place = scratch.Path();
  CompareTree("1,000 files of 1 MiB", place, 1000, std::size_t{1} << 20);
  CompareTree("20,000 files of 4 KiB", place, 20000, std::size_t{4} << 10);
}
