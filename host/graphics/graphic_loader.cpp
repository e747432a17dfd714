#include "host/graphics/graphic_loader.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "host/graphics/graphic_file.h"
#include "host/graphics/native_graphics.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::graphics {

namespace {

// Of the files that were read: those that a template names again and again are among them.
constexpr std::size_t MaximumEntries = 64;
constexpr std::size_t MaximumWeight = std::size_t{256} << 20;

}  // namespace

GraphicLoader::GraphicLoader(document::Document& document, document::Notices& notices,
                             const DrawingLimits& limits)
    : m_Document(document), m_Notices(notices), m_Limits(limits) {}

GraphicLoader::~GraphicLoader() = default;

void GraphicLoader::Keep(Entry entry) {
  m_Entries.push_front(std::move(entry));
  std::size_t weight = 0;
  std::size_t count = 0;
  const auto tooMuch = std::ranges::find_if(m_Entries, [&](const Entry& kept) {
    weight += kept.graphic->weight;
    return ++count > MaximumEntries || weight > MaximumWeight;
  });
  m_Entries.erase(tooMuch, m_Entries.end());
}

Expected<std::shared_ptr<const LoadedGraphic>> GraphicLoader::Read(const std::wstring& path,
                                                                   const LoadOptions& options) {
  // The stamp is taken first: a file that changes while it is read is read again the next time.
  const auto stamp = os::StampOf(path);
  const auto found = std::ranges::find_if(m_Entries, [&](const Entry& entry) {
    return entry.path == path && entry.options == options;
  });
  if (found != m_Entries.end()) {
    if (stamp && found->stamp == *stamp) {
      m_Entries.splice(m_Entries.begin(), m_Entries, found);
      return m_Entries.front().graphic;
    }
    m_Entries.erase(found);
  }
  ++m_FilesRead;
  auto graphic = ReadGraphicFile(path, options, m_Limits);
  if (graphic && stamp) Keep({path, options, *stamp, *graphic});
  return graphic;
}

Expected<void> GraphicLoader::Place(const LoadedGraphic& graphic) {
  const int page = std::max(m_Document.DisplayPage(), 1);
  std::vector<document::ObjectHandle> placed;
  if (graphic.document) {
    placed = CopyObjects(*graphic.document, m_Document, page);
    if (placed.empty()) return FailureOf("the document is full");
  }
  placed.reserve(graphic.objects.size());
  for (const LoadedObject& object : graphic.objects) {
    document::Attributes attributes;
    attributes.pages = {page, page};
    attributes.layer = object.layer;
    attributes.lineColor = object.lineColor;
    attributes.lineStyle = object.lineStyle;
    const document::ObjectHandle handle = m_Document.Create(object.shape, attributes);
    if (!m_Document.Insert(handle, host::DocumentRoot)) {
      for (const document::ObjectHandle other : placed) m_Document.Destroy(other);
      return FailureOf("the document is full");
    }
    placed.push_back(handle);
  }
  m_Document.DeselectAll();
  for (const document::ObjectHandle handle : placed) m_Document.Select(handle);
  return {};
}

int GraphicLoader::Load(const std::wstring& path, const LoadOptions& options) {
  const auto graphic = Read(path, options);
  auto loaded = graphic ? Place(**graphic) : Expected<void>(graphic.Error());
  if (!loaded) {
    m_Notices.AddLoss(path + L" can't be placed: " + os::WideFromUtf8(Describe(loaded.Error())));
    return 0;
  }
  for (const std::wstring& loss : (*graphic)->losses) m_Notices.AddLoss(path + L": " + loss);
  return 1;
}

int LoadGraphic(document::Document& document, document::Notices& notices, const std::wstring& path,
                const DrawingLimits& limits) {
  return GraphicLoader(document, notices, limits).Load(path);
}

}  // namespace rastrel::graphics
