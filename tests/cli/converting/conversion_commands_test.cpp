// pagesize, queue and header, with a queue program that is a script.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "cli/console/exit_status.h"
#include "cli/converting/conversion_settings.h"
#include "cli/job/terminal_views.h"
#include "tests/cli/command_runner.h"
#include "tests/support/wait_until.h"

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;
using test::CommandResult;
using test::CommandRunner;

constexpr const char* Eps =
    "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 144 72\n%%EndComments\nshowpage\n";

class Conversions : public ::testing::Test {
 protected:
  Conversions() { m_Command.Place().Write("sign.eps", Eps); }
  ~Conversions() override {
    EXPECT_EQ(m_Command.NamesIn("jobs"), std::vector<std::string>()) << "a working copy is left";
    for (const std::string& name : m_Command.NamesIn("Queue/rip"))
      EXPECT_FALSE(name.starts_with("vk")) << name;
    EXPECT_EQ(m_Command.Processes(), 0);
  }
  CommandResult Run(const std::vector<std::string>& arguments) { return m_Command.Run(arguments); }

  CommandRunner m_Command{CommandRunner::Children::None};
};

TEST_F(Conversions, pagesize_prints_the_measured_page_in_centimetres_and_points) {
  m_Command.WriteQueue("echo QRAST:bbox 0 11 8.5 0 >&2\n");
  const CommandResult result = Run({"pagesize", "sign.eps"});
  EXPECT_EQ(result.output,
            "sign.eps: 21.590 x 27.940 cm at 0.000, 0.000 (612.00 x 792.00 pt), measured\n");
  EXPECT_EQ(result.status, 0);
}

TEST_F(Conversions, pagesize_puts_the_comments_first_if_asked_and_the_measure_where_it_differs) {
  m_Command.WriteQueue("echo QRAST:bbox 0 11 8.5 0 >&2\n");
  EXPECT_EQ(Run({"pagesize", "--dsc", "sign.eps"}).output,
            "sign.eps: 5.080 x 2.540 cm at 0.000, 0.000 (144.00 x 72.00 pt), comments\n"
            "sign.eps: 21.590 x 27.940 cm at 0.000, 0.000 (612.00 x 792.00 pt), measured\n");
  m_Command.WriteQueue("echo QRAST:bbox 0 1.005 2 0.005 >&2\n");
  EXPECT_EQ(Run({"pagesize", "--dsc", "sign.eps"}).Lines().size(), 1U) << "within a point";
  m_Command.WriteQueue("echo QRAST:bbox 0 1.02 2 0 >&2\n");
  EXPECT_EQ(Run({"pagesize", "--dsc", "sign.eps"}).Lines().size(), 2U) << "beyond a point";
  m_Command.Place().Write("bare.ps", "%!PS\nshowpage\n");
  EXPECT_EQ(Run({"pagesize", "--dsc", "bare.ps"}).Lines().size(), 1U) << "no comment of bounds";
}

TEST_F(Conversions, pagesize_prints_objects_with_all_digits) {
  m_Command.WriteQueue("echo QRAST:bbox 1 11 8.5 2 >&2\n");
  const auto object = nlohmann::json::parse(Run({"pagesize", "--json", "sign.eps"}).output);
  EXPECT_EQ(object["event"], "pagesize");
  EXPECT_EQ(object["path"], "sign.eps");
  EXPECT_EQ(object["source"], "measured");
  EXPECT_NEAR(object["xmin"].get<double>(), 2.54, 1e-6);
  EXPECT_NEAR(object["ymin"].get<double>(), 5.08, 1e-6);
  EXPECT_NEAR(object["width"].get<double>(), 21.59, 1e-5);
  EXPECT_NEAR(object["ymax"].get<double>(), 33.02, 1e-5);
}

TEST_F(Conversions, pagesize_measures_the_others_when_one_fails) {
  m_Command.WriteQueue("echo QRAST:bbox 0 11 8.5 0 >&2\n");
  const CommandResult result = Run({"pagesize", "none.ps", "sign.eps"});
  EXPECT_EQ(result.Lines().size(), 1U);
  EXPECT_NE(result.error.find("can't measure 'none.ps': there is no such file"), std::string::npos)
      << result.error;
  EXPECT_EQ(result.status, 3);
}

