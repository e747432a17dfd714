#include "cutting/output/pdf_writer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "cutting/frame/mark_shape.h"
#include "cutting/output/drawn_contour.h"
#include "cutting/output/operation_look.h"
#include "cutting/output/text_output.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/hex.h"

namespace rastrel::cutting {
namespace {

constexpr double PointsPerMillimetre = 72 / 25.4;
// The sides that readers take. A larger page has a larger unit.
constexpr double MinimumSide = 3;
constexpr double MaximumSide = 14'400;
constexpr int Decimals = 4;
constexpr double MaximumLineWidth = 100;
constexpr std::size_t MaximumNameBytes = 127;

// The objects, each with its number, and the table of their offsets:
//
//     1 Catalog -> 2 Pages -> 3 Page -> 4 content
//                                    -> 5 graphics state
//                                    -> 6... a color space an operation
class ObjectWriter {
 public:
  ObjectWriter() { m_Text.Add("%PDF-1.6\n%\xE2\xE3\xCF\xD3\n"); }

  void Add(std::string_view body) {
    m_Offsets.push_back(m_Text.Size());
    m_Text.AddInteger(static_cast<long long>(m_Offsets.size())).Add(" 0 obj\n");
    m_Text.Add(body).Add("\nendobj\n");
  }

  std::string Take() {
    const std::size_t table = m_Text.Size();
    const std::string count = std::to_string(m_Offsets.size() + 1);
    m_Text.Add("xref\n0 ").Add(count).Add("\n0000000000 65535 f \n");
    for (const std::size_t offset : m_Offsets) {
      const std::string digits = std::to_string(offset);
      m_Text.Add(std::string(digits.size() < 10 ? 10 - digits.size() : 0, '0'));
      m_Text.Add(digits).Add(" 00000 n \n");
    }
    m_Text.Add("trailer\n<< /Size ").Add(count).Add(" /Root 1 0 R >>\nstartxref\n");
    m_Text.Add(std::to_string(table)).Add("\n%%EOF\n");
    return m_Text.Take();
  }

