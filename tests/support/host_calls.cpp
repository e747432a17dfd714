#include "tests/support/host_calls.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "rastrel/platform/os/text.h"

namespace rastrel::test {
namespace {

/// Numbers in parentheses, blanks between them.
std::string Group(std::initializer_list<double> numbers) {
  std::string text = "(";
  for (const double number : numbers) {
    if (text.size() > 1) text += ' ';
    text += TextOf(number);
  }
  return text + ')';
}

std::string_view OperationOf(std::string_view line) {
  line = line.substr(0, line.find('('));
  const std::size_t point = line.rfind('.');
  return point == std::string_view::npos ? line : line.substr(point + 1);
}

}  // namespace

std::string TextOf(double value) {
  std::array<char, 32> digits;
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value);
  return std::string(digits.data(), end);
}

std::string TextOf(const wchar_t* text) {
  if (text == nullptr) return "null";
  std::string quoted = "\"";
  for (const char character : os::Utf8FromWide(text)) {
    switch (character) {
      case '\r': quoted += "\\r"; break;
      case '\n': quoted += "\\n"; break;
      case '"': quoted += "\\\""; break;
      case '\\': quoted += "\\\\"; break;
      default: quoted += character;
    }
  }
  return quoted + '"';
}

std::string TextOf(const ObjectText& object) {
  return object.handle == 0 ? "none" : "#" + std::to_string(object.handle);
}

std::string TextOf(host::ListHandle list) {
  if (list == host::ListHandle::None) return "none";
  return "L" + std::to_string(static_cast<unsigned long long>(list));
}

std::string TextOf(ObjFilter filter) {
  switch (filter) {
    case ObjFilter_IsCurrent: return "IsCurrent";
    case ObjFilter_IsGenericPlate: return "IsGenericPlate";
    case ObjFilter_IsText: return "IsText";
  }
  return std::to_string(static_cast<int>(filter));
}

std::string TextOf(const CVKColor& color) {
  if (color.IsInvisible()) return "invisible";
  const auto& parts = color.GetComponents();
  if (color.GetColorSpace() == COLORSPACE_CMYK)
    return "CMYK" + Group({parts[0], parts[1], parts[2], parts[3]});
  return "RGB" + Group({parts[0], parts[1], parts[2]});
}

std::string TextOf(const CVKFullColor& color) {
  std::wstring name;
  const std::string values = TextOf(static_cast<const CVKColor&>(color));
  return color.GetColorName(name) != 0 ? values + ' ' + TextOf(name) : values;
}

std::string TextOf(const CWorldRect& rectangle) {
  return Group({rectangle.left, rectangle.top, rectangle.right, rectangle.bottom});
}

std::string TextOf(const CWorldPoint& point) { return Group({point.x, point.y}); }

std::string TextOf(const NewWorldPt& point) { return Group({point.x, point.y}); }

std::string TextOf(const BOUNDS& bounds) {
  return Group({bounds.xmin, bounds.xmax, bounds.ymin, bounds.ymax});
}

std::string TextOf(const TM& matrix) {
  return Group({matrix.a, matrix.b, matrix.c, matrix.d, matrix.tx, matrix.ty});
}

std::string TextOf(const VK_PAGE_RANGE& pages) {
  return std::to_string(pages.first) + ".." + std::to_string(pages.last);
}

std::string TextOf(const LINESTYLE& style) {
  return "(width " + TextOf(style.width) + " style " + std::to_string(style.style) + ")";
}

std::string TextOf(const CPropertyLocks& locks) {
  return "(" + std::to_string(locks.color) + ' ' + std::to_string(locks.font) + ' ' +
         std::to_string(locks.lineStyle) + ' ' + std::to_string(locks.size) + ')';
}

std::string TextOf(const ParagraphInfo& info) {
  return "(" + std::to_string(info.first) + ' ' + std::to_string(info.second) + ')';
}

std::string TextOf(const ParagraphEle& paragraph) {
  return TextOf(ParagraphInfo{.first = paragraph.first, .second = paragraph.second});
}

std::string TextOf(const FontRecord* font) {
  return font == nullptr ? "none" : "F" + std::to_string(font->id);
}

void HostCalls::Write(std::string line) {
  if (m_Before && !m_Writing) {
    m_Writing = true;  // a line of the callback is no call
    m_Before();
    m_Writing = false;
  }
  if (m_Lines.size() < m_MaximumLines) m_Lines.push_back(std::move(line));
}

void HostCalls::Next(const std::string& name, std::initializer_list<double> answers) {
  auto& waiting = m_Next[name];
  waiting.insert(waiting.end(), answers);
}

std::optional<double> HostCalls::Scripted(const std::string& name) {
  const auto waiting = m_Next.find(name);
  if (waiting != m_Next.end() && !waiting->second.empty()) {
    const double answer = waiting->second.front();
    waiting->second.pop_front();
    return answer;
  }
  const auto standing = m_Standing.find(name);
  if (standing == m_Standing.end()) return std::nullopt;
  return standing->second;
}

int HostCalls::Answer(const std::string& name, int otherwise) {
  const std::optional<double> answer = Scripted(name);
  return answer ? static_cast<int>(*answer) : otherwise;
}

double HostCalls::AnswerNumber(const std::string& name, double otherwise) {
  return Scripted(name).value_or(otherwise);
}

const HostCalls::Lines& HostCalls::All() {
  if (m_Before && !m_Writing) {
    m_Writing = true;
    m_Before();
    m_Writing = false;
  }
  return m_Lines;
}

std::string HostCalls::Text() {
  std::string text;
  for (const std::string& line : All()) text.append(line).append("\n");
  return text;
}

HostCalls::Lines HostCalls::Of(std::initializer_list<std::string_view> names) {
  Lines found;
  for (const std::string& line : All())
    if (std::find(names.begin(), names.end(), OperationOf(line)) != names.end())
      found.push_back(line);
  return found;
}

bool HostCalls::Has(std::string_view line) {
  const Lines& lines = All();
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

void HostCalls::Clear() {
  All();
  m_Lines.clear();
}

}  // namespace rastrel::test