TEST_F(Conversions, pagesize_repeats_the_programs_message) {
  m_Command.WriteQueue("echo 'ERROR: gs: undefined in foo' >&2\nexit 2\n");
  const CommandResult result = Run({"pagesize", "sign.eps"});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.error.find("can't be measured: gs: undefined in foo\n"), std::string::npos)
      << result.error;
  m_Command.WriteQueue("echo 'ERROR: no end of [1 2' >&2\nexit 2\n");
  const CommandResult bracket = Run({"pagesize", "sign.eps"});
  EXPECT_NE(bracket.error.find("can't be measured: no end of [1 2\n"), std::string::npos)
      << bracket.error;
}

TEST_F(Conversions, pagesize_measures_a_file_whose_name_no_library_path_has) {
  m_Command.WriteQueue("echo QRAST:bbox 0 11 8.5 0 >&2\n");
  m_Command.Place().Write("a\\b.ps", "%!PS\nshowpage\n");
  EXPECT_EQ(Run({"pagesize", "a\\b.ps"}).status, 0);
}

TEST_F(Conversions, pagesize_is_stopped_by_a_signal_and_leaves_nothing) {
  m_Command.WriteQueue("touch \"$RASTREL_HOME/begun\"\nexec sleep 1000\n");
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    m_Command.Place().Write("two.ps", "%!PS\n");
    m_Command.Start({"pagesize", "sign.eps", "two.ps"}, "");
    ASSERT_TRUE(test::WaitUntil([&] { return fs::exists(m_Command.Root() + "/begun"); }));
    m_Command.Signal(signal);
    const CommandResult result = m_Command.Wait();
    EXPECT_EQ(result.status, 4);
    EXPECT_EQ(result.error, "rastrel: cancelled\n") << "the second file is not begun";
    fs::remove(m_Command.Root() + "/begun");
  }
}

// `file` is the working copy, whose path is a library path in a measuring. `wait_for` waits, a
// limited time, for a file below the data root.
constexpr const char* Measuring = R"(
file="$RASTREL_HOME/Queue/rip/${3##*[\\/]}"
wait_for() {
  n=0
  while [ ! -e "$RASTREL_HOME/$1" ] && [ $n -lt 20000 ]; do sleep 0.01; n=$((n + 1)); done
}
)";

TEST_F(Conversions, pagesize_measures_several_files_at_a_time_and_keeps_their_order) {
  m_Command.Place().Write("first.ps", "%!PS\n% first\n");
  m_Command.Place().Write("second.ps", "%!PS\n% second\n");
  // The first waits for the second, which can come only at the same time.
  m_Command.WriteQueue(std::string(Measuring) + R"(
if grep -q first "$file"; then wait_for second; box="0 11 8.5 0"; else
  touch "$RASTREL_HOME/second"; box="0 1 2 0"; fi
[ -e "$RASTREL_HOME/second" ] || exit 2
echo "QRAST:bbox $box" >&2
)");
  const CommandResult result = Run({"pagesize", "--jobs", "2", "first.ps", "second.ps"});
  EXPECT_EQ(result.output,
            "first.ps: 21.590 x 27.940 cm at 0.000, 0.000 (612.00 x 792.00 pt), measured\n"
            "second.ps: 5.080 x 2.540 cm at 0.000, 0.000 (144.00 x 72.00 pt), measured\n")
      << result.error;
  EXPECT_EQ(result.status, 0);
}

TEST_F(Conversions, pagesize_gives_each_file_its_own_messages) {
  std::vector<std::string> words{"pagesize", "--jobs", "4"};
  std::string expected;
  for (int number = 1; number <= 8; ++number) {
    const std::string name = "f" + std::to_string(number) + ".ps";
    m_Command.Place().Write(name, "%!PS\n%" + std::to_string(number) + "\n");
    words.push_back(name);
    expected +=
        "rastrel: " + name + ": its page can't be measured: bad " + std::to_string(number) + "\n";
  }
  m_Command.WriteQueue(
      std::string(Measuring) +
      "n=$(grep -o '^%[1-8]' \"$file\")\necho \"ERROR: bad ${n#%}\" >&2\nexit 2\n");
  const CommandResult failed = Run(words);
  EXPECT_EQ(failed.error, expected);
  EXPECT_EQ(failed.status, 1);

  m_Command.WriteQueue(std::string(Measuring) +
                       "n=$(grep -o '^%[1-8]' \"$file\")\necho QRAST:bbox 0 1 1 0 >&2\n"
                       "echo \"WARNING: low ${n#%}\" >&2\necho \"WARNING: low ${n#%}\" >&2\n");
  words.emplace_back("--json");
  std::vector<std::string> seen;
  for (const std::string& line : Run(words).Lines()) {
    const auto object = nlohmann::json::parse(line);
    seen.push_back(
        object["path"].get<std::string>() + " " +
        (object["event"] == "warning" ? object["text"] : object["event"]).get<std::string>());
  }
  std::vector<std::string> wanted;
  for (int number = 1; number <= 8; ++number) {
    const std::string name = "f" + std::to_string(number) + ".ps ";
    wanted.push_back(name + "pagesize");
    wanted.push_back(name + "low " + std::to_string(number));
  }
  EXPECT_EQ(seen, wanted);
}

