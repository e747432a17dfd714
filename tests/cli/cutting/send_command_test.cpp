// `rastrel send`: device files, and jobs on their way to devices.

#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include "cutting/job/job_file.h"
#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

class SendCommand : public testing::Test {
 protected:
  SendCommand() {
    cutting::CutJob job;
    job.width = 100;
    job.height = 50;
    job.paths.push_back(
        {.contours = {{.start = {10, 10}, .segments = {cutting::LineTo({50, 10})}}}});
    runner.Place().Write("job.json", cutting::JobFileText(job));
    runner.Place().Write("job.plt", "IN;SP1;PU0,0;PD40,40;SP0;");
  }

  /// A device file of the form, with lines of its way.
  void WriteDevice(const std::string& format, const std::string& reach) {
    runner.Place().Write("device.toml",
                         "name = \"Knife\"\nformat = \"" + format + "\"\n[reach]\n" + reach);
  }
  std::string Directory() const { return "by = \"directory\"\npath = \"" + Here() + "\"\n"; }
  std::string Program(const std::string& script) const {
    return "by = \"program\"\ncommand = [\"/bin/sh\", \"-c\", \"" + script + "\"]\n";
  }
  std::string Here() const { return runner.Place().Path("."); }
  CommandResult Send(const std::string& file) {
    return runner.Run({"send", file, "--device", "./device.toml"});
  }

  CommandRunner runner{CommandRunner::Children::None};
};

TEST_F(SendCommand, a_cut_file_goes_to_the_directory_as_it_is) {
  WriteDevice("hpgl", Directory());
  const CommandResult result = Send("job.plt");
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_NE(result.output.find("/job-2.plt"), std::string::npos) << result.output;
  EXPECT_EQ(runner.Place().Read("job-2.plt"), runner.Place().Read("job.plt"));
}

TEST_F(SendCommand, a_cut_job_is_sent_in_the_form_of_the_device) {
  WriteDevice("hpgl", Program("cat > got"));
  const CommandResult result = Send("job.json");
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_NE(runner.Place().Read("got").find("PU400,400;"), std::string::npos);
}

TEST_F(SendCommand, pens_and_axes_are_those_of_the_device) {
  runner.Place().Write("device.toml",
                       "name = \"Knife\"\nformat = \"hpgl\"\nswap-axes = true\n"
                       "[[tool]]\nname = \"k\"\noperations = [\"cut\"]\npen = 4\n"
                       "[reach]\n" +
                           Program("cat > got"));
  EXPECT_EQ(Send("job.json").status, 0);
  const std::string got = runner.Place().Read("got");
  EXPECT_NE(got.find("SP4;"), std::string::npos) << got;
  EXPECT_NE(got.find("PD400,2000"), std::string::npos) << got;
}

TEST_F(SendCommand, a_file_of_another_form_is_refused) {
  WriteDevice("dxf", Directory());
  const CommandResult result = Send("job.plt");
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.error, "rastrel: 'job.plt' is hpgl, and 'Knife' takes dxf\n");
}

TEST_F(SendCommand, json_has_progress_and_the_end) {
  WriteDevice("hpgl", Program("cat > got"));
  const CommandResult result =
      runner.Run({"send", "job.plt", "--device", "./device.toml", "--json"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.LastLine(), R"({"event":"done","exit":0,"device":"Knife","bytes":25})");
}

TEST_F(SendCommand, a_program_that_ends_early_is_told_with_its_last_line_and_bytes) {
  WriteDevice("hpgl", Program("head -c 2 > got; echo no paper; exit 3"));
  const CommandResult result = Send("job.plt");
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.error.find("ended with status 3: no paper; it had read "), std::string::npos)
      << result.error;
  EXPECT_NE(result.error.find(" of 25 bytes"), std::string::npos) << result.error;
}

TEST_F(SendCommand, a_program_that_never_ends_is_ended_after_the_timeout) {
  WriteDevice("hpgl", Program("sleep 600") + "timeout = 1\n");
  const CommandResult result = Send("job.plt");
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.error.find("was ended after 1 seconds"), std::string::npos) << result.error;
}

TEST_F(SendCommand, a_signal_cancels_the_job_and_ends_the_program) {
  WriteDevice("hpgl", Program("cat > got; sleep 600"));
  runner.Start({"send", "job.plt", "--device", "./device.toml", "--json"}, "\"bytes\":25");
  runner.Signal(SIGTERM);
  const CommandResult result = runner.Wait();
  EXPECT_EQ(result.status, 4) << result.error;
  EXPECT_EQ(runner.Processes(), 0);
}

