// Previews: where their files go, and the pictures that the shipped programs make of a page.

#include <gtest/gtest.h>

#include <signal.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "cli/printing/preview_files.h"
#include "tests/cli/command_runner.h"
#include "tests/support/wait_until.h"

namespace rastrel::test {
namespace {

namespace fs = std::filesystem;
using cli::JobEvent;
using cli::JobEventKind;
using cli::PreviewFiles;
using Names = std::vector<std::string>;

JobEvent Output(const std::string& path) {
  JobEvent event;
  event.kind = JobEventKind::Output;
  event.path = path;
  return event;
}

TEST(PreviewFiles, the_first_page_has_the_name_and_others_a_number_or_plane) {
  const PreviewFiles files("a.b/out.png", "sign-1", "/x/held");
  EXPECT_EQ(files.NameFor("/x/sign-1-1.png"), "a.b/out.png");
  EXPECT_EQ(files.NameFor("/x/sign-1-2.png"), "a.b/out-2.png");
  EXPECT_EQ(files.NameFor("/x/sign-1-12.png"), "a.b/out-12.png");
  EXPECT_EQ(files.NameFor("/x/sign-1-1-Cyan.png"), "a.b/out-Cyan.png");
  EXPECT_EQ(files.NameFor("/x/sign-1-2-Cyan.png"), "a.b/out-2-Cyan.png");
  EXPECT_EQ(files.NameFor("/x/other.png"), "a.b/out-other.png");
}

// Files of an engine on their way to a directory of the user's.
class PreviewFilesTest : public ::testing::Test {
 protected:
  // A file that the engine made.
  bool Hold(const std::string& name, const std::string& content) {
    m_Engine.Write(name, content);
    JobEvent event = Output(m_Engine.Path(name));
    return m_Files.Hold(event);
  }
  ScratchDirectory m_Engine;
  ScratchDirectory m_Place;
  PreviewFiles m_Files{m_Place.Path("out.tif"), "job", m_Engine.Path("held")};
};

TEST_F(PreviewFilesTest, appear_together_and_none_of_a_run_is_written_over_another) {
  EXPECT_TRUE(Hold("job-1.tif", "first"));
  EXPECT_TRUE(Hold("job-1.tif", "again"));
  EXPECT_FALSE(m_Place.Has("out.tif")) << "before the run has ended";
  ASSERT_TRUE(m_Files.Deliver(os::Existing::Followed, os::Existing::Refused));
  EXPECT_EQ(m_Place.Read("out.tif"), "first");
  EXPECT_EQ(m_Place.Read("out-2.tif"), "again");
  EXPECT_EQ(m_Files.Names(), Names({m_Place.Path("out.tif"), m_Place.Path("out-2.tif")}));
  EXPECT_EQ(m_Files.Fault(), "");
}

TEST_F(PreviewFilesTest, a_name_that_the_user_gave_is_replaced_and_another_only_if_asked) {
  m_Place.Write("out.tif", "old");
  m_Place.Write("out-2.tif", "mine");
  EXPECT_TRUE(Hold("job-1.tif", "1") && Hold("job-2.tif", "2") && Hold("job-3.tif", "3"));
  const auto refused = m_Files.Deliver(os::Existing::Followed, os::Existing::Refused);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.Error().where, m_Place.Path("out-2.tif"));
  EXPECT_EQ(m_Place.Read("out.tif"), "old") << "nothing is written";
  EXPECT_EQ(m_Place.Read("out-2.tif"), "mine");
  EXPECT_FALSE(m_Place.Has("out-3.tif"));
  ASSERT_TRUE(m_Files.Deliver(os::Existing::Followed, os::Existing::Replaced));
  EXPECT_EQ(m_Place.Read("out.tif") + m_Place.Read("out-2.tif") + m_Place.Read("out-3.tif"), "123");
}

TEST_F(PreviewFilesTest, one_that_can_not_be_held_is_a_line_of_the_log) {
  JobEvent event = Output(m_Engine.Path("none.tif"));
  EXPECT_FALSE(m_Files.Hold(event));
  EXPECT_EQ(event.kind, JobEventKind::Log);
  EXPECT_NE(m_Files.Fault().find("out-none.tif"), std::string::npos) << m_Files.Fault();
  EXPECT_EQ(event.text, m_Files.Fault());
  EXPECT_TRUE(m_Files.Names().empty());
}

TEST_F(PreviewFilesTest, other_events_stay) {
  JobEvent event = Output("/x/job-1.tif");
  event.kind = JobEventKind::Warning;
  EXPECT_FALSE(m_Files.Hold(event));
  EXPECT_EQ(event.path, "/x/job-1.tif");
}

// A RIP of one page, and an engine that delivers two files.
class PreviewTest : public ::testing::Test {
 protected:
  PreviewTest() {
    m_Command.WriteUsualChildren();
    m_Command.WriteOdalis(
        "cat >/dev/null\nfor n in 1 2; do f=\"$RASTREL_OUTPUT/job-$n.tif\"; echo $n >\"$f\"; "
        "echo \"OUTPUT: $f\" >&2; done\n");
    m_Command.Place().Write("job.ps", "%!PS\nshowpage\n");
  }
  CommandRunner m_Command{CommandRunner::Children::None};
};

TEST_F(PreviewTest, its_files_have_the_name_that_was_given_and_nothing_else_is_left) {
  m_Command.Place().Write("out.tif", "old");
  const CommandResult result = m_Command.Run({"preview", "job.ps", "-o", "out.tif"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.Lines(), Names({"out.tif", "out-2.tif"}));
  EXPECT_EQ(m_Command.Place().Read("out.tif"), "1\n");
  EXPECT_EQ(m_Command.Place().Read("out-2.tif"), "2\n");
  EXPECT_EQ(m_Command.NamesIn("jobs"), Names());
}

TEST_F(PreviewTest, a_file_that_the_user_did_not_name_is_replaced_only_if_asked) {
  m_Command.Place().Write("out.tif", "old");
  m_Command.Place().Write("out-2.tif", "mine");
  const CommandResult refused = m_Command.Run({"preview", "job.ps", "-o", "out.tif"});
  EXPECT_EQ(refused.status, 2);
  EXPECT_NE(refused.error.find("the preview can't be written to 'out-2.tif': there is one of that "
                               "name, which only --force replaces; nothing was written\n"),
            std::string::npos)
      << refused.error;
  EXPECT_EQ(refused.output, "");
  EXPECT_EQ(m_Command.Place().Read("out.tif"), "old");
  EXPECT_EQ(m_Command.Place().Read("out-2.tif"), "mine");
  EXPECT_EQ(m_Command.NamesIn("jobs"), Names());
  EXPECT_EQ(m_Command.Run({"preview", "job.ps", "-o", "out.tif", "--force"}).status, 0);
  EXPECT_EQ(m_Command.Place().Read("out.tif"), "1\n");
  EXPECT_EQ(m_Command.Place().Read("out-2.tif"), "2\n");
}

TEST_F(PreviewTest, a_run_that_fails_leaves_the_old_files) {
  m_Command.Place().Write("out.tif", "old");
  m_Command.WriteOdalis(
      "cat >/dev/null\nf=\"$RASTREL_OUTPUT/job-1.tif\"; echo 1 >\"$f\"; echo \"OUTPUT: $f\" >&2\n"
      "exit 1\n");
  EXPECT_EQ(m_Command.Run({"preview", "job.ps", "-o", "out.tif"}).status, 1);
  EXPECT_EQ(m_Command.Place().Read("out.tif"), "old");
}

TEST_F(PreviewTest, of_an_engine_that_tells_of_no_file_fails_and_leaves_the_old_one) {
  m_Command.Place().Write("out.tif", "old");
  m_Command.WriteOdalis("cat >/dev/null\necho 1 >\"$RASTREL_OUTPUT/job-1.tif\"\n");
  const CommandResult result = m_Command.Run({"preview", "job.ps", "-o", "out.tif"});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.error.find("the output engine told of no file"), std::string::npos)
      << result.error;
  EXPECT_EQ(m_Command.Place().Read("out.tif"), "old");
  EXPECT_EQ(m_Command.NamesIn("jobs"), Names());
}

TEST_F(PreviewTest, its_files_are_outputs_with_their_names_in_json) {
  const CommandResult result = m_Command.Run({"preview", "job.ps", "-o", "out.tif", "--json"});
  EXPECT_EQ(result.status, 0) << result.error;
  Names lines = result.Lines();
  std::erase_if(lines,
                [](const std::string& line) { return line.find("\"output\"") == line.npos; });
  ASSERT_EQ(lines.size(), 2U) << result.output;
  EXPECT_NE(lines[0].find("\"out.tif\""), std::string::npos) << lines[0];
  EXPECT_NE(lines[1].find("\"out-2.tif\""), std::string::npos) << lines[1];
}

TEST_F(PreviewTest, wrong_use_is_reported_before_anything_runs) {
  for (const std::vector<std::string>& options :
       std::vector<std::vector<std::string>>{{},
                                             {"-o", "out"},
                                             {"-o", "out.pdf"},
                                             {"-o", "none/out.tif"},
                                             {"-o", "out.tif", "--dpi", "0"},
                                             {"-o", "out.tif", "--cut-color", "spot:("}}) {
    std::vector<std::string> words{"preview", "job.ps"};
    words.insert(words.end(), options.begin(), options.end());
    const CommandResult result = m_Command.Run(words);
    EXPECT_EQ(result.status, 2) << result.error;
    EXPECT_EQ(result.output, "");
  }
  EXPECT_FALSE(fs::exists(m_Command.Place().Path("out.tif")));
}

TEST_F(PreviewTest, a_picture_that_can_not_be_written_fails) {
  fs::create_directories(m_Command.Place().Path("out.tif/full"));
  m_Command.WriteRip("touch \"$RASTREL_HOME/begun\"\nexit 1\n");
  const CommandResult result = m_Command.Run({"preview", "job.ps", "-o", "out.tif"});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.error.find("out.tif"), std::string::npos) << result.error;
  EXPECT_FALSE(fs::exists(m_Command.Root() + "/begun")) << "before any work";
}

