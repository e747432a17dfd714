#include "cutting/clean/fault_picture.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "cutting/clean/flat_lines.h"
#include "rastrel/platform/os/decimal.h"

namespace rastrel::cutting {
namespace {

constexpr double Margin = 5;

std::string Number(double value) { return os::ShortDecimal(value, 4); }

Box PictureOf(const CutJob& job) {
  Box box;
  const auto isLength = [](double value) { return value >= 0 && value <= clean::Farthest; };
  if (isLength(job.width) && isLength(job.height)) box = {0, 0, job.width, job.height};
  for (const CutPath& path : job.paths) {
    if (!HasTool(path.operation)) continue;
    for (const Contour& contour : path.contours) {
      if (clean::IsUsable(contour)) box.Add(BoxOf(contour));
    }
  }
  if (box.IsEmpty()) box.Add(Point{});
  return {box.left - Margin, box.bottom - Margin, box.right + Margin, box.top + Margin};
}

class Drawing {
 public:
  Drawing(const CutJob& job, const CheckReport& report)
      : m_Job(job), m_Report(report), m_Box(PictureOf(job)) {}

  std::string Run() {
    const std::string width = Number(m_Box.Width());
    const std::string height = Number(m_Box.Height());
    m_Text = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + width + "mm\" height=\"" +
             height + "mm\" viewBox=\"0 0 " + width + " " + height + "\">\n";
    m_Text += "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n";
    m_Text += "<rect x=\"" + X(0) + "\" y=\"" + Y(m_Job.height > 0 ? m_Job.height : 0) +
              "\" width=\"" + Number(std::clamp(m_Job.width, 0.0, clean::Farthest)) +
              "\" height=\"" + Number(std::clamp(m_Job.height, 0.0, clean::Farthest)) +
              "\" fill=\"none\" stroke=\"#ccc\" stroke-width=\"0.5\"/>\n";
    AddPaths(false);
    AddPaths(true);
    AddMarks();
    return m_Text + "</svg>\n";
  }

 private:
  [[nodiscard]] std::string X(double x) const { return Number(x - m_Box.left); }
  [[nodiscard]] std::string Y(double y) const { return Number(m_Box.top - y); }
  [[nodiscard]] std::string At(Point point) const { return X(point.x) + "," + Y(point.y); }

  [[nodiscard]] bool IsFaulty(ContourPlace place) const {
    return std::ranges::binary_search(m_Report.faults, place, {}, &Fault::contour);
  }

  void AddPaths(bool faulty) {
    m_Text += std::string("<g id=\"") + (faulty ? "faulty" : "sound") +
              "\" fill=\"none\" stroke=\"" + (faulty ? "#d00" : "#888") +
              "\" stroke-width=\"0.3\">\n";
    for (std::size_t path = 0; path < m_Job.paths.size(); ++path) {
      if (!HasTool(m_Job.paths[path].operation)) continue;
      for (std::size_t i = 0; i < m_Job.paths[path].contours.size(); ++i) {
        const Contour& contour = m_Job.paths[path].contours[i];
        if (clean::IsUsable(contour) && IsFaulty({path, i}) == faulty) AddContour(contour);
      }
    }
    m_Text += "</g>\n";
  }

  void AddContour(const Contour& contour) {
    m_Text += "<path d=\"M" + At(contour.start);
    for (const Segment& segment : contour.segments) {
      if (segment.isCurve)
        m_Text += "C" + At(segment.first) + " " + At(segment.second) + " " + At(segment.end);
      else
        m_Text += "L" + At(segment.end);
    }
    m_Text += contour.closed ? "Z\"/>\n" : "\"/>\n";
  }

  void AddMarks() {
    m_Text +=
        "<g id=\"faults\" fill=\"none\" stroke=\"#06c\" stroke-width=\"0.3\" "
        "font-family=\"sans-serif\" font-size=\"3\">\n";
    const std::size_t count = std::min(m_Report.faults.size(), MaximumMarkedFaults);
    for (std::size_t i = 0; i < count; ++i) {
      const Fault& fault = m_Report.faults[i];
      if (fault.kind == FaultKind::Unusable) continue;
      m_Text += "<g><title>" + std::string(NameOf(fault.kind)) + ", " +
                os::ShortDecimal(fault.length, 3) + " mm</title><circle cx=\"" + X(fault.place.x) +
                "\" cy=\"" + Y(fault.place.y) + "\" r=\"2\"/><text x=\"" + X(fault.place.x + 2) +
                "\" y=\"" + Y(fault.place.y + 2) + "\" fill=\"#06c\" stroke=\"none\">" +
                std::to_string(i + 1) + "</text></g>\n";
    }
    m_Text += "</g>\n";
  }

  const CutJob& m_Job;
  const CheckReport& m_Report;
  Box m_Box;
  std::string m_Text;
};

}  // namespace

std::string FaultPicture(const CutJob& job, const CheckReport& report) {
  return Drawing(job, report).Run();
}

}  // namespace rastrel::cutting
