#pragma once

#include <gtest/gtest.h>
#include <zlib.h>

#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

#include "rastrel/platform/os/private_directory.h"

namespace rastrel::server {

/// A directory for a picture and the PDF that is made of it.
class PictureTest : public testing::Test {
 protected:
  PictureTest() : m_Place(*os::PrivateDirectory::Make("rastrel-picture-")) {}

  [[nodiscard]] std::string Target() const { return m_Place.Path() + "/picture.pdf"; }
  [[nodiscard]] std::string Source(const std::string& bytes) const {
    const std::string path = m_Place.Path() + "/picture";
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }
  [[nodiscard]] std::string TargetBytes() const {
    std::ostringstream bytes;
    bytes << std::ifstream(Target(), std::ios::binary).rdbuf();
    return bytes.str();
  }

 private:
  os::PrivateDirectory m_Place;
};

/// The reason of a call that failed; "" if it did not.
template <typename T>
std::string WhyOf(const Expected<T>& result) {
  return result ? std::string() : result.Error().why;
}

/// The bytes of an object's stream.
inline std::string StreamOf(const std::string& pdf, int object) {
  const std::size_t start = pdf.find("\n" + std::to_string(object) + " 0 obj\n");
  const std::size_t begin = pdf.find("stream\n", start) + 7;
  return pdf.substr(begin, pdf.find("\nendstream", begin) - begin);
}

inline std::string Inflated(const std::string& bytes) {
  std::string out(1 << 20, '\0');
  uLongf size = out.size();
  const int result = ::uncompress(reinterpret_cast<Bytef*>(out.data()), &size,
                                  reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
  EXPECT_EQ(result, Z_OK);
  out.resize(size);
  return out;
}

inline std::string Deflated(const std::string& bytes) {
  uLongf size = ::compressBound(bytes.size());
  std::string out(size, '\0');
  ::compress(reinterpret_cast<Bytef*>(out.data()), &size,
             reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
  out.resize(size);
  return out;
}

/// `value` in so many bytes, the highest first.
inline std::string Big(unsigned long value, unsigned count) {
  std::string bytes;
  for (unsigned index = count; index-- > 0;) bytes += static_cast<char>(value >> (8 * index));
  return bytes;
}

/// A chunk of a PNG file.
inline std::string Chunk(const std::string& name, const std::string& body) {
  const std::string text = name + body;
  const uLong sum =
      ::crc32(0, reinterpret_cast<const Bytef*>(text.data()), static_cast<uInt>(text.size()));
  return Big(body.size(), 4) + text + Big(sum, 4);
}

inline std::string PngHeader(unsigned width, unsigned height, unsigned bits, unsigned type,
                             unsigned interlaced = 0) {
  return "\x89PNG\r\n\x1A\n" + Chunk("IHDR", Big(width, 4) + Big(height, 4) + Big(bits, 1) +
                                                 Big(type, 1) + Big(0, 2) + Big(interlaced, 1));
}

/// A PNG file with these rows, each with its filter's byte.
inline std::string Png(unsigned width, unsigned height, unsigned bits, unsigned type,
                       const std::string& rows, const std::string& chunks = {}) {
  return PngHeader(width, height, bits, type) + chunks + Chunk("IDAT", Deflated(rows)) +
         Chunk("IEND", "");
}

}  // namespace rastrel::server
