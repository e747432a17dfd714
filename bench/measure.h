#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

#include "rastrel/platform/os/clock.h"

namespace rastrel::bench {

/// Which clock tells a call's time: the wall's, or the processor's of this process, which other
/// programs on the machine disturb less.
enum class Clock { Wall, Processor };

/// Milliseconds of one call.
inline double Milliseconds(Clock clock, const std::function<void()>& work) {
  const auto now = [clock] {
    return clock == Clock::Wall
               ? static_cast<double>(os::MonotonicNanoseconds()) / 1e6
               : static_cast<double>(std::clock()) * 1e3 / static_cast<double>(CLOCKS_PER_SEC);
  };
  const double begin = now();
  work();
  return now() - begin;
}

inline double Median(std::vector<double> times) {
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

/// What is compared with what.
struct Comparison {
  std::string name;
  std::string peerName;
  int rounds = 5;
  double limit = 0.0;  ///< highest ratio of our time to the peer's; 0: none
  Clock clock = Clock::Wall;
};

/// Runs ours and the peer in turn, so that both meet the same machine, and prints the line of the
/// medians that report.py reads. `before` runs untimed ahead of each.
inline void Compare(const Comparison& comparison, const std::function<void()>& before,
                    const std::function<void()>& ours, const std::function<void()>& peer) {
  std::vector<double> ourTimes;
  std::vector<double> peerTimes;
  for (int round = 0; round < comparison.rounds; ++round) {
    before();
    ourTimes.push_back(Milliseconds(comparison.clock, ours));
    before();
    peerTimes.push_back(Milliseconds(comparison.clock, peer));
  }
  const double our = Median(ourTimes);
  const double theirs = Median(peerTimes);
  const std::string limit = comparison.limit > 0.0 ? std::to_string(comparison.limit) : "-";
  std::printf("bench\t%s\t%.2f\tms\t%s\t%.2f\t%.3f\t%s\n", comparison.name.c_str(), our,
              comparison.peerName.c_str(), theirs, our / theirs, limit.c_str());
  std::fflush(stdout);
}

}  // namespace rastrel::bench
