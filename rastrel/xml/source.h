#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "rastrel/platform/os/random_access_file.h"
#include "rastrel/xml/parser.h"

namespace rastrel::xml {

/// A regular file from its start.
class XmlFileSource : public XmlSource {
 public:
  XmlFileSource(os::RandomAccessFile file, std::wstring_view path)
      : m_File(std::move(file)), m_Path(path) {}
  [[nodiscard]] Expected<std::size_t> Read(std::span<char> bytes) override;

 private:
  os::RandomAccessFile m_File;
  std::wstring m_Path;
  std::uint64_t m_Offset = 0;
};

/// Bytes in memory, borrowed.
class XmlMemorySource : public XmlSource {
 public:
  explicit XmlMemorySource(std::string_view bytes) : m_Bytes(bytes) {}
  [[nodiscard]] Expected<std::size_t> Read(std::span<char> bytes) override;

 private:
  std::string_view m_Bytes;
};

/// Reads the file at `path` into `events` as ParseXml does, and reports a failure. True if all of
/// it was read.
[[nodiscard]] bool ParseXmlFile(std::wstring_view path, XmlNames& names, XmlEvents& events,
                                XmlElements* elements);

}  // namespace rastrel::xml
