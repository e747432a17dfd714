#pragma once

#include <array>
#include <random>
#include <span>
#include <string>
#include <string_view>

namespace rastrel::test {

/// Makes random files of comments, tokens and line ends, near enough to real ones that every scan
/// gets somewhere, with line lengths round the size of the line buffer.
class PsScanFiles {
 public:
  explicit PsScanFiles(unsigned seed) : m_Random(seed) {}

  std::string Next() {
    m_End = LineEndOf(Below(5));
    std::string file = Pick(Heads);
    const unsigned pieces = Below(40);
    for (unsigned piece = 0; piece < pieces; ++piece) Append(file);
    return file;
  }

 private:
  using Words = std::span<const std::string_view>;
  static constexpr std::string_view Heads[] = {
      "%!",
      "%!PS-Adobe-3.0 EPSF-3.0",
      "%!PS",
      "x%%!PS-Adobe",
      "%\n%!PS-Adobe-3.0\n",
      "",
      std::string_view(
          "\xC5\xD0\xD3\xC6\x1e\0\0\0\0\0\0\0\1\2\3\4\5\6\7\0\1\2\3\4\5\6\7\0ab%!PS epsf", 40),
      "%!PS-Adobe-3.0\n%%DocumentCustomColors: (atend)\n"};
  static constexpr std::string_view Comments[] = {"%%BoundingBox:",
                                                  "%%BoundingBox: 1 2 30 40",
                                                  "%%BoundingBox: (atend)",
                                                  "%%DocumentCustomColors:",
                                                  "%%DocumentCustomColors: (atend)",
                                                  "%%DocumentCustomColors: (A) B (C D)",
                                                  "%%CMYKCustomColor:",
                                                  "%%CMYKCustomColor: 0 .5 1e-1 1 (A)",
                                                  "%%RGBCustomColor: 1 0.5 0 B",
                                                  "%%RGBCustomColor:",
                                                  "%%+",
                                                  "%%+ (A)",
                                                  "%%+ 0 0 0 1 (C D) 1 1 1 1 A",
                                                  "%%EndComments",
                                                  "%%EOF",
                                                  "%BeginPhotoshop: 1",
                                                  "%BeginPhotosho",
                                                  "%%Title: x",
                                                  "%",
                                                  "%%",
                                                  "%%%BoundingBox: 1"};
  static constexpr std::string_view Tokens[] = {
      "(", ")",    "()",          "(atend)", "\\", "\\\\", "\\065",   "\\-1", "{", " ",       "\t",
      "1", "-2.5", "12345678901", "+",       ".",  "A",    "(A(B)C)", "%",    "x", "\x80\xff"};

  unsigned Below(unsigned limit) { return static_cast<unsigned>(m_Random() % limit); }
  std::string Pick(Words words) {
    return std::string(words[Below(static_cast<unsigned>(words.size()))]);
  }
  static std::string LineEndOf(unsigned kind) {
    static const std::array<std::string, 7> kinds = {
        "\n", "\r", "\r\n", "\n\n", std::string(1, '\0'), "\n\r\n", "\n\n\n"};
    return kinds.at(kind % kinds.size());
  }

  void Append(std::string& file) {
    switch (Below(12)) {
      case 0:
      case 1:
      case 2:
      case 3: file += Pick(Comments); break;
      case 4:
      case 5: file += Pick(Tokens); break;
      case 6:
      case 7:
      case 8:
      case 9: file += m_End; break;
      case 10: file += LineEndOf(Below(7)); break;
      default: AppendRun(file);
    }
  }

  // A run of one byte: a long line, or one that ends near the buffer's edge, or many line ends.
  void AppendRun(std::string& file) {
    const char bytes[] = {'x', '%', 'x', ' ', 'B', 'x', '\0', '\n'};
    const char byte = bytes[Below(sizeof bytes)];
    if (Below(8) == 0) {
      for (unsigned count = Below(30); count > 0; --count) file += LineEndOf(Below(7));
      return;
    }
    const unsigned lengths[] = {Below(80), Below(300), 4090 + Below(12), 8186 + Below(12),
                                2036 + Below(10)};
    // Line ends by the thousand take the literal scans long.
    const bool isText = byte != '\n' && byte != '\0';
    file += std::string(lengths[isText ? Below(5) : Below(2)], byte);
  }

  std::mt19937 m_Random;
  std::string m_End;
};

}  // namespace rastrel::test
