#include <algorithm>
#include <string>

#include "cutting/picture/cut_picture.h"
#include "cutting/picture/picture_parts.h"
#include "rastrel/platform/os/decimal.h"

namespace rastrel::cutting {
namespace {

constexpr int Places = 4;

/// Numbers of the picture, whose y is downward from the box's top.
class SvgText {
 public:
  explicit SvgText(const PictureParts& picture) : m_Box(picture.box) {}

  std::string Take(const PictureParts& picture) {
    const std::string width = Number(m_Box.Width());
    const std::string height = Number(m_Box.Height());
    m_Text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
        width + "mm\" height=\"" + height + "mm\" viewBox=\"0 0 " + width + " " + height +
        "\">\n<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n";
    for (const auto& part : picture.parts) {
      std::visit([this](const auto& one) { Add(one); }, part);
    }
    return m_Text + "</svg>\n";
  }

 private:
  static std::string Number(double value) { return os::ShortDecimal(value, Places); }
  std::string At(Point point) const {
    return Number(point.x - m_Box.left) + " " + Number(m_Box.top - point.y);
  }

  void Add(const PictureLine& line) {
    m_Text += line.width > 0 ? "<path fill=\"none\" stroke=\"" + line.color + "\" stroke-width=\"" +
                                   Number(line.width) + "\""
                             : "<path fill=\"" + line.color + "\"";
    if (line.dash > 0) m_Text += " stroke-dasharray=\"" + Number(line.dash) + "\"";
    m_Text += " d=\"";
    for (const Contour& contour : line.contours) {
      m_Text += "M" + At(contour.start);
      for (const Segment& one : contour.segments) {
        m_Text += one.isCurve ? "C" + At(one.first) + " " + At(one.second) + " " : "L";
        m_Text += At(one.end);
      }
      if (contour.closed) m_Text += "Z";
    }
    m_Text += "\"/>\n";
  }

  void Add(const PictureText& text) {
    m_Text += "<text x=\"" + Number(text.at.x - m_Box.left) + "\" y=\"" +
              Number(m_Box.top - text.at.y) + "\" font-family=\"sans-serif\" font-size=\"" +
              Number(text.size) + "\" fill=\"" + text.color +
              "\" stroke=\"#ffffff\" stroke-width=\"" + Number(text.size / 5) +
              "\" paint-order=\"stroke\">" + text.text + "</text>\n";
  }

  Box m_Box;
  std::string m_Text;
};

}  // namespace

std::string SvgOfParts(const PictureParts& picture) { return SvgText(picture).Take(picture); }

Expected<std::string> CutPictureSvg(const CutJob& job) {
  const auto picture = PartsOfPicture(job);
  if (!picture) return picture.Error();
  return SvgOfParts(*picture);
}

}  // namespace rastrel::cutting