TEST_F(Conversions, pagesize_stops_all_that_it_measures) {
  m_Command.WriteQueue("touch \"$RASTREL_HOME/begun.$$\"\nexec sleep 1000\n");
  const auto begun = [&] {
    std::size_t count = 0;
    for (const std::string& name : m_Command.NamesIn("."))
      count += name.starts_with("begun.") ? 1 : 0;
    return count;
  };
  std::vector<std::string> words{"pagesize", "--jobs", "2"};
  words.insert(words.end(), 5, "sign.eps");
  m_Command.Start(words, "");
  ASSERT_TRUE(test::WaitUntil([&] { return begun() == 2; }));
  m_Command.Signal(SIGINT);
  const CommandResult result = m_Command.Wait();
  EXPECT_EQ(result.status, 4);
  EXPECT_EQ(result.error, "rastrel: cancelled\n");
  EXPECT_EQ(begun(), 2U) << "no other file is begun";
}

TEST_F(Conversions, need_the_queue_program) {
  EXPECT_EQ(Run({"pagesize", "sign.eps"}).status, 5);
  const CommandResult result = Run({"queue", "sign.eps"});
  EXPECT_EQ(result.status, 5);
  EXPECT_NE(result.error.find("the queue program is missing"), std::string::npos);
}

TEST_F(Conversions, header_shows_the_block_that_the_options_make) {
  EXPECT_EQ(Run({"header", "sign.eps", "--page-size", "21x29.7cm", "--dpi", "300", "--cut-color",
                 "cmyk:0,100%,50%,0", "--half-cut-color", "spot:Half Cut"})
                .output,
            "%#Velumark Header 2.0\n%#Begin Job: 0\n%# Title: MyJob\n%#Type=Print\n"
            "%#PageSize=Custom,595.275591,841.889764\n%# KVI_Res= 300\n"
            "%# KVI_CutLine= CMYK, 0.0000, 1.0000, 0.5000, 0.0000\n"
            "%# KVI_CutLine= SEP, Half Cut\n%# KVI_Setflat= 10\n%#End Job\n");
}

TEST_F(Conversions, header_shows_the_one_that_a_file_has) {
  m_Command.Place().Write("own.ps", "%#Velumark Header 9.9\r\n%# Own\r\n%#End Job\r\n%!PS\n");
  // A header is no PostScript to a file's first look; the file's own kind is looked for after it.
  const CommandResult result = Run({"header", "own.ps"});
  EXPECT_EQ(result.output, "%#Velumark Header 9.9\n%# Own\n%#End Job\n") << result.error;
}

TEST_F(Conversions, header_is_written_in_front_of_a_copy_or_of_the_file_itself) {
  const std::string header =
      "%#Velumark Header 2.0\r\n%#Begin Job: 0\r\n%# Title: MyJob\r\n%#Type=Print\r\n"
      "%# KVI_Res= 72\r\n%#End Job\r\n";
  EXPECT_EQ(Run({"header", "sign.eps", "--dpi", "72", "-o", "out.ps"}).status, 0);
  EXPECT_EQ(m_Command.Place().Read("out.ps"), header + Eps);
  EXPECT_EQ(m_Command.Place().Read("sign.eps"), Eps);
  EXPECT_EQ(Run({"header", "sign.eps", "--dpi", "72", "-o", "./sign.eps"}).status, 0);
  EXPECT_EQ(m_Command.Place().Read("sign.eps"), header + Eps);
}

