#include "rastrel/platform/os/code_page.h"

#include <iconv.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <vector>

#include "rastrel/platform/os/text.h"

namespace rastrel::os {
namespace {

constexpr int Utf8Page = 65001;
constexpr int Utf16Page = 1200;
constexpr int FirstIsoPage = 28590;  // less the number of the part of ISO 8859
constexpr int LastIsoPart = 15;

struct NamedPage {
  int number;
  const char* name;
};

// The converter's names where the number alone is not one.
constexpr std::array NamedPages{
    NamedPage{874, "CP874"},   NamedPage{932, "CP932"},   NamedPage{936, "GBK"},
    NamedPage{949, "CP949"},   NamedPage{950, "BIG5"},    NamedPage{437, "CP437"},
    NamedPage{850, "CP850"},   NamedPage{852, "CP852"},   NamedPage{866, "CP866"},
    NamedPage{1250, "CP1250"}, NamedPage{1251, "CP1251"}, NamedPage{1253, "CP1253"},
    NamedPage{1254, "CP1254"}, NamedPage{1255, "CP1255"}, NamedPage{1256, "CP1256"},
    NamedPage{1257, "CP1257"}, NamedPage{1258, "CP1258"}};

/// The converter's name of a code page; empty for one that is not known.
std::string NameOf(int codePage) {
  for (const NamedPage& page : NamedPages)
    if (page.number == codePage) return page.name;
  const int part = codePage - FirstIsoPage;
  // There is no part 12.
  if (part >= 1 && part <= LastIsoPart && part != 12) return "ISO-8859-" + std::to_string(part);
  return {};
}

/// A converter to wide text, closed with this.
class Converter {
 public:
  explicit Converter(const char* from) : m_Handle(iconv_open("WCHAR_T", from)) {}
  ~Converter() {
    if (IsOpen()) iconv_close(m_Handle);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  [[nodiscard]] bool IsOpen() const { return m_Handle != reinterpret_cast<iconv_t>(-1); }
  [[nodiscard]] std::wstring Convert(std::string_view bytes);

 private:
  iconv_t m_Handle;
};

std::wstring Converter::Convert(std::string_view bytes) {
  std::wstring text;
  text.reserve(bytes.size());
  std::string source(bytes);  // the converter wants bytes that it could write to
  char* from = source.data();
  std::size_t left = source.size();
  std::array<wchar_t, 4096> piece;
  while (left > 0) {
    char* to = reinterpret_cast<char*>(piece.data());
    std::size_t room = sizeof piece;
    const bool whole = iconv(m_Handle, &from, &left, &to, &room) != static_cast<std::size_t>(-1);
    const int error = whole ? 0 : errno;
    text.append(piece.data(), (sizeof piece - room) / sizeof(wchar_t));
    if (error != EILSEQ && error != EINVAL) continue;
    text.push_back(static_cast<wchar_t>(static_cast<unsigned char>(*from++)));
    --left;
  }
  return text;
}

std::wstring WideFromUtf16Bytes(std::string_view bytes) {
  std::vector<std::uint16_t> units;
  units.reserve(bytes.size() / 2);
  const auto byteAt = [&](std::size_t at) { return static_cast<unsigned char>(bytes[at]); };
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2)
    units.push_back(static_cast<std::uint16_t>(byteAt(at) | byteAt(at + 1) << 8U));
  std::wstring text = WideFromUtf16(units);
  for (wchar_t& character : text)
    if (character >= 0xD800 && character <= 0xDFFF) character = 0xFFFD;
  if (bytes.size() % 2 != 0) text.push_back(0xFFFD);
  return text;
}

}  // namespace

std::wstring WideFromCodePage(int codePage, std::string_view bytes) {
  if (codePage == Utf8Page) return WideFromUtf8(bytes);
  if (codePage == Utf16Page) return WideFromUtf16Bytes(bytes);
  const std::string name = NameOf(codePage);
  if (name.empty()) return WideFromAnsi(bytes);
  Converter converter(name.c_str());
  return converter.IsOpen() ? converter.Convert(bytes) : WideFromAnsi(bytes);
}

}  // namespace rastrel::os
