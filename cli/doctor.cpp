#include "cli/doctor.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <system_error>

#include "cli/console/options.h"
#include "cli/console/shell_word.h"
#include "cli/input/xml_input.h"
#include "cli/installation/installation.h"
#include "cli/installation/job_directory.h"
#include "cli/installation/print_modes.h"
#include "cli/installation/printers.h"
#include "cli/installation/sweep.h"
#include "cli/printing/spool.h"
#include "cli/server_program.h"
#include "interpreter/interpreter.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/job/print_check.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/native_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/program_search.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/tree.h"
#include "rastrel/platform/os/trusted_file.h"
#include "rastrel/platform/standalone/data_root.h"
#include "spreadsheet/source.h"

namespace rastrel::cli {
namespace {

using State = HealthCheck::State;
using Checks = std::vector<HealthCheck>;

constexpr std::uintmax_t LittleSpace = std::uintmax_t{1} << 30;  // bytes
constexpr std::uintmax_t NoSpace = std::uintmax_t{32} << 20;     // bytes
constexpr std::chrono::hours LongPrint{1};
constexpr std::chrono::hours Day{24};
constexpr int DeepestFolder = 16;

const char* RestoreHint() {
  return "remove it and run `rastrel doctor` again, which puts the shipped one there; if it stays "
         "missing, install Rastrel anew";
}

void CheckInterpreter(Checks& checks) {
  const std::string program = interpreter::FindGhostscript();
  if (program.empty()) {
    checks.push_back({"ghostscript",
                      State::Bad,
                      "the program gs is not on the path",
                      {},
                      "install it: apt-get install ghostscript"});
    return;
  }
  const auto version = interpreter::TryGhostscript();
  if (!version) {
    checks.push_back({"ghostscript", State::Bad, "gs does not run: " + Describe(version.Error()),
                      program, "install it anew: apt-get install --reinstall ghostscript"});
    return;
  }
  checks.push_back({"ghostscript", State::Good, "version " + *version, program, {}});
}

// Walls that the kernel has, as text to follow others. Limits need nothing that it can lack.
std::string KernelWalls(const interpreter::MachineWalls& walls) {
  std::string text;
  if (walls.filesVersion > 0) {
    text += ", files (Landlock version " + std::to_string(walls.filesVersion) + ")";
  }
  if (walls.calls) text += ", system calls (seccomp)";
  return text;
}

// Around the interpreter.
void CheckWalls(Checks& checks) {
  const interpreter::MachineWalls walls = interpreter::WallsOfThisMachine();
  HealthCheck check{"walls", State::Good, "guardian, limits" + KernelWalls(walls), {}, {}};
  if (walls.filesVersion == 0 || !walls.calls) {
    check.state = State::Warning;
    check.text += std::string("; this kernel has none around ") + (walls.calls ? "files"
                                                                   : walls.filesVersion == 0
                                                                       ? "files and system calls"
                                                                       : "system calls");
    check.mend =
        "use a kernel of 5.13 or younger, with Landlock and seccomp switched on, and a container "
        "that permits them";
  }
  checks.push_back(check);
}

// The interpreter that is kept ready. All works without it.
void CheckWarm(Checks& checks) {
  HealthCheck check{"warm interpreter", State::Good, {}, {}, {}};
  switch (interpreter::StateOfWarm()) {
    case interpreter::WarmState::Ready: check.text = "small jobs may have one"; break;
    case interpreter::WarmState::Off: check.text = "switched off (RASTREL_WARM)"; break;
    case interpreter::WarmState::NoLibrary:
      check.text = "none: gs on the path is not the machine's own, so that each job starts it";
      break;
    case interpreter::WarmState::NoProgram:
      check.state = State::Warning;
      check.text = "the program rastrel-warm is missing in the data root; each job starts gs";
      check.mend = "install Rastrel anew, or set RASTREL_RESOURCES to where its programs are";
      break;
    case interpreter::WarmState::Closed:
      check.state = State::Warning;
      check.path = os::DataRoot() + "/warm";
      check.text = "its directory is missing, or not this user's alone; each job starts gs";
      check.mend = "remove the directory, and run `rastrel doctor` again";
      break;
  }
  checks.push_back(check);
}

// The program that reads and draws placed files. Only documents need it.
void CheckDrawing(Checks& checks) {
  const std::string programs = standalone::FindResources().programs;
  const std::string path = programs + "/rastrel-draw";
  HealthCheck check{"drawing", State::Good, {}, path, {}};
  if (programs.empty() || !os::IsProgram(path)) {
    check.state = State::Warning;
    check.text = "the program rastrel-draw, which draws placed files, is missing";
    check.mend = "install Rastrel anew, or set RASTREL_RESOURCES to where its programs are";
  } else {
    check.text = "rastrel-draw, its walls: limits" + KernelWalls(interpreter::WallsOfThisMachine());
  }
  checks.push_back(check);
}

// A reader of that name that is found before the installed one; empty if there is none.
std::string OtherPlaneReader(const std::string& programs) {
  const std::string beside = programs + "/cfplane.dll";
  return os::Exists(os::FromNative(beside)) ? beside : os::FindFileOnPath("cfplane.dll");
}

// The library that reads the pages of a conversion. Only conversions into a document need it.
void CheckPlaneReader(Checks& checks) {
  const std::string programs = standalone::FindResources().programs;
  HealthCheck check{"plane reader", State::Good, "libcfplane.so, installed", {}, {}};
  if (const std::string other = OtherPlaneReader(programs); !other.empty()) {
    check.path = other;
    check.text = "another one, cfplane.dll, which is found before the installed one";
    if (const auto trusted = os::CheckTrusted(other, os::DataRoot()); !trusted) {
      check.state = State::Warning;
      check.text = "not loaded: " + Describe(trusted.Error());
      check.mend = "take the right to write there from others (chmod), or remove the file";
    }
    checks.push_back(check);
    return;
  }
  for (const char* const place : {RASTREL_LIBRARIES_FROM_PROGRAMS, "../../lib"}) {
    check.path = programs + "/" + place + "/libcfplane.so";
    if (!programs.empty() && os::Exists(os::FromNative(check.path))) {
      checks.push_back(check);
      return;
    }
  }
  checks.push_back({"plane reader",
                    State::Warning,
                    "the library libcfplane.so, which reads the pages of conversions, is missing",
                    {},
                    "install Rastrel anew"});
}

void CheckShipped(Checks& checks) {
  const standalone::Resources shipped = standalone::FindResources();
  if (shipped.programs.empty() || shipped.files.empty()) {
    checks.push_back({"shipped files", State::Warning,
                      "the programs and files that ship with Rastrel are not beside it, so that "
                      "missing ones can't be put back",
                      os::ExecutablePath(), "install Rastrel anew, or set RASTREL_RESOURCES"});
    return;
  }
  checks.push_back({"shipped files", State::Good, "found", shipped.files, {}});
}

void CheckRoot(Checks& checks) {
  const auto laidOut = standalone::LayOutDataRoot();
  const std::string root = os::DataRoot();
  HealthCheck check{"data root", State::Good, "laid out", root, {}};
  if (const auto named = os::CheckForCommandLine(root); !named) {
    check.state = State::Bad;
    check.text = Describe(named.Error());
    check.mend = "set RASTREL_HOME to another directory";
  } else if (!laidOut) {
    check.state = State::Bad;
    check.text = Describe(laidOut.Error());
    check.mend = "make it writable, or set RASTREL_HOME to a directory that is";
  }
  checks.push_back(check);
}

void CheckWritable(Checks& checks) {
  for (const std::string& directory :
       {RipDirectory(), PagesDirectory(), SpoolDirectory(), JobsDirectory()}) {
    const std::string why = WhyNotWritable(directory);
    HealthCheck check{"writable", State::Good, "writable", directory, {}};
    if (!why.empty()) {
      check.state = State::Bad;
      check.text = why;
      check.mend = "give yourself the right to write there (chown, chmod), or set RASTREL_HOME";
    }
    checks.push_back(check);
  }
}

void CheckSpace(Checks& checks) {
  std::error_code error;
  const auto space = std::filesystem::space(os::DataRoot(), error);
  if (error) {
    checks.push_back(
        {"disk space", State::Warning, DescribeError(error.value()), os::DataRoot(), {}});
    return;
  }
  const std::string text = std::to_string(space.available >> 20) + " MiB free";
  const char* mend = "pages take space: make some, for instance with `rastrel spool remove`";
  const State state = space.available < NoSpace       ? State::Bad
                      : space.available < LittleSpace ? State::Warning
                                                      : State::Good;
  checks.push_back({"disk space", state, text, os::DataRoot(), state == State::Good ? "" : mend});
}

// Bound by `sheet` alone, and the next by all that reads XML, so that nothing else misses them.
void CheckZipLibrary(Checks& checks) {
  if (const auto support = spreadsheet::ZipSupport())
    checks.push_back({"libzip", State::Good, "found", {}, {}});
  else
    checks.push_back({"libzip", State::Warning, Describe(support.Error()), {}, {}});
}

void CheckXmlLibrary(Checks& checks) {
  if (const auto parser = CheckXmlParser())
    checks.push_back({"libxml2", State::Good, "found", {}, {}});
  else
    checks.push_back({"libxml2", State::Warning, Describe(parser.Error()), {}, {}});
}

void CheckProgram(Checks& checks, const char* name, const std::wstring& path) {
  const std::string native = os::ToNative(path);
  HealthCheck check{name, State::Good, "installed", native, {}};
  if (!os::Exists(path)) {
    check.state = State::Bad;
    check.text = "missing";
    check.mend = "install Rastrel anew, or set RASTREL_RESOURCES to where its programs are";
  } else if (!os::IsProgram(native)) {
    check.state = State::Bad;
    check.text = "not executable";
    check.mend = RestoreHint();
  }
  checks.push_back(check);
}

bool OthersMayEnter(const std::string& directory) {
  using std::filesystem::perms;
  std::error_code error;
  const auto state = std::filesystem::status(directory, error);
  return !error && (state.permissions() & (perms::group_all | perms::others_all)) != perms::none;
}

void CheckTrust(Checks& checks) {
  HealthCheck check{
      "trust", State::Good, "nobody else may change the programs and settings", os::DataRoot(), {}};
  if (const auto trusted = job::CheckTrustedParts(); !trusted) {
    check.state = State::Bad;
    check.text = Describe(trusted.Error());
    check.mend =
        "nothing is printed until only you may write there: see that it is what it was, or remove "
        "it (`rastrel doctor` puts shipped files back), and take the right from the others, for "
        "instance with chmod go-w";
  } else if (OthersMayEnter(os::DataRoot())) {
    check.state = State::Warning;
    check.text += ", but others may look into the data root";
    check.mend = "chmod 700 " + ShellWord(os::DataRoot()) + ", unless they are meant to";
  }
  checks.push_back(check);
}

// Names below a shipped folder of which the data root has none.
void FindMissing(const std::string& shipped, const std::string& present, int depth,
                 std::vector<std::string>& missing) {
  const auto names = os::ListDirectory(os::FromNative(shipped));
  if (!names || depth > DeepestFolder) return;
  for (const std::wstring& wide : *names) {
    const std::string name = os::Utf8FromWide(wide);
    const std::string source = shipped + "/" + name;
    const std::string target = present + "/" + name;
    if (os::IsDirectory(os::FromNative(source))) {
      FindMissing(source, target, depth + 1, missing);
    } else if (!os::Exists(os::FromNative(target))) {
      missing.push_back(target);
    }
  }
}

void CheckProlog(Checks& checks) {
  const std::string directory = RipDirectory() + "/System/prolog";
  const standalone::Resources shipped = standalone::FindResources();
  std::vector<std::string> missing;
  if (!shipped.files.empty())
    FindMissing(shipped.files + "/rip/System/prolog", directory, 0, missing);
  const auto names = os::ListDirectory(os::FromNative(directory));
  if (!missing.empty() || !names || names->empty()) {
    checks.push_back({"prolog", State::Bad, "missing",
                      missing.empty() ? directory : missing.front(), "install Rastrel anew"});
    return;
  }
  checks.push_back(
      {"prolog", State::Good, std::to_string(names->size()) + " files", directory, {}});
}

void CheckModes(Checks& checks) {
  const auto [modes, read] = ListModes();
  HealthCheck check{
      "print modes", State::Good, std::to_string(modes.size()) + " found", ModesDirectory(), {}};
  const bool hasDefault = std::ranges::any_of(
      modes, [](const PrintMode& mode) { return mode.folder + "/" + mode.name == DefaultMode; });
  if (!hasDefault) {
    check.state = modes.empty() ? State::Bad : State::Warning;
    check.text += ", but not '" + std::string(DefaultMode) + "', which is used where none is named";
    check.mend = "install Rastrel anew";
  }
  if (!read) {
    check.state = State::Bad;
    check.text += ", and not all can be read: " + Describe(read.Error());
    check.mend = "see to it that the directory can be read";
  }
  checks.push_back(check);
}

void CheckDevices(Checks& checks) {
  HealthCheck check{"printers", State::Good, {}, DevicesFile(), {}};
  if (const auto devices = ReadPrinters(); !devices) {
    check.state = State::Bad;
    check.text = Describe(devices.Error());
    check.mend = "mend that line, or remove the file: the shipped one comes back";
  } else {
    check.text = std::to_string(devices->size()) + " found";
    if (devices::FindDevice(*devices, DefaultPrinter) == nullptr) {
      check.state = State::Warning;
      check.text += ", but nothing takes '" + std::string(DefaultPrinter) + "'";
      check.mend = "add a section of that name, or one named *, to the file";
    }
  }
  checks.push_back(check);
}

void CheckTestPage(Checks& checks) {
  const std::string path = os::ToNative(L"C:\\tmp\\testpage.ps");
  const bool there = os::IsReadable(os::FromNative(path));
  checks.push_back({"test page", there ? State::Good : State::Warning, there ? "found" : "missing",
                    path, there ? "" : "install Rastrel anew"});
}

void AddLeftover(Checks& checks, const std::string& what, const std::string& path) {
  checks.push_back({"leftover", State::Warning, what, path, "remove it: rm -r " + ShellWord(path)});
}

// Runs of the RIP that nobody took the pages of. Emptied ones are the RIP's own to clear away.
void CheckPageLeftovers(Checks& checks) {
  std::error_code error;
  const auto now = std::filesystem::file_time_type::clock::now();
  for (std::filesystem::directory_iterator entry(PagesDirectory(), error), last;
       !error && entry != last; entry.increment(error)) {
    std::error_code ignored;
    const auto age = now - entry->last_write_time(ignored);
    if (entry->path().extension() == ".cfm") continue;  // listed with the spool
    if (ignored || age < LongPrint || std::filesystem::is_empty(entry->path(), ignored)) continue;
    AddLeftover(checks, "pages of a print that was cut off, or has taken over an hour",
                entry->path().string());
  }
}

// Copies that a conversion was made from. Its planes stay on purpose and are the document's.
void CheckConversionLeftovers(Checks& checks) {
  std::error_code error;
  const auto now = std::filesystem::file_time_type::clock::now();
  for (std::filesystem::directory_iterator entry(RipDirectory(), error), last;
       !error && entry != last; entry.increment(error)) {
    std::error_code ignored;
    const std::string name = entry->path().filename().string();
    if (!name.starts_with("vk") || !name.ends_with(".ps")) continue;
    if (now - entry->last_write_time(ignored) > Day && !ignored)
      AddLeftover(checks, "copy of a conversion that was cut off", entry->path().string());
  }
}

// Files that a killed process left, and that no start of a command removes.
void CheckLeftovers(Checks& checks) {
  const std::size_t before = checks.size();
  if (const auto names = os::ListDirectory(os::FromNative(JobsDirectory()))) {
    for (const std::wstring& wide : *names) {
      const std::string name = os::Utf8FromWide(wide);
      const unsigned process = ProcessOfJobDirectory(name);
      if (process != 0 && !os::CanOpenProcess(process))
        AddLeftover(checks, "working copy of a job whose process has ended",
                    JobsDirectory() + "/" + name);
    }
  }
  for (const SpoolEntry& entry : ListSpool())
    if (entry.state == SpoolState::Incomplete && !IsOwned(entry.directory))
      checks.push_back({"leftover", State::Warning, "incomplete job in the spool: " + entry.problem,
                        entry.directory,
                        "finish or remove it: rastrel spool repair " + ShellWord(entry.name)});
  CheckPageLeftovers(checks);
  CheckConversionLeftovers(checks);
  if (checks.size() == before) checks.push_back({"leftover", State::Good, "none", {}, {}});
}

}  // namespace

std::vector<HealthCheck> ExamineInstallation() {
  Checks checks;
  CheckShipped(checks);
  CheckRoot(checks);
  SweepLeftovers();
  CheckWritable(checks);
  CheckSpace(checks);
  CheckZipLibrary(checks);
  CheckXmlLibrary(checks);
  CheckInterpreter(checks);
  CheckWalls(checks);
  CheckWarm(checks);
  CheckDrawing(checks);
  CheckPlaneReader(checks);
  CheckProgram(checks, "RIP", CExePaths::Instance().m_RipExe);
  CheckProgram(checks, "output engine", CExePaths::Instance().m_OdalisExe);
  CheckProgram(checks, "queue program", CExePaths::Instance().m_QueueExe);
  CheckTrust(checks);
  CheckProlog(checks);
  CheckModes(checks);
  CheckDevices(checks);
  CheckTestPage(checks);
  CheckLeftovers(checks);
  return checks;
}

ExitStatus DoctorCommand(const Invocation& invocation) {
  const bool json = invocation.Has(OptionId::Json);
  const bool bad = WriteChecks(ExamineInstallation(), json);
  // The server's program writes its own, and ends as this command does.
  std::vector<std::string> arguments{"rastrel", "doctor"};
  if (json) arguments.emplace_back("--json");
  const auto server = AskServerProgram(arguments);
  bool serverBad = false;
  if (!server)
    serverBad =
        WriteChecks({{"server",
                      State::Bad,
                      Describe(server.Error()),
                      {},
                      "install Rastrel anew, or set RASTREL_RESOURCES to where its programs are"}},
                    json);
  else if (!*server)
    WriteChecks({{"server", State::Good, "not installed", {}, {}}}, json);
  return bad || serverBad || (server && *server && **server != ExitStatus::Done)
             ? ExitStatus::NotInstalled
             : ExitStatus::Done;
}

}  // namespace rastrel::cli
