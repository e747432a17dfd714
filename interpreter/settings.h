#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace rastrel::interpreter {

/// Limits of a run. Each is read from a variable of the environment; a whole number above 0.
struct Settings {
  std::uint64_t timeSeconds = 1800;       ///< RASTREL_RIP_TIMEOUT: of the clock on the wall
  std::uint64_t processorSeconds = 1800;  ///< RASTREL_RIP_CPU: of Ghostscript's processor time
  std::uint64_t memoryMebibytes = 1024;   ///< RASTREL_RIP_MEMORY: that the interpreter may take
  std::uint64_t pagePixels = 1600000000;  ///< RASTREL_RIP_PIXELS: of one page
  std::uint64_t totalMebibytes = 65536;   ///< RASTREL_RIP_SIZE: of all pages of a run
  std::uint64_t workMebibytes = 4096;     ///< RASTREL_RIP_TEMP: of temporary files at a time

  /// Reads them. A value that is no such number is passed over and adds a sentence to `complaints`.
  [[nodiscard]] static Settings FromEnvironment(std::vector<std::string>& complaints);
};

/// Temporary files that a run may have at a time. The interpreter's own are a handful.
inline constexpr std::uint64_t WorkFiles = 1000;

/// Pixels that a page may measure at most in either direction, so that a row stays small.
inline constexpr std::uint64_t SidePixels = 400000;

}  // namespace rastrel::interpreter