TEST_F(PreviewTest, the_rip_gets_the_prefix_of_a_preview) {
  m_Command.WriteRip("cat \"$(printf %s \"$4\" | tr '\\\\' /)\" >&2\nexit 1\n");
  const CommandResult result = m_Command.Run(
      {"preview", "job.ps", "-o", "out.png", "--dpi", "31", "--cut-color", "spot:Cut", "--json"});
  EXPECT_EQ(result.status, 1);
  for (const char* part : {"(PNG files:) SelectPrinter", "31 dup SetXYResolution",
                           "(Cut) /Separation $setcutter", "InitRIP"})
    EXPECT_NE(result.output.find(part), std::string::npos) << part;
}

// Several files in one call. The RIP is that of PreviewTest, unless a test has another one.
class SeveralPreviews : public PreviewTest {
 protected:
  SeveralPreviews() {
    m_Command.WriteOdalis(
        "cat >/dev/null\nf=\"$RASTREL_OUTPUT/page.tif\"; echo drawn >\"$f\"; echo \"OUTPUT: $f\" "
        ">&2\n");
    for (const char* name : {"a.eps", "b.eps", "c.eps"})
      m_Command.Place().Write(name, "%!PS\nshowpage\n");
  }
  ~SeveralPreviews() override {
    EXPECT_EQ(m_Command.NamesIn("jobs"), Names());
    EXPECT_EQ(m_Command.Processes(), 0);
  }
  [[nodiscard]] Names Previews() const {
    Names names;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(m_Command.Place().Path("out"), error))
      names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
  }
};

