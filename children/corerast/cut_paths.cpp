#include "children/corerast/cut_paths.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <optional>
#include <span>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::corerast {
namespace {

constexpr double PointsPerInch = 72;
constexpr std::string_view SeparationWord = "separation ";

std::uint64_t Weight(const auto& path) {
  return sizeof(path) + path.head.size() + path.segments.size();
}

std::string_view NextWord(std::string_view& text) {
  const std::size_t start = std::min(text.find_first_not_of(' '), text.size());
  text.remove_prefix(start);
  const std::string_view word = text.substr(0, text.find(' '));
  text.remove_prefix(word.size());
  return word;
}

std::optional<double> ReadNumber(std::string_view word) {
  double number = 0;
  const auto [stop, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  if (error != std::errc() || stop != word.data() + word.size() || !std::isfinite(number))
    return {};
  return number;
}

// With four decimals at most: a point's ten-thousandth is far below any cutter's step.
std::string Number(double value) {
  std::array<char, 400> digits;
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                          std::chars_format::fixed, 4);
  std::string text(digits.data(), error == std::errc() ? end : digits.data());
  text.erase(text.find_last_not_of('0') + 1);
  if (text.ends_with('.')) text.pop_back();
  return text == "-0" ? "0" : text;
}

// Control characters, '%' and what is no UTF-8 as %XX, so that a text keeps to its line.
std::string Escape(std::string_view text) {
  const bool wellFormed = os::Utf8FromWide(os::WideFromUtf8(text)) == text;
  std::string escaped;
  for (const char character : text) {
    const auto value = static_cast<unsigned char>(character);
    if (value >= ' ' && value != 0x7F && value != '%' && (value < 0x80 || wellFormed)) {
      escaped += character;
    } else {
      escaped += '%';
      escaped += "0123456789ABCDEF"[value >> 4];
      escaped += "0123456789ABCDEF"[value & 15U];
    }
  }
  return escaped;
}

std::string_view KindWord(std::string_view letter) {
  if (letter == "S") return "stroke";
  if (letter == "F") return "fill";
  if (letter == "E") return "eofill";
  return "text";
}

// Turns segments in pixels from the top left into lines in points from the bottom left.
class SegmentWriter {
 public:
  explicit SegmentWriter(const children::PageInfo& info)
      : m_XScale(PointsPerInch / info.xResolution),
        m_YScale(PointsPerInch / info.yResolution),
        m_Height(info.height) {}

  // False if the text is none of the prolog's making.
  bool Add(std::string_view text) {
    for (std::string_view word = NextWord(text); !word.empty(); word = NextWord(text)) {
      const std::size_t points = word == "c" ? 3 : word == "m" || word == "l" ? 1 : 0;
      if (points == 0 && word != "h") return false;
      std::array<std::pair<double, double>, 3> read;
      for (std::size_t i = 0; i < points; ++i) {
        const auto x = ReadNumber(NextWord(text));
        const auto y = ReadNumber(NextWord(text));
        if (!x || !y) return false;
        read[i] = {*x * m_XScale, (m_Height - *y) * m_YScale};
      }
      Take(word.front(), std::span(read).first(points));
    }
    return true;
  }

  [[nodiscard]] const std::string& Lines() const { return m_Lines; }
  // "1 0": whether each part of the path is closed.
  [[nodiscard]] const std::string& Closed() const { return m_Closed; }

 private:
  using Point = std::pair<double, double>;

  void Take(char letter, std::span<const Point> points) {
    if (letter == 'm') {
      m_Start = points.front();
      m_Drawing = false;
      return;
    }
    if (letter == 'h') {
      if (!m_Drawing) return;
      m_Lines += "h\n";
      m_Closed.back() = '1';
      m_Drawing = false;  // what follows without a move begins where this part began
      return;
    }
    if (!m_Drawing) Begin();
    Write(letter, points);
  }

  // A move that nothing follows draws nothing, so moves wait for the first segment.
  void Begin() {
    Write('m', std::span(&m_Start, 1));
    m_Closed += m_Closed.empty() ? "0" : " 0";
    m_Drawing = true;
  }

