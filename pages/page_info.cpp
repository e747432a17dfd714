#include "pages/page_info.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/hex.h"

namespace rastrel::pages {
namespace {

constexpr std::string_view Heading = "Rastrel page 1";
constexpr std::size_t SizeLimit = std::size_t{1} << 20;
constexpr unsigned ChannelLimit = 64;

constexpr std::array<std::pair<PageColor, std::string_view>, 4> ColorWords = {{
    {PageColor::Gray, "gray"},
    {PageColor::Rgb, "rgb"},
    {PageColor::Cmyk, "cmyk"},
    {PageColor::Separations, "separations"},
}};

// Length of the well-formed UTF-8 sequence that the text begins with, or 0.
std::size_t SequenceLength(std::string_view text) {
  const auto byte = [&](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
  };
  const auto follows = [&](std::size_t i) { return (byte(i) & 0xC0U) == 0x80U; };
  const unsigned lead = byte(0);
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) return follows(1) ? 2 : 0;
  if (lead >= 0xE0 && lead <= 0xEF) {
    const bool overlong = lead == 0xE0 && byte(1) < 0xA0;
    const bool surrogate = lead == 0xED && byte(1) > 0x9F;
    return follows(1) && follows(2) && !overlong && !surrogate ? 3 : 0;
  }
  if (lead >= 0xF0 && lead <= 0xF4) {
    const bool outside = (lead == 0xF0 && byte(1) < 0x90) || (lead == 0xF4 && byte(1) > 0x8F);
    return follows(1) && follows(2) && follows(3) && !outside ? 4 : 0;
  }
  return 0;
}

void AppendEscape(std::string& target, char character) {
  target += '%';
  os::AppendHex(target, static_cast<unsigned char>(character), os::HexCase::Upper);
}

// Control characters, '%' and bytes that are no UTF-8 become %XX; blanks too where they part two
// values.
std::string Escape(std::string_view text, bool blanks) {
  std::string escaped;
  while (!text.empty()) {
    const std::size_t length = SequenceLength(text);
    const char first = text.front();
    const bool plain = length > 1 ||
                       (length == 1 && first > ' ' && first != '%' && first != 0x7F) ||
                       (first == ' ' && !blanks);
    if (plain) {
      escaped += text.substr(0, length);
    } else {
      AppendEscape(escaped, first);
    }
    text.remove_prefix(plain ? length : 1);
  }
  return escaped;
}

bool Unescape(std::string_view text, std::string& plain) {
  plain.clear();
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      plain += text[i];
      continue;
    }
    if (i + 2 >= text.size()) return false;
    const auto byte = os::ByteFromHex(text[i + 1], text[i + 2], os::HexCase::Upper);
    if (!byte) return false;
    plain += static_cast<char>(*byte);
    i += 2;
  }
  return true;
}

template <typename Number>
bool ReadNumber(std::string_view text, Number& number) {
  if (text.empty()) return false;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

std::string FormatDecimal(double number) {
  std::array<char, 64> digits;
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  return error == std::errc() ? std::string(digits.data(), end) : std::string("0");
}

std::string FormatInk(const InkColor& ink) {
  std::string text;
  for (const double part : ink) text += (text.empty() ? "" : " ") + FormatDecimal(part);
  return text;
}

// Four octal digits.
std::string FormatAccess(unsigned bits) {
  std::string digits;
  for (const unsigned shift : {9U, 6U, 3U, 0U})
    digits += static_cast<char>('0' + (bits >> shift & 7U));
  return digits;
}

bool IsPlainName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos &&
         name.find('\0') == std::string_view::npos;
}

// The fields come in one order, so a reader needs no table of the fields it has seen.
class Reader {
 public:
  explicit Reader(std::string_view text) : m_Rest(text) {}

  Expected<PageInfo> Read() {
    PageInfo info;
    if (ReadAll(info)) return info;
    return Failure{.what = "read page info", .error = EINVAL, .why = m_Reason, .line = m_Line};
  }

 private:
  bool ReadAll(PageInfo& info) {
    if (!NextLine()) return false;
    if (m_Text != Heading) return Fail("not a page info of this version");
    return ReadText("job", info.job) && ReadText("printer", info.printer) &&
           ReadText("mode", info.mode) && ReadAccess(info.access) &&
           ReadPositive("page", info.page) && ReadPositive("width", info.width) &&
           ReadPositive("height", info.height) &&
           ReadResolution("x-resolution", info.xResolution) &&
           ReadResolution("y-resolution", info.yResolution) && ReadPositive("bits", info.bits) &&
           ReadColor(info.color) && ReadPlanes(info.planes) && ReadFiles(info.files) && ReadEnd() &&
           Check(info);
  }