TEST_F(Conversions, header_takes_the_place_of_a_file_as_a_whole) {
  m_Command.Place().Write("out.ps", "old");
  fs::create_hard_link(m_Command.Place().Path("out.ps"), m_Command.Place().Path("twin"));
  EXPECT_EQ(Run({"header", "sign.eps", "-o", "out.ps"}).status, 0);
  EXPECT_TRUE(m_Command.Place().Read("out.ps").ends_with(Eps));
  EXPECT_EQ(m_Command.Place().Read("twin"), "old");
}

TEST_F(Conversions, header_of_a_pdf_is_written_alone) {
  m_Command.Place().Write("sign.pdf", "%PDF-1.4\n%%EOF\n");
  EXPECT_EQ(Run({"header", "sign.pdf", "-o", "sign.jhdr"}).status, 0);
  const std::string written = m_Command.Place().Read("sign.jhdr");
  EXPECT_TRUE(written.starts_with("%#Velumark Header 2.0\r\n"));
  EXPECT_TRUE(written.ends_with("%#End Job\r\n"));
}

TEST_F(Conversions, values_that_make_no_sense_are_wrong_use) {
  for (const auto& [option, value] :
       std::vector<std::pair<std::string, std::string>>{{"--page-size", "10x5"},
                                                        {"--page-size", "0x5cm"},
                                                        {"--dpi", "0"},
                                                        {"--dpi", "4801"},
                                                        {"--cut-color", "red"},
                                                        {"--cut-color", "rgb:1,2"},
                                                        {"--cut-color", "rgb:1,2,256"},
                                                        {"--half-cut-color", "spot:"},
                                                        {"--half-cut-color", "spot:a(b"},
                                                        {"--cut-color", "spot:\xCE\xA9"}}) {
    const CommandResult result = Run({"header", "sign.eps", option, value});
    EXPECT_EQ(result.status, 2) << option << " " << value;
    EXPECT_NE(result.error.find(option), std::string::npos) << result.error;
  }
}

TEST_F(Conversions, queue_puts_the_programs_files_into_the_directory) {
  m_Command.WriteQueue(R"(stem=${3%.*}
cp "$3" "$stem.cut"
mkdir "$stem.cfm"
echo info > "$stem.cfm/.info"
echo 'INFO: CONVERTING' >&2
sleep 0.05
echo 'PROGRESS: 42 %' >&2
sleep 0.05
echo 'INFO: CLQ_success' >&2
)");
  const CommandResult result = Run({"queue", "sign.eps", "--output", "out", "--dpi", "300"});
  EXPECT_EQ(result.output, "out/sign.cfm\nout/sign.cut\n");
  EXPECT_EQ(result.error, "Converting\n42 %\nDone\n");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(m_Command.Place().Read("out/sign.cfm/.info"), "info\n");
  EXPECT_NE(m_Command.Place().Read("out/sign.cut").find("KVI_Res= 300\r\n"), std::string::npos);
  EXPECT_EQ(m_Command.Place().Read("sign.eps"), Eps) << "the file is only read";
}

// All that a conversion makes.
constexpr const char* AllFiles = R"(touch "$RASTREL_HOME/begun"
stem=${3%.*}
for f in "$stem.cut" "${stem}_Color.bmp"; do echo new > "$f"; done
mkdir "$stem.cfm"
echo new > "$stem.cfm/.info"
echo 'INFO: CLQ_success' >&2
)";

TEST_F(Conversions, queue_replaces_nothing_unless_asked) {
  m_Command.WriteQueue(AllFiles);
  for (const char* own : {"sign_Color.bmp", "sign.cfm/mine", "sign.cut"}) {
    m_Command.Place().Write(std::string("out/") + own, "mine");
    const CommandResult result = Run({"queue", "sign.eps", "--output", "out"});
    EXPECT_EQ(result.status, 2) << own;
    const std::string name = std::string(own).substr(0, std::string(own).find('/'));
    EXPECT_NE(result.error.find("can't write 'out/" + name +
                                "': there is one of that name, which only --force replaces; "
                                "nothing was written\n"),
              std::string::npos)
        << result.error;
    EXPECT_EQ(std::distance(fs::directory_iterator(m_Command.Place().Path("out")), {}), 1) << own;
    EXPECT_EQ(m_Command.Place().Read(std::string("out/") + own), "mine");
    // A file of cut lines is not made by every conversion.
    EXPECT_EQ(fs::exists(m_Command.Root() + "/begun"), name == "sign.cut") << own;
    fs::remove_all(m_Command.Place().Path("out"));
  }
}

