// UTF-8 to wide text and back against iconv: 100 MiB in pieces of 64 KiB into a buffer that is used
// again, which is how texts arrive from files and pipes; and whole, into a new text, where the
// memory that the system has to give costs more than the conversion.
#include <iconv.h>

#include <string>
#include <string_view>

#include "bench/measure.h"
#include "bench/require.h"
#include "rastrel/platform/os/text.h"

namespace {

namespace os = rastrel::os;
using rastrel::bench::Require;

constexpr std::size_t TextBytes = std::size_t{100} << 20;
constexpr std::size_t PieceBytes = std::size_t{64} << 10;

// A piece of whole characters, repeated.
std::string Repeated(std::string_view sample) {
  std::string piece;
  while (piece.size() + sample.size() <= PieceBytes) piece += sample;
  return piece;
}

void Convert(iconv_t converter, std::string_view from, char* to, std::size_t room) {
  char* in = const_cast<char*>(from.data());
  std::size_t left = from.size();
  Require(::iconv(converter, &in, &left, &to, &room) != static_cast<std::size_t>(-1),
          "iconv failed");
}

rastrel::bench::Comparison TextComparison(const std::string& name, double limit) {
  return {.name = name,
          .peerName = "iconv",
          .rounds = 5,
          .limit = limit,
          .clock = rastrel::bench::Clock::Processor};
}

void CompareSample(const std::string& name, std::string_view sample) {
  const std::string piece = Repeated(sample);
  const std::size_t pieces = TextBytes / piece.size();
  const std::wstring widePiece = os::WideFromUtf8(piece);
  const std::string_view wideBytes(reinterpret_cast<const char*>(widePiece.data()),
                                   widePiece.size() * sizeof(wchar_t));
  std::wstring wide(piece.size(), L'\0');
  std::string bytes(piece.size() * 2, '\0');
  const iconv_t decoder = ::iconv_open("WCHAR_T", "UTF-8");
  const iconv_t encoder = ::iconv_open("UTF-8", "WCHAR_T");
  rastrel::bench::Compare(
      TextComparison("UTF-8 to wide, pieces of 64 KiB, " + name, 1.0), [] {},
      [&] {
        for (std::size_t index = 0; index < pieces; ++index) {
          wide.clear();
          os::AppendWideFromUtf8(wide, piece);
        }
      },
      [&] {
        wide.resize(piece.size());
        for (std::size_t index = 0; index < pieces; ++index)
          Convert(decoder, piece, reinterpret_cast<char*>(wide.data()),
                  wide.size() * sizeof(wchar_t));
      });
  rastrel::bench::Compare(
      TextComparison("wide to UTF-8, pieces of 64 KiB, " + name, 1.0), [] {},
      [&] {
        for (std::size_t index = 0; index < pieces; ++index) {
          bytes.clear();
          os::AppendUtf8FromWide(bytes, widePiece);
        }
      },
      [&] {
        bytes.resize(piece.size() * 2);
        for (std::size_t index = 0; index < pieces; ++index)
          Convert(encoder, wideBytes, bytes.data(), bytes.size());
      });
  std::string whole;
  for (std::size_t index = 0; index < pieces; ++index) whole += piece;
  rastrel::bench::Compare(
      TextComparison("UTF-8 to wide, one new text, " + name, 0.0), [] {},
      [&] { Require(!os::WideFromUtf8(whole).empty(), "nothing was converted"); },
      [&] {
        std::wstring target(whole.size(), L'\0');
        Convert(decoder, whole, reinterpret_cast<char*>(target.data()),
                target.size() * sizeof(wchar_t));
      });
  ::iconv_close(decoder);
  ::iconv_close(encoder);
}

}  // namespace

int main() {
  CompareSample("ASCII", "The quick brown fox jumps over the lazy dog, 0123456789 times.\n");
  CompareSample("Latin",
                "Gr\xC3\xB6\xC3\x9F"
                "e \xC3\xBC"
                "ber alles: caf\xC3\xA9, na\xC3\xAFve, "
                "d\xC3\xA9j\xC3\xA0 vu, S\xC3\xA3o Paulo\n");
  CompareSample("mixed",
                "Sign \xE7\x9C\x8B\xE6\x9D\xBF \xD0\x92\xD1\x8B\xD0\xB2\xD0\xB5\xD1\x81"
                "\xD0\xBA\xD0\xB0 \xF0\x9F\x96\xA8 \xCE\xB5\xCF\x80\xCE\xB9 caf\xC3\xA9\n");
}
