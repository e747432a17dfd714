#include "interpreter/settings.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/environment_guard.h"

namespace rastrel::interpreter {
namespace {

Settings Read(std::vector<std::string>& complaints) {
  return Settings::FromEnvironment(complaints);
}

// The numbers are those of docs/formats/rip.md.
TEST(Settings, have_the_documented_values_by_default) {
  std::vector<std::string> complaints;
  const Settings settings = Read(complaints);
  EXPECT_EQ(settings.timeSeconds, 1800U);
  EXPECT_EQ(settings.processorSeconds, 1800U);
  EXPECT_EQ(settings.memoryMebibytes, 1024U);
  EXPECT_EQ(settings.pagePixels, 1'600'000'000U);
  EXPECT_EQ(settings.totalMebibytes, 65'536U);
  EXPECT_EQ(settings.workMebibytes, 4096U);
  EXPECT_EQ(settings.threads, CoreCount());
  EXPECT_EQ(settings.processes, CoreCount());
  EXPECT_EQ(settings.pdfBox, PdfBox::Crop);
  EXPECT_EQ(settings.passwordFile, "");
  EXPECT_EQ(SidePixels, 400'000U);
  EXPECT_EQ(WorkFiles, 1000U);
  EXPECT_TRUE(complaints.empty());
}

TEST(Settings, each_has_its_variable) {
  const test::EnvironmentGuard time("RASTREL_RIP_TIMEOUT", "1");
  const test::EnvironmentGuard processor("RASTREL_RIP_CPU", "2");
  const test::EnvironmentGuard memory("RASTREL_RIP_MEMORY", "3");
  const test::EnvironmentGuard pixels("RASTREL_RIP_PIXELS", "4");
  const test::EnvironmentGuard total("RASTREL_RIP_SIZE", "5");
  const test::EnvironmentGuard work("RASTREL_RIP_TEMP", "1000000000000");
  std::vector<std::string> complaints;
  const Settings settings = Read(complaints);
  EXPECT_EQ(settings.timeSeconds, 1U);
  EXPECT_EQ(settings.processorSeconds, 2U);
  EXPECT_EQ(settings.memoryMebibytes, 3U);
  EXPECT_EQ(settings.pagePixels, 4U);
  EXPECT_EQ(settings.totalMebibytes, 5U);
  EXPECT_EQ(settings.workMebibytes, 1'000'000'000'000U);
  EXPECT_TRUE(complaints.empty());
}

TEST(Settings, threads_and_processes_are_sixteen_at_most) {
  for (const auto& [given, threads] :
       {std::pair{"1", 1U}, std::pair{"15", 15U}, std::pair{"16", 16U}, std::pair{"17", 16U}}) {
    const test::EnvironmentGuard variable("RASTREL_RIP_THREADS", given);
    const test::EnvironmentGuard other("RASTREL_RIP_PROCESSES", given);
    std::vector<std::string> complaints;
    EXPECT_EQ(Read(complaints).threads, threads);
    EXPECT_EQ(Read(complaints).processes, threads);
    EXPECT_TRUE(complaints.empty());
  }
  EXPECT_GE(CoreCount(), 1U);
  EXPECT_LE(CoreCount(), 16U);
}

TEST(Settings, a_box_is_chosen_by_its_name) {
  const std::vector<std::pair<const char*, PdfBox>> boxes{{"media", PdfBox::Media},
                                                          {"crop", PdfBox::Crop},
                                                          {"trim", PdfBox::Trim},
                                                          {"bleed", PdfBox::Bleed}};
  for (const auto& [name, box] : boxes) {
    const test::EnvironmentGuard chosen("RASTREL_RIP_BOX", name);
    std::vector<std::string> complaints;
    EXPECT_EQ(Read(complaints).pdfBox, box) << name;
    EXPECT_TRUE(complaints.empty()) << name;
  }
}

TEST(Settings, a_page_is_chosen_by_its_number) {
  std::vector<std::string> complaints;
  EXPECT_EQ(Read(complaints).page, 1U);
  for (const auto& [text, page] : {std::pair("2", 2U), std::pair("1000000", 1'000'000U)}) {
    const test::EnvironmentGuard chosen("RASTREL_RIP_PAGE", text);
    EXPECT_EQ(Read(complaints).page, page);
    EXPECT_TRUE(complaints.empty());
  }
  const test::EnvironmentGuard beyond("RASTREL_RIP_PAGE", "1000001");
  EXPECT_EQ(Read(complaints).page, 1U);
  EXPECT_EQ(complaints,
            std::vector<std::string>{"RASTREL_RIP_PAGE is not a whole number above 0; 1 is used."});
}

TEST(Settings, another_box_is_passed_over_with_a_sentence) {
  const test::EnvironmentGuard chosen("RASTREL_RIP_BOX", "art");
  std::vector<std::string> complaints;
  EXPECT_EQ(Read(complaints).pdfBox, PdfBox::Crop);
  EXPECT_EQ(complaints,
            std::vector<std::string>{
                "RASTREL_RIP_BOX is none of media, crop, trim and bleed; the crop box is used."});
}

TEST(Settings, a_value_that_is_no_whole_number_above_0_is_passed_over_with_a_sentence) {
  for (const char* const value :
       {"0", "-1", "1.5", "12x", " 1", "1000000000001", "99999999999999999999"}) {
    const test::EnvironmentGuard memory("RASTREL_RIP_MEMORY", value);
    std::vector<std::string> complaints;
    EXPECT_EQ(Read(complaints).memoryMebibytes, 1024U) << value;
    EXPECT_EQ(
        complaints,
        std::vector<std::string>{"RASTREL_RIP_MEMORY is not a whole number above 0; 1024 is used."})
        << value;
  }
}

}  // namespace
}  // namespace rastrel::interpreter
