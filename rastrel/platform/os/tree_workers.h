#pragma once

#include <atomic>
#include <cstddef>
#include <functional>

namespace rastrel::os {

/// The threads that one operation on a tree may use, however many directories it goes through.
/// Work on a large directory is spread over them; the calling thread always takes part, so that a
/// system without a thread to give only makes it slower.
class TreeWorkers {
 public:
  /// As many helpers as the machine has processors besides this one, 3 at most.
  TreeWorkers();

  /// Calls `work` for every index below `count`, from several threads where `count` is at least
  /// `worthwhile`. Returns when all calls have returned. Once one has returned false no further
  /// ones begin and the result is false. May be called from within `work`.
  bool ForEach(std::size_t count, std::size_t worthwhile,
               const std::function<bool(std::size_t)>& work);

 private:
  [[nodiscard]] unsigned TakeHelpers(std::size_t useful);
  std::atomic<unsigned> m_Free;
};

}  // namespace rastrel::os