 private:
  TextOutput m_Text;
  std::vector<std::size_t> m_Offsets;
};

const std::string& SpotOf(Operation operation, const PdfOptions& options) {
  return options.spotOf[static_cast<std::size_t>(operation)];
}

Expected<void> CheckName(const std::string& name) {
  if (name.empty() || name.size() > MaximumNameBytes)
    return FailureOf("a separation's name has 1 to 127 bytes");
  if (name == "All" || name == "None")
    return FailureOf("a separation can't be called " + name + ", which means no ink of its own");
  const auto isControl = [](char byte) { return static_cast<unsigned char>(byte) < ' '; };
  if (std::ranges::any_of(name, isControl))
    return FailureOf("a separation's name has a control character");
  return {};
}

Expected<void> Check(const std::vector<Operation>& operations, const PdfOptions& options) {
  if (!(options.lineWidth >= 0 && options.lineWidth <= MaximumLineWidth))
    return FailureOf("a line of a PDF file is 0 to 100 mm wide");
  std::set<std::string_view> names;
  for (const Operation operation : operations) {
    const std::string& name = SpotOf(operation, options);
    if (auto checked = CheckName(name); !checked) return checked.Error();
    if (!names.insert(name).second)
      return FailureOf("two operations have the separation '" + name + "'");
  }
  return {};
}

// "/Cut#20Contour"
std::string NameObject(std::string_view name) {
  std::string object = "/";
  for (const char byte : name) {
    const bool plain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                       (byte >= '0' && byte <= '9') || byte == '-' || byte == '_' || byte == '.';
    if (plain) {
      object += byte;
    } else {
      object += '#';
      os::AppendHex(object, static_cast<unsigned char>(byte));
    }
  }
  return object;
}

void AddPoint(TextOutput& text, Point point) {
  text.AddDecimal(point.x, Decimals).Add(' ').AddDecimal(point.y, Decimals).Add(' ');
}

void AddContour(TextOutput& text, const Contour& contour, const Transform& toPage) {
  AddPoint(text, toPage.Apply(contour.start));
  text.Add("m\n");
  if (contour.segments.empty()) {
    AddPoint(text, toPage.Apply(contour.start));
    text.Add("l\n");
  }
  for (const Segment& segment : contour.segments) {
    if (segment.isCurve) {
      AddPoint(text, toPage.Apply(segment.first));
      AddPoint(text, toPage.Apply(segment.second));
    }
    AddPoint(text, toPage.Apply(segment.end));
    text.Add(segment.isCurve ? "c\n" : "l\n");
  }
  if (contour.closed) text.Add("h\n");
}

void AddPath(TextOutput& text, const CutPath& path, const Transform& toPage) {
  bool drawn = false;
  for (const Contour& contour : path.contours) {
    if (!IsDrawn(path, contour)) continue;
    AddContour(text, contour, toPage);
    drawn = true;
  }
  if (drawn) text.Add("S\n");
}

// In black: no separation of an operation has them.
void AddMarks(TextOutput& text, const CutJob& job, const Transform& toPage) {
  if (job.marks.empty()) return;
  text.Add("q 0 0 0 1 k\n");
  for (const RegistrationMark& mark : job.marks) {
    for (const Contour& contour : InkOf(mark)) AddContour(text, contour, toPage);
    text.Add("f\n");
  }
  text.Add("Q\n");
}

std::string ContentOf(const CutJob& job, const Transform& toPage, double lineWidth) {
  TextOutput text;
  text.Add("/G gs 1 J 1 j ").AddDecimal(lineWidth, Decimals).Add(" w\n");
  std::optional<Operation> chosen;
  for (const CutPath& path : job.paths) {
    if (!HasTool(path.operation)) continue;
    if (chosen != path.operation)
      text.Add('/').Add(LookOf(path.operation).layer).Add(" CS 1 SCN\n");
    chosen = path.operation;
    AddPath(text, path, toPage);
  }
  AddMarks(text, job, toPage);
  return text.Take();
}

// The page's sides in its own unit, which is larger than a point where a side would be too long.
struct PageSize {
  double width = 0;
  double height = 0;
  double userUnit = 1;
};

PageSize SizeOf(const Box& box) {
  // A page of 200 inches in millimetres is a little longer in points.
  constexpr double rounding = 1e-9;
  const double width = std::max(box.Width() * PointsPerMillimetre, MinimumSide);
  const double height = std::max(box.Height() * PointsPerMillimetre, MinimumSide);
  const double unit = std::max(1.0, std::ceil(std::max(width, height) / MaximumSide - rounding));
  return {width / unit, height / unit, unit};
}

std::string PageObject(const PageSize& size, const std::vector<Operation>& operations) {
  std::string page = "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 " +
                     os::ShortDecimal(size.width, Decimals) + " " +
                     os::ShortDecimal(size.height, Decimals) + "]";
  if (size.userUnit > 1) page += " /UserUnit " + os::ShortDecimal(size.userUnit, 0);
  page += " /Contents 4 0 R\n/Resources << /ExtGState << /G 5 0 R >> /ColorSpace <<";
  int object = 6;
  for (const Operation operation : operations)
    page += " /" + std::string(LookOf(operation).layer) + " " + std::to_string(object++) + " 0 R";
  return page + " >> >> >>";
}

std::string ColorSpaceObject(Operation operation, const PdfOptions& options) {
  return "[/Separation " + NameObject(SpotOf(operation, options)) +
         " /DeviceCMYK << /FunctionType 2 /Domain [0 1] /C0 [0 0 0 0] /C1 [" +
         std::string(LookOf(operation).tint) + "] /N 1 >>]";
}

}  // namespace

Expected<std::string> PdfText(const CutJob& job, const Transform& toDevice,
                              const PdfOptions& options) {
  const std::vector<Operation> operations = ToolOperationsOf(job);
  if (auto checked = Check(operations, options); !checked) return checked.Error();
  const Box box = PageBoxOf(job, toDevice);
  const PageSize size = SizeOf(box);
  const double scale = PointsPerMillimetre / size.userUnit;
  const Transform toPage{.a = toDevice.a * scale,
                         .b = toDevice.b * scale,
                         .c = toDevice.c * scale,
                         .d = toDevice.d * scale,
                         .e = (toDevice.e - box.left) * scale,
                         .f = (toDevice.f - box.bottom) * scale};
  const std::string content = ContentOf(job, toPage, options.lineWidth * scale);
  ObjectWriter objects;
  objects.Add("<< /Type /Catalog /Pages 2 0 R >>");
  objects.Add("<< /Type /Pages /Kids [3 0 R] /Count 1 >>");
  objects.Add(PageObject(size, operations));
  objects.Add("<< /Length " + std::to_string(content.size()) + " >>\nstream\n" + content +
              "endstream");
  // Print below a cut line stays: its ink knocks none out.
  objects.Add("<< /Type /ExtGState /OP true /op true /OPM 1 /SA false >>");
  for (const Operation operation : operations) objects.Add(ColorSpaceObject(operation, options));
  return objects.Take();
}

}  // namespace rastrel::cutting
