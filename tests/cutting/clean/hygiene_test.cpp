// The jobs of hygiene.py: each fault is found at its place, none is invented, and healing moves no
// sound point.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "cutting/clean/heal.h"
#include "cutting/job/job_file.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::cutting {
namespace {

struct KnownFault {
  std::string kind;
  std::size_t path = 0;
  Point place;
  double length = 0;
  double precision = 0;
};

struct KnownJob {
  std::string name;
  CutJob job;
  std::vector<KnownFault> faults;
};

CutJob ReadJob(const std::filesystem::path& path) {
  std::ifstream file(path);
  std::stringstream text;
  text << file.rdbuf();
  auto job = ReadJobFile(text.str(), path.filename().string());
  EXPECT_TRUE(job) << (job ? "" : Describe(job.Error()));
  return job ? *std::move(job) : CutJob{};
}

class Hygiene : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    const test::ScratchDirectory scratch;
    const std::filesystem::path directory(scratch.Path());
    const std::string command = "python3 -B '" RASTREL_SOURCE_DIR
                                "/tests/cutting/clean/hygiene.py' '" +
                                directory.string() + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);
    std::ifstream list(directory / "list.txt");
    for (std::string line; std::getline(list, line);) {
      std::istringstream words(line);
      KnownJob known;
      words >> known.name;
      for (KnownFault fault; words >> fault.kind >> fault.path >> fault.place.x >> fault.place.y >>
                             fault.length >> fault.precision;)
        known.faults.push_back(fault);
      known.job = ReadJob(directory / (known.name + ".json"));
      s_Jobs.push_back(std::move(known));
    }
  }

  inline static std::vector<KnownJob> s_Jobs;
};

std::string Names(const CheckReport& report) {
  std::string names;
  for (const Fault& fault : report.faults)
    names += std::string(NameOf(fault.kind)) + "@" + std::to_string(fault.contour.path) + " " +
             std::to_string(fault.place.x) + "," + std::to_string(fault.place.y) + " " +
             std::to_string(fault.length) + "; ";
  return names;
}

bool Is(const Fault& fault, const KnownFault& known) {
  return NameOf(fault.kind) == known.kind && fault.contour.path == known.path &&
         Distance(fault.place, known.place) <= known.precision + 1e-9 &&
         std::abs(fault.length - known.length) <= 0.06 + 1e-3 * known.length;
}

TEST_F(Hygiene, has_sixty_jobs_with_faults_of_all_kinds_and_two_hundred_sound_ones) {
  const auto faulty =
      std::ranges::count_if(s_Jobs, [](const KnownJob& known) { return !known.faults.empty(); });
  EXPECT_EQ(faulty, 60);
  EXPECT_EQ(s_Jobs.size(), 260U);
  std::set<std::string> kinds;
  for (const KnownJob& known : s_Jobs)
    for (const KnownFault& fault : known.faults) kinds.insert(fault.kind);
  EXPECT_EQ(kinds.size(), 10U);  // all but coordinates that a cut job can't have
}

TEST_F(Hygiene, each_fault_is_found_at_its_place_and_none_invented) {
  for (const KnownJob& known : s_Jobs) {
    const CheckReport report = Check(known.job);
    EXPECT_TRUE(report.complete);
    EXPECT_EQ(report.faults.size(), known.faults.size()) << known.name << ": " << Names(report);
    for (const KnownFault& fault : known.faults) {
      EXPECT_TRUE(std::ranges::any_of(report.faults, [&](const Fault& f) { return Is(f, fault); }))
          << known.name << " has " << fault.kind << "@" << fault.path << " at " << fault.place.x
          << ", " << fault.place.y << " of " << fault.length << "; found: " << Names(report);
    }
  }
}

TEST_F(Hygiene, healing_changes_no_sound_job) {
  for (const KnownJob& known : s_Jobs) {
    if (!known.faults.empty()) continue;
    for (const bool unite : {false, true}) {
      const HealResult result = Heal(known.job, {.faults = {}, .unite = unite});
      EXPECT_TRUE(result.repairs.empty()) << known.name;
      EXPECT_EQ(result.job, known.job) << known.name;
    }
  }
}

// Every contour of a path that is in no repair is there as it was.
void ExpectOthersAsTheyWere(const KnownJob& known, const HealResult& result) {
  std::set<std::size_t> mended;
  for (const Repair& repair : result.repairs) {
    mended.insert(repair.contour.path);
    mended.insert(repair.other.path);
  }
  std::size_t at = 0;
  for (std::size_t path = 0; path < known.job.paths.size(); ++path) {
    if (mended.contains(path)) continue;
    while (at < result.job.paths.size() && result.job.paths[at] != known.job.paths[path]) ++at;
    ASSERT_LT(at, result.job.paths.size()) << known.name << ", path " << path;
  }
}

TEST_F(Hygiene, healing_moves_no_point_beside_the_faults) {
  for (const KnownJob& known : s_Jobs) {
    for (const bool unite : {false, true}) {
      const HealResult result = Heal(known.job, {.faults = {}, .unite = unite});
      ExpectOthersAsTheyWere(known, result);
      for (const Repair& repair : result.repairs) {
        EXPECT_TRUE(std::ranges::any_of(known.faults,
                                        [&](const KnownFault& fault) {
                                          return fault.path == repair.contour.path ||
                                                 fault.path == repair.other.path;
                                        }))
            << known.name << ": " << NameOf(repair.kind) << " in path " << repair.contour.path;
      }
    }
  }
}

TEST_F(Hygiene, healing_leaves_only_faults_without_a_remedy) {
  const std::set<std::string_view> left{"open", "overlap", "outside-sheet"};
  for (const KnownJob& known : s_Jobs) {
    const HealResult result = Heal(known.job, {.faults = {}, .unite = true});
    const CheckReport report = Check(result.job);
    for (const Fault& fault : report.faults)
      EXPECT_TRUE(left.contains(NameOf(fault.kind))) << known.name << ": " << Names(report);
    const auto kept = std::ranges::count_if(
        known.faults, [&](const KnownFault& fault) { return left.contains(fault.kind); });
    EXPECT_EQ(report.faults.size(), static_cast<std::size_t>(kept)) << known.name;
  }
}

}  // namespace
}  // namespace rastrel::cutting