TEST_F(SeveralPreviews, go_to_a_directory_with_their_files_names_which_is_made) {
  const CommandResult result =
      m_Command.Run({"preview", "b.eps", "a.eps", "c.eps", "-o", "out/x/"});
  EXPECT_EQ(result.status, 0) << result.error;
  // The engine's own file has another name, which a page's name does not begin with.
  EXPECT_EQ(result.Lines(), Names({"out/x/b-page.png", "out/x/a-page.png", "out/x/c-page.png"}));
  EXPECT_EQ(result.error, "drawing: b.eps\ndrawing: a.eps\ndrawing: c.eps\n");
  EXPECT_EQ(m_Command.Place().Read("out/x/a-page.png"), "drawn\n");
}

TEST_F(SeveralPreviews, have_the_names_of_a_pattern) {
  fs::create_directories(m_Command.Place().Path("out"));
  const CommandResult result =
      m_Command.Run({"preview", "a.eps", "b.eps", "--output=out/{name}.{name}.tif"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.Lines(), Names({"out/a.a-page.tif", "out/b.b-page.tif"}));
}

TEST_F(SeveralPreviews, of_one_file_have_the_same_names) {
  fs::create_directories(m_Command.Place().Path("out"));
  EXPECT_EQ(m_Command.Run({"preview", "a.eps", "-o", "out"}).LastLine(), "out/a-page.png");
  EXPECT_EQ(m_Command.Run({"preview", "b.eps", "-o", "out/"}).LastLine(), "out/b-page.png");
  EXPECT_EQ(m_Command.Run({"preview", "c.eps", "-o", "out/{name}.tif"}).LastLine(),
            "out/c-page.tif");
}

TEST_F(SeveralPreviews, replace_nothing_unless_asked_and_the_others_are_made) {
  m_Command.Place().Write("out/b-page.png", "mine");
  m_Command.Place().Write("out/c.png", "mine");
  const CommandResult refused = m_Command.Run({"preview", "a.eps", "b.eps", "c.eps", "-o", "out"});
  EXPECT_EQ(refused.status, 2);
  EXPECT_EQ(refused.Lines(), Names({"out/a-page.png"}));
  EXPECT_NE(refused.error.find("'out/b-page.png': there is one of that name"), std::string::npos)
      << refused.error;
  EXPECT_NE(refused.error.find("'out/c.png': there is one of that name"), std::string::npos)
      << "the name of its first page";
  EXPECT_EQ(m_Command.Place().Read("out/b-page.png"), "mine");
  EXPECT_EQ(Previews(), Names({"a-page.png", "b-page.png", "c.png"}));
  EXPECT_EQ(m_Command.Run({"preview", "a.eps", "b.eps", "c.eps", "-o", "out", "--force"}).status,
            0);
  EXPECT_EQ(m_Command.Place().Read("out/b-page.png"), "drawn\n");
}

TEST_F(SeveralPreviews, go_on_after_a_bad_file_whose_status_is_the_first_bad_ones) {
  m_Command.Place().Write("text.eps", "no PostScript");
  const CommandResult result =
      m_Command.Run({"preview", "a.eps", "none.eps", "b.eps", "text.eps", "-o", "out/"});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.Lines(), Names({"out/a-page.png", "out/b-page.png"}));
  EXPECT_NE(
      result.error.find("drawing: none.eps\nrastrel: can't print 'none.eps': there is no such "
                        "file\ndrawing: b.eps\n"),
      std::string::npos)
      << result.error;
  m_Command.WriteRip("exit 1\n");
  EXPECT_EQ(m_Command.Run({"preview", "a.eps", "none.eps", "-o", "out/", "--force"}).status, 1);
}

