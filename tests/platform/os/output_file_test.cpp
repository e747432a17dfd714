#include "rastrel/platform/os/output_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/system_calls.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::test {
namespace {

namespace fs = std::filesystem;
using os::Existing;
using os::OutputFile;

// Two places, of which the second is on another file system where there is one.
class OutputFileTest : public ::testing::Test {
 protected:
  static std::vector<std::string> NamesIn(const std::string& directory) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory))
      names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
  }
  using Names = std::vector<std::string>;
  // Makes a file of one content.
  static Expected<void> Make(const std::string& target, Existing existing,
                             std::string_view content) {
    auto file = OutputFile::Create(target, existing);
    if (!file) return file.Error();
    if (auto written = file->Write(content); !written) return written;
    return file->Commit();
  }
  static int ErrorOf(const Expected<void>& result) { return result ? 0 : result.Error().error; }

  ScratchDirectory m_Place;
  MemoryScratchDirectory m_Other;
};

TEST_F(OutputFileTest, has_a_hidden_name_until_it_is_committed) {
  m_Place.Write("out", "old");
  {
    auto file = OutputFile::Create(m_Place.Path("out"), Existing::Followed);
    ASSERT_TRUE(file);
    ASSERT_TRUE(file->Write("new"));
    EXPECT_EQ(m_Place.Read("out"), "old");
    const Names names = NamesIn(m_Place.Path());
    ASSERT_EQ(names.size(), 2U);
    EXPECT_TRUE(names[0].starts_with(".rastrel-") && names[0].ends_with(".tmp")) << names[0];
    ASSERT_TRUE(file->Commit());
    EXPECT_EQ(m_Place.Read("out"), "new");
  }
  EXPECT_EQ(NamesIn(m_Place.Path()), Names({"out"}));
}

TEST_F(OutputFileTest, without_a_commit_all_is_as_it_was) {
  m_Place.Write("out", "old");
  for (const char* name : {"out", "other"}) {
    auto file = OutputFile::Create(m_Place.Path(name), Existing::Followed);
    ASSERT_TRUE(file && file->Write("new"));
  }
  EXPECT_EQ(NamesIn(m_Place.Path()), Names({"out"}));
  EXPECT_EQ(m_Place.Read("out"), "old");
}

TEST_F(OutputFileTest, a_name_that_is_taken_is_refused_whatever_has_it) {
  m_Place.Write("file", "kept");
  fs::create_directory(m_Place.Path("folder"));
  fs::create_symlink("nowhere", m_Place.Path("link"));
  for (const char* name : {"file", "folder", "link"}) {
    const auto made = Make(m_Place.Path(name), Existing::Refused, "new");
    EXPECT_EQ(ErrorOf(made), EEXIST) << name;
    EXPECT_EQ(ErrorOf(os::CheckPlace(m_Place.Path(name), Existing::Refused)), EEXIST) << name;
  }
  EXPECT_EQ(m_Place.Read("file"), "kept");
  EXPECT_EQ(NamesIn(m_Place.Path()), Names({"file", "folder", "link"}));
}

TEST_F(OutputFileTest, a_name_that_is_taken_before_the_commit_is_refused_then) {
  auto file = OutputFile::Create(m_Place.Path("out"), Existing::Refused);
  ASSERT_TRUE(file && file->Write("new"));
  m_Place.Write("out", "another's");
  EXPECT_EQ(ErrorOf(file->Commit()), EEXIST);
  EXPECT_EQ(m_Place.Read("out"), "another's");
}

TEST_F(OutputFileTest, a_link_is_replaced_itself_or_followed_to_its_end) {
  m_Other.Write("end", "old");
  fs::create_symlink(m_Other.Path("end"), m_Place.Path("link"));
  ASSERT_TRUE(Make(m_Place.Path("link"), Existing::Followed, "new"));
  EXPECT_TRUE(fs::is_symlink(m_Place.Path("link")));
  EXPECT_EQ(m_Other.Read("end"), "new");
  ASSERT_TRUE(Make(m_Place.Path("link"), Existing::Replaced, "newer"));
  EXPECT_FALSE(fs::is_symlink(m_Place.Path("link")));
  EXPECT_EQ(m_Other.Read("end"), "new");
  EXPECT_EQ(m_Place.Read("link"), "newer");
}

