// Foreign text on its way to a person, and every conversion between encodings, on any bytes.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "rastrel/platform/os/base64.h"
#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/shown_text.h"
#include "rastrel/platform/os/text.h"
#include "tests/support/utf8_oracle.h"

namespace {

using namespace rastrel;

void Check(bool holds) {
  if (!holds) std::abort();
}

void CheckCleaned(std::string_view bytes) {
  const std::string line = os::CleanLine(bytes);
  for (const wchar_t one : test::DecodeUtf8Literally(line)) {
    Check(os::IsSafeToShow(static_cast<char32_t>(one)));
  }
  Check(os::CleanLine(line) == line);
  const std::string lines = os::CleanLines(bytes);
  Check(os::CleanLines(lines) == lines);
  // An unsafe character takes ten at most, and a byte that is no character three.
  Check(line.size() <= bytes.size() * 4 + 10);
  // In pieces that end with whole characters the text comes out the same.
  const std::size_t whole = os::WholeCharacters(bytes);
  Check(whole <= bytes.size() && bytes.size() - whole <= 3);
  Check(os::CleanLine(bytes.substr(0, whole)) + os::CleanLine(bytes.substr(whole)) == line);
}

void CheckEncodings(std::string_view bytes) {
  const std::wstring wide = os::WideFromUtf8(bytes);
  Check(wide == test::DecodeUtf8Literally(bytes));
  Check(os::WideFromUtf8(os::Utf8FromWide(wide)) == wide);
  Check(os::WideFromUtf16(os::Utf16FromWide(wide)) == wide);
  Check(os::AnsiFromWide(os::WideFromAnsi(bytes)) == bytes);
  const std::string text = os::Utf8FromUtf8OrAnsi(bytes);
  Check(os::Utf8FromUtf8OrAnsi(text) == text);
  Check(os::BytesFromBase64(os::Base64FromBytes(bytes)) == bytes);
  const auto decoded = os::BytesFromBase64(bytes);
  Check(!decoded || os::Base64FromBytes(*decoded) == bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  CheckCleaned(text);
  CheckEncodings(text);
  return 0;
}
