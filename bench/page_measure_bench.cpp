// Measuring a page by the queue program against bare Ghostscript's start and its box of the same
// file. Every call is a whole process from its start to its end with its reports read, and the wall
// clock counts, since a user waits for the page. Files: what the start alone costs; a page as a
// drawing program writes it; and those of the directory that RASTREL_BENCH_FILES names, if it does.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "bench/measure.h"

namespace {

namespace fs = std::filesystem;
namespace bench = rastrel::bench;

constexpr double Limit = 1.3;
constexpr int Rounds = 31;

[[noreturn]] void Fail(const std::string& what) {
  std::fprintf(stderr, "page_measure_bench: %s\n", what.c_str());
  std::exit(1);
}

// Runs a program to its end and reads its reports. They must hold that text.
void Run(std::vector<std::string> arguments, const std::string& wanted) {
  std::vector<char*> list;
  for (std::string& argument : arguments) list.push_back(argument.data());
  list.push_back(nullptr);
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) Fail("no pipe");
  const pid_t process = vfork();
  if (process == 0) {
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    dup2(nothing, 0);
    dup2(nothing, 1);
    dup2(ends[1], 2);
    execvp(list[0], list.data());
    _exit(127);
  }
  close(ends[1]);
  std::string reports;
  std::vector<char> buffer(65536);
  for (ssize_t count = 0; (count = read(ends[0], buffer.data(), buffer.size())) > 0;) {
    reports.append(buffer.data(), static_cast<std::size_t>(count));
  }
  close(ends[0]);
  int status = 0;
  if (process < 0 || waitpid(process, &status, 0) != process || status != 0) {
    Fail(arguments[0] + " ended with status " + std::to_string(status) + ": " + reports);
  }
  if (reports.find(wanted) == reports.npos) Fail(arguments[0] + " measured nothing: " + reports);
}

// A data root with the queue program in it, in a directory of its own.
class Place {
 public:
  Place() {
    std::string path = (fs::temp_directory_path() / "rastrel-bench-XXXXXX").string();
    if (::mkdtemp(path.data()) == nullptr) Fail("no directory");
    m_Path = path;
    fs::create_directories(m_Path / "Queue/rip");
    fs::copy_file(RASTREL_BINARY_DIR "/libexec/rastrel/JobSpool.exe", Program());
    fs::copy(RASTREL_SOURCE_DIR "/share/rip", m_Path / "Queue/rip",
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    ::setenv("RASTREL_HOME", m_Path.c_str(), 1);
  }
  ~Place() {
    std::error_code ignored;
    fs::remove_all(m_Path, ignored);
  }
  Place(const Place&) = delete;
  Place& operator=(const Place&) = delete;

  [[nodiscard]] std::string Program() const { return m_Path / "Queue/JobSpool.exe"; }
  [[nodiscard]] std::string File(const std::string& name, const std::string& content) const {
    std::ofstream(m_Path / name, std::ios::binary) << content;
    return m_Path / name;
  }

 private:
  fs::path m_Path;
};

// Areas, curves and text all over a page that never says how large it is.
std::string FullPage() {
  std::string job = "%!PS\n/Helvetica findfont 11 scalefont setfont\n";
  for (int row = 0; row < 60; ++row) {
    const std::string y = std::to_string(20 + row * 13);
    job += "0 setgray 30 " + y + " moveto (Engraved plates, brass and acrylic, in any size) show\n";
    for (int column = 0; column < 40; ++column) {
      job += "newpath " + std::to_string(300 + column * 7) + " " + y + " 3 0 360 arc fill\n";
    }
  }
  return job + "showpage\n";
}

void CompareFile(const Place& place, const std::string& name, const std::string& file) {
  bench::Compare(
      {.name = "page measuring, " + name,
       .peerName = "bare Ghostscript's box",
       .rounds = Rounds,
       .limit = Limit},
      [] {},
      [&] {
        Run({place.Program(), "-q", "-ps", file}, "QRAST:bbox ");
      },
      [&] {
        Run({"gs", "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sDEVICE=bbox", file},
            "%%HiResBoundingBox: ");
      });
}

}  // namespace

int main() {
  const Place place;
  CompareFile(place, "one mark", place.File("mark.ps", "%!PS\n0 0 9 9 rectfill showpage\n"));
  CompareFile(place, "a full page", place.File("page.ps", FullPage()));
  const char* const more = std::getenv("RASTREL_BENCH_FILES");
  if (more == nullptr) return 0;
  std::vector<fs::path> files{fs::directory_iterator(more), {}};
  std::ranges::sort(files);
  for (const fs::path& file : files) CompareFile(place, file.filename(), file);
}