TEST_F(OutputFileTest, a_replaced_file_gives_its_permissions) {
  m_Place.Write("out", "old");
  ASSERT_EQ(::chmod(m_Place.Path("out").c_str(), 0640), 0);
  ASSERT_TRUE(Make(m_Place.Path("out"), Existing::Replaced, "new"));
  struct stat state {};
  ASSERT_EQ(::stat(m_Place.Path("out").c_str(), &state), 0);
  EXPECT_EQ(state.st_mode & 07777U, 0640U);
}

TEST_F(OutputFileTest, a_directory_is_not_replaced_by_a_file) {
  fs::create_directory(m_Place.Path("folder"));
  for (const Existing existing : {Existing::Replaced, Existing::Followed})
    EXPECT_EQ(ErrorOf(Make(m_Place.Path("folder"), existing, "new")), EISDIR);
  EXPECT_EQ(ErrorOf(Make(m_Place.Path("none/out"), Existing::Followed, "new")), ENOENT);
  m_Place.Write("file", "");
  EXPECT_EQ(ErrorOf(Make(m_Place.Path("file/out"), Existing::Followed, "new")), ENOTDIR);
  EXPECT_EQ(NamesIn(m_Place.Path()), Names({"file", "folder"}));
}

TEST_F(OutputFileTest, a_disk_that_is_full_leaves_the_old_file) {
  m_Place.Write("out", "old");
  const os::SystemCallsGuard calls;
  os::Calls().write = [](int, const void*, std::size_t) -> ssize_t {
    errno = ENOSPC;
    return -1;
  };
  const auto made = Make(m_Place.Path("out"), Existing::Followed, "new");
  EXPECT_EQ(ErrorOf(made), ENOSPC);
  EXPECT_EQ(made.Error().where, m_Place.Path("out")) << "never the hidden name";
  EXPECT_EQ(m_Place.Read("out"), "old");
  EXPECT_EQ(NamesIn(m_Place.Path()), Names({"out"}));
}

TEST_F(OutputFileTest, an_open_stream_is_written_to_directly) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  ASSERT_TRUE(Make("/dev/fd/" + std::to_string(ends[1]), Existing::Followed, "through"));
  ::close(ends[1]);
  char bytes[16];
  EXPECT_EQ(std::string(bytes, ::read(ends[0], bytes, sizeof bytes)), "through");
  ::close(ends[0]);
  EXPECT_TRUE(Make("/dev/null", Existing::Followed, "x"));
}

TEST_F(OutputFileTest, a_finished_file_or_directory_is_taken_on_any_file_system) {
  for (const ScratchDirectory* place : {&m_Place, static_cast<ScratchDirectory*>(&m_Other)}) {
    const ScratchDirectory source;
    source.Write("file", "picture");
    source.Write("pages.cfm/.info", "info");
    source.Write("pages.cfm/p0002/plane", "plane");
    std::vector<OutputFile> files;
    for (const char* name : {"file", "pages.cfm"}) {
      auto taken = OutputFile::Take(source.Path(name), place->Path(name), Existing::Refused);
      ASSERT_TRUE(taken) << Describe(taken.Error());
      files.push_back(*std::move(taken));
    }
    ASSERT_TRUE(OutputFile::CommitAll(files));
    EXPECT_EQ(place->Read("file"), "picture");
    EXPECT_EQ(place->Read("pages.cfm/.info"), "info");
    EXPECT_EQ(place->Read("pages.cfm/p0002/plane"), "plane");
    EXPECT_EQ(NamesIn(place->Path()), Names({"file", "pages.cfm"}));
  }
}

TEST_F(OutputFileTest, a_taken_directory_keeps_its_permissions_on_any_file_system) {
  for (const ScratchDirectory* place : {&m_Place, static_cast<ScratchDirectory*>(&m_Other)}) {
    const ScratchDirectory source;
    source.Write("pages.cfm/p0001/plane", "plane");
    fs::permissions(source.Path("pages.cfm"), fs::perms(0750));
    fs::permissions(source.Path("pages.cfm/p0001"), fs::perms(0700));
    auto taken =
        OutputFile::Take(source.Path("pages.cfm"), place->Path("pages.cfm"), Existing::Refused);
    ASSERT_TRUE(taken) << Describe(taken.Error());
    ASSERT_TRUE(taken->Commit());
    EXPECT_EQ(fs::status(place->Path("pages.cfm")).permissions(), fs::perms(0750));
    EXPECT_EQ(fs::status(place->Path("pages.cfm/p0001")).permissions(), fs::perms(0700));
  }
}

