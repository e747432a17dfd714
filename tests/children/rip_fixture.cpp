#include "tests/children/rip_fixture.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <tiffio.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

#include "interpreter/interpreter.h"
#include "rastrel/cfm/cfm2.h"
#include "rastrel/cfm/cfm_page.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "tests/support/process_file.h"
#include "tests/support/wait_until.h"

namespace rastrel::corerast::testing {
namespace {

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

struct Started {
  pid_t process = -1;
  int output = -1;
  int reports = -1;
};

Started Start(const std::string& directory, std::vector<std::string> arguments,
              std::vector<std::string> environment) {
  int output[2];
  int reports[2];
  if (pipe2(output, O_CLOEXEC) != 0 || pipe2(reports, O_CLOEXEC) != 0) return {};
  const auto pointers = [](std::vector<std::string>& texts) {
    std::vector<char*> list;
    for (std::string& text : texts) list.push_back(text.data());
    list.push_back(nullptr);
    return list;
  };
  const std::vector<char*> argumentList = pointers(arguments);
  const std::vector<char*> environmentList = pointers(environment);
  const pid_t process = fork();
  if (process == 0) {
    setsid();
    dup2(open("/dev/null", O_RDONLY | O_CLOEXEC), 0);
    dup2(output[1], 1);
    dup2(reports[1], 2);
    if (chdir(directory.c_str()) == 0) {
      execve(argumentList[0], argumentList.data(), environmentList.data());
    }
    _exit(127);
  }
  close(output[1]);
  close(reports[1]);
  return {process, output[0], reports[0]};
}

// Reads both pipes to their ends.
void Drain(const Started& started, ProgramRun& outcome) {
  std::array<pollfd, 2> entries{{{started.output, POLLIN, 0}, {started.reports, POLLIN, 0}}};
  std::array<std::string*, 2> targets{&outcome.output, &outcome.reports};
  std::vector<char> buffer(65536);
  while (entries[0].fd >= 0 || entries[1].fd >= 0) {
    if (poll(entries.data(), 2, -1) < 0 && errno != EINTR) return;
    for (std::size_t i = 0; i < 2; ++i) {
      if (entries[i].fd < 0 || entries[i].revents == 0) continue;
      const ssize_t count = read(entries[i].fd, buffer.data(), buffer.size());
      if (count > 0) {
        targets[i]->append(buffer.data(), static_cast<std::size_t>(count));
      } else {
        close(entries[i].fd);
        entries[i].fd = -1;
      }
    }
  }
}

char ProcessState(const fs::path& process) {
  const std::string stat = test::ProcessFile(process, "stat");
  const std::size_t name = stat.rfind(')');
  return name == std::string::npos || name + 2 >= stat.size() ? 'X' : stat[name + 2];
}

bool Concerns(const fs::path& process, const std::string& root) {
  std::error_code error;
  if (test::ProcessFile(process, "environ").find("RASTREL_HOME=" + root + '\0') !=
      std::string::npos) {
    return true;
  }
  return fs::read_symlink(process / "cwd", error).string().starts_with(root);
}

}  // namespace

bool ProgramRun::Says(const std::string& line) const {
  return ("\n" + reports).find("\n" + line + "\n") != std::string::npos;
}

std::string Pixels::At(unsigned x, unsigned y) const {
  if (x >= width || y >= height) return "outside";
  std::string text;
  for (unsigned c = 0; c < channels; ++c) {
    const char sample = samples[(std::size_t{y} * width + x) * channels + c];
    text += (c > 0 ? "," : "") + std::to_string(static_cast<unsigned char>(sample));
  }
  return text;
}

Pixels ReadTiff(const std::string& path) {
  Pixels pixels;
  TIFF* const file = TIFFOpen(path.c_str(), "r");
  if (file == nullptr) return pixels;
  std::uint16_t channels = 0;
  TIFFGetField(file, TIFFTAG_IMAGEWIDTH, &pixels.width);
  TIFFGetField(file, TIFFTAG_IMAGELENGTH, &pixels.height);
  TIFFGetField(file, TIFFTAG_SAMPLESPERPIXEL, &channels);
  pixels.channels = channels;
  std::string row(static_cast<std::size_t>(TIFFScanlineSize64(file)), '\0');
  for (unsigned line = 0; line < pixels.height; ++line) {
    EXPECT_EQ(TIFFReadScanline(file, row.data(), line), 1) << path;
    pixels.samples += row;
  }
  TIFFClose(file);
  return pixels;
}

Pixels ReadPixels(const std::string& path) {
  if (path.ends_with(".tif")) return ReadTiff(path);
  std::istringstream file(ReadFile(path));
  Pixels pixels;
  std::string kind;
  unsigned largest = 0;
  file >> kind >> pixels.width >> pixels.height >> largest;
  file.get();
  pixels.channels = kind == "P6" ? 3 : 1;
  pixels.samples.assign(std::istreambuf_iterator<char>(file), {});
  EXPECT_EQ(largest, 255U) << path;
  EXPECT_EQ(pixels.samples.size(), std::size_t{pixels.width} * pixels.height * pixels.channels);
  return pixels;
}

int PlaneSample(const std::string& path, unsigned x, unsigned y) {
  TIFF* const file = TIFFOpen(path.c_str(), "r");
  if (file == nullptr) return -1;
  std::vector<unsigned char> row(static_cast<std::size_t>(TIFFScanlineSize64(file)));
  for (unsigned line = 0; line <= y; ++line) {
    if (TIFFReadScanline(file, row.data(), line) < 0) row.assign(row.size(), 0);
  }
  TIFFClose(file);
  return row.at(x);
}

RipFixture::RipFixture(const std::string& rootName) : m_Root(m_Scratch.Path(rootName)) {
  fs::create_directories(RipDirectory());
  fs::copy_file(RASTREL_BINARY_DIR "/libexec/rastrel/corerast.exe",
                RipDirectory() + "/corerast.exe");
  fs::copy(RASTREL_SOURCE_DIR "/share/rip", RipDirectory(),
           fs::copy_options::recursive | fs::copy_options::overwrite_existing);
  m_Environment = {"RASTREL_HOME=" + m_Root, "PATH=" + os::EnvironmentValue("PATH"),
                   "HOME=" + os::EnvironmentValue("HOME"), "RASTREL_WARM=0"};
}

RipFixture::~RipFixture() = default;

std::string RipFixture::File(const std::string& name, const std::string& content) const {
  m_Scratch.Write(name, content);
  return m_Scratch.Path(name);
}

std::string RipFixture::Prefix(const std::string& mode, const std::string& printer,
                               const std::string& more) const {
  std::string text = "\nserverdict begin 0 exitserver\n\n\n%%Title: job12\n\n";
  if (!printer.empty()) {
    text += "\n% -- Printer Selection Override --\n%\n(" + printer +
            ":) SelectPrinter\n\n% Disable Select Printer\n"
            "/SelectPrinter load /$SelectPrinter$ exch def\n/SelectPrinter {pop} def\n"
            "% -- End of Printer selection override --\n\n";
  }
  if (!mode.empty()) {
    text +=
        "\n% -- Print Mode Selection Override --\n%\n% Select the print mode\n"
        "(%Lumiscript%pmodes/" +
        mode +
        ") SelectPrintMode\n\n% Disable Select Print mode\n"
        "/SelectPrintMode load /$SelectPrintMode$ exch def\n/SelectPrintMode {pop} def\n"
        "% -- End of Print Mode Selection Override --\n\n";
  }
  text += more.empty() ? "\n% -- Scaling Override --\nuserdict /SetScaleTarget known {\n"
                         "  null SetScaleTarget\n} if\n\n"
                       : more;
  text +=
      "\n% -- Cutter --\n%\nfalse $setcutter\n\n% Disable $setcutter\n"
      "/$setcutter load /$setcutter$ exch def\n/$setcutter {pop} def\n"
      "% -- End of $setcutter Override --\n\n\x04";
  return File("job.psp", text);
}

void RipFixture::Set(const std::string& name, const std::string& value) {
  std::erase_if(m_Environment, [&](const std::string& e) { return e.starts_with(name + "="); });
  m_Environment.push_back(name + "=" + value);
}

ProgramRun RipFixture::Run(std::vector<std::string> paths) const {
  return RunRip(std::move(paths), std::nullopt);
}

ProgramRun RipFixture::RunAndKill(std::vector<std::string> paths, unsigned microseconds) const {
  return RunRip(std::move(paths), microseconds);
}

ProgramRun RipFixture::RunRip(std::vector<std::string> paths,
                              std::optional<unsigned> microseconds) const {
  paths.insert(paths.begin(), {RipDirectory() + "/corerast.exe", "-M", "-Q", "-m128"});
  return RunProgram(std::move(paths), microseconds);
}

ProgramRun RipFixture::RunProgram(std::vector<std::string> words,
                                  std::optional<unsigned> killAfterMicroseconds, int signal) const {
  const Started started = Start(RipDirectory(), std::move(words), m_Environment);
  std::jthread killer;
  if (killAfterMicroseconds) {
    killer = std::jthread([process = started.process, wait = *killAfterMicroseconds, signal] {
      std::this_thread::sleep_for(std::chrono::microseconds(wait));
      kill(process, signal);  // not waited for yet, so the number is still its own
    });
  }
  ProgramRun outcome;
  outcome.root = m_Root;
  Drain(started, outcome);
  if (killer.joinable()) killer.join();
  int status = 0;
  waitpid(started.process, &status, 0);
  outcome.byItself = WIFEXITED(status);
  outcome.status = outcome.byItself ? WEXITSTATUS(status) : WTERMSIG(status);
  return outcome;
}

ProgramRun RipFixture::RunAndLeave(std::vector<std::string> words, const std::string& text) const {
  const Started started = Start(RipDirectory(), std::move(words), m_Environment);
  ProgramRun outcome;
  outcome.root = m_Root;
  std::vector<char> buffer(4096);
  while (outcome.reports.find(text) == std::string::npos) {
    const ssize_t count = read(started.reports, buffer.data(), buffer.size());
    if (count <= 0) break;
    outcome.reports.append(buffer.data(), static_cast<std::size_t>(count));
  }
  close(started.output);
  close(started.reports);
  int status = 0;
  waitpid(started.process, &status, 0);
  outcome.byItself = WIFEXITED(status);
  outcome.status = outcome.byItself ? WEXITSTATUS(status) : WTERMSIG(status);
  return outcome;
}

std::vector<std::string> RipFixture::PagesOf(const ProgramRun& run) {
  CCFM2 document;
  document.m_Text = os::WideFromUtf8(run.output);
  std::vector<std::string> pages;
  if (!document.Parse()) return pages;
  for (const auto& page : document.m_Pages) {
    std::wstring path = page->m_Directory;
    path += page->m_Title;
    // A directory that the list can't name plainly is on a drive, which lies in the data root.
    const std::size_t drive = path.starts_with(L"R:") ? 2 : 0;
    const std::string place = os::ToNative(path.substr(drive));
    pages.push_back(drive == 0 ? place : run.root + "/drive_r" + place);
  }
  return pages;
}

std::vector<std::string> RipFixture::Remains() const {
  const fs::path top = RipDirectory() + "/System/c-out";
  std::vector<std::string> names;
  std::error_code error;
  for (const auto& entry : fs::recursive_directory_iterator(top, error)) {
    names.push_back(entry.path().lexically_relative(top).string());
  }
  return names;
}

std::vector<std::string> RipFixture::Processes() const {
  std::vector<std::string> found;
  const auto none = [&] {
    found.clear();
    std::error_code error;
    for (const auto& entry : fs::directory_iterator("/proc", error)) {
      const std::string name = entry.path().filename().string();
      if (name.find_first_not_of("0123456789") != std::string::npos) continue;
      if (name == std::to_string(getpid())) continue;
      const char state = ProcessState(entry.path());
      if (state == 'Z' || state == 'X' || !Concerns(entry.path(), m_Root)) continue;
      found.push_back(name + " " + test::ProcessFile(entry.path(), "comm"));
    }
    return found.empty();
  };
  // The guardian closes its pipes in the course of its end, so it may be seen for a moment more.
  static_cast<void>(test::WaitUntil(none));
  return found;
}

pages::PageInfo CheckedInfo(const std::string& pageDirectory) {
  const auto info = pages::ReadPageInfo(pageDirectory);
  if (!info) {
    ADD_FAILURE() << Describe(info.Error());
    return {};
  }
  for (const pages::PageFile& file : info->files) {
    const auto present = pages::DescribeFile(pageDirectory, file.name);
    if (!present) {
      ADD_FAILURE() << Describe(present.Error());
      continue;
    }
    EXPECT_EQ(present->bytes, file.bytes) << file.name;
    EXPECT_EQ(present->sum, file.sum) << file.name;
  }
  return *info;
}

bool HaveGhostscript() { return !interpreter::FindGhostscript().empty(); }

}  // namespace rastrel::corerast::testing
