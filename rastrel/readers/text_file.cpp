#include "rastrel/readers/text_file.h"

#include <algorithm>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/xml/failure.h"

namespace rastrel::readers {
namespace {

constexpr std::size_t BufferSize = std::size_t{128} << 10;
constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

TextFile::TextFile(std::wstring path) : m_Path(std::move(path)) {
  Expected<os::FileDescriptor> file = os::CreateForWriting(m_Path);
  if (file) {
    m_File = std::move(*file);
    m_Buffer = ByteOrderMark;
  } else {
    Fail(Describe(file.Error()));
  }
}

bool TextFile::Write(std::string_view bytes) {
  while (m_IsGood && !bytes.empty()) {
    const std::size_t count = std::min(bytes.find('\n'), bytes.size());
    m_Buffer.append(bytes.substr(0, count));
    if (count < bytes.size()) m_Buffer += "\r\n";
    bytes.remove_prefix(std::min(count + 1, bytes.size()));
    if (m_Buffer.size() >= BufferSize) Flush();
  }
  return m_IsGood;
}

bool TextFile::Close() {
  if (m_IsGood) Flush();
  m_File.Reset();
  return m_IsGood;
}

void TextFile::Flush() {
  if (const auto written = os::WriteAll(m_File.Get(), m_Buffer); !written)
    Fail("write: " + DescribeError(written.Error().error));
  m_Buffer.clear();
}

void TextFile::Fail(const std::string& reason) {
  m_IsGood = false;
  xml::ReportXmlFailure({.where = os::Utf8FromWide(m_Path), .why = reason});
}

}  // namespace rastrel::readers
