#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "children/coreodalis/worker_pool.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::odalis {

/// A band of a picture: some whole rows, and the bytes that a format makes of them.
struct Band {
  bool isFirst = false;
  bool isLast = false;
  std::vector<std::uint8_t> above;    ///< the row above the band; empty for the first
  std::vector<std::uint8_t> rows;     ///< whole rows; an encoder may change them
  std::vector<std::uint8_t> encoded;  ///< set by the encoder
  std::vector<std::size_t> pieces;    ///< set by the encoder if the format wants it parted
  std::uint32_t sum = 0;              ///< set by the encoder if the format wants a check sum
  std::size_t summed = 0;             ///< bytes that it is of
};

/// Turns a band's rows into a file's bytes. Used by one thread at a time; the next band may be any
/// other band of the picture, so that nothing of a band must be kept for the next.
class BandEncoder {
 public:
  virtual ~BandEncoder() = default;
  /// Sets the band's encoded bytes. The failure is about the encoder, without the file's name.
  [[nodiscard]] virtual Expected<void> Encode(Band& band) = 0;
};

/// The way of a picture's bands through encoders that work at the same time to a file that is
/// written in order:
///
///     caller             the pool               caller
///     Room, Take   ->    Encode (any order) ->  write (in order)
///
/// The number of bands on the way is fixed. Who fills the next band first writes the oldest one, if
/// all are on the way. The bytes written do not depend on the pool.
class BandQueue {
 public:
  struct Form {
    std::size_t rowBytes = 0;
    std::size_t rowsPerBand = 0;
    std::size_t rows = 0;          ///< of the picture
    unsigned share = 1;            ///< the number of queues that share the memory
    bool isEncodedAtOnce = false;  ///< in the caller, where the encoder has little to do
  };
  using MakeEncoder = std::function<std::unique_ptr<BandEncoder>()>;
  using WriteBand = std::function<Expected<void>(const Band&)>;

  /// `make` is called for each band that may be on the way, when it is first needed, and `write` in
  /// the caller's thread.
  BandQueue(WorkerPool& pool, const Form& form, MakeEncoder make, WriteBand write);
  /// Waits for encoders that are at work.
  ~BandQueue();
  BandQueue(const BandQueue&) = delete;
  BandQueue& operator=(const BandQueue&) = delete;

  /// The place of the next rows: one row or several, to the end of a band. REQUIRES: rows are left.
  [[nodiscard]] Expected<std::span<std::uint8_t>> Room();
  /// The first `bytes` of the place are filled, whole rows.
  [[nodiscard]] Expected<void> Take(std::size_t bytes);
  /// Writes the rest. REQUIRES: all rows were taken.
  [[nodiscard]] Expected<void> Finish();

 private:
  struct Slot {
    Band band;
    std::unique_ptr<BandEncoder> encoder;
    Expected<void> result;
    std::unique_ptr<TaskGroup> work;  ///< last: waits before the rest goes
  };

  [[nodiscard]] Expected<void> Open();
  void Submit();
  [[nodiscard]] Expected<void> WriteOldest();
  static void Encode(Slot& slot) noexcept;

  WorkerPool& m_Pool;
  Form m_Form;
  MakeEncoder m_Make;
  WriteBand m_Write;
  std::vector<std::uint8_t> m_Above;
  std::size_t m_RowsTaken = 0;
  std::size_t m_Filled = 0;       ///< bytes of the band that is being filled
  bool m_IsOpen = false;          ///< a band is being filled
  std::uint64_t m_Submitted = 0;  ///< bands; the next one's slot is this modulo their number
  std::uint64_t m_Written = 0;    ///< bands
  std::vector<Slot> m_Slots;
};

}  // namespace rastrel::odalis
