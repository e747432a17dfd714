#include "children/coreodalis/render.h"

#include <memory>
#include <vector>

namespace rastrel::odalis {
namespace {

constexpr unsigned RowsBetweenReports = 16;

class Rendering {
 public:
  Rendering(PageSource& source, bool planar)
      : m_Source(source), m_Planar(planar), m_Row(source.Shape().RowBytes()) {
    if (planar) m_Plane.resize(source.Shape().width);
  }

  Expected<void> Open(devices::FileFormat format, std::span<const RenderTarget> targets) {
    for (std::size_t i = 0; i < targets.size(); ++i) {
      ImageShape shape = m_Source.Shape();
      if (m_Planar) {
        shape.model = ColorModel::Gray;
        shape.planes = {m_Source.Shape().planes[i]};
      }
      auto writer = MakeImageWriter(format, targets[i].descriptor, targets[i].name, shape);
      if (!writer) return writer.Error();
      m_Writers.push_back(std::move(*writer));
    }
    return {};
  }

  Expected<void> CopyRow() {
    if (auto read = m_Source.ReadRow(m_Row); !read) return read;
    if (!m_Planar) return m_Writers.front()->WriteRow(m_Row);
    const std::size_t planes = m_Writers.size();
    for (std::size_t plane = 0; plane < planes; ++plane) {
      for (std::size_t x = 0; x < m_Plane.size(); ++x) m_Plane[x] = m_Row[x * planes + plane];
      if (auto written = m_Writers[plane]->WriteRow(m_Plane); !written) return written;
    }
    return {};
  }

  Expected<void> Finish() {
    for (const auto& writer : m_Writers) {
      if (auto finished = writer->Finish(); !finished) return finished;
    }
    return {};
  }

 private:
  PageSource& m_Source;
  bool m_Planar;
  std::vector<std::uint8_t> m_Row;
  std::vector<std::uint8_t> m_Plane;
  std::vector<std::unique_ptr<ImageWriter>> m_Writers;
};

}  // namespace

Expected<void> Render(PageSource& source, devices::FileFormat format, bool planar,
                      std::span<const RenderTarget> targets,
                      const std::function<void(double)>& progress) {
  Rendering rendering(source, planar);
  if (auto opened = rendering.Open(format, targets); !opened) return opened;
  const unsigned height = source.Shape().height;
  for (unsigned y = 0; y < height; ++y) {
    if (auto copied = rendering.CopyRow(); !copied) return copied;
    if (y % RowsBetweenReports == 0) progress(static_cast<double>(y) / height);
  }
  return rendering.Finish();
}

}  // namespace rastrel::odalis