  bool Fail(std::string reason) {
    m_Reason = std::move(reason);
    return false;
  }

  bool NextLine() {
    ++m_Line;
    const std::size_t end = m_Rest.find('\n');
    if (end == std::string_view::npos) {
      return Fail(m_Rest.empty() ? "the text ends here" : "no line feed at the end");
    }
    m_Text = m_Rest.substr(0, end);
    m_Rest.remove_prefix(end + 1);
    return true;
  }

  bool NextIs(std::string_view key) const {
    return m_Rest.starts_with(key) && m_Rest.substr(key.size()).starts_with(": ");
  }

  bool NextValue(std::string_view key) {
    const bool present = NextIs(key);
    if (!NextLine()) return false;
    if (!present) return Fail("\"" + std::string(key) + ": \" expected");
    m_Text.remove_prefix(key.size() + 2);
    return true;
  }

  bool ReadText(std::string_view key, std::string& text) {
    return NextValue(key) && (Unescape(m_Text, text) || Fail("a bad escape"));
  }

  bool ReadPositive(std::string_view key, unsigned& number) {
    if (!NextValue(key)) return false;
    return (ReadNumber(m_Text, number) && number > 0) || Fail("not a number above 0");
  }

  // Pages of earlier versions have no such line.
  bool ReadAccess(std::optional<unsigned>& access) {
    if (!NextIs("access")) return true;
    if (!NextValue("access")) return false;
    unsigned bits = 0;
    const char* const end = m_Text.data() + m_Text.size();
    const auto [stop, error] = std::from_chars(m_Text.data(), end, bits, 8);
    if (error != std::errc() || stop != end || (bits & ~0666U) != 0 || (bits & 0600U) != 0600U)
      return Fail("not the permissions of a file");
    access = bits;
    return true;
  }

  bool ReadResolution(std::string_view key, double& number) {
    if (!NextValue(key)) return false;
    return (ReadNumber(m_Text, number) && std::isfinite(number) && number > 0) ||
           Fail("not a resolution above 0");
  }

  bool ReadColor(PageColor& color) {
    if (!NextValue("colour")) return false;
    for (const auto& [value, word] : ColorWords) {
      if (m_Text == word) {
        color = value;
        return true;
      }
    }
    return Fail("an unknown colour model");
  }

  // A field up to the next blank; the rest of the line stays.
  std::string_view TakeField() {
    const std::size_t end = m_Text.find(' ');
    const std::string_view field = m_Text.substr(0, end);
    m_Text.remove_prefix(end == std::string_view::npos ? m_Text.size() : end + 1);
    return field;
  }

  bool ReadPlanes(std::vector<PagePlane>& planes) {
    do {
      if (!NextValue("plane")) return false;
      PagePlane plane;
      if (!ReadNumber(TakeField(), plane.channel) || plane.channel >= ChannelLimit) {
        return Fail("a bad channel");
      }
      if (!Unescape(TakeField(), plane.file)) return Fail("a bad escape");
      if (!Unescape(m_Text, plane.name)) return Fail("a bad escape");
      if (plane.name.empty()) return Fail("a plane without a name");
      if (NextIs("ink") && !ReadInk(plane.ink.emplace())) return false;
      planes.push_back(std::move(plane));
    } while (NextIs("plane"));
    return true;
  }

  bool ReadInk(InkColor& ink) {
    if (!NextValue("ink")) return false;
    bool good = !m_Text.ends_with(' ');
    for (double& part : ink) good = good && ReadNumber(TakeField(), part) && part >= 0 && part <= 1;
    return (good && m_Text.empty()) || Fail("not four parts of ink from 0 to 1");
  }

  bool ReadFiles(std::vector<PageFile>& files) {
    do {
      if (!NextValue("file")) return false;
      PageFile file;
      if (!ReadNumber(TakeField(), file.bytes)) return Fail("a bad size");
      file.sum = TakeField();
      if (!SumKindOf(file.sum)) return Fail("a bad check sum");
      if (!Unescape(m_Text, file.name)) return Fail("a bad escape");
      if (!IsPlainName(file.name)) return Fail("not a plain file name");
      files.push_back(std::move(file));
    } while (NextIs("file"));
    return true;
  }

