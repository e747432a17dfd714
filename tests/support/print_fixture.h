#pragma once

#include <dirent.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "rastrel/printing/printing_thread.h"
#include "tests/support/job_code_names.h"
#include "tests/support/left_children.h"
#include "tests/support/library_fixture.h"
#include "tests/support/open_descriptors.h"
#include "tests/support/threads.h"
#include "tests/support/transcript.h"

namespace rastrel::test {

/// A RIP that renders two pages, A and B, into the data root's folder `pages` and ends well.
inline constexpr const char* GoodRip = R"(pages="$RASTREL_HOME/pages"
mkdir -p "$pages/A" "$pages/B"
printf a > "$pages/A/pixels"
printf b > "$pages/B/pixels"
printf 'begin := once\nid := p1\ndir := %s/\ntitle := A\nend\n' "$pages"
printf 'begin := once\nid := p2\ndir := %s/\ntitle := B\nend\n' "$pages"
)";
/// An output engine that keeps its input in the data root's file `engine.input` and ends well.
inline constexpr const char* GoodEngine = "cat > \"$RASTREL_HOME/engine.input\"\n";
/// For a script: becomes a program that runs until it is ended.
inline constexpr const char* Hang = "exec sleep 1000\n";

/// A test that prints the job `job/sign.ps` of a data root of its own with children that are shell
/// scripts.
class PrintTest : public LibraryTest {
 protected:
  PrintTest() {
    const ScratchDirectory& root = Root();
    for (const char* folder :
         {"Queue/rip/System/c-out", "Queue/rip/System/pmodes", "Queue/rip/CFM"})
      std::filesystem::create_directories(root.Path(folder));
    root.Write("job/sign.ps", "%!PS\nshowpage\n");
    Rip(GoodRip);
    Engine(GoodEngine);
    m_Ticket.SetJobFile(root.Wide("job/sign.ps"));
    m_Ticket.m_JobName = L"Sign";
  }

  [[nodiscard]] const ScratchDirectory& Root() const { return m_Library.Directory(); }
  /// Library path of the RIP directory's parts, in UTF-8, as the library forms it.
  [[nodiscard]] std::string SpoolDirectory() const {
    return Root().Path() + "/Queue\\rip\\CFM\\sign.cfm";
  }

  void Rip(const std::string& body) { Script("Queue/rip/corerast.exe", body); }
  void Engine(const std::string& body) { Script("Queue/rip/coreodalis.exe", body); }
  void Script(const std::string& name, const std::string& body) {
    std::filesystem::remove(Root().Path(name));  // a running one is replaced, never written to
    Root().Write(name, "#!/bin/sh\n" + body);
    MakeExecutable(name);
  }
  /// Puts one of the programs of tests/support/children there.
  void Program(const std::string& name, const char* program) {
    std::filesystem::remove(Root().Path(name));
    std::filesystem::copy_file(std::string(RASTREL_TEST_CHILDREN) + "/" + program,
                               Root().Path(name));
    MakeExecutable(name);
  }
  void MakeExecutable(const std::string& name) {
    std::filesystem::permissions(Root().Path(name), std::filesystem::perms::owner_all);
  }

  /// Gives the ticket pages that are on disk: `kept/A` and `kept/B`.
  void GivePages() {
    for (const char* title : {"A", "B"}) {
      Root().Write(std::string("kept/") + title + "/pixels", title);
      m_Ticket.m_CFMFile.AddEntry(Root().Wide("kept") + L"/",
                                  std::wstring(1, *title == 'A' ? L'A' : L'B'));
    }
  }
  void RequestSpool() {
    m_Ticket.m_JobData.SpoolRequested = true;
    m_Ticket.m_JobData.SpoolAllowed = true;
  }
  void KeepFiles() { Root().Write("settings.ini", "[RASTREL]\nKeep PS Files = 1\n"); }

  /// Prints the ticket to its end.
  void Print() {
    m_Mark = m_Library.LogMark();
    ASSERT_TRUE(m_Ticket.PrintJob());
    ASSERT_TRUE(m_Ticket.EndPrint());
  }
  void Abort() { m_Ticket.GetPrintThread()->Abort(); }
  /// Aborts the next print when the transcript gets that line.
  void AbortAt(const std::string& line) {
    m_Ticket.m_Told.Listen([this, line](const std::string& told) {
      if (told == line) Abort();
    });
  }
  /// The last Print's entries in the application log, an entry a line; the line end that some
  /// entries have shows as "|".
  [[nodiscard]] Lines Logged() const {
    Lines entries;
    std::string log = m_Library.Log().substr(m_Mark);
    for (std::size_t at = 0; at < log.size();) {
      if (const std::size_t head = LibraryRoot::HeadLength(std::string_view(log).substr(at));
          head > 0) {
        entries.emplace_back();
        at += head;
        continue;
      }
      if (log[at] != '\r') entries.back() += log[at] == '\n' ? '|' : log[at];
      ++at;
    }
    return entries;
  }
  [[nodiscard]] bool HasLogged(const std::string& entry) const {
    const Lines entries = Logged();
    return std::find(entries.begin(), entries.end(), entry) != entries.end();
  }
  /// Status and error of the ticket, as "holding: aborted".
  [[nodiscard]] std::string End() const {
    return NameOfCode(StatusNames, m_Ticket.m_Status.Load()) + ": " +
           NameOfCode(ErrorNames, m_Ticket.m_Error.Load());
  }
  /// The printing thread's and children's errors: codes as "rip: rip status 2", and texts as
  /// "\"Out of memory\" rip".
  [[nodiscard]] Lines Errors() const { return ErrorsIn(m_Ticket.m_Told.All()); }
  /// The same of some lines of the transcript.
  [[nodiscard]] static Lines ErrorsIn(const Lines& told) {
    constexpr std::string_view beginning = "Error ";
    Lines errors;
    for (const std::string& line : told) {
      if (!line.starts_with(beginning)) continue;
      std::string error = line.substr(beginning.size());
      if (!error.starts_with('"')) {
        const std::string originator = error.substr(error.find(' ') + 1);
        error = originator + ": " + NameOfCode(ErrorNames, std::stoi(error));
      }
      errors.push_back(std::move(error));
    }
    return errors;
  }
  /// Everything below a folder of the data root, sorted, directories with a slash.
  [[nodiscard]] Lines Tree(const std::string& folder) const {
    Lines names;
    std::error_code ignored;
    for (const auto& entry :
         std::filesystem::recursive_directory_iterator(Root().Path(folder), ignored)) {
      names.push_back(std::filesystem::relative(entry.path(), Root().Path(folder)).string() +
                      (entry.is_directory() ? "/" : ""));
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  RecordingTicket m_Ticket;
  std::size_t m_Mark = 0;
};

}  // namespace rastrel::test
