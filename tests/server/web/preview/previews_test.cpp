#include "server/web/preview/previews.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "server/web/preview/kept_pages.h"
#include "server/web/preview/picture_store.h"
#include "tests/support/shop_fixture.h"

namespace rastrel::server::web {
namespace {

namespace fs = std::filesystem;

class PreviewRoutes : public test::ShopFixture {
 protected:
  PreviewRoutes() { AddPreviews(m_Router, m_Shop); }

  // A job of one RGB page of 300 by 2 pixels.
  JobId KeepOne(const std::string& owner = "ada", const std::string& ink = "") {
    test::WriteRgbPage(m_Root, "one.cfm/p0001", 300, 2, test::CountingBytes(1800));
    return Keep("one", {"p0001"}, owner, ink);
  }
  static std::string Message(const Response& response) {
    return nlohmann::json::parse(response.text)["error"]["message"];
  }
  static std::string At(JobId id, const std::string& rest) {
    return "/api/v1/jobs/" + std::to_string(id) + "/pages" + rest;
  }
  // Pictures that are stored for a job.
  [[nodiscard]] std::vector<fs::path> Stored(JobId id) const {
    std::vector<fs::path> found;
    for (const auto& entry : fs::directory_iterator(m_Queue->DirectoryOf(id)))
      if (entry.path().extension() == ".png") found.push_back(entry.path());
    return found;
  }
};

TEST_F(PreviewRoutes, pages_are_described_with_size_and_inks) {
  const JobId id = KeepOne("ada", R"([{"Green": 0.25, "Gold": 1}])");
  const auto answer = Ask(At(id, ""));
  ASSERT_EQ(answer.status, 200);
  const auto pages = nlohmann::json::parse(answer.text);
  EXPECT_EQ(pages["job"], id);
  EXPECT_EQ(pages["count"], 1);
  const auto& page = pages["pages"][0];
  EXPECT_EQ(page["number"], 1);
  EXPECT_EQ(page["width"], 300);
  EXPECT_EQ(page["height"], 2);
  EXPECT_DOUBLE_EQ(page["widthMm"], 25.4);  // at 300 pixels per inch
  EXPECT_NEAR(page["heightMm"], 2 / 150.0 * 25.4, 1e-9);
  EXPECT_EQ(page["levels"], 2);
  EXPECT_EQ(page["cut"], false);
  EXPECT_EQ(page["inks"][0], (nlohmann::json{{"name", "Red"}, {"colour", "#ff0000"}}));
  EXPECT_EQ(page["inks"][1],
            (nlohmann::json{{"name", "Green"}, {"colour", "#00ff00"}, {"coverage", 0.25}}));
}

TEST_F(PreviewRoutes, of_more_than_a_thousand_pages_all_are_counted_and_a_thousand_described) {
  std::vector<std::string> names;
  for (const std::size_t count : {999U, 1000U, 1001U}) {
    while (names.size() < count) {
      const std::string number = std::to_string(names.size() + 1);
      names.push_back("p" + std::string(4 - number.size(), '0') + number);
      test::WriteRgbPage(m_Root, "many.cfm/" + names.back(), 1, 1, "abc");
    }
    const auto pages = nlohmann::json::parse(Ask(At(Keep("many", names, "ada", ""), "")).text);
    EXPECT_EQ(pages["count"], count);
    EXPECT_EQ(pages["pages"].size(), std::min<std::size_t>(count, 1000));
  }
}

TEST_F(PreviewRoutes, a_job_without_pages_says_why) {
  const JobId id = Submit("sign", "ada", true);
  const auto pages = nlohmann::json::parse(Ask(At(id, "")).text);
  EXPECT_EQ(pages["count"], 0);
  EXPECT_EQ(pages["reason"], "The job is held and was not interpreted yet.");
  const auto picture = Ask(At(id, "/1.png"));
  EXPECT_EQ(picture.status, 404);
  EXPECT_EQ(Message(picture), "The job is held and was not interpreted yet.");
}

TEST_F(PreviewRoutes, pages_that_are_gone_are_said_to_be_gone) {
  const JobId id = KeepOne();
  fs::remove_all(m_Root.Path("one.cfm"));
  EXPECT_EQ(Message(Ask(At(id, "/1.png"))), "The kept pages of this job are gone.");
}

TEST_F(PreviewRoutes, only_a_visible_job_is_shown) {
  const JobId id = KeepOne("ada");
  for (const char* const path : {"", "/1.png", "/1/tile/0/0/0.png"}) {
    EXPECT_EQ(Ask(At(id, path), {}, Role::See, "ada").status, 200) << path;
    EXPECT_EQ(Ask(At(id, path), {}, Role::Manage, "eve").status, 200) << path;
    const auto other = Ask(At(id, path), {}, Role::Print, "eve");
    EXPECT_EQ(other.status, 404) << path;
    // The same answer as for a job that is not there.
    EXPECT_EQ(Message(other), "There is no job " + std::to_string(id) + ".");
  }
  EXPECT_EQ(Ask(At(id + 1, "/1.png")).status, 404);
}

TEST_F(PreviewRoutes, every_route_needs_a_person) {
  for (const Route& route : m_Router.Routes()) EXPECT_EQ(route.role, Role::See) << route.pattern;
}

TEST_F(PreviewRoutes, a_width_is_a_number_within_the_limit) {
  const JobId id = KeepOne();
  for (const char* width : {"1", "2047", "2048"})
    EXPECT_EQ(Ask(At(id, "/1.png"), {{"width", width}}).status, 200) << width;
  for (const char* width : {"", "0", "-1", "2049", "1.5", "12x", " 1", "99999999999999999999"})
    EXPECT_EQ(Ask(At(id, "/1.png"), {{"width", width}}).status, 400) << width;
}

TEST_F(PreviewRoutes, pages_and_tiles_that_do_not_exist_are_not_found) {
  const JobId id = KeepOne();
  for (const char* path : {"/0.png", "/2.png", "/1.jpg", "/.png", "/x.png", "/1/tile/2/0/0.png",
                           "/1/tile/0/2/0.png", "/1/tile/0/0/1.png", "/1/tile/0/0/0",
                           "/1/tile/x/0/0.png", "/2/tile/0/0/0.png", "/1/cut.svg", "/9/cut.svg"})
    EXPECT_EQ(Ask(At(id, path)).status, 404) << path;
  EXPECT_EQ(Ask(At(id, "/1/tile/0/1/0.png")).status, 200);
}

TEST_F(PreviewRoutes, an_ink_is_chosen_by_its_place) {
  const JobId id = KeepOne();
  const auto all = Ask(At(id, "/1/tile/0/0/0.png")).text;
  const auto gray = Ask(At(id, "/1/tile/0/0/0.png"), {{"ink", "2"}}).text;
  const auto blue = Ask(At(id, "/1/tile/0/0/0.png"), {{"ink", "2"}, {"tint", "1"}}).text;
  EXPECT_EQ(all[25], 2);  // color
  EXPECT_EQ(gray[25], 0);
  EXPECT_EQ(blue[25], 2);
  EXPECT_NE(all, blue);
  for (const char* ink : {"3", "", "-1", "Blue"})
    EXPECT_EQ(Ask(At(id, "/1/tile/0/0/0.png"), {{"ink", ink}}).status, 400) << ink;
}

TEST_F(PreviewRoutes, a_browser_that_has_a_picture_keeps_it_until_the_pixels_change) {
  const JobId id = KeepOne();
  const auto first = Ask(At(id, "/1.png"));
  const std::string tag = first.Header("ETag");
  ASSERT_FALSE(tag.empty());
  EXPECT_EQ(first.Header("Cache-Control"), "private, no-cache");
  EXPECT_EQ(Ask(At(id, "/1.png"), {}, Role::Manage, "ada", tag).status, 304);
  const std::string stamp = tag.substr(1, tag.size() - 2);
  EXPECT_EQ(Ask(At(id, "/1.png"), {{"stamp", stamp}}).Header("Cache-Control"),
            "private, max-age=604800, immutable");
  test::WriteRgbPage(m_Root, "one.cfm/p0001", 300, 2, std::string(1800, '\x42'));
  EXPECT_EQ(Ask(At(id, "/1.png"), {}, Role::Manage, "ada", tag).status, 200);
}

TEST_F(PreviewRoutes, a_picture_of_a_stored_width_is_made_once) {
  const JobId id = KeepOne();
  const std::string made = Ask(At(id, "/1.png"), {{"width", "128"}}).text;
  ASSERT_EQ(Stored(id).size(), 1U);
  // The stored picture is the answer: another one in its place shows it.
  const std::string other = Ask(At(id, "/1.png"), {{"width", "127"}}).text;
  EXPECT_EQ(Stored(id).size(), 1U);
  std::ofstream(Stored(id)[0], std::ios::binary) << other;
  EXPECT_EQ(Ask(At(id, "/1.png"), {{"width", "128"}}).text, other);
  std::ofstream(Stored(id)[0], std::ios::binary) << other.substr(0, other.size() - 1);
  EXPECT_EQ(Ask(At(id, "/1.png"), {{"width", "128"}}).text, made);
}

TEST_F(PreviewRoutes, a_picture_that_can_not_be_stored_is_shown_all_the_same) {
  const JobId id = KeepOne();
  fs::remove_all(m_Queue->DirectoryOf(id));
  EXPECT_EQ(Ask(At(id, "/1.png"), {{"width", "128"}}).status, 200);
}

TEST_F(PreviewRoutes, a_damaged_page_is_an_error_without_our_directories) {
  const JobId id = KeepOne();
  fs::resize_file(m_Root.Path("one.cfm/p0001/page.ppm"), 100);
  const auto answer = Ask(At(id, "/1.png"));
  EXPECT_EQ(answer.status, 500);
  EXPECT_NE(Message(answer).find("page.ppm"), std::string::npos) << Message(answer);
  EXPECT_EQ(Message(answer).find(m_Root.Path()), std::string::npos) << Message(answer);
}

TEST_F(PreviewRoutes, a_name_of_kept_pages_leads_nowhere_else) {
  Job job;
  for (const char* name : {"..", ".", "a/b", "../one"}) {
    job.spool = name;
    const auto pages = KeptPagesOf(m_Root.Path(), job);
    ASSERT_FALSE(pages) << name;
    EXPECT_EQ(pages.Error().why, "The name of the job's kept pages is none.");
  }
}

}  // namespace
}  // namespace rastrel::server::web
