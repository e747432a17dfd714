#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

/// A test program in which memory can run out. The header replaces the program's operator new and
/// delete: include it in one source of a program.
namespace rastrel::test {

inline std::atomic<std::size_t> largestAllocation = SIZE_MAX;

/// While this lives no block of more than that many bytes is to be had, on any thread.
class AllocationLimit {
 public:
  explicit AllocationLimit(std::size_t bytes) { largestAllocation = bytes; }
  ~AllocationLimit() { largestAllocation = SIZE_MAX; }
  AllocationLimit(const AllocationLimit&) = delete;
  AllocationLimit& operator=(const AllocationLimit&) = delete;
};

}  // namespace rastrel::test

// NOLINTBEGIN(misc-definitions-in-headers)
[[gnu::noinline]] void* operator new(std::size_t size) {
  if (size <= rastrel::test::largestAllocation) {
    if (void* const block = std::malloc(size == 0 ? 1 : size)) return block;
  }
  throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return size <= rastrel::test::largestAllocation ? std::malloc(size == 0 ? 1 : size) : nullptr;
}
[[gnu::noinline]] void* operator new[](std::size_t size) { return operator new(size); }
[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete[](void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
// NOLINTEND(misc-definitions-in-headers)
