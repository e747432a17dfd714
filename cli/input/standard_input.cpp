#include "cli/input/standard_input.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>
#include <utility>

#include "cli/console/standard_streams.h"
#include "cli/input/file_head.h"
#include "cli/input/input_file.h"
#include "rastrel/platform/os/dos_eps.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/pipe.h"

namespace rastrel::cli {
namespace {

constexpr std::size_t PieceBytes = std::size_t{256} << 10;
constexpr unsigned OfPipe = 0666;
constexpr unsigned OwnerBits = 0600;

std::string& CopiedPath() {
  static std::string path;
  return path;
}

// Some readers ask for an extension, and none is in the way of the others.
const char* ExtensionOf(std::string_view head) {
  constexpr std::array<std::pair<std::string_view, const char*>, 3> beginnings{
      {{"%PDF-", ".pdf"}, {"%!", ".ps"}, {os::DosEpsSignature, ".eps"}}};
  for (const auto& [beginning, extension] : beginnings)
    if (head.starts_with(beginning)) return extension;
  return MayBeXml(head) ? ".xml" : "";
}

Failure TooLarge(std::uint64_t limit) {
  return FailureOf("standard input is larger than " + std::to_string(limit >> 20) +
                   " MiB, the most that is taken; put it into a file, and name that");
}

Expected<void> Copy(const std::string& path, std::uint64_t limit, std::string& head) {
  const auto file = os::CreateForWriting(os::FromNative(path), os::Access::Private);
  if (!file) return file.Error();
  std::string piece(PieceBytes, '\0');
  std::uint64_t size = 0;
  for (;;) {
    const auto got =
        os::ReadSome(os::StandardHandle(os::StandardStream::Input), piece.data(), piece.size());
    if (!got) return FailureOf("standard input can't be read: " + Describe(got.Error()));
    if (*got == 0) return {};
    size += *got;
    if (size > limit) return TooLarge(limit);
    const std::string_view bytes(piece.data(), *got);
    if (head.size() < PieceBytes) head += bytes;
    if (const auto written = os::WriteAll(file->Get(), bytes); !written)
      return FailureAt(path, written.Error());
  }
}

}  // namespace

Expected<std::string> TakeStandardInput(const std::string& directory, const std::string& title,
                                        std::uint64_t limit) {
  std::string head;
  const std::string incoming = directory + "/incoming";
  if (const auto copied = Copy(incoming, limit, head); !copied)
    return FailureOf(Describe(copied.Error()));
  const std::string name = title.empty() ? StandardInputName : SafeJobName(title + ".x");
  std::string path = directory + "/" + name + ExtensionOf(head);
  if (const auto named = os::RenameFile(os::FromNative(incoming), os::FromNative(path)); !named)
    return FailureOf(Describe(named.Error()));
  CopiedPath() = path;
  ShowPathAs(path, StandardInputName);
  return path;
}

unsigned AccessOf(const std::string& path) {
  std::error_code error;
  const bool isCopy = !path.empty() && path == CopiedPath();
  const auto state = std::filesystem::status(isCopy ? "/dev/stdin" : path, error);
  if (error) return OwnerBits;
  if (isCopy && !std::filesystem::is_regular_file(state)) return OfPipe;
  return (static_cast<unsigned>(state.permissions()) & OfPipe) | OwnerBits;
}

}  // namespace rastrel::cli
