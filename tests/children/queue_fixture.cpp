#include "tests/children/queue_fixture.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "rastrel/platform/os/path.h"

namespace rastrel::jobspool::testing {
namespace {

namespace fs = std::filesystem;

}  // namespace

std::vector<double> Records::Box() const {
  const auto found = values.find("bbox");
  if (found == values.end()) return {};
  float left = 0;
  float height = 0;
  float width = 0;
  float bottom = 0;
  if (std::sscanf(found->second.c_str(), "%f %f %f %f", &left, &height, &width, &bottom) != 4) {
    return {};
  }
  return {left * 72., bottom * 72., (double{left} + width) * 72, (double{bottom} + height) * 72};
}

QueueFixture::QueueFixture() {
  fs::copy_file(RASTREL_BINARY_DIR "/libexec/rastrel/JobSpool.exe", Program());
}

std::string QueueFixture::Job(const std::string& name, const std::string& content) const {
  const std::string path = RipDirectory() + "/" + name;
  std::ofstream(path, std::ios::binary) << content;
  return path;
}

ProgramRun QueueFixture::Convert(const std::string& file) const {
  return RunProgram({Program(), "-ps", "-q", file});
}

ProgramRun QueueFixture::MeasureFile(const std::string& file) const {
  return RunProgram({Program(), "-q", "-ps", file});
}

std::vector<std::string> QueueFixture::Leftovers() const {
  std::vector<std::string> names = Remains();
  for (const auto& entry : fs::directory_iterator(RipDirectory())) {
    const std::string name = entry.path().filename().string();
    if (name != "System" && name != "corerast.exe") names.push_back(name);
  }
  std::ranges::sort(names);
  return names;
}

void PutQueueProgram(const test::ScratchDirectory& root) {
  namespace fs = std::filesystem;
  const std::string queue = root.Path("Queue");
  fs::create_directories(queue + "/rip");
  fs::copy_file(RASTREL_BINARY_DIR "/libexec/rastrel/JobSpool.exe", queue + "/JobSpool.exe");
  fs::copy(RASTREL_SOURCE_DIR "/share/rip", queue + "/rip", fs::copy_options::recursive);
}

std::string Header(const std::string& lines) {
  return "%#Velumark Header 2.0\r\n%#Begin Job: 0\r\n%# Title: MyJob\r\n%#Type=Print\r\n" + lines +
         "%#End Job\r\n";
}

Records RecordsOf(const ProgramRun& outcome) {
  Records records;
  std::istringstream lines(outcome.reports);
  for (std::string line; std::getline(lines, line);) {
    constexpr std::string_view Tag = "QRAST:";
    if (!line.starts_with(Tag) || line.size() < Tag.size() + 5) continue;
    records.values[line.substr(Tag.size(), 4)] = line.substr(Tag.size() + 5);
  }
  return records;
}

std::string CorpusFile(const std::string& name) {
  std::string top = os::EnvironmentValue("RASTREL_TEST_CORPUS");
  if (top.empty()) {
    top = (fs::path(RASTREL_SOURCE_DIR).parent_path() / "shared/corpus").string();
  }
  const std::string path = top + "/" + name;
  return fs::is_regular_file(path) ? path : std::string();
}

}  // namespace rastrel::jobspool::testing
