#include "children/coreodalis/render.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <vector>

#include "children/coreodalis/worker_pool.h"

namespace rastrel::odalis {
namespace {

/// The checks of a page's files, in the pool. Their failure comes first of all: pixels
/// that were changed explain the others.
class Checking {
 public:
  Checking(const PageSource& source, WorkerPool& pool)
      : m_Results(source.Checks().size()), m_Group(pool) {
    for (std::size_t i = 0; i < m_Results.size(); ++i) {
      m_Group.Run([&check = source.Checks()[i], &result = m_Results[i]]() noexcept {
        try {
          result = check.Run();
        } catch (const std::exception&) {
          result = FailureOf("out of memory");
        }
      });
    }
  }

  Expected<void> Result() {
    m_Group.Wait();
    for (const auto& result : m_Results) {
      if (!result) return result;
    }
    return {};
  }

 private:
  std::vector<Expected<void>> m_Results;
  TaskGroup m_Group;  ///< last: its tasks use the others
};

class Rendering {
 public:
  Rendering(PageSource& source, const RenderOrder& order, WorkerPool& pool)
      : m_Source(source), m_Order(order), m_Pool(pool) {}

  Expected<void> Open(std::span<const RenderTarget> targets) {
    for (std::size_t i = 0; i < targets.size(); ++i) {
      ImageShape shape = m_Source.Shape();
      if (m_Order.planar) {
        shape.model = ColorModel::Gray;
        shape.planes = {m_Source.Shape().planes[i]};
      }
      ImageOrder image;
      image.format = m_Order.format;
      image.compression = m_Order.compression;
      image.descriptor = targets[i].descriptor;
      image.name = targets[i].name;
      image.share = static_cast<unsigned>(targets.size());
      auto writer = MakeImageWriter(image, shape, m_Pool);
      if (!writer) return writer.Error();
      m_Writers.push_back(std::move(*writer));
    }
    if (m_Order.planar) m_Row.resize(m_Source.Shape().RowBytes());
    return {};
  }

  Expected<void> Copy() {
    const std::size_t height = m_Source.Shape().height;
    for (std::size_t done = 0; done < height;) {
      auto rows = m_Order.planar ? CopyRowOfPlanes() : CopyRows();
      if (!rows) return rows.Error();
      done += *rows;
      m_Order.progress(static_cast<double>(done) / static_cast<double>(height));
    }
    for (const auto& writer : m_Writers) {
      if (auto finished = writer->Finish(); !finished) return finished;
    }
    return {};
  }

 private:
  /// As many as the writer has room for; the result is their number.
  Expected<std::size_t> CopyRows() {
    auto room = m_Writers.front()->Room();
    if (!room) return room.Error();
    if (auto read = m_Source.ReadRows(*room); !read) return read.Error();
    if (auto taken = m_Writers.front()->Take(room->size()); !taken) return taken.Error();
    return room->size() / m_Source.Shape().RowBytes();
  }

  Expected<std::size_t> CopyRowOfPlanes() {
    if (auto read = m_Source.ReadRows(m_Row); !read) return read.Error();
    const std::size_t planes = m_Writers.size();
    const std::size_t width = m_Source.Shape().width;
    for (std::size_t plane = 0; plane < planes; ++plane) {
      const auto room = m_Writers[plane]->Room();
      if (!room) return room.Error();
      for (std::size_t x = 0; x < width; ++x) (*room)[x] = m_Row[x * planes + plane];
      if (auto taken = m_Writers[plane]->Take(width); !taken) return taken.Error();
    }
    return std::size_t{1};
  }

  PageSource& m_Source;
  const RenderOrder& m_Order;
  WorkerPool& m_Pool;
  std::vector<std::uint8_t> m_Row;
  std::vector<std::unique_ptr<ImageWriter>> m_Writers;
};

}  // namespace

Expected<void> Render(PageSource& source, const RenderOrder& order,
                      std::span<const RenderTarget> targets) {
  WorkerPool pool(order.threads);
  Checking checking(source, pool);
  Rendering rendering(source, order, pool);
  auto rendered = rendering.Open(targets);
  if (rendered) rendered = rendering.Copy();
  if (auto checked = checking.Result(); !checked) return checked;
  return rendered;
}

}  // namespace rastrel::odalis
