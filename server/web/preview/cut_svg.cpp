#include "server/web/preview/cut_svg.h"

#include <algorithm>
#include <string_view>

#include "cutting/capture/cut_paths_file.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::server::web {
namespace {

constexpr int Places = 3;  // of a millimetre

class PathText {
 public:
  explicit PathText(double height) : m_Height(height) {}

  void Add(const cutting::Contour& contour) {
    Command('M', {contour.start});
    for (const cutting::Segment& segment : contour.segments)
      if (segment.isCurve)
        Command('C', {segment.first, segment.second, segment.end});
      else
        Command('L', {segment.end});
    if (contour.closed) m_Text += 'Z';
  }
  [[nodiscard]] const std::string& Text() const { return m_Text; }

 private:
  void Command(char letter, std::initializer_list<cutting::Point> points) {
    m_Text += letter;
    bool isFirst = true;
    for (const cutting::Point& point : points) {
      if (!isFirst) m_Text += ' ';
      isFirst = false;
      m_Text +=
          os::ShortDecimal(point.x, Places) + ' ' + os::ShortDecimal(m_Height - point.y, Places);
    }
  }

  double m_Height;
  std::string m_Text;
};

void AddGroup(std::string& svg, const std::string& paths, const char* color, const char* width) {
  svg += std::string("<g fill=\"none\" stroke=\"") + color + "\" stroke-width=\"" + width +
         "\" stroke-linejoin=\"round\">" + paths + "</g>";
}

}  // namespace

bool HasCutPaths(const pages::PageInfo& page) {
  return std::ranges::find(page.files, pages::CutPathsName, &pages::PageFile::name) !=
         page.files.end();
}

std::string CutSvg(const cutting::CutJob& job) {
  std::string paths;
  for (const cutting::CutPath& path : job.paths) {
    PathText text(job.height);
    for (const cutting::Contour& contour : path.contours) text.Add(contour);
    if (!text.Text().empty())
      paths += "<path vector-effect=\"non-scaling-stroke\" d=\"" + text.Text() + "\"/>";
  }
  const std::string width = os::ShortDecimal(job.width, Places);
  const std::string height = os::ShortDecimal(job.height, Places);
  std::string svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + width +
                    "mm\" height=\"" + height + "mm\" viewBox=\"0 0 " + width + " " + height +
                    "\" preserveAspectRatio=\"none\">";
  // A light line below a strong one is seen on every page.
  AddGroup(svg, paths, "#fff", "3");
  AddGroup(svg, paths, "#d6006c", "1.5");
  return svg + "</svg>\n";
}

Expected<std::string> CutSvgOfPage(const std::string& directory, const pages::PageInfo& page) {
  if (!HasCutPaths(page)) return FailureOf("The page has no cut paths.", FailureCode::BadInput);
  const std::string path = directory + "/" + pages::CutPathsName;
  const auto text = os::ReadWholeFile(os::FromNative(path), MaximumShownCutBytes);
  if (!text) return text.Error();
  const auto job = cutting::ReadCutPaths(*text, pages::CutPathsName);
  if (!job) return job.Error();
  return CutSvg(*job);
}

}  // namespace rastrel::server::web