  void Write(char letter, std::span<const Point> points) {
    m_Lines += letter;
    for (const auto& [x, y] : points) m_Lines += " " + Number(x) + " " + Number(y);
    m_Lines += '\n';
  }

  double m_XScale;
  double m_YScale;
  double m_Height;
  Point m_Start{0, 0};
  bool m_Drawing = false;
  std::string m_Lines;
  std::string m_Closed;
};

// One block of the file; empty if the path draws nothing.
std::string FormatPath(const children::PageInfo& info, std::string_view head,
                       std::string_view segments) {
  SegmentWriter writer(info);
  const std::string_view letter = NextWord(head);
  const auto width = ReadNumber(NextWord(head));
  if (!writer.Add(segments) || writer.Lines().empty() || !width) return {};
  const double scale = PointsPerInch / std::sqrt(info.xResolution * info.yResolution);
  const std::string_view colour = head.empty() ? head : head.substr(1);
  return "path\nkind: " + std::string(KindWord(letter)) + "\ncolour: " + Escape(colour) +
         "\nline-width: " + Number(*width * scale) + "\nclosed: " + writer.Closed() + "\n" +
         writer.Lines() + "end-path\n";
}

}  // namespace

void CutPaths::BeginPage() {
  for (const Path& path : m_Present) m_Bytes -= Weight(path);
  m_Present.clear();
  m_Open = false;
}

void CutPaths::EndPage() {
  ++m_Ended;
  m_Open = false;
  if (!m_Present.empty()) m_Pages[m_Ended] = std::exchange(m_Present, {});
}

bool CutPaths::Add(const Report& report) {
  if (report.key == "CUTTER") {
    m_Set = !report.value.empty();
    if (report.value.starts_with(SeparationWord)) {
      m_Separations.push_back(report.value.substr(SeparationWord.size()));
    }
  } else if (report.key == "CUT") {
    m_Present.push_back({report.value, {}});
    m_Open = true;
    m_Bytes += Weight(m_Present.back());
  } else if (report.key == "SEG" && m_Open) {
    m_Present.back().segments += report.value;
    m_Bytes += report.value.size();
  } else if (report.key == "ENDCUT") {
    m_Open = false;
  }
  return m_Bytes <= Limit;
}

bool CutPaths::TakesSeparation(std::string_view name) const {
  return std::ranges::find(m_Separations, name) != m_Separations.end();
}

std::string CutPaths::Take(const children::PageInfo& info) {
  std::string blocks;
  unsigned count = 0;
  if (const auto page = m_Pages.find(info.page); page != m_Pages.end()) {
    for (const Path& path : page->second) {
      m_Bytes -= Weight(path);
      const std::string block = FormatPath(info, path.head, path.segments);
      if (block.empty()) continue;
      blocks += block;
      ++count;
    }
    m_Pages.erase(page);
  }
  return "Rastrel cut paths 1\nunit: point\nwidth: " +
         Number(info.width * PointsPerInch / info.xResolution) +
         "\nheight: " + Number(info.height * PointsPerInch / info.yResolution) +
         "\nclip: not applied\npaths: " + std::to_string(count) + "\n" + blocks + "end\n";
}

os::Outcome<os::Done> WriteCutPaths(const RunDescription& run, const std::string& directory,
                                    children::PageInfo& info) {
  if (run.cuts == nullptr || !run.cuts->Wanted(info.page)) return os::Done{};
  const std::string path = directory + "/" + CutPaths::FileName;
  const os::FileDescriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  if (!file.IsOpen()) return os::Failure{"create", path, errno};
  if (!os::WriteAll(file.Get(), run.cuts->Take(info))) return os::Failure{"write", path, errno};
  const auto described = DescribeFile(directory, CutPaths::FileName);
  if (!described) return described.Error();
  info.files.push_back(*described);
  return os::Done{};
}

}  // namespace rastrel::corerast
