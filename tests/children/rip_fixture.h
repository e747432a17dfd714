#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "pages/page_info.h"
#include "tests/support/scratch_directory.h"

/// Tools of the RIP's tests: a data root with the RIP in it, and the RIP as a process.
namespace rastrel::corerast::testing {

/// A run's end as the library would see it.
struct ProgramRun {
  bool byItself = false;  ///< it called exit
  int status = 0;         ///< exit status, or the signal's number
  std::string output;     ///< standard output to its end
  std::string reports;    ///< standard error to its end
  std::string root;       ///< the program's data root, which is none of this process

  /// Whether a whole line of the reports is that text.
  [[nodiscard]] bool Says(const std::string& line) const;
};

/// A picture file that was read back: 8 bits, 1 or 3 samples a pixel.
struct Pixels {
  unsigned width = 0;
  unsigned height = 0;
  unsigned channels = 0;
  std::string samples;

  /// "255,0,0"; "outside" if there is no such pixel.
  [[nodiscard]] std::string At(unsigned x, unsigned y) const;
};
/// Reads netpbm, or TIFF by the TIFF library.
[[nodiscard]] Pixels ReadPixels(const std::string& path);

/// A sample of a TIFF file of one plane; -1 if there is no such file.
[[nodiscard]] int PlaneSample(const std::string& path, unsigned x, unsigned y);

/// A data root, in a directory of that name below a temporary one, with the RIP installed.
class RipFixture {
 public:
  explicit RipFixture(const std::string& rootName = "root");
  ~RipFixture();

  /// Native path of the data root.
  [[nodiscard]] const std::string& Root() const { return m_Root; }
  [[nodiscard]] std::string RipDirectory() const { return m_Root + "/Queue/rip"; }

  /// Makes a file beside the data root and returns its path.
  std::string File(const std::string& name, const std::string& content) const;
  /// Makes a prefix as the library writes it, for printer and mode "FOLDER/NAME".
  std::string Prefix(const std::string& mode = "TIFF/tiff default.ps",
                     const std::string& printer = "KVI Tiff Screen Preview",
                     const std::string& more = "") const;

  /// A variable of the RIP's environment.
  void Set(const std::string& name, const std::string& value);

  /// Runs the RIP on these paths to the end of its pipes.
  [[nodiscard]] ProgramRun Run(std::vector<std::string> paths) const;
  /// The same, killed that many microseconds after its start if it still runs then.
  [[nodiscard]] ProgramRun RunAndKill(std::vector<std::string> paths, unsigned microseconds) const;

  /// Runs another program of the data root, with these arguments, in the same ways.
  [[nodiscard]] ProgramRun RunProgram(std::vector<std::string> words,
                                      std::optional<unsigned> killAfterMicroseconds = {},
                                      int signal = 9) const;

  /// Runs a program in the same way and stops reading its output, as a host that was killed, as
  /// soon as its reports hold that text. Returns how the program ended, with the reports so far.
  [[nodiscard]] ProgramRun RunAndLeave(std::vector<std::string> words,
                                       const std::string& text) const;

  /// Native directories of the pages that a run's page list names, by the library's own reader.
  [[nodiscard]] static std::vector<std::string> PagesOf(const ProgramRun& run);
  /// Paths below "System/c-out", relative to it.
  [[nodiscard]] std::vector<std::string> Remains() const;
  /// Ids and names of living processes that this fixture's runs have started.
  [[nodiscard]] std::vector<std::string> Processes() const;

 private:
  [[nodiscard]] ProgramRun RunRip(std::vector<std::string> paths,
                                  std::optional<unsigned> microseconds) const;

  test::ScratchDirectory m_Scratch;
  std::string m_Root;
  std::vector<std::string> m_Environment;
};

/// The checked info of a page; files must lie there with the sizes and sums that it says.
[[nodiscard]] pages::PageInfo CheckedInfo(const std::string& pageDirectory);

/// Whether the tests can run here; else why not.
[[nodiscard]] bool HaveGhostscript();

}  // namespace rastrel::corerast::testing

/// Skips a test, with a message, where there is no interpreter.
#define REQUIRE_GHOSTSCRIPT()                                                  \
  if (!rastrel::corerast::testing::HaveGhostscript()) {                        \
    GTEST_SKIP() << "Ghostscript is not installed, so nothing can be ripped."; \
  }
