#include "interpreter/page_directory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <utility>

#include "interpreter/cut_paths.h"
#include "pages/plain_tiff.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::interpreter {
namespace {

os::FileDescriptor CreateFile(const std::string& path) {
  return os::FileDescriptor(open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
}

std::string NetpbmHead(const PageSize& size) {
  return std::string(size.channels == 1 ? "P5\n" : "P6\n") + std::to_string(size.width) + " " +
         std::to_string(size.height) + "\n255\n";
}

constexpr const char* TiffName = "page.tif";

pages::PlainTiff TiffOf(const PageSize& size, const RunDescription& run) {
  return {size.width, size.height, size.channels, pages::TiffResolutionOf(run.xResolution),
          pages::TiffResolutionOf(run.yResolution)};
}

}  // namespace

pages::PageInfo DescribePage(const RunDescription& run, unsigned page) {
  pages::PageInfo info;
  info.job = run.job;
  info.printer = run.printer;
  info.mode = run.mode;
  info.access = run.access;
  info.page = run.pagesBefore + page;
  info.xResolution = run.xResolution;
  info.yResolution = run.yResolution;
  return info;
}

Expected<void> WritePageInfo(const std::string& directory, const pages::PageInfo& info) {
  const std::string path = directory + "/" + pages::PageInfoName;
  const os::FileDescriptor file = CreateFile(path);
  if (!file.IsOpen()) return Failure{"create", path, errno};
  auto written = os::WriteAll(file.Get(), FormatPageInfo(info));
  if (!written) return FailureAt(path, written.Error());
  return written;
}

PageDirectory::PageDirectory(std::string path, unsigned page, const PageSize& size)
    : m_Path(std::move(path)),
      m_Page(page),
      m_Size(size),
      m_Preview(size),
      m_Row(size.RowBytes()) {}

Expected<std::unique_ptr<PageDirectory>> PageDirectory::Create(const std::string& runDirectory,
                                                               unsigned page, const PageSize& size,
                                                               const RunDescription& run) {
  const std::string path = runDirectory + "/" + pages::PageName(page);
  if (mkdir(path.c_str(), 0700) != 0) return Failure{"mkdir", path, errno};
  std::unique_ptr<PageDirectory> made(new PageDirectory(path, page, size));
  if (const auto written = made->WriteHead(run); !written) return written.Error();
  return made;
}

Expected<void> PageDirectory::WriteHead(const RunDescription& run) {
  const auto tiff = run.keepsTiff ? pages::PlainTiffHead(TiffOf(m_Size, run)) : std::nullopt;
  m_PixelName = tiff ? TiffName : m_Size.channels == 1 ? "page.pgm" : "page.ppm";
  m_Head = tiff.value_or(NetpbmHead(m_Size));
  m_Pixels = CreateFile(m_Path + "/" + m_PixelName);
  if (!m_Pixels.IsOpen()) return Failure{"create", m_Path, errno};
  return Write(std::as_bytes(std::span(m_Head)));
}

// The interpreter's reports and its pixels come by two ways, so that the resolution may be known
// only now. It changes no other byte.
Expected<void> PageDirectory::CorrectHead(const RunDescription& run) {
  if (m_PixelName != TiffName) return {};
  const auto head = pages::PlainTiffHead(TiffOf(m_Size, run));
  if (!head || *head == m_Head) return {};
  const std::string path = m_Path + "/" + m_PixelName;
  if (::pwrite(m_Pixels.Get(), head->data(), head->size(), 0) != static_cast<ssize_t>(head->size()))
    return Failure{"write", path, errno};
  auto described = pages::DescribeFile(m_Path, m_PixelName);
  if (!described) return described.Error();
  m_CorrectedSum = described->sum;
  return {};
}

Expected<void> PageDirectory::Write(std::span<const std::byte> bytes) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  const auto written = os::WriteAll(m_Pixels.Get(), text);
  if (!written) return FailureAt(m_Path + "/" + m_PixelName, written.Error());
  m_Bytes += bytes.size();
  m_Sum.Add(bytes);
  return {};
}

Expected<void> PageDirectory::AddPixels(std::span<const std::byte> bytes) {
  FeedPreview(bytes);
  return Write(bytes);
}

void PageDirectory::BeginFlush() {
  if (m_PixelName == TiffName) m_FlushAhead.Begin(m_Pixels.Get(), m_Bytes);
}

void PageDirectory::FeedPreview(std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const std::size_t taken = std::min(bytes.size(), m_Row.size() - m_RowFilled);
    const bool wanted = m_Preview.Wants(m_RowNumber);
    if (wanted && taken == m_Row.size()) {
      m_Preview.AddRow(m_RowNumber, bytes.first(taken));
    } else if (wanted) {
      std::copy_n(bytes.begin(), taken, m_Row.begin() + static_cast<std::ptrdiff_t>(m_RowFilled));
      if (m_RowFilled + taken == m_Row.size()) m_Preview.AddRow(m_RowNumber, m_Row);
    }
    m_RowFilled += taken;
    bytes = bytes.subspan(taken);
    if (m_RowFilled == m_Row.size()) {
      m_RowFilled = 0;
      ++m_RowNumber;
    }
  }
}

Expected<void> PageDirectory::Remove() {
  m_Pixels.Reset();
  return os::RemoveNativeTree(m_Path);
}

Expected<void> PageDirectory::Finish(const RunDescription& run) {
  const auto pictured = m_Preview.Write(m_Path + "/" + pages::PreviewName);
  if (!pictured) return pictured.Error();
  const auto picture = pages::DescribeFile(m_Path, pages::PreviewName);
  if (!picture) return picture.Error();
  pages::PageInfo info = DescribePage(run, m_Page);
  info.width = m_Size.width;
  info.height = m_Size.height;
  info.color = m_Size.channels == 1 ? pages::PageColor::Gray : pages::PageColor::Rgb;
  static constexpr std::array RgbNames{"Red", "Green", "Blue"};
  for (unsigned channel = 0; channel < m_Size.channels; ++channel) {
    info.planes.push_back(
        {m_Size.channels == 1 ? "Gray" : RgbNames[channel], m_PixelName, channel});
  }
  if (const auto corrected = CorrectHead(run); !corrected) return corrected;
  m_Pixels.Reset();
  const std::string sum = m_Sum.Finish();
  info.files = {{m_PixelName, m_Bytes, m_CorrectedSum.empty() ? sum : m_CorrectedSum}, *picture};
  const auto cut = WriteCutPaths(run, m_Path, info);
  if (!cut) return cut.Error();
  return WritePageInfo(m_Path, info);
}

}  // namespace rastrel::interpreter
