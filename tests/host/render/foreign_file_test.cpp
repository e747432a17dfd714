#include <array>
#include <chrono>
#include <filesystem>
#include <thread>

#include "host/graphics/drawing_process.h"
#include "host/graphics/graphic_loader.h"
#include "tests/host/graphics/graphic_files.h"
#include "tests/host/render/drawn_document.h"
#include "tests/host/render/hostile_files.h"

namespace rastrel::render {
namespace {

using document::GraphicKind;
using namespace std::chrono_literals;

class ForeignFile : public test::DrawnDocument {
 protected:
  void Place(GraphicKind kind, const std::string& bytes, const std::wstring& name) {
    document::GraphicShape shape;
    shape.kind = kind;
    shape.name = name;
    shape.bytes = std::make_shared<const std::string>(bytes);
    shape.width = shape.height = 5;
    Add(shape);
  }

  // Little processor time, and a gigabyte.
  static ImageOptions Limited() {
    ImageOptions options;
    options.limits.fileTime = 2s;
    options.limits.time = 6s;
    options.limits.memory = std::uint64_t{1} << 30;
    options.limits.resultBytes = 64 << 20;
    return options;
  }
};

TEST_F(ForeignFile, one_that_takes_time_without_end_is_ended_and_named) {
  for (const auto& [kind, bytes] : {std::pair(GraphicKind::Svg, test::SvgUseBomb()),
                                    std::pair(GraphicKind::Svg, test::SvgFilterBomb()),
                                    std::pair(GraphicKind::Svg, test::SvgPatternBomb()),
                                    std::pair(GraphicKind::Pdf, test::PdfFormBomb()),
                                    std::pair(GraphicKind::Pdf, test::PdfPackedBomb())}) {
    m_Document.Remove(m_Document.Members(host::DocumentRoot).empty()
                          ? 0
                          : m_Document.Members(host::DocumentRoot).front());
    Place(kind, bytes, L"bomb");
    // Two of the formats have it as pixels and as lines.
    for (const ImageFormat format : {ImageFormat::Pdf, ImageFormat::Png}) {
      const std::string why = Refusal(format, Limited());
      std::cerr << why << "\n";
      EXPECT_NE(why.find("the placed file \"bomb\""), std::string::npos) << why;
      EXPECT_NE(why.find("can't be drawn: "), std::string::npos) << why;
    }
  }
}

}  // namespace
}  // namespace rastrel::render