TEST_F(OutputFileTest, a_directory_is_replaced_as_a_whole_and_no_link_is_followed) {
  m_Other.Write("elsewhere/kept", "kept");
  m_Place.Write("pages.cfm/mine", "old");
  fs::create_symlink(m_Other.Path("elsewhere"), m_Place.Path("pages.cfm/link"));
  fs::create_symlink(m_Other.Path("elsewhere"), m_Place.Path("linked.cfm"));
  for (const char* name : {"pages.cfm", "linked.cfm"}) {
    const ScratchDirectory source;
    source.Write("new/page", "new");
    auto taken = OutputFile::Take(source.Path("new"), m_Place.Path(name), Existing::Replaced);
    ASSERT_TRUE(taken) << Describe(taken.Error());
    const auto committed = taken->Commit();
    ASSERT_TRUE(committed) << Describe(committed.Error());
    EXPECT_EQ(NamesIn(m_Place.Path(name)), Names({"page"})) << "nothing is merged";
  }
  EXPECT_EQ(m_Other.Read("elsewhere/kept"), "kept");
  EXPECT_EQ(NamesIn(m_Place.Path()), Names({"linked.cfm", "pages.cfm"}));
}

TEST_F(OutputFileTest, of_several_all_are_named_or_none_and_what_was_replaced_comes_back) {
  const ScratchDirectory source;
  m_Place.Write("a", "old a");
  m_Place.Write("b.cfm/page", "old b");
  std::vector<OutputFile> files;
  for (const char* name : {"a", "b.cfm", "c", "d"}) {
    source.Write(std::string(name).ends_with(".cfm") ? std::string(name) + "/page" : name, "new");
    const Existing existing = *name == 'd' ? Existing::Refused : Existing::Replaced;
    auto taken = OutputFile::Take(source.Path(name), m_Place.Path(name), existing);
    ASSERT_TRUE(taken) << Describe(taken.Error());
    files.push_back(*std::move(taken));
  }
  m_Place.Write("d", "came meanwhile");
  EXPECT_EQ(ErrorOf(OutputFile::CommitAll(files)), EEXIST);
  files.clear();
  EXPECT_EQ(m_Place.Read("a"), "old a");
  EXPECT_EQ(m_Place.Read("b.cfm/page"), "old b");
  EXPECT_EQ(m_Place.Read("d"), "came meanwhile");
  EXPECT_EQ(NamesIn(m_Place.Path()), Names({"a", "b.cfm", "d"}));
  EXPECT_EQ(NamesIn(source.Path()), Names({"a", "b.cfm", "c", "d"})) << "back where they came from";
}

TEST_F(OutputFileTest, the_next_one_removes_the_leftovers_of_killed_processes) {
  m_Other.Write("kept/mine", "kept");
  const pid_t child = ::fork();
  if (child == 0) {
    const std::string file = m_Place.Path(os::OwnTemporaryName());
    const std::string folder = m_Place.Path(os::OwnTemporaryName());
    m_Place.Write(fs::path(file).filename().string(), "half");
    m_Place.Write(fs::path(folder).filename().string() + "/half", "half");
    fs::create_symlink(m_Other.Path("kept"), folder + "/link");
    ::kill(::getpid(), SIGKILL);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  m_Place.Write(".rastrel-notes.tmp", "the user's");
  auto open = OutputFile::Create(m_Place.Path("open"), Existing::Refused);
  ASSERT_TRUE(open);
  ASSERT_EQ(NamesIn(m_Place.Path()).size(), 4U);
  ASSERT_TRUE(Make(m_Place.Path("out"), Existing::Refused, "new"));
  EXPECT_EQ(NamesIn(m_Place.Path()).size(), 3U) << "the open one of this process stays";
  ASSERT_TRUE(open->Commit());
  EXPECT_EQ(NamesIn(m_Place.Path()), Names({".rastrel-notes.tmp", "open", "out"}));
  EXPECT_EQ(m_Other.Read("kept/mine"), "kept");
}

TEST_F(OutputFileTest, takes_no_link) {
  m_Place.Write("secret", "x");
  fs::create_symlink(m_Place.Path("secret"), m_Place.Path("result"));
  const auto taken =
      OutputFile::Take(m_Place.Path("result"), m_Other.Path("out"), Existing::Refused);
  ASSERT_FALSE(taken);
  EXPECT_EQ(taken.Error().error, EINVAL);
}

}  // namespace
}  // namespace rastrel::test
