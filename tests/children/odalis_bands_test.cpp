#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "children/coreodalis/band_queue.h"
#include "children/coreodalis/png_filter.h"
#include "children/coreodalis/worker_pool.h"

namespace rastrel::odalis {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// Faults of one test's encoders, and counts of their work.
struct Script {
  std::atomic<int> made = 0;
  std::atomic<int> running = 0;
  std::atomic<int> encoded = 0;
  int failing = -1;   ///< the band with this first byte fails
  int throwing = -1;  ///< this one runs out of memory
};

/// Copies a band.
class CopyingEncoder final : public BandEncoder {
 public:
  explicit CopyingEncoder(Script& script) : m_Script(script) { ++m_Script.made; }
  Expected<void> Encode(Band& band) override {
    ++m_Script.running;
    const int first = band.rows.front();
    // Later bands are done sooner, if there are threads for them.
    for (int turn = first; turn < 255; ++turn) std::this_thread::yield();
    band.encoded = band.rows;
    --m_Script.running;
    ++m_Script.encoded;
    if (first == m_Script.throwing) throw std::bad_alloc();
    if (first == m_Script.failing) return FailureOf("the encoder failed");
    return {};
  }

 private:
  Script& m_Script;
};

BandQueue::Form FormOf(std::size_t rowBytes, std::size_t rowsPerBand, std::size_t rows) {
  BandQueue::Form form;
  form.rowBytes = rowBytes;
  form.rowsPerBand = rowsPerBand;
  form.rows = rows;
  return form;
}

struct Sent {
  Bytes written;
  std::string failure;
  std::vector<bool> first;
  std::vector<bool> last;
  std::vector<int> above;  ///< first byte of the row above; -1: none
};

/// Rows whose bytes are the row's number, `step` rows at a time as far as there is room.
Sent Send(Script& script, unsigned threads, const BandQueue::Form& form, std::size_t step = 1,
          int failingWrite = -1) {
  Sent sent;
  WorkerPool pool(threads);
  BandQueue queue(
      pool, form, [&] { return std::make_unique<CopyingEncoder>(script); },
      [&](const Band& band) -> Expected<void> {
        if (band.encoded.front() == failingWrite) return FailureOf("the disk is full");
        sent.written.insert(sent.written.end(), band.encoded.begin(), band.encoded.end());
        sent.first.push_back(band.isFirst);
        sent.last.push_back(band.isLast);
        sent.above.push_back(band.above.empty() ? -1 : band.above.front());
        return {};
      });
  for (std::size_t row = 0; row < form.rows;) {
    auto room = queue.Room();
    if (!room) {
      sent.failure = Describe(room.Error());
      return sent;
    }
    const std::size_t count = std::min(step, room->size() / form.rowBytes);
    for (std::size_t i = 0; i < count * form.rowBytes; ++i)
      (*room)[i] = static_cast<std::uint8_t>(row + i / form.rowBytes);
    row += count;
    if (auto taken = queue.Take(count * form.rowBytes); !taken) {
      sent.failure = Describe(taken.Error());
      return sent;
    }
  }
  auto finished = queue.Finish();
  if (!finished) sent.failure = Describe(finished.Error());
  return sent;
}

Bytes Rows(std::size_t rowBytes, std::size_t rows) {
  Bytes bytes;
  for (std::size_t row = 0; row < rows; ++row)
    bytes.insert(bytes.end(), rowBytes, static_cast<std::uint8_t>(row));
  return bytes;
}

TEST(BandQueue, writes_bands_in_order_whoever_is_done_first) {
  for (const unsigned threads : {1u, 2u, 3u, 7u}) {
    for (const std::size_t rows : {1u, 2u, 3u, 4u, 100u, 200u}) {
      Script script;
      const Sent sent = Send(script, threads, FormOf(5, 3, rows), 2);
      EXPECT_EQ(sent.failure, "");
      EXPECT_EQ(sent.written, Rows(5, rows)) << threads << " threads, " << rows << " rows";
    }
  }
}

TEST(BandQueue, a_band_knows_its_place_and_the_row_above_it) {
  Script script;
  const Sent sent = Send(script, 3, FormOf(2, 3, 7));
  EXPECT_EQ(sent.first, (std::vector{true, false, false}));
  EXPECT_EQ(sent.last, (std::vector{false, false, true}));
  EXPECT_EQ(sent.above, (std::vector{-1, 2, 5}));
}

// Two bands a thread, whatever the picture's height; one if they are large.
TEST(BandQueue, the_number_of_bands_that_it_holds_is_fixed) {
  Script many;
  EXPECT_EQ(Send(many, 3, FormOf(1, 1, 250)).failure, "");
  EXPECT_EQ(many.made, 6);
  Script large;
  EXPECT_EQ(Send(large, 3, FormOf(std::size_t{20} << 20, 1, 3)).failure, "");
  EXPECT_EQ(large.made, 1);
  Script atOnce;
  BandQueue::Form form = FormOf(1, 1, 250);
  form.isEncodedAtOnce = true;
  EXPECT_EQ(Send(atOnce, 3, form).failure, "");
  EXPECT_EQ(atOnce.made, 1);
}

TEST(BandQueue, the_failure_of_an_encoder_is_that_of_the_picture) {
  for (const unsigned threads : {1u, 3u}) {
    for (const int failing : {0, 1, 40, 99}) {
      Script script;
      script.failing = failing;
      const Sent sent = Send(script, threads, FormOf(4, 1, 100));
      EXPECT_EQ(sent.failure, "the encoder failed");
      EXPECT_EQ(sent.written, Rows(4, static_cast<std::size_t>(failing)));
      EXPECT_EQ(script.running, 0) << "a thread is left";
    }
  }
}

TEST(BandQueue, memory_that_runs_out_in_an_encoder_is_a_failure) {
  for (const unsigned threads : {1u, 3u}) {
    Script script;
    script.throwing = 7;
    const Sent sent = Send(script, threads, FormOf(4, 1, 100));
    EXPECT_EQ(sent.failure, "out of memory");
    EXPECT_EQ(script.running, 0);
  }
}

TEST(BandQueue, a_band_that_can_not_be_written_ends_the_picture) {
  for (const unsigned threads : {1u, 3u}) {
    Script script;
    const Sent sent = Send(script, threads, FormOf(4, 1, 100), 1, 10);
    EXPECT_EQ(sent.failure, "the disk is full");
    EXPECT_EQ(sent.written, Rows(4, 10));
    EXPECT_EQ(script.running, 0);
    EXPECT_LT(script.encoded, 30);  // nothing was encoded much beyond the failure
  }
}

TEST(BandQueue, one_that_is_dropped_waits_for_its_encoders) {
  for (int round = 0; round < 50; ++round) {
    Script script;
    WorkerPool pool(3);
    {
      BandQueue queue(
          pool, FormOf(8, 1, 100), [&] { return std::make_unique<CopyingEncoder>(script); },
          [](const Band&) { return Expected<void>(); });
      for (int band = 0; band < 6; ++band) {
        ASSERT_TRUE(queue.Room());
        ASSERT_TRUE(queue.Take(8));
      }
    }
    EXPECT_EQ(script.encoded, 6);
    EXPECT_EQ(script.running, 0);
  }
}

TEST(WorkerPool, runs_every_task_before_it_ends) {
  for (const unsigned threads : {1u, 2u, 7u}) {
    std::atomic<int> done = 0;
    {
      WorkerPool pool(threads);
      for (int i = 0; i < 1000; ++i) pool.Run([&done] { ++done; });
    }
    EXPECT_EQ(done, 1000) << threads;
  }
}

TEST(WorkerPool, tasks_run_at_the_same_time) {
  WorkerPool pool(2);
  ASSERT_EQ(pool.Width(), 2u);
  std::mutex mutex;
  std::condition_variable changed;
  int inside = 0;
  TaskGroup group(pool);
  for (int i = 0; i < 2; ++i) {
    // Each waits for the other: one after the other they would never end.
    group.Run([&] {
      std::unique_lock lock(mutex);
      ++inside;
      changed.notify_all();
      changed.wait(lock, [&] { return inside == 2; });
    });
  }
  group.Wait();
  EXPECT_EQ(inside, 2);
}

Bytes Filtered(const Bytes& row, const Bytes& above, std::size_t step) {
  Bytes filtered;
  AppendFilteredRow(row, above, step, filtered);
  return filtered;
}

// The filters' numbers are the format's: 0 none, 1 sub, 2 up, 4 Paeth.
TEST(AppendFilteredRow, takes_the_filter_that_leaves_the_least) {
  const Bytes row = {10, 20, 30, 40};
  EXPECT_EQ(Filtered(row, row, 1), (Bytes{2, 0, 0, 0, 0}));
  EXPECT_EQ(Filtered(row, {}, 1), (Bytes{1, 10, 10, 10, 10}));
  EXPECT_EQ(Filtered({1, 0, 255, 1}, {90, 90, 90, 90}, 1), (Bytes{0, 1, 0, 255, 1}));
  EXPECT_EQ(Filtered({1, 2, 3, 101, 102, 103}, {}, 3), (Bytes{1, 1, 2, 3, 100, 100, 100}));
  // The second sample is foretold by the one above it, the third by the one to its left.
  EXPECT_EQ(Filtered({12, 101, 103}, {10, 100, 100}, 1), (Bytes{4, 2, 1, 2}));
}

}  // namespace
}  // namespace rastrel::odalis