TEST_F(Conversions, queue_replaces_whole_entries_if_asked) {
  m_Command.WriteQueue(AllFiles);
  for (const char* own : {"sign_Color.bmp", "sign.cfm/mine", "sign.cut"})
    m_Command.Place().Write(std::string("out/") + own, "mine");
  const CommandResult result = Run({"queue", "sign.eps", "--output", "out", "--force"});
  EXPECT_EQ(result.output, "out/sign.cfm\nout/sign.cut\nout/sign_Color.bmp\n") << result.error;
  EXPECT_FALSE(m_Command.Place().Has("out/sign.cfm/mine")) << "merged into the user's directory";
  EXPECT_EQ(m_Command.Place().Read("out/sign.cfm/.info"), "new\n");
  EXPECT_EQ(m_Command.Place().Read("out/sign_Color.bmp"), "new\n");
  EXPECT_EQ(std::distance(fs::directory_iterator(m_Command.Place().Path("out")), {}), 3);
}

TEST_F(Conversions, queue_gives_a_pdf_its_header_beside_it) {
  m_Command.Place().Write("sign.pdf", "%PDF-1.4\n%%EOF\n");
  m_Command.WriteQueue("cp \"${3%.pdf}.jhdr\" \"${3%.pdf}.cut\"\necho 'INFO: CLQ_success' >&2\n");
  const CommandResult result = Run({"queue", "sign.pdf"});
  EXPECT_EQ(result.output, "sign.cut\n");
  EXPECT_TRUE(m_Command.Place().Read("sign.cut").starts_with("%#Velumark Header"));
}

TEST_F(Conversions, queue_leaves_the_header_that_a_file_has_in_force_unless_options_are_given) {
  const std::string own = "%#Velumark Header 2.0\r\n%# KVI_Res= 300\r\n%#End Job\r\n";
  m_Command.Place().Write("own.ps", own + "%!PS\nshowpage\n");
  m_Command.WriteQueue("cp \"$3\" \"${3%.*}.cut\"\necho 'INFO: CLQ_success' >&2\n");
  EXPECT_EQ(Run({"queue", "own.ps"}).status, 0);
  EXPECT_EQ(m_Command.Place().Read("own.cut"), own + "%!PS\nshowpage\n");
  EXPECT_EQ(Run({"queue", "own.ps", "--dpi", "72", "--force"}).status, 0);
  EXPECT_NE(m_Command.Place().Read("own.cut").find("KVI_Res= 72\r\n%#End Job\r\n" + own),
            std::string::npos);
}

TEST_F(Conversions, queue_leaves_the_header_beside_a_pdf_in_force_unless_options_are_given) {
  m_Command.Place().Write("sign.pdf", "%PDF-1.4\n%%EOF\n");
  m_Command.Place().Write("sign.jhdr", "own");
  m_Command.WriteQueue("cp \"${3%.pdf}.jhdr\" \"${3%.pdf}.cut\"\necho 'INFO: CLQ_success' >&2\n");
  EXPECT_EQ(Run({"queue", "sign.pdf"}).status, 0);
  EXPECT_EQ(m_Command.Place().Read("sign.cut"), "own");
  EXPECT_EQ(Run({"queue", "sign.pdf", "--dpi", "72", "--force"}).status, 0);
  EXPECT_TRUE(m_Command.Place().Read("sign.cut").starts_with("%#Velumark Header"));
}

TEST_F(Conversions, queue_prints_objects) {
  m_Command.WriteQueue("echo 'INFO: CONVERTING' >&2\nsleep 0.05\necho 'INFO: CLQ_success' >&2\n");
  std::vector<std::string> events;
  for (const std::string& line : Run({"queue", "sign.eps", "--json"}).Lines())
    events.push_back(nlohmann::json::parse(line)["event"]);
  EXPECT_EQ(events, (std::vector<std::string>{"progress", "state", "state", "done"}));
}

