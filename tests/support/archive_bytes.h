#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "rastrel/platform/mfc/archive.h"

namespace rastrel::test {

using Bytes = std::vector<std::uint8_t>;

/// Bytes written as pairs of hexadecimal digits with blanks between them.
inline Bytes Hex(const std::string& digits) {
  std::istringstream words(digits);
  Bytes bytes;
  for (std::string word; words >> word;)
    bytes.push_back(static_cast<std::uint8_t>(std::stoul(word, nullptr, 16)));
  return bytes;
}

/// Several runs of bytes as one.
inline Bytes Joined(const std::vector<Bytes>& parts) {
  Bytes whole;
  for (const Bytes& part : parts) whole.insert(whole.end(), part.begin(), part.end());
  return whole;
}

/// What `write` puts into an archive.
template <typename Write>
Bytes Stored(Write write) {
  CMemFile file;
  CArchive archive(&file, CArchive::store);
  write(archive);
  archive.Close();
  return file.Bytes();
}

/// Runs `read` on an archive of these bytes. Returns the bytes that it left unread.
template <typename Read>
Bytes Loaded(const Bytes& bytes, Read read) {
  CMemFile file(bytes);
  CArchive archive(&file, CArchive::load);
  read(archive);
  Bytes rest(bytes.size() + 1);
  rest.resize(archive.Read(rest.data(), static_cast<unsigned>(rest.size())));
  return rest;
}

}  // namespace rastrel::test
