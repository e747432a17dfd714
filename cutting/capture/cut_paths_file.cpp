#include "cutting/capture/cut_paths_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <span>
#include <utility>

#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cutting {
namespace {

constexpr double MillimetersPerPoint = 25.4 / 72;
constexpr double MaximumNumber = 1e9;  // points; far beyond any page
constexpr std::string_view SeparationWord = "separation ";

std::string_view NextWord(std::string_view& text) {
  const std::string_view word = text.substr(0, text.find(' '));
  text.remove_prefix(std::min(word.size() + 1, text.size()));
  return word;
}

std::optional<double> NumberFrom(std::string_view word) {
  double value = 0;
  const auto [stop, error] = std::from_chars(word.data(), word.data() + word.size(), value);
  const bool whole = error == std::errc() && stop == word.data() + word.size();
  if (!whole || !std::isfinite(value) || std::abs(value) > MaximumNumber) return {};
  return value;
}

// As many numbers as there is room for, and nothing else.
bool ReadNumbers(std::string_view text, std::span<double> numbers) {
  for (double& number : numbers) {
    const auto value = NumberFrom(NextWord(text));
    if (!value) return false;
    number = *value;
  }
  return text.empty();
}

std::optional<std::string> Unescaped(std::string_view text) {
  std::string plain;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '%') {
      plain += text[at];
      continue;
    }
    if (at + 2 >= text.size()) return {};
    const auto byte = os::ByteFromHex(text[at + 1], text[at + 2]);
    if (!byte) return {};
    plain += static_cast<char>(*byte);
    at += 2;
  }
  return plain;
}

std::optional<Paint::Kind> KindFrom(std::string_view word) {
  if (word == "stroke") return Paint::Kind::Stroke;
  if (word == "fill") return Paint::Kind::Fill;
  if (word == "eofill") return Paint::Kind::EvenOddFill;
  if (word == "text") return Paint::Kind::Text;
  return {};
}

std::optional<PaintColor> ColorFrom(std::string_view text) {
  PaintColor color;
  if (text.starts_with(SeparationWord)) {
    color.model = ColorModel::Spot;
    color.name = os::Utf8FromUtf8OrAnsi(text.substr(SeparationWord.size()));
    return color;
  }
  const std::string_view word = NextWord(text);
  if (word == "gray")
    color = {ColorModel::Gray, std::vector<double>(1), {}};
  else if (word == "rgb")
    color = {ColorModel::Rgb, std::vector<double>(3), {}};
  else if (word == "cmyk")
    color = {ColorModel::Cmyk, std::vector<double>(4), {}};
  else
    return {};
  if (!ReadNumbers(text, color.components)) return {};
  for (double& component : color.components) component = std::clamp(component, 0.0, 1.0);
  return color;
}

class Reader {
 public:
  Reader(std::string_view text, const std::string& name) : m_Rest(text), m_Name(name) {}

  Expected<CutJob> Read();
  Expected<void> ReadLayers(CutJob& job);

 private:
  bool Next();
  bool Expect(std::string_view line);
  bool Value(std::string_view key, std::string_view& value);
  bool Number(std::string_view key, double& number);
  bool Count(std::string_view key, std::uint64_t& count);
  bool ReadClips();
  bool ReadPath(CutJob& job);
  bool ReadPaint(Paint& paint);
  bool ReadSegments(std::vector<Contour>& contours);
  bool TakeSegment(std::vector<Contour>& contours);
  bool ReadAll(CutJob& job);
  bool ReadAllLayers(CutJob& job);
  bool Fail(std::string why);
  [[nodiscard]] static Point Scaled(double x, double y) {
    return {x * MillimetersPerPoint, y * MillimetersPerPoint};
  }

  std::string_view m_Rest;
  const std::string& m_Name;
  std::string_view m_Line;
  int m_Number = 0;
  Failure m_Failure;
};

bool Reader::Fail(std::string why) {
  m_Failure.where = m_Name;
  m_Failure.line = std::max(m_Number, 1);
  m_Failure.column = 1;
  m_Failure.why = std::move(why);
  m_Failure.code = FailureCode::BadInput;
  return false;
}

bool Reader::Next() {
  ++m_Number;
  const std::size_t end = m_Rest.find('\n');
  if (end == m_Rest.npos) return Fail("the file ends too early");
  m_Line = m_Rest.substr(0, end);
  m_Rest.remove_prefix(end + 1);
  return true;
}

bool Reader::Expect(std::string_view line) {
  if (!Next()) return false;
  return m_Line == line || Fail("'" + std::string(line) + "' is expected here");
}

bool Reader::Value(std::string_view key, std::string_view& value) {
  if (!Next()) return false;
  const std::string begin = std::string(key) + ": ";
  // A value may be empty, of a path without any part.
  if (!m_Line.starts_with(begin)) return Fail("'" + begin + "' is expected here");
  value = m_Line.substr(begin.size());
  return true;
}

bool Reader::Number(std::string_view key, double& number) {
  std::string_view value;
  if (!Value(key, value)) return false;
  const auto read = NumberFrom(value);
  if (!read || *read < 0) return Fail("a number that is not below 0 is expected here");
  number = *read;
  return true;
}

