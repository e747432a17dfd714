#include "interpreter/wall.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <functional>
#include <set>
#include <string>

#include "interpreter/ghostscript_files.h"
#include "interpreter/guarded_process.h"
#include "interpreter/guardian.h"
#include "interpreter/interpreter.h"
#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::interpreter {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool IsInstrumented = true;
#else
constexpr bool IsInstrumented = false;
#endif

// Runs a part in a forked process and returns its result, 0 to 255.
int ResultApart(const std::function<int()>& part) {
  const pid_t process = fork();
  if (process == 0) _exit(part());
  int status = 0;
  waitpid(process, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// The error number of an attempt to open it within the walls; 0 if that worked.
int OpenWithin(const WallRequest& request, const std::string& path, int flags) {
  auto wall = Wall::Build(request);
  if (!wall) return -1;
  return ResultApart([&] {
    wall->Enter();
    return open(path.c_str(), flags | O_CLOEXEC, 0600) >= 0 ? 0 : errno;
  });
}

bool HasFileWalls() { return WallsOfThisMachine().filesVersion > 0; }

TEST(Wall, opens_the_files_of_its_request_and_no_others) {
  if (!HasFileWalls()) GTEST_SKIP() << "this kernel has no Landlock";
  const test::ScratchDirectory directory;
  directory.Write("read/file", "x");
  directory.Write("write/file", "x");
  directory.Write("other", "x");
  WallRequest request;
  request.confined = true;
  request.paths = {{directory.Path("read"), WallAccess::Read},
                   {directory.Path("write"), WallAccess::Write},
                   {directory.Path("absent"), WallAccess::Write}};
  EXPECT_EQ(OpenWithin(request, directory.Path("read/file"), O_RDONLY), 0);
  EXPECT_EQ(OpenWithin(request, directory.Path("read/file"), O_WRONLY), EACCES);
  EXPECT_EQ(OpenWithin(request, directory.Path("read/new"), O_WRONLY | O_CREAT), EACCES);
  EXPECT_EQ(OpenWithin(request, directory.Path("write/file"), O_RDWR), 0);
  EXPECT_EQ(OpenWithin(request, directory.Path("write/new"), O_WRONLY | O_CREAT), 0);
  EXPECT_EQ(OpenWithin(request, directory.Path("other"), O_RDONLY), EACCES);
  EXPECT_EQ(OpenWithin(request, directory.Path("absent"), O_WRONLY | O_CREAT), EACCES);
}

TEST(Wall, takes_an_open_descriptor_for_a_path) {
  if (!HasFileWalls()) GTEST_SKIP() << "this kernel has no Landlock";
  const test::ScratchDirectory directory;
  directory.Write("file", "x");
  const int file = open(directory.Path("file").c_str(), O_RDONLY | O_CLOEXEC);
  WallRequest request;
  request.confined = true;
  request.paths = {{{}, WallAccess::Read, file}};
  EXPECT_EQ(OpenWithin(request, "/dev/fd/" + std::to_string(file), O_RDONLY), 0);
  EXPECT_EQ(OpenWithin(request, directory.Path("file"), O_RDONLY), 0);
  request.paths.clear();
  EXPECT_EQ(OpenWithin(request, "/dev/fd/" + std::to_string(file), O_RDONLY), EACCES);
  close(file);
}

// Their names lead through /dev/fd, and pipes are all that some jobs have.
TEST(Wall, lets_pipes_be_opened_again) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  WallRequest request;
  request.confined = true;
  request.paths = {{{}, WallAccess::Read, ends[0]}};
  EXPECT_EQ(OpenWithin(request, "/dev/fd/" + std::to_string(ends[1]), O_WRONLY), 0);
  close(ends[0]);
  close(ends[1]);
}

TEST(Wall, of_a_request_without_values_is_none) {
  EXPECT_EQ(OpenWithin({}, "/etc/passwd", O_RDONLY), 0);
}

// Its rules of files permit every program, as a kernel without such rules does.
WallRequest EveryFile(WallPrograms programs) {
  WallRequest request;
  request.confined = true;
  request.programs = programs;
  request.paths = {{"/", WallAccess::Execute}};
  return request;
}

// 0 if the program was executed and succeeded, else the error number of the exec.
int ExecWithin(const WallRequest& request) {
  auto wall = Wall::Build(request);
  if (!wall) return -1;
  return ResultApart([&] {
    wall->Enter();
    execl("/bin/true", "true", static_cast<char*>(nullptr));
    return errno;
  });
}

TEST(Wall, executes_programs_only_where_its_request_permits_any) {
  if (!WallsOfThisMachine().calls) GTEST_SKIP() << "this kernel filters no calls";
  EXPECT_EQ(ExecWithin(EveryFile(WallPrograms::Any)), 0);
  EXPECT_EQ(ExecWithin(EveryFile(WallPrograms::None)), EPERM);
}

// Whether the kernel lets this process have a listener: an older one has none, and a container may
// have taken the one that there can be.
bool HasListeners() {
  auto wall = Wall::Build(EveryFile(WallPrograms::One));
  return wall && ResultApart([&] { return wall->Enter() >= 0 ? 1 : 0; }) == 1;
}

// The interpreter's start, with rules of files that stop nothing.
std::string ReachWithin(WallPrograms programs) {
  auto guardian = Guardian::Start(HeldStreams::None);
  if (!guardian) return Describe(guardian.Error());
  int ends[2];
  if (pipe(ends) != 0) return "no pipe";
  ProcessRequest request;
  request.executable = RASTREL_TEST_CHILDREN "/reach";
  request.arguments = {"reach"};
  request.descriptors = {-1, -1, ends[1]};
  request.wall = EveryFile(programs);
  auto process = GuardedProcess::Start(request, *guardian);
  close(ends[1]);
  std::string text = process ? "" : Describe(process.Error());
  char buffer[4096];
  for (ssize_t count = 0; (count = read(ends[0], buffer, sizeof buffer)) > 0;)
    text.append(buffer, static_cast<std::size_t>(count));
  close(ends[0]);
  return text + " ";
}

TEST(Wall, of_one_program_executes_no_second_one_even_where_files_are_no_wall) {
  if (!HasListeners()) GTEST_SKIP() << "this kernel has no listeners";
  std::string reach = ReachWithin(WallPrograms::One);
  EXPECT_NE(reach.find(" run=ENOSYS "), std::string::npos) << reach;
  reach = ReachWithin(WallPrograms::Any);
  EXPECT_NE(reach.find(" run=done "), std::string::npos) << reach;
}

TEST(Wall, of_one_program_leaves_the_error_of_its_exec_alone) {
  auto guardian = Guardian::Start(HeldStreams::None);
  ASSERT_TRUE(guardian);
  ProcessRequest request;
  request.executable = "/no/such/program";
  request.arguments = {"program"};
  request.wall = EveryFile(WallPrograms::One);
  const auto process = GuardedProcess::Start(request, *guardian);
  ASSERT_FALSE(process);
  EXPECT_EQ(process.Error().error, ENOENT) << Describe(process.Error());
}

TEST(Wall, limits_memory) {
  if (IsInstrumented) GTEST_SKIP() << "instrumented programs take more address space";
  WallRequest request;
  request.memoryBytes = std::uint64_t{1} << 30;
  auto wall = Wall::Build(request);
  ASSERT_TRUE(wall);
  EXPECT_EQ(ResultApart([&] {
              wall->Enter();
              rlimit limit{};
              getrlimit(RLIMIT_AS, &limit);
              return limit.rlim_cur == std::uint64_t{1} << 30 ? 7 : 8;
            }),
            7);
}

// A program in the interpreter's place that was taken over by a job, so to speak.
class InterpreterInWalls : public testing::Test {
 protected:
  void SetUp() override {
    if (IsInstrumented) GTEST_SKIP() << "instrumented programs take more address space";
    m_Home.Write("there", "secret");
    std::filesystem::copy(RASTREL_TEST_CHILDREN "/reach", m_Programs.Path("gs"));
    const test::EnvironmentGuard path("PATH", m_Programs.Path() + ":/usr/bin:/bin");
    const test::EnvironmentGuard home("HOME", m_Home.Path());
    const auto converted = PdfFromEps("%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 9 9\n");
    ASSERT_FALSE(converted);
    m_Reach = Describe(converted.Error()) + " ";
  }

  [[nodiscard]] bool Has(const std::string& attempt) const {
    return m_Reach.find(" " + attempt + " ") != std::string::npos;
  }

  test::ScratchDirectory m_Home;
  test::ScratchDirectory m_Programs;
  std::string m_Reach;
};

TEST_F(InterpreterInWalls, reaches_its_own_files_alone) {
  if (!HasFileWalls()) GTEST_SKIP() << "this kernel has no Landlock";
  for (const char* const attempt : {"read-passwd", "read-there", "write-there", "remove-there",
                                    "make-outside", "make-directory", "link"}) {
    EXPECT_TRUE(Has(std::string(attempt) + "=EACCES")) << attempt << " in " << m_Reach;
  }
  EXPECT_FALSE(Has("empty-there=done")) << m_Reach;
  EXPECT_FALSE(Has("move-own=done")) << m_Reach;
  EXPECT_TRUE(Has("make-own=done")) << m_Reach;
  EXPECT_EQ(m_Home.Read("there"), "secret");
  EXPECT_FALSE(m_Home.Has("made"));
}

TEST_F(InterpreterInWalls, reaches_no_socket_and_no_other_process) {
  if (!WallsOfThisMachine().calls) GTEST_SKIP() << "this kernel filters no calls";
  for (const char* const attempt :
       {"open-up-there", "socket", "local-socket", "trace", "signal", "namespace", "mount"}) {
    EXPECT_TRUE(Has(std::string(attempt) + "=EPERM")) << attempt << " in " << m_Reach;
  }
  EXPECT_TRUE(Has("own-signal=done")) << m_Reach;
}

// Refused by the filter before the rules of files are asked: so without these as well.
TEST_F(InterpreterInWalls, executes_no_program_besides_its_own) {
  if (!HasListeners()) GTEST_SKIP() << "this kernel has no listeners";
  EXPECT_TRUE(Has("run=ENOSYS")) << m_Reach;
}

TEST_F(InterpreterInWalls, has_a_limit_of_memory) {
  EXPECT_TRUE(Has("memory-limit=done")) << m_Reach;
}

TEST(GhostscriptFiles, have_the_directories_that_font_settings_name) {
  const test::ScratchDirectory home;
  home.Write("config/fontconfig/fonts.conf",
             "<fontconfig><dir>/srv/fonts</dir><dir prefix=\"default\">~/mine</dir>"
             "<dir prefix=\"xdg\">fonts</dir><dir>/</dir></fontconfig>");
  home.Write("config/fontconfig/conf.d/10-more.conf", "<dir>/srv/more</dir><dir>/cut");
  const test::EnvironmentGuard name("HOME", home.Path());
  const test::EnvironmentGuard config("XDG_CONFIG_HOME", home.Path("config"));
  std::set<std::string> read;
  for (const WallPath& file : GhostscriptFiles("/usr/bin/gs")) {
    if (file.access == WallAccess::Read) read.insert(file.path);
  }
  for (const std::string& path : {std::string("/srv/fonts"), home.Path("mine"),
                                  std::string("/srv/more"), home.Path("config/fontconfig")}) {
    EXPECT_TRUE(read.contains(path)) << path;
  }
  for (const char* const path : {"/", "/cut", "fonts", "/home"}) {
    EXPECT_FALSE(read.contains(path)) << path;
  }
  EXPECT_FALSE(read.contains(home.Path()));
}

// A machine's own wrapper around the interpreter is a script, which starts programs.
TEST(ScriptInWalls, may_start_the_machines_programs) {
  const test::ScratchDirectory directory;
  directory.Write("gs", "#!/bin/sh\necho \"Error: $(cat /etc/passwd | wc -c)\" >&2\nexit 3\n");
  std::filesystem::permissions(directory.Path("gs"), std::filesystem::perms::owner_all);
  const test::EnvironmentGuard path("PATH", directory.Path() + ":/usr/bin:/bin");
  const auto converted = PdfFromEps("%!PS-Adobe-3.0 EPSF-3.0\n");
  ASSERT_FALSE(converted);
  const std::string text = Describe(converted.Error());
  if (HasFileWalls()) {
    EXPECT_EQ(text, "the interpreter ended with 3: Error: 0");
  } else {
    EXPECT_TRUE(text.starts_with("the interpreter ended with 3: Error: ")) << text;
  }
}

}  // namespace
}  // namespace rastrel::interpreter
