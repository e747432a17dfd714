#include "children/coreodalis/band_queue.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace rastrel::odalis {
namespace {

/// Rows that all queues of a picture hold at most. A band of them is held again as encoded bytes.
constexpr std::size_t MaximumHeld = std::size_t{32} << 20;
constexpr std::size_t BandsPerThread = 2;

/// One band if they are too large to have several, or if nothing is gained.
std::size_t BandsOnTheWay(unsigned width, const BandQueue::Form& form) {
  if (width < 2 || form.isEncodedAtOnce) return 1;
  const std::size_t held = MaximumHeld / (form.rowBytes * form.rowsPerBand * form.share);
  return std::clamp<std::size_t>(held, 1, BandsPerThread * width);
}

}  // namespace

BandQueue::BandQueue(WorkerPool& pool, const Form& form, MakeEncoder make, WriteBand write)
    : m_Pool(pool),
      m_Form(form),
      m_Make(std::move(make)),
      m_Write(std::move(write)),
      m_Slots(BandsOnTheWay(pool.Width(), form)) {}

BandQueue::~BandQueue() = default;

Expected<std::span<std::uint8_t>> BandQueue::Room() {
  if (!m_IsOpen) {
    if (auto opened = Open(); !opened) return opened.Error();
  }
  auto& rows = m_Slots[m_Submitted % m_Slots.size()].band.rows;
  return std::span(rows).subspan(m_Filled);
}

Expected<void> BandQueue::Open() {
  if (m_Submitted - m_Written == m_Slots.size()) {
    if (auto written = WriteOldest(); !written) return written;
  }
  Slot& slot = m_Slots[m_Submitted % m_Slots.size()];
  if (!slot.encoder) slot.encoder = m_Make();
  const std::size_t rows = std::min(m_Form.rowsPerBand, m_Form.rows - m_RowsTaken);
  slot.band.rows.resize(rows * m_Form.rowBytes);
  slot.band.isFirst = m_RowsTaken == 0;
  slot.band.isLast = m_RowsTaken + rows == m_Form.rows;
  slot.band.above = m_Above;
  m_Filled = 0;
  m_IsOpen = true;
  return {};
}

Expected<void> BandQueue::Take(std::size_t bytes) {
  Slot& slot = m_Slots[m_Submitted % m_Slots.size()];
  m_Filled += bytes;
  m_RowsTaken += bytes / m_Form.rowBytes;
  if (m_Filled < slot.band.rows.size()) return {};
  m_Above.assign(slot.band.rows.end() - static_cast<std::ptrdiff_t>(m_Form.rowBytes),
                 slot.band.rows.end());
  Submit();
  return m_Slots.size() == 1 ? WriteOldest() : Expected<void>();
}

void BandQueue::Submit() {
  Slot& slot = m_Slots[m_Submitted % m_Slots.size()];
  ++m_Submitted;
  m_IsOpen = false;
  if (m_Slots.size() == 1) return Encode(slot);
  if (!slot.work) slot.work = std::make_unique<TaskGroup>(m_Pool);
  slot.work->Run([&slot] { Encode(slot); });
}

void BandQueue::Encode(Slot& slot) noexcept {
  try {
    slot.band.pieces.clear();
    slot.result = slot.encoder->Encode(slot.band);
  } catch (const std::exception&) {
    slot.result = FailureOf("out of memory");
  }
}

Expected<void> BandQueue::WriteOldest() {
  Slot& slot = m_Slots[m_Written % m_Slots.size()];
  if (slot.work) slot.work->Wait();
  ++m_Written;
  if (!slot.result) return slot.result;
  return m_Write(slot.band);
}

Expected<void> BandQueue::Finish() {
  while (m_Written < m_Submitted) {
    if (auto written = WriteOldest(); !written) return written;
  }
  return {};
}

}  // namespace rastrel::odalis