bool Reader::Count(std::string_view key, std::uint64_t& count) {
  std::string_view value;
  if (!Value(key, value)) return false;
  const auto [stop, error] = std::from_chars(value.data(), value.data() + value.size(), count);
  return (error == std::errc() && stop == value.data() + value.size()) ||
         Fail("a count is expected here");
}

bool Reader::ReadClips() {
  std::uint64_t clips = 0;
  if (!Count("clips", clips)) return false;
  for (std::uint64_t clip = 0; clip < clips; ++clip) {
    if (!Expect("clip")) return false;
    do {
      if (!Next()) return false;
    } while (m_Line != "end-clip");
  }
  return true;
}

bool Reader::ReadPaint(Paint& paint) {
  std::string_view kind;
  std::string_view color;
  double width = 0;
  if (!Value("kind", kind)) return false;
  if (!KindFrom(kind)) return Fail("the kind is unknown: '" + std::string(kind) + "'");
  if (!Value("colour", color)) return false;
  const auto plain = Unescaped(color);
  if (!plain || !ColorFrom(*plain))
    return Fail("the colour can't be read: '" + std::string(color) + "'");
  if (!Number("line-width", width)) return false;
  paint = *PaintFrom(kind, *plain, width);
  return true;
}

bool Reader::TakeSegment(std::vector<Contour>& contours) {
  std::string_view rest = m_Line;
  const std::string_view letter = NextWord(rest);
  std::array<double, 6> numbers{};
  const std::size_t count = letter == "c" ? 6 : letter == "h" ? 0 : 2;
  if ((letter != "m" && letter != "l" && letter != "c" && letter != "h") ||
      !ReadNumbers(rest, std::span(numbers).first(count)))
    return Fail("a segment is expected here");
  if (letter == "m") {
    contours.push_back({.start = Scaled(numbers[0], numbers[1]), .segments = {}});
    return true;
  }
  if (contours.empty() || contours.back().closed) return Fail("'m' is expected here");
  Contour& contour = contours.back();
  if (letter == "h") contour.closed = true;
  if (letter == "l") contour.segments.push_back(LineTo(Scaled(numbers[0], numbers[1])));
  if (letter == "c")
    contour.segments.push_back(CurveTo(Scaled(numbers[0], numbers[1]),
                                       Scaled(numbers[2], numbers[3]),
                                       Scaled(numbers[4], numbers[5])));
  return true;
}

bool Reader::ReadSegments(std::vector<Contour>& contours) {
  for (;;) {
    if (!Next()) return false;
    if (m_Line == "end-path") return true;
    if (!TakeSegment(contours)) return false;
  }
}

bool Reader::ReadPath(CutJob& job) {
  CutPath path;
  std::string_view ignored;
  if (!Expect("path") || !ReadPaint(path.paint) || !Value("clip", ignored) ||
      !Value("closed", ignored) || !ReadSegments(path.contours))
    return false;
  job.paths.push_back(std::move(path));
  return true;
}

bool Reader::ReadAll(CutJob& job) {
  std::uint64_t paths = 0;
  if (!Expect("Rastrel cut paths 1") || !Expect("unit: point") || !Number("width", job.width) ||
      !Number("height", job.height) || !ReadClips() || !Count("paths", paths))
    return false;
  job.width *= MillimetersPerPoint;
  job.height *= MillimetersPerPoint;
  for (std::uint64_t path = 0; path < paths; ++path)
    if (!ReadPath(job)) return false;
  if (!Expect("end")) return false;
  ++m_Number;
  return m_Rest.empty() || Fail("the file goes on after its end");
}

bool Reader::ReadAllLayers(CutJob& job) {
  std::uint64_t paths = 0;
  if (!Expect("Rastrel cut layers 1") || !Count("paths", paths)) return false;
  if (paths != job.paths.size()) return Fail("it is of another number of paths");
  for (CutPath& path : job.paths) {
    if (!Next()) return false;
    auto layer = Unescaped(m_Line);
    if (!layer) return Fail("the layer can't be read: '" + std::string(m_Line) + "'");
    path.paint.layer = os::Utf8FromUtf8OrAnsi(*layer);
  }
  if (!Expect("end")) return false;
  ++m_Number;
  return m_Rest.empty() || Fail("the file goes on after its end");
}

Expected<void> Reader::ReadLayers(CutJob& job) {
  if (!ReadAllLayers(job)) return m_Failure;
  return {};
}

Expected<CutJob> Reader::Read() {
  CutJob job;
  if (!ReadAll(job)) return m_Failure;
  return job;
}

}  // namespace

std::optional<Paint> PaintFrom(std::string_view kind, std::string_view color, double lineWidth) {
  const auto read = KindFrom(kind);
  auto readColor = ColorFrom(color);
  if (!read || !readColor) return {};
  return Paint{.kind = *read,
               .lineWidth = *read == Paint::Kind::Stroke ? lineWidth * MillimetersPerPoint : 0,
               .color = *std::move(readColor)};
}

Expected<CutJob> ReadCutPaths(std::string_view text, const std::string& name) {
  return Reader(text, name).Read();
}

Expected<void> ReadCutLayers(std::string_view text, const std::string& name, CutJob& job) {
  return Reader(text, name).ReadLayers(job);
}

}  // namespace rastrel::cutting