TEST_F(SeveralPreviews, are_made_at_the_same_time) {
  // Each waits, a limited time, for the other.
  m_Command.WriteOdalis(
      "cat >/dev/null\ntouch \"$RASTREL_HOME/begun.$$\"\nn=0\n"
      "while [ \"$(ls \"$RASTREL_HOME\" | grep -c begun)\" -lt 2 ] && [ $n -lt 20000 ]; do\n"
      "sleep 0.01; n=$((n + 1)); done\n"
      "f=\"$RASTREL_OUTPUT/page.tif\"; ls \"$RASTREL_HOME\" | grep -c begun >\"$f\"\n"
      "echo \"OUTPUT: $f\" >&2\n");
  ASSERT_EQ(m_Command.Run({"preview", "a.eps", "b.eps", "-o", "out/", "--jobs", "2"}).status, 0);
  EXPECT_EQ(m_Command.Place().Read("out/a-page.png"), "2\n");
  EXPECT_EQ(m_Command.Place().Read("out/b-page.png"), "2\n");
}

TEST_F(SeveralPreviews, are_refused_before_anything_runs) {
  fs::create_directories(m_Command.Place().Path("other"));
  m_Command.Place().Write("other/a.ps", "%!PS\nshowpage\n");
  const auto refusal = [&](const std::vector<std::string>& words) {
    std::vector<std::string> all{"preview", "a.eps"};
    all.insert(all.end(), words.begin(), words.end());
    const CommandResult result = m_Command.Run(all);
    EXPECT_EQ(result.status, 2) << result.error;
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(Previews(), Names());
    return result.error;
  };
  EXPECT_EQ(
      refusal({"other/a.ps", "-o", "out/"}),
      "rastrel: 'a.eps' and 'other/a.ps' would both become 'out/a.png': preview one of them by "
      "itself\n");
  EXPECT_NE(refusal({"b.eps", "-o", "out.png"}).find("need a directory, as in -o previews/"),
            std::string::npos);
  EXPECT_NE(refusal({"b.eps"}).find("need a directory"), std::string::npos);
  EXPECT_NE(refusal({"b.eps", "-o", "-"}).find("standard output takes one file"),
            std::string::npos);
  EXPECT_NE(refusal({"b.eps", "-o", "{name}.gif"}).find(".tif, .tiff or .png"), std::string::npos);
  EXPECT_NE(refusal({"b.eps", "-o", "out/", "--dpi", "0"}).find("--dpi 0"), std::string::npos);
  EXPECT_NE(refusal({"b.eps", "-o", "out/", "--jobs", "0"}).find("--jobs 0"), std::string::npos);
  EXPECT_NE(refusal({"-", "-", "-o", "out/"}).find("can be read only once"), std::string::npos);
}

