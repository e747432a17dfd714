#include "rastrel/xml/source.h"

#include <algorithm>
#include <cerrno>

#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/xml/failure.h"

namespace rastrel::xml {

Expected<std::size_t> XmlFileSource::Read(std::span<char> bytes) {
  auto count = m_File.ReadAt(m_Offset, bytes);
  while (count && *count == 0 && !bytes.empty()) {
    const os::Growth growth = m_File.AwaitGrowth(m_Offset);
    if (growth == os::Growth::Whole) break;
    if (growth == os::Growth::Failed)
      return Failure{.what = "read", .where = os::ToNative(m_Path), .error = EIO};
    count = m_File.ReadAt(m_Offset, bytes);
  }
  if (!count)
    return Failure{.what = "read", .where = os::ToNative(m_Path), .error = count.Error().error};
  m_Offset += *count;
  return count;
}

Expected<std::size_t> XmlMemorySource::Read(std::span<char> bytes) {
  const std::string_view piece = m_Bytes.substr(0, bytes.size());
  std::copy(piece.begin(), piece.end(), bytes.begin());
  m_Bytes.remove_prefix(piece.size());
  return piece.size();
}

bool ParseXmlFile(std::wstring_view path, XmlNames& names, XmlEvents& events,
                  XmlElements* elements) {
  auto file = os::RandomAccessFile::Open(path);
  const auto parse = [&]() -> Expected<void> {
    if (!file) return FailureOf(Describe(file.Error()));
    XmlFileSource source(std::move(*file), path);
    return ParseXml(source, XmlEncoding::ByDocument, names, events, elements);
  };
  const auto parsed = parse();
  if (parsed) return true;
  Failure failure = parsed.Error();
  failure.where = os::Utf8FromWide(path);
  ReportXmlFailure(std::move(failure));
  return false;
}

}  // namespace rastrel::xml