  bool ReadEnd() {
    if (!NextLine()) return false;
    if (m_Text != "end") return Fail("\"end\" expected");
    return m_Rest.empty() || Fail("text behind the end");
  }

  bool Check(const PageInfo& info) {
    if (info.bits > 16) return Fail("more than 16 bits a sample");
    const std::size_t planes = info.planes.size();
    const bool counted = (info.color == PageColor::Gray && planes == 1) ||
                         (info.color == PageColor::Rgb && planes == 3) ||
                         (info.color == PageColor::Cmyk && planes == 4) ||
                         info.color == PageColor::Separations;
    if (!counted) return Fail("the number of planes does not fit the colour model");
    for (const PagePlane& plane : info.planes) {
      const bool listed = std::ranges::any_of(
          info.files, [&](const PageFile& file) { return file.name == plane.file; });
      if (!listed) return Fail("a plane lies in a file that is not listed: " + plane.file);
    }
    return true;
  }

  std::string_view m_Rest;
  std::string_view m_Text;
  int m_Line = 0;
  std::string m_Reason;
};

Failure Failed(const char* operation, const std::string& path) {
  return Failure{operation, path, errno};
}

}  // namespace

std::string PageName(unsigned page) {
  std::string digits = std::to_string(page);
  if (digits.size() < 4) digits.insert(0, 4 - digits.size(), '0');
  return "p" + digits;
}

Expected<PageFile> DescribeFile(const std::string& directory, const std::string& name,
                                SumKind kind) {
  const std::string path = directory + "/" + name;
  const os::FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.IsOpen()) return Failure{"open", path, errno};
  PageSum sum(kind);
  PageFile described{name, 0, {}};
  std::vector<std::byte> buffer(262144);
  while (true) {
    const ssize_t count = read(file.Get(), buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return Failure{"read", path, errno};
    if (count == 0) break;
    sum.Add(std::span(buffer).first(static_cast<std::size_t>(count)));
    described.bytes += static_cast<std::uint64_t>(count);
  }
  described.sum = sum.Finish();
  return described;
}

std::string FormatPageInfo(const PageInfo& info) {
  std::string text(Heading);
  const auto line = [&](std::string_view key, const std::string& value) {
    text.append("\n").append(key).append(": ").append(value);
  };
  line("job", Escape(info.job, false));
  line("printer", Escape(info.printer, false));
  line("mode", Escape(info.mode, false));
  if (info.access) line("access", FormatAccess(*info.access));
  line("page", std::to_string(info.page));
  line("width", std::to_string(info.width));
  line("height", std::to_string(info.height));
  line("x-resolution", FormatDecimal(info.xResolution));
  line("y-resolution", FormatDecimal(info.yResolution));
  line("bits", std::to_string(info.bits));
  for (const auto& [value, word] : ColorWords) {
    if (info.color == value) line("colour", std::string(word));
  }
  for (const PagePlane& plane : info.planes) {
    line("plane", std::to_string(plane.channel) + " " + Escape(plane.file, true) + " " +
                      Escape(plane.name, false));
    if (plane.ink) line("ink", FormatInk(*plane.ink));
  }
  for (const PageFile& file : info.files) {
    line("file", std::to_string(file.bytes) + " " + file.sum + " " + Escape(file.name, false));
  }
  return text + "\nend\n";
}

Expected<PageInfo> ParsePageInfo(const std::string& text) { return Reader(text).Read(); }

Expected<PageInfo> ReadPageInfo(const std::string& directory) {
  const std::string path = directory + "/" + PageInfoName;
  const os::FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat state {};
  if (!file.IsOpen() || fstat(file.Get(), &state) != 0) return Failed("open", path);
  if (!S_ISREG(state.st_mode)) return Failure{"read page info", path, EINVAL};
  std::string text(SizeLimit + 1, '\0');
  std::size_t filled = 0;
  while (filled < text.size()) {
    const ssize_t count = read(file.Get(), text.data() + filled, text.size() - filled);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return Failed("read", path);
    if (count == 0) break;
    filled += static_cast<std::size_t>(count);
  }
  if (filled > SizeLimit) return Failure{"read page info", path, EFBIG};
  text.resize(filled);
  auto info = ParsePageInfo(text);
  if (!info) return FailureAt(path, info.Error());
  return info;
}

}  // namespace rastrel::pages