TEST_F(SeveralPreviews, of_standard_input_and_files_are_named_by_title_and_name) {
  m_Command.SetInput("%!PS\nshowpage\n");
  const CommandResult result =
      m_Command.Run({"preview", "a.eps", "-", "-o", "out/", "--title", "my sign"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.Lines(), Names({"out/a-page.png", "out/my sign-page.png"}));
}

TEST_F(SeveralPreviews, write_their_objects_after_one_that_names_the_file) {
  const CommandResult result =
      m_Command.Run({"preview", "a.eps", "none.eps", "b.eps", "-o", "out/", "--json"});
  EXPECT_EQ(result.status, 3);
  Names seen;
  for (const std::string& line : result.Lines()) {
    const auto object = nlohmann::json::parse(line);
    const std::string event = object["event"];
    if (event == "job") seen.push_back("job " + object["path"].get<std::string>());
    if (event == "done") seen.push_back("done " + object["paths"][0].get<std::string>());
    if (event == "failed") seen.push_back("failed " + std::to_string(object["exit"].get<int>()));
  }
  EXPECT_EQ(seen, Names({"job a.eps", "done out/a-page.png", "job none.eps", "failed 3",
                         "job b.eps", "done out/b-page.png"}));
  EXPECT_EQ(result.error, "");
}

TEST_F(SeveralPreviews, end_with_the_command_however_it_is_ended) {
  m_Command.WriteRip("touch \"$RASTREL_HOME/begun.$$\"\nexec sleep 1000\n");
  const auto begun = [&] {
    return std::ranges::count_if(
        m_Command.NamesIn("."), [](const std::string& name) { return name.starts_with("begun."); });
  };
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGKILL}) {
    m_Command.Start({"preview", "a.eps", "b.eps", "c.eps", "-o", "out/", "--jobs", "2"}, "");
    ASSERT_TRUE(WaitUntil([&] { return begun() == 2; }));
    m_Command.Signal(signal);
    const CommandResult result = m_Command.Wait();
    EXPECT_EQ(result.status, signal == SIGKILL ? -1 : 4) << result.error;
    EXPECT_TRUE(WaitUntil([&] { return m_Command.Processes() == 0; })) << "a run goes on";
    EXPECT_EQ(m_Command.NamesIn("jobs"), Names());
    EXPECT_EQ(Previews(), Names());
    EXPECT_EQ(begun(), 2) << "the third is not begun";
    for (const std::string& name : m_Command.NamesIn("."))
      if (name.starts_with("begun.")) fs::remove(m_Command.Root() + "/" + name);
  }
}

