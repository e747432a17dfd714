#include "host/render/picture_cache.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "rastrel/platform/os/text.h"

namespace rastrel::render {

namespace {

constexpr std::size_t MaximumPictures = 64;

}  // namespace

const graphics::Picture* PictureCache::Get(const document::GraphicShape& shape) {
  const document::ShownFile shown = document::ShownFileOf(shape);
  const auto found = std::ranges::find_if(m_Entries, [&](const Entry& entry) {
    return entry.bytes == shown.bytes && entry.kind == shown.kind && entry.whole == shape.whole;
  });
  if (found != m_Entries.end()) {
    m_Entries.splice(m_Entries.begin(), m_Entries, found);
    return m_Entries.front().picture.get();
  }
  auto opened = m_Opener(shape);
  if (!opened) {
    m_Notices.Add(L"the placed file \"" + shape.name + L"\" can't be drawn: " +
                  os::WideFromUtf8(Describe(opened.Error())));
  }
  m_Entries.push_front(
      {shown.bytes, shown.kind, shape.whole, opened ? std::move(*opened) : nullptr});
  MakeRoom();
  return m_Entries.front().picture.get();
}

void PictureCache::MakeRoom() {
  std::uint64_t pixels = 0;
  std::size_t count = 0;
  for (auto entry = m_Entries.begin(); entry != m_Entries.end(); ++entry) {
    pixels += entry->picture ? entry->picture->Pixels() : 0;
    if (++count > 1 && (count > MaximumPictures || pixels > graphics::MaximumGraphicPixels)) {
      m_Entries.erase(entry, m_Entries.end());
      return;
    }
  }
}

}  // namespace rastrel::render
