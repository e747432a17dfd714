#include "server/web/templates/templates.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <future>

#include "rastrel/platform/os/private_directory.h"
#include "tests/server/web/template_test_support.h"
#include "tests/support/wait_until.h"

namespace rastrel::server::web {
namespace {

using namespace std::chrono_literals;

class TemplatesTest : public testing::Test {
 protected:
  TemplatesTest() {
    WriteTemplate(m_Directory, "badge.xml");
    std::filesystem::create_directories(m_Work);
    m_Limits.wait = 0ms;
    Make();
  }
  void Make() { m_Templates = std::make_unique<Templates>(m_Directory, m_Work, m_Merge, m_Limits); }
  [[nodiscard]] TemplateForm Badge() { return *m_Templates->Form("badge.xml"); }
  [[nodiscard]] Templates::Drawn Draw(const std::string& person, const std::string& name,
                                      const std::string& blank = "plate") {
    return m_Templates->Draw(person, Badge(), {{"Name", name}}, blank);
  }
  [[nodiscard]] bool IsWorkEmpty() const { return std::filesystem::is_empty(m_Work); }

  os::PrivateDirectory m_Place = *os::PrivateDirectory::Make("rastrel-templates-");
  std::string m_Directory = m_Place.Path() + "/templates";
  std::string m_Work = m_Place.Path() + "/drawn";
  FakeMerge m_Merge;
  Templates::Limits m_Limits;
  std::unique_ptr<Templates> m_Templates;
};

TEST_F(TemplatesTest, the_fields_are_read_once_for_each_state_of_the_file) {
  EXPECT_EQ(Badge().fields.size(), 2U);
  EXPECT_EQ(Badge().fields.front().name, "Name");
  EXPECT_EQ(m_Merge.Count("--fields"), 1);
  std::ofstream(m_Directory + "/badge.xml", std::ios::app) << " ";
  EXPECT_EQ(Badge().fields.size(), 2U);
  EXPECT_EQ(m_Merge.Count("--fields"), 2);
}

TEST_F(TemplatesTest, a_template_that_is_none_starts_no_program) {
  for (const char* name : {"none.xml", "../drawn", "/etc/passwd", "badge.txt"}) {
    const auto form = m_Templates->Form(name);
    ASSERT_FALSE(form);
    EXPECT_EQ(form.Error().code, FailureCode::BadInput);
  }
  EXPECT_EQ(m_Merge.Count("merge"), 0);
}

TEST_F(TemplatesTest, a_picture_is_drawn_of_a_table_with_the_values_and_nothing_of_it_stays) {
  const auto drawn = Draw("ada", "Ada \"B\"");
  ASSERT_TRUE(drawn.picture);
  EXPECT_EQ(drawn.picture->png, "PNG of \"Name\",\"Width\"\r\n\"Ada \"\"B\"\"\",\"\"\r\n");
  EXPECT_EQ(drawn.picture->pages, 1);
  EXPECT_EQ(drawn.picture->widthCm, 7.62);
  EXPECT_TRUE(IsWorkEmpty());
}

TEST_F(TemplatesTest, the_same_values_are_drawn_once_and_others_anew) {
  const auto first = Draw("ada", "Ada");
  EXPECT_EQ(Draw("ada", "Ada").picture, first.picture);
  EXPECT_EQ(m_Merge.Count("-o"), 1);
  EXPECT_NE(Draw("ada", "Eve").picture, first.picture);
  EXPECT_NE(Draw("ada", "Ada", "3x1in").picture, first.picture);
  std::ofstream(m_Directory + "/badge.xml", std::ios::app) << " ";
  EXPECT_NE(Draw("ada", "Ada").picture, first.picture);
  EXPECT_EQ(m_Merge.Count("-o"), 4);
}

TEST_F(TemplatesTest, nobody_gets_a_picture_that_was_drawn_for_another) {
  const auto of = Draw("ada", "Ada").picture;
  EXPECT_NE(Draw("bob", "Ada").picture, of);
  EXPECT_EQ(m_Merge.Count("-o"), 2);
  // Names and values that are one text when they are put together are two.
  const TemplateForm form = Badge();
  EXPECT_NE(m_Templates->Draw("a", form, {{"Name", "bc"}}, "plate").picture,
            m_Templates->Draw("a", form, {{"Name", "b"}, {"c", ""}}, "plate").picture);
}

TEST_F(TemplatesTest, a_sample_is_everybodys_and_none_of_a_persons_pictures_is) {
  const TemplateForm form = Badge();
  const auto sample = m_Templates->Sample("ada", form).picture;
  EXPECT_EQ(m_Templates->Sample("bob", form).picture, sample);
  // The same values typed by a person are that person's; nobody's name is everybody's.
  for (const char* person : {"ada", "", "of ada"})
    EXPECT_NE(m_Templates->Draw(person, form, SampleValues(form.fields), "plate").picture, sample);
  EXPECT_EQ(m_Merge.Count("-o"), 4);
}

TEST_F(TemplatesTest, a_person_who_asks_too_often_waits_and_others_do_not) {
  m_Limits.atOnce = 2;
  m_Limits.interval = 3600s;
  Make();
  EXPECT_TRUE(Draw("ada", "1").picture);
  EXPECT_TRUE(Draw("ada", "2").picture);
  const auto third = Draw("ada", "3");
  EXPECT_FALSE(third.picture);
  EXPECT_EQ(third.delay, PictureDelay::TooOften);
  EXPECT_GT(third.wait.count(), 0);
  // A picture that is there already costs nothing.
  EXPECT_TRUE(Draw("ada", "2").picture);
  EXPECT_TRUE(Draw("bob", "3").picture);
}

TEST_F(TemplatesTest, two_are_drawn_at_a_time_and_one_for_each_person) {
  const TemplateForm form = Badge();
  std::promise<void> goOn;
  const std::shared_future<void> wait = goOn.get_future().share();
  std::atomic<int> begun = 0;
  m_Merge.state->before = [&] {
    ++begun;
    wait.wait();
  };
  const auto draw = [&](const char* person) {
    return std::async(std::launch::async, [&, person] {
      return m_Templates->Draw(person, form, {{"Name", "x"}}, "plate");
    });
  };
  auto first = draw("ada");
  ASSERT_TRUE(test::WaitUntil([&] { return begun >= 1; }));
  EXPECT_EQ(m_Templates->Draw("ada", form, {{"Name", "y"}}, "plate").delay, PictureDelay::Busy);
  auto second = draw("bob");
  ASSERT_TRUE(test::WaitUntil([&] { return begun >= 2; }));
  EXPECT_EQ(m_Templates->Draw("eve", form, {{"Name", "x"}}, "plate").delay, PictureDelay::Busy);
  goOn.set_value();
  EXPECT_TRUE(first.get().picture);
  EXPECT_TRUE(second.get().picture);
  EXPECT_TRUE(m_Templates->Draw("eve", form, {{"Name", "x"}}, "plate").picture);
}

TEST_F(TemplatesTest, a_program_that_fails_is_told_and_leaves_nothing) {
  m_Merge.state->fails = true;
  EXPECT_EQ(Draw("ada", "Ada").delay, PictureDelay::Failed);
  EXPECT_TRUE(IsWorkEmpty());
  m_Merge.state->fails = false;
  EXPECT_TRUE(Draw("ada", "Ada").picture);
}

TEST_F(TemplatesTest, a_plate_that_gives_no_picture_says_why) {
  m_Merge.state->draws = false;
  m_Merge.state->lines = "";
  const auto silent = Draw("ada", "Ada").picture;
  ASSERT_TRUE(silent);
  EXPECT_EQ(silent->png, "");
  EXPECT_EQ(silent->notes.at(0).code, "refused");
  m_Merge.state->lines = "{\"event\":\"failed\",\"text\":\"it is too long\"}\n";
  EXPECT_EQ(Draw("ada", "Eve").picture->notes.at(0).value, "it is too long");
}

TEST_F(TemplatesTest, the_cache_holds_no_more_than_its_bytes) {
  m_Limits.cacheBytes = 2500;
  m_Limits.atOnce = 1000;
  Make();
  static_cast<void>(Draw("ada", "0"));
  for (int i = 1; i < 20; ++i) static_cast<void>(Draw("ada", std::to_string(i)));
  static_cast<void>(Draw("ada", "19"));
  EXPECT_EQ(m_Merge.Count("-o"), 20);
  static_cast<void>(Draw("ada", "0"));
  EXPECT_EQ(m_Merge.Count("-o"), 21);
}

TEST_F(TemplatesTest, the_table_of_a_job_is_private_and_whole) {
  const auto path = m_Templates->WriteTable(Badge(), {{"Name", "Ada"}});
  ASSERT_TRUE(path);
  EXPECT_EQ(ContentOf(*path), "\"Name\",\"Width\"\r\n\"Ada\",\"\"\r\n");
  EXPECT_EQ(std::filesystem::status(*path).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  EXPECT_NE(*m_Templates->WriteTable(Badge(), {{"Name", "Ada"}}), *path);
}

TEST(BlankSize, has_two_sides_with_a_unit_up_to_ten_meters) {
  for (const char* text : {"plate", "7.5x2.5cm", "3x1in", "1x1mm", "1000x1000cm", "10000x1mm"})
    EXPECT_TRUE(IsBlankSize(text)) << text;
  for (const char* text : {"", "3x1", "3in", "0x1in", "-1x1in", "1001x1cm", "1x1000.1cm", "400x1in",
                           "axbcm", "1x1x1cm", "nanx1cm", "1e2x1cm", " 3x1in", "3x1in --data"})
    EXPECT_FALSE(IsBlankSize(text)) << text;
}

}  // namespace
}  // namespace rastrel::server::web