// A number of four bytes in a PNG's first chunk.
std::uint32_t PngNumber(const std::string& file, std::size_t at) {
  std::uint32_t number = 0;
  for (std::size_t index = at; index < at + 4 && index < file.size(); ++index)
    number = number << 8 | static_cast<unsigned char>(file[index]);
  return number;
}

class RealPreviewTest : public ::testing::Test {
 protected:
  RealPreviewTest() {
    m_Command.Place().Write("job.ps",
                            "%!PS\n<< /PageSize [120 80] >> setpagedevice\n"
                            "1 0 0 setrgbcolor 10 10 40 40 rectfill showpage\n");
  }
  // Width and height of the picture.
  [[nodiscard]] std::pair<std::uint32_t, std::uint32_t> SizeOf(const std::string& name) const {
    const std::string file = m_Command.Place().Read(name);
    EXPECT_TRUE(file.starts_with("\x89PNG")) << name;
    return {PngNumber(file, 16), PngNumber(file, 20)};
  }
  CommandRunner m_Command{CommandRunner::Children::Real};
};

TEST_F(RealPreviewTest, the_picture_has_the_resolution_that_was_asked_for) {
  for (const unsigned dpi : {36U, 72U, 144U}) {
    const CommandResult result =
        m_Command.Run({"preview", "job.ps", "-o", "out.png", "--dpi", std::to_string(dpi)});
    ASSERT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(result.Lines(), Names({"out.png"}));
    EXPECT_EQ(SizeOf("out.png"), std::pair(120 * dpi / 72, 80 * dpi / 72));
  }
}

TEST_F(RealPreviewTest, of_several_files_is_that_of_each_by_itself) {
  m_Command.Place().Write("other.ps",
                          "%!PS\n<< /PageSize [60 90] >> setpagedevice\n"
                          "0 1 0 setrgbcolor 10 10 20 20 rectfill showpage showpage\n");
  ASSERT_EQ(m_Command.Run({"preview", "job.ps", "-o", "one.png"}).status, 0);
  ASSERT_EQ(m_Command.Run({"preview", "other.ps", "-o", "two.png"}).status, 0);
  const CommandResult result = m_Command.Run({"preview", "job.ps", "other.ps", "-o", "out/"});
  ASSERT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.Lines(), Names({"out/job.png", "out/other.png", "out/other-2.png"}));
  EXPECT_EQ(m_Command.Place().Read("out/job.png"), m_Command.Place().Read("one.png"));
  EXPECT_EQ(m_Command.Place().Read("out/other.png"), m_Command.Place().Read("two.png"));
  EXPECT_EQ(m_Command.Place().Read("out/other-2.png"), m_Command.Place().Read("two-2.png"));
}

TEST_F(RealPreviewTest, planes_are_files_with_their_names) {
  const CommandResult result = m_Command.Run({"preview", "job.ps", "-o", "out.png", "--planar"});
  ASSERT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.Lines(),
            Names({"out-Cyan.png", "out-Magenta.png", "out-Yellow.png", "out-Black.png"}));
  EXPECT_EQ(SizeOf("out-Cyan.png"), std::pair(120U, 80U));
  EXPECT_EQ(result.error.find("--dpi"), std::string::npos);
}

TEST_F(RealPreviewTest, a_resolution_of_planes_is_said_to_have_no_effect) {
  const CommandResult result =
      m_Command.Run({"preview", "job.ps", "-o", "out.png", "--planar", "--dpi", "144"});
  ASSERT_EQ(result.status, 0) << result.error;
  EXPECT_NE(result.error.find("--dpi has no effect"), std::string::npos);
  EXPECT_EQ(SizeOf("out-Cyan.png"), std::pair(120U, 80U));
}

TEST_F(RealPreviewTest, a_tiff_is_one_too) {
  ASSERT_EQ(m_Command.Run({"preview", "job.ps", "-o", "out.tiff"}).status, 0);
  const std::string magic = m_Command.Place().Read("out.tiff").substr(0, 4);
  EXPECT_TRUE(magic == std::string("II*\0", 4) || magic == std::string("MM\0*", 4));
}

}  // namespace
}  // namespace rastrel::test