TEST_F(SendCommand, an_absent_program_is_named) {
  WriteDevice("hpgl", "by = \"program\"\ncommand = [\"/no/such/program\"]\n");
  const CommandResult result = Send("job.plt");
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.error.find("/no/such/program"), std::string::npos) << result.error;
}

TEST_F(SendCommand, a_fault_of_the_device_file_has_its_line) {
  runner.Place().Write("device.toml", "name = \"Knife\"\nformat = \"hpgl\"\nwidht = 3\n");
  for (const CommandResult& result :
       {Send("job.plt"), runner.Run({"send", "--check", "./device.toml"})}) {
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.error,
              "rastrel: ./device.toml:3:1: there is no key 'widht' here; did you mean 'width'?\n");
  }
}

TEST_F(SendCommand, a_sound_device_file_is_said_to_be_sound) {
  WriteDevice("hpgl", Directory());
  EXPECT_EQ(runner.Run({"send", "--check", "./device.toml"}).output,
            "./device.toml: 'Knife' is sound\n");
}

TEST_F(SendCommand, a_device_without_a_way_takes_nothing) {
  runner.Place().Write("device.toml", "name = \"Knife\"\nformat = \"hpgl\"\n");
  const CommandResult result = Send("job.plt");
  EXPECT_EQ(result.status, 3);
  EXPECT_NE(result.error.find("has no table [reach]"), std::string::npos) << result.error;
}

TEST_F(SendCommand, an_unknown_device_is_named_with_where_it_was_looked_for) {
  const CommandResult result = runner.Run({"send", "job.plt", "--device", "nobody"});
  EXPECT_EQ(result.status, 3);
  EXPECT_NE(result.error.find("no nobody.toml is in"), std::string::npos) << result.error;
}

TEST_F(SendCommand, the_installed_devices_are_listed) {
  const CommandResult result = runner.Run({"send", "--list"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_NE(result.output.find("laser-files\tgcode\tdirectory\t"), std::string::npos)
      << result.output;
}

TEST_F(SendCommand, an_installed_device_is_shown) {
  const CommandResult result = runner.Run({"send", "--show", "laser-files"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_NE(result.output.find("format = \"gcode\"\n"), std::string::npos) << result.output;
}

TEST_F(SendCommand, cut_sends_its_result_to_a_device_and_draws_it) {
  WriteDevice("hpgl", Program("cat > got"));
  const CommandResult result =
      runner.Run({"cut", "job.json", "--device", "./device.toml", "--picture", "cut.svg"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.output, "cut.svg\n");
  EXPECT_NE(runner.Place().Read("got").find("PU400,400;"), std::string::npos);
  EXPECT_NE(runner.Place().Read("cut.svg").find(">cut: 1 contour, 40 mm<"), std::string::npos);
}

TEST_F(SendCommand, a_cut_that_is_sent_ends_with_one_done) {
  WriteDevice("hpgl", Program("cat > got"));
  const CommandResult result = runner.Run(
      {"cut", "job.json", "--device", "./device.toml", "--picture", "cut.svg", "--json"});
  EXPECT_EQ(result.status, 0) << result.error;
  const std::size_t done = result.output.find(R"({"event":"done")");
  EXPECT_EQ(done, result.output.rfind(R"({"event":"done")")) << result.output;
  EXPECT_LT(result.output.find(R"({"event":"written","paths":["cut.svg"])"), done) << result.output;
}

TEST_F(SendCommand, a_picture_of_another_form_is_refused) {
  const CommandResult result = runner.Run({"cut", "job.json", "--picture", "cut.gif"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.error,
            "rastrel: can't write 'cut.gif': a picture's name ends in .svg or .png\n");
}

TEST_F(SendCommand, options_that_exclude_each_other_are_wrong_use) {
  EXPECT_EQ(runner.Run({"send"}).status, 2);
  EXPECT_EQ(runner.Run({"send", "job.plt"}).status, 2);
  EXPECT_EQ(runner.Run({"send", "job.plt", "--list"}).status, 2);
  EXPECT_EQ(runner.Run({"send", "--list", "--show", "a"}).status, 2);
}

}  // namespace
}  // namespace rastrel::test
