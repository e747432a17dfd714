#include "cutting/output/svg_writer.h"

#include <algorithm>
#include <string_view>

#include "cutting/frame/mark_shape.h"
#include "cutting/output/drawn_contour.h"
#include "cutting/output/operation_look.h"
#include "cutting/output/text_output.h"

namespace rastrel::cutting {
namespace {

constexpr int Decimals = 4;
constexpr std::string_view LineWidth = "0.25";

void AddPoint(TextOutput& text, Point point) {
  text.AddDecimal(point.x, Decimals).Add(' ').AddDecimal(point.y, Decimals);
}

// "M0 0L10 0C10 5 5 10 0 10Z"
void AddContour(TextOutput& text, const Contour& contour, const Transform& toDrawing) {
  text.Add('M');
  AddPoint(text, toDrawing.Apply(contour.start));
  // A line to the point itself, whose round cap is a dot.
  if (contour.segments.empty()) text.Add("h0");
  for (const Segment& segment : contour.segments) {
    text.Add(segment.isCurve ? 'C' : 'L');
    if (segment.isCurve) {
      AddPoint(text, toDrawing.Apply(segment.first));
      text.Add(' ');
      AddPoint(text, toDrawing.Apply(segment.second));
      text.Add(' ');
    }
    AddPoint(text, toDrawing.Apply(segment.end));
  }
  if (contour.closed) text.Add('Z');
}

void AddPath(TextOutput& text, const CutPath& path, const Transform& toDrawing) {
  const auto isDrawn = [&](const Contour& contour) { return IsDrawn(path, contour); };
  if (std::ranges::none_of(path.contours, isDrawn)) return;
  text.Add("<path d=\"");
  for (const Contour& contour : path.contours) {
    if (isDrawn(contour)) AddContour(text, contour, toDrawing);
  }
  text.Add("\"/>\n");
}

void AddGroup(TextOutput& text, const CutJob& job, Operation operation,
              const Transform& toDrawing) {
  const OperationLook& look = LookOf(operation);
  text.Add("<g id=\"").Add(NameOf(operation)).Add("\" fill=\"none\" stroke=\"").Add(look.color);
  text.Add("\" stroke-width=\"").Add(LineWidth);
  text.Add("\" stroke-linecap=\"round\" stroke-linejoin=\"round\">\n");
  text.Add("<title>").Add(look.title).Add("</title>\n");
  for (const CutPath& path : job.paths) {
    if (path.operation == operation) AddPath(text, path, toDrawing);
  }
  text.Add("</g>\n");
}

void AddMarks(TextOutput& text, const CutJob& job, const Transform& toDrawing) {
  if (job.marks.empty()) return;
  text.Add("<g id=\"registration\" fill=\"#000000\" stroke=\"none\">\n");
  text.Add("<title>Registration marks</title>\n");
  for (const RegistrationMark& mark : job.marks) {
    text.Add("<path d=\"");
    for (const Contour& contour : InkOf(mark)) AddContour(text, contour, toDrawing);
    text.Add("\"/>\n");
  }
  text.Add("</g>\n");
}

}  // namespace

std::string SvgText(const CutJob& job, const Transform& toDevice) {
  const Box box = PageBoxOf(job, toDevice);
  const Transform toDrawing{.a = toDevice.a,
                            .b = -toDevice.b,
                            .c = toDevice.c,
                            .d = -toDevice.d,
                            .e = toDevice.e - box.left,
                            .f = box.top - toDevice.f};
  TextOutput text;
  text.Add("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
  text.Add("<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\" width=\"");
  text.AddDecimal(box.Width(), Decimals).Add("mm\" height=\"");
  text.AddDecimal(box.Height(), Decimals).Add("mm\" viewBox=\"0 0 ");
  text.AddDecimal(box.Width(), Decimals).Add(' ').AddDecimal(box.Height(), Decimals).Add("\">\n");
  for (const Operation operation : ToolOperationsOf(job)) AddGroup(text, job, operation, toDrawing);
  AddMarks(text, job, toDrawing);
  text.Add("</svg>\n");
  return text.Take();
}

}  // namespace rastrel::cutting