TEST_F(Conversions, queue_shows_the_programs_warnings_in_their_order) {
  m_Command.WriteQueue(
      "echo 'WARNING: nothing is cut in [it]' >&2\necho 'a ]WARNING: b' >&2\n"
      "echo 'WARNING: low ink' >&2\necho 'INFO: CLQ_success' >&2\n");
  const CommandResult plain = Run({"queue", "sign.eps"});
  EXPECT_EQ(plain.status, 0);
  EXPECT_NE(plain.error.find("warning: nothing is cut in [it]\nwarning: low ink\n"),
            std::string::npos)
      << plain.error;
  EXPECT_EQ(plain.error.find("warning: b"), std::string::npos) << plain.error;
  std::vector<std::string> texts;
  for (const std::string& line : Run({"queue", "sign.eps", "--json"}).Lines()) {
    const auto object = nlohmann::json::parse(line);
    if (object["event"] == "warning") texts.push_back(object["text"]);
  }
  EXPECT_EQ(texts, (std::vector<std::string>{"nothing is cut in [it]", "low ink"}));
}

TEST_F(Conversions, queue_fails_with_the_programs_message) {
  m_Command.WriteQueue("echo 'ERROR: the header has no end' >&2\necho 'INFO: CLQ_failure' >&2\n");
  const CommandResult result = Run({"queue", "sign.eps"});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.error.find("the conversion failed: the header has no end\n"), std::string::npos)
      << result.error;
}

TEST_F(Conversions, queue_fails_with_a_message_that_holds_brackets_whole) {
  const char* const messages[] = {"the array [1 2] has no end", "[3]", "line 4: [",
                                  "no [x]ERROR: here", "[ 12]ERROR: nor here"};
  for (const char* message : messages) {
    m_Command.WriteQueue("echo 'ERROR: " + std::string(message) +
                         "' >&2\necho 'INFO: CLQ_failure' >&2\n");
    const CommandResult result = Run({"queue", "sign.eps"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.error.find("the conversion failed: " + std::string(message) + "\n"),
              std::string::npos)
        << result.error;
  }
}

TEST_F(Conversions, queue_fails_when_the_program_ends_without_a_result) {
  m_Command.WriteQueue("exit 0\n");
  EXPECT_EQ(Run({"queue", "sign.eps"}).status, 1);
}

TEST_F(Conversions, queue_is_cancelled_by_a_signal_and_leaves_nothing) {
  m_Command.WriteQueue("echo 'INFO: CONVERTING' >&2\nexec sleep 1000\n");
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    m_Command.Start({"queue", "sign.eps"}, "Converting");
    m_Command.Signal(signal);
    const CommandResult result = m_Command.Wait();
    EXPECT_EQ(result.status, 4);
    EXPECT_NE(result.error.find("rastrel: cancelled"), std::string::npos);
  }
}

TEST_F(Conversions, queue_keeps_the_working_copy_if_asked) {
  m_Command.WriteQueue("echo 'INFO: CLQ_success' >&2\n");
  const CommandResult result = Run({"queue", "sign.eps", "--keep-ps"});
  EXPECT_EQ(result.status, 0);
  EXPECT_NE(result.error.find("the working copy is kept in: "), std::string::npos);
  ASSERT_EQ(m_Command.NamesIn("jobs").size(), 1U);
  fs::remove_all(m_Command.Root() + "/jobs/" + m_Command.NamesIn("jobs")[0]);
}

TEST(CancelKey, is_q_control_c_or_an_escape_by_itself) {
  bool more = false;
  for (const char* keys : {"q", "Q", "\x03", "abcq",
                           "\x1b"
                           "x",
                           "\x1b[Aq"})
    EXPECT_TRUE(HoldsCancelKey(keys, more)) << keys;
  for (const char* keys : {"", "a", "\r", "\x1b[A", "\x1bOP", "\x1b[1;5C", "\x1b[3~"}) {
    EXPECT_FALSE(HoldsCancelKey(keys, more)) << keys;
    EXPECT_FALSE(more) << keys;
  }
  EXPECT_FALSE(HoldsCancelKey("\x1b", more));
  EXPECT_TRUE(more) << "another key may begin so";
}

TEST(ParseCutData, keeps_fractions_that_percentages_make) {
  double c = 0;
  double m = 0;
  double y = 0;
  double k = 0;
  const auto cut = ParseCutData("--cut-color", "cmyk:12.5%,0,255,51");
  ASSERT_TRUE(cut);
  cut->color.GetCMYKcolor(&c, &m, &y, &k);
  EXPECT_DOUBLE_EQ(c, 0.125);
  EXPECT_DOUBLE_EQ(m, 0);
  EXPECT_DOUBLE_EQ(y, 1);
  EXPECT_DOUBLE_EQ(k, 0.2);
}

}  // namespace
}  // namespace rastrel::cli
