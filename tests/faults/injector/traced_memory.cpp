#include "tests/faults/injector/traced_memory.h"

#include <elf.h>
#include <fcntl.h>
#include <sys/uio.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace faults {
namespace {

namespace fs = std::filesystem;

std::string LinkTarget(const std::string& link) {
  std::error_code error;
  const fs::path target = fs::read_symlink(link, error);
  return error ? std::string() : target.string();
}

std::string ProcFolder(pid_t task) { return "/proc/" + std::to_string(task); }

}  // namespace

std::string TextAt(pid_t task, std::uint64_t address) {
  constexpr std::size_t PageSize = 4096;
  std::string text;
  while (address != 0 && text.size() < PageSize) {
    std::array<char, PageSize> piece{};
    // No further than the end of this page of memory: the next one may not be there.
    const std::size_t length = PageSize - address % PageSize;
    // The remote address is a number here, and a pointer only in that process.
    const iovec remote{reinterpret_cast<void*>(address), length};  // NOLINT
    const iovec local{piece.data(), length};
    const ssize_t got = ::process_vm_readv(task, &local, 1, &remote, 1, 0);
    if (got <= 0) break;
    const std::string_view bytes(piece.data(), static_cast<std::size_t>(got));
    text += bytes.substr(0, bytes.find('\0'));
    if (bytes.find('\0') != std::string_view::npos) break;
    address += static_cast<std::uint64_t>(got);
  }
  return text;
}

std::string PathOfDescriptor(pid_t task, int descriptor) {
  return LinkTarget(ProcFolder(task) + "/fd/" + std::to_string(descriptor));
}

std::string AbsolutePath(pid_t task, int directory, const std::string& path) {
  fs::path whole = path;
  if (whole.is_relative()) {
    const std::string base = directory == AT_FDCWD ? LinkTarget(ProcFolder(task) + "/cwd")
                                                   : PathOfDescriptor(task, directory);
    whole = path.empty() ? fs::path(base) : fs::path(base) / path;
  }
  whole = whole.lexically_normal();
  if (!whole.has_filename()) whole = whole.parent_path();
  std::error_code error;
  const fs::path parent = fs::weakly_canonical(whole.parent_path(), error);
  return error ? whole.string() : (parent / whole.filename()).string();
}

std::string ProgramOf(pid_t task) { return LinkTarget(ProcFolder(task) + "/exe"); }

std::optional<std::uint64_t> EntryPointOf(pid_t task) {
  std::ifstream table(ProcFolder(task) + "/auxv", std::ios::binary);
  std::array<std::uint64_t, 2> entry{};
  while (table.read(reinterpret_cast<char*>(entry.data()), sizeof(entry)))  // NOLINT
    if (entry[0] == AT_ENTRY) return entry[1];
  return {};
}

pid_t ProcessOf(pid_t task) {
  std::ifstream status(ProcFolder(task) + "/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with("Tgid:")) return static_cast<pid_t>(std::stol(line.substr(5)));
  return 0;
}

}  // namespace faults
