#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/children/rip_fixture.h"
#include "tests/support/scratch_directory.h"

/// Tools of the queue program's tests: a data root with the program in it, and its runs.
namespace rastrel::jobspool::testing {

using corerast::testing::ProgramRun;

/// The records of a run that measures, and their values as a reader takes them.
struct Records {
  std::map<std::string, std::string> values;  ///< of each keyword the last

  /// Left, bottom, right and top in points; empty if there is no whole record.
  [[nodiscard]] std::vector<double> Box() const;
};

/// A data root with RIP and queue program.
class QueueFixture : public corerast::testing::RipFixture {
 public:
  QueueFixture();

  [[nodiscard]] std::string Program() const { return Root() + "/Queue/JobSpool.exe"; }
  /// Makes a file in the RIP's directory, where the library puts those that it hands over.
  std::string Job(const std::string& name, const std::string& content) const;

  [[nodiscard]] ProgramRun Convert(const std::string& file) const;
  [[nodiscard]] ProgramRun MeasureFile(const std::string& file) const;

  /// Every path below the RIP's directory but its programs and System, and all below c-out.
  [[nodiscard]] std::vector<std::string> Leftovers() const;
};

/// Puts the built queue program and the RIP's shipped files into a data root of the library, which
/// starts that program then.
void PutQueueProgram(const test::ScratchDirectory& root);

/// A block as the library writes it; `lines` are those between type and end, each with its CR LF.
[[nodiscard]] std::string Header(const std::string& lines = {});

/// The records among a run's reports.
[[nodiscard]] Records RecordsOf(const ProgramRun& outcome);

/// A file of the shared corpus, "eps/name.eps"; empty where the corpus is not there. It is looked
/// for in RASTREL_TEST_CORPUS, else beside the source tree.
[[nodiscard]] std::string CorpusFile(const std::string& name);

}  // namespace rastrel::jobspool::testing
