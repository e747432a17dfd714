#include "children/jobspool/cut_path_reader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <span>
#include <string_view>

#include "rastrel/platform/os/hex.h"

namespace rastrel::jobspool {
namespace {

std::string Unescape(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isEscape = text[i] == '%' && i + 2 < text.size();
    const auto byte = isEscape ? os::ByteFromHex(text[i + 1], text[i + 2], os::HexCase::Upper)
                               : std::optional<unsigned char>();
    plain += byte ? static_cast<char>(*byte) : text[i];
    if (byte) i += 2;
  }
  return plain;
}

// Numbers with a blank before each.
bool ReadNumbers(std::string_view text, std::span<double> numbers) {
  for (double& number : numbers) {
    if (!text.starts_with(' ')) return false;
    text.remove_prefix(1);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || !std::isfinite(number)) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  }
  return text.empty();
}

}  // namespace

CutPathReader::CutPathReader(const std::string& path, double tolerance)
    : m_File(path, std::ios::binary), m_Tolerance(tolerance) {}

bool CutPathReader::NextLine() {
  if (m_HasLine) {
    m_HasLine = false;
    return true;
  }
  m_Good = m_Good && std::getline(m_File, m_Line) && !m_File.eof();
  return m_Good;
}

std::optional<std::string> CutPathReader::Value(const char* key) const {
  const std::string start = std::string(key) + ": ";
  if (!m_Line.starts_with(start)) return {};
  return m_Line.substr(start.size());
}

bool CutPathReader::ReadHead() {
  m_HeadRead = true;
  if (!NextLine() || m_Line != "Rastrel cut paths 1") return false;
  if (!NextLine() || Value("unit") != "point") return false;
  if (!NextLine() || !Value("width")) return false;
  if (!NextLine() || !Value("height")) return false;
  if (!ReadNumbers(" " + *Value("height"), std::span(&m_Height, 1))) return false;
  if (!NextLine() || !Value("clips")) return false;
  while (NextLine() && m_Line == "clip") {
    while (NextLine() && m_Line != "end-clip") {
    }
  }
  return m_Good && Value("paths");
}

bool CutPathReader::NextPath() {
  if (!m_HeadRead) m_Good = ReadHead() && m_Good;
  SkipPath();
  if (!m_Good || !NextLine()) return false;
  m_Whole = m_Line == "end";
  m_Good = m_Line == "path";
  if (!m_Good) return false;
  m_Good = NextLine() && Value("kind") && NextLine() && Value("colour");
  if (!m_Good) return false;
  m_Color = Unescape(*Value("colour"));
  m_Good = NextLine() && Value("line-width") && NextLine() && Value("clip");
  if (!m_Good) return false;
  m_Hidden = m_Line == "clip: outside";
  m_Good = NextLine() && Value("closed");
  if (!m_Good) return false;
  const std::string closed = *Value("closed");
  m_Parts = closed.size() / 2 + 1;
  m_InPath = true;
  return true;
}

void CutPathReader::SkipPath() {
  while (m_InPath && NextLine()) m_InPath = m_Line != "end-path";
  m_InPath = false;
}

std::optional<PathPart> CutPathReader::NextPart() {
  if (!m_InPath || !NextLine()) return {};
  PathPart part;
  if (m_Line == "end-path") {
    m_InPath = false;
    return {};
  }
  part.points.resize(1);
  std::array<double, 2> start{};
  m_Good = m_Line.starts_with('m') && ReadNumbers(std::string_view(m_Line).substr(1), start);
  part.points[0] = {start[0], start[1] - m_Height};
  while (m_Good && NextLine()) {
    if (m_Line == "end-path" || m_Line.starts_with('m')) {
      m_HasLine = true;
      break;
    }
    m_Good = ReadSegment(part);
  }
  if (!m_Good) return {};
  // A path that is led back to its start before it is closed names that point twice.
  if (part.closed && part.points.size() > 2 && part.points.back() == part.points.front()) {
    part.points.pop_back();
  }
  return part;
}

bool CutPathReader::ReadSegment(PathPart& part) {
  if (m_Line == "h") {
    part.closed = true;
    return true;
  }
  const std::size_t count = m_Line.starts_with('c') ? 3 : m_Line.starts_with('l') ? 1 : 0;
  std::array<double, 6> numbers{};
  if (count == 0 || part.closed ||
      !ReadNumbers(std::string_view(m_Line).substr(1), std::span(numbers).first(2 * count))) {
    return false;
  }
  std::array<Point, 4> curve{part.points.back()};
  for (std::size_t i = 0; i < count; ++i) {
    curve[i + 1] = {numbers[2 * i], numbers[2 * i + 1] - m_Height};
  }
  if (count == 1) {
    part.points.push_back(curve[1]);
  } else {
    AppendCurve(part.points, curve, m_Tolerance);
  }
  return true;
}

}  // namespace rastrel::jobspool
