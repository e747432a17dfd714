#pragma once

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "rastrel/platform/os/clock.h"

namespace rastrel::bench {

/// The work that a benchmark measures; it may return nothing but must not fail in silence (see
/// require.h).
using Work = std::function<void()>;

/// The clock that measures a call. Other programs on the machine disturb the processor's less than
/// the wall's.
enum class Clock {
  Wall,
  Processor,            ///< the processor time of this process
  ProcessorOfChildren,  ///< the same with that of its children, each counted at its end
};

/// Processor time, the system's part included.
inline double ProcessorMilliseconds(const rusage& usage) {
  const auto of = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
  };
  return of(usage.ru_utime) + of(usage.ru_stime);
}

/// Milliseconds on the clock; only differences mean something.
inline double Now(Clock clock) {
  if (clock == Clock::Wall) return static_cast<double>(os::MonotonicNanoseconds()) / 1e6;
  if (clock == Clock::Processor)
    return static_cast<double>(std::clock()) * 1e3 / static_cast<double>(CLOCKS_PER_SEC);
  double milliseconds = 0;
  for (const auto who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
    rusage usage{};
    ::getrusage(who, &usage);
    milliseconds += ProcessorMilliseconds(usage);
  }
  return milliseconds;
}

/// Milliseconds of one call.
inline double Milliseconds(Clock clock, const Work& work) {
  const double begin = Now(clock);
  work();
  return Now(clock) - begin;
}

/// The value in the middle; of an even number of values the higher one. `values` is not empty.
inline double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// KiB in a line of this process's /proc/self/status, "VmHWM:" for instance; 0 without such
/// a line.
inline long StatusKilobytes(const std::string& label) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with(label)) return std::atol(line.c_str() + label.size());
  return 0;
}

/// One result. Its texts hold no tabs.
struct Row {
  std::string name;
  double ours = 0;
  std::string unit;
  std::string peerName;
  double peer = 0;
  double limit = 0;  ///< highest ratio of ours to the peer's; 0: none
};

/// Prints the line that report.py reads.
inline void Print(const Row& row) {
  std::printf("bench\t%s\t%.3f\t%s\t%s\t%.3f\t%.4f\t", row.name.c_str(), row.ours, row.unit.c_str(),
              row.peerName.c_str(), row.peer, row.ours / row.peer);
  if (row.limit > 0)
    std::printf("%g\n", row.limit);
  else
    std::printf("-\n");
  std::fflush(stdout);
}

/// One comparison: its names, rounds and limit.
struct Comparison {
  std::string name;
  std::string peerName;
  int rounds = 5;
  double limit = 0.0;  ///< as in Row
  Clock clock = Clock::Wall;
};

/// Runs ours and the peer in turn, so that both meet the same machine, and prints the row of the
/// medians. `before` runs untimed ahead of each.
inline void Compare(const Comparison& comparison, const Work& before, const Work& ours,
                    const Work& peer) {
  std::vector<double> ourTimes;
  std::vector<double> peerTimes;
  for (int round = 0; round < comparison.rounds; ++round) {
    before();
    ourTimes.push_back(Milliseconds(comparison.clock, ours));
    before();
    peerTimes.push_back(Milliseconds(comparison.clock, peer));
  }
  Print({comparison.name, Median(ourTimes), "ms", comparison.peerName, Median(peerTimes),
         comparison.limit});
}

/// One of several that ours is compared with.
struct Peer {
  std::string name;
  Work work;
  double limit = 0;  ///< as in Row
  double times = 1;  ///< factor for its time, if it does a part of ours
};

/// How the best times are found.
struct Turns {
  int count = 5;
  Clock clock = Clock::Processor;
  Work before = [] {};  ///< runs untimed ahead of each
};

/// Runs ours and all peers in turn and prints a row a peer, of the best time of each: other work of
/// the machine adds to a time and never takes from it.
inline void CompareBest(const std::string& name, const Turns& turns, const Work& ours,
                        const std::vector<Peer>& peers) {
  std::vector<double> best(peers.size() + 1, 1e300);
  for (int turn = 0; turn < turns.count; ++turn) {
    for (std::size_t index = 0; index < best.size(); ++index) {
      turns.before();
      best[index] = std::min(best[index],
                             Milliseconds(turns.clock, index == 0 ? ours : peers[index - 1].work));
    }
  }
  for (std::size_t index = 0; index < peers.size(); ++index) {
    const Peer& peer = peers[index];
    Print({name, best[0], "ms", peer.name, best[index + 1] * peer.times, peer.limit});
  }
}

}  // namespace rastrel::bench
