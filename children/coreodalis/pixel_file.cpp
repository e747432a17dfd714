#include "children/coreodalis/pixel_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>
#include <vector>

#include "children/coreodalis/netpbm_file.h"
#include "children/coreodalis/plain_tiff_file.h"
#include "children/coreodalis/tiff_reader.h"
#include "pages/page_sum.h"
#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::odalis {
namespace {

constexpr std::size_t HashBlock = 1u << 18;

/// Opens without waiting for the other side of a pipe, and refuses all that is no regular file.
Expected<os::FileDescriptor> OpenRegular(const std::string& path) {
  os::FileDescriptor descriptor(
      ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  if (!descriptor.IsOpen()) return Failure{"open", path, errno};
  struct stat state {};
  if (::fstat(descriptor.Get(), &state) != 0) return Failure{"fstat", path, errno};
  if (!S_ISREG(state.st_mode)) return FailureOf("'" + path + "' is no regular file");
  return descriptor;
}

Expected<void> CheckSize(int descriptor, const std::string& path, const pages::PageFile& file) {
  struct stat state {};
  if (::fstat(descriptor, &state) != 0) return Failure{"fstat", path, errno};
  if (static_cast<std::uint64_t>(state.st_size) != file.bytes) {
    return FailureOf("'" + path + "' has " + std::to_string(state.st_size) + " bytes, and " +
                     std::to_string(file.bytes) + " by the page's description");
  }
  return {};
}

Expected<std::unique_ptr<PixelFile>> ReadHead(os::FileDescriptor descriptor,
                                              const std::string& path, std::uint64_t bytes) {
  char magic[2] = {};
  const ssize_t count = ::pread(descriptor.Get(), magic, sizeof magic, 0);
  if (count == 2 && magic[0] == 'P' && (magic[1] == '5' || magic[1] == '6')) {
    return OpenNetpbm(std::move(descriptor), path, bytes);
  }
  if (count == 2 && magic[0] == magic[1] && (magic[0] == 'I' || magic[0] == 'M')) {
    if (auto plain = OpenPlainTiff(descriptor, path, bytes)) return plain;
    return OpenTiff(std::move(descriptor), path, bytes);
  }
  return FailureOf("'" + path + "' holds neither netpbm nor TIFF pixels");
}

bool IsPlainName(const std::string& name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
         name.find('\0') == std::string::npos;
}

}  // namespace

ContentCheck::ContentCheck(std::shared_ptr<const os::FileDescriptor> descriptor, std::string path,
                           pages::PageFile expected)
    : m_Descriptor(std::move(descriptor)),
      m_Path(std::move(path)),
      m_Expected(std::move(expected)) {}

Expected<void> ContentCheck::Run() const {
  pages::PageSum sum(pages::SumKindOf(m_Expected.sum).value_or(pages::SumKind::Xxh3));
  std::vector<std::byte> block(HashBlock);
  for (off_t at = 0;;) {
    const ssize_t count = ::pread(m_Descriptor->Get(), block.data(), block.size(), at);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return Failure{"read", m_Path, errno};
    if (count == 0) break;
    sum.Add(std::span(block).first(static_cast<std::size_t>(count)));
    at += count;
  }
  if (sum.Finish() != m_Expected.sum) {
    return FailureOf("'" + m_Path + "' has not the checksum of the page's description");
  }
  return {};
}

Expected<OpenedPixels> OpenPixelFile(const std::string& directory, const pages::PageFile& file) {
  if (!IsPlainName(file.name)) return FailureOf("'" + file.name + "' is no name of a page's file");
  const std::string path = directory + "/" + file.name;
  auto descriptor = OpenRegular(path);
  if (!descriptor) return descriptor.Error();
  if (auto checked = CheckSize(descriptor->Get(), path, file); !checked) return checked.Error();
  os::FileDescriptor second(::fcntl(descriptor->Get(), F_DUPFD_CLOEXEC, 3));
  if (!second.IsOpen()) return Failure{"dup", path, errno};
  ContentCheck check(std::make_shared<const os::FileDescriptor>(std::move(second)), path, file);
  auto opened = ReadHead(std::move(*descriptor), path, file.bytes);
  if (!opened) {
    // A file that was changed is no file with a wrong head.
    if (auto checked = check.Run(); !checked) return checked.Error();
    return opened.Error();
  }
  return OpenedPixels{std::move(*opened), std::move(check)};
}

}  // namespace rastrel::odalis
