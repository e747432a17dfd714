#include "server/web/pages/pages.h"

#include <gtest/gtest.h>

#include <regex>

#include "server/web/pages/words.h"
#include "tests/support/shop_fixture.h"

namespace rastrel::server::web {
namespace {

constexpr const char* Hostile = "</title><script>alert(1)</script>\" onload='x' \xE2\x80\xAEgnp";

class ShopPages : public test::ShopFixture {
 protected:
  ShopPages() {
    m_Shop.pageFiles = m_Root.Path("web");
    m_Root.Write("web/german.json", R"({"All jobs": "Alle Aufträge", "Job {0}": "Auftrag {0}"})");
    m_Shop.devices = [] { return std::vector<std::string>{"Plotter", "<b>Knife"}; };
    m_Shop.modes = [] { return std::vector<std::string>{"RGB/300 dpi.ps"}; };
    AddPages(m_Router, m_Shop);
  }
  static bool Has(const Response& response, const std::string& text) {
    return response.text.find(text) != std::string::npos;
  }
  std::string At(JobId id) { return "/jobs/" + std::to_string(id); }
};

TEST_F(ShopPages, who_has_not_signed_in_is_sent_to_do_so) {
  const auto answer = Ask("/jobs", {{"state", "held"}, {"text", "a&b"}}, Role::Nobody, "");
  EXPECT_EQ(answer.status, 303);
  EXPECT_EQ(answer.Header("Location"), "/login?next=%2Fjobs%3Fstate%3Dheld%26text%3Da%2526b");
  for (const char* const path : {"/", "/devices", "/jobs/1"})
    EXPECT_EQ(Ask(path, {}, Role::Nobody, "").status, 303) << path;
  EXPECT_EQ(Ask("/login", {}, Role::Nobody, "").status, 200);
}

TEST_F(ShopPages, a_hostile_title_is_text_on_every_page) {
  const JobId id = Submit(Hostile);
  for (const std::string& path : {std::string("/"), std::string("/jobs"), At(id)}) {
    const auto page = Ask(path);
    EXPECT_EQ(page.status, 200) << path;
    EXPECT_FALSE(Has(page, "<script>alert")) << path;
    EXPECT_FALSE(Has(page, "' onload")) << path;
    EXPECT_FALSE(Has(page, "\xE2\x80\xAE")) << path;
    EXPECT_TRUE(Has(page,
                    "&lt;/title&gt;&lt;script&gt;alert(1)&lt;/script&gt;&quot; "
                    "onload=&#39;x&#39; \\u202egnp"))
        << path;
  }
}

TEST_F(ShopPages, hostile_owners_devices_messages_and_queries_are_text) {
  const JobId id = Submit("sign", "<i>eve");
  ASSERT_TRUE(m_Queue->ClaimToInterpret());
  ASSERT_TRUE(m_Queue->AddMessage(id, "<img src=x onerror=y>"));
  ASSERT_TRUE(m_Queue->SetFailed(id, 1, "<u>why"));
  const auto page = Ask(At(id));
  EXPECT_TRUE(Has(page, "&lt;i&gt;eve"));
  EXPECT_TRUE(Has(page, "&lt;img src=x"));
  EXPECT_TRUE(Has(page, "&lt;u&gt;why"));
  for (const char* const markup : {"<i>", "<img src=x", "<u>"})
    EXPECT_FALSE(Has(page, markup)) << markup;
  const auto list = Ask("/jobs", {{"text", "\"><s>"}, {"device", "<b>Knife"}});
  EXPECT_EQ(list.status, 200);
  EXPECT_FALSE(Has(list, "<s>"));
  EXPECT_FALSE(Has(list, "<b>"));
  EXPECT_TRUE(Has(list, "value=\"&quot;&gt;&lt;s&gt;\""));
}

TEST_F(ShopPages, the_template_of_a_merge_is_named_without_its_folder_but_to_who_manages) {
  m_Root.Write("names.csv", "Name\nAda\n");
  JobRequest request;
  request.path = m_Root.Path("names.csv");
  request.title = "names";
  request.source = "web";
  request.device = "Plotter";
  request.owner = "ada";
  request.work = JobWork::Merge;
  request.options = {{"template", "/srv/shop/badge.xml"}, {"mode", "RGB/300 dpi.ps"}};
  const std::string page = At(m_Queue->Submit(request).ValueOr(0));
  EXPECT_TRUE(Has(Ask(page, {}, Role::See), "<bdi>badge.xml</bdi>"));
  EXPECT_FALSE(Has(Ask(page, {}, Role::See), "/srv/shop"));
  // The name of another option is no path.
  EXPECT_TRUE(Has(Ask(page, {}, Role::See), "<bdi>RGB/300 dpi.ps</bdi>"));
  EXPECT_TRUE(Has(Ask(page), "<bdi>/srv/shop/badge.xml</bdi>"));
}

TEST_F(ShopPages, nothing_on_a_page_is_inline) {
  const JobId id = Submit();
  for (const std::string& path : {std::string("/"), std::string("/jobs"), At(id),
                                  std::string("/devices"), std::string("/login")}) {
    const auto page = Ask(path);
    EXPECT_FALSE(Has(page, " style=")) << path;
    EXPECT_FALSE(Has(page, "<style")) << path;
    EXPECT_FALSE(std::regex_search(page.text, std::regex("<[^>]* on[a-z]+="))) << path;
    EXPECT_FALSE(std::regex_search(page.text, std::regex("<script>"))) << path;
    EXPECT_FALSE(Has(page, "http:")) << path;
    EXPECT_FALSE(Has(page, "https:")) << path;
  }
}

TEST_F(ShopPages, another_ones_job_is_not_there) {
  const JobId id = Submit("secret", "ada");
  EXPECT_EQ(Ask(At(id), {}, Role::Print, "ada").status, 200);
  const auto other = Ask(At(id), {}, Role::Print, "eve");
  EXPECT_EQ(other.status, 404);
  EXPECT_FALSE(Has(other, "secret"));
  EXPECT_FALSE(Has(Ask("/", {}, Role::Print, "eve"), "secret"));
  EXPECT_FALSE(Has(Ask("/jobs", {}, Role::Print, "eve"), "secret"));
  EXPECT_FALSE(Has(Ask("/jobs", {{"owner", "ada"}}, Role::See, "eve"), "secret"));
  EXPECT_TRUE(Has(Ask("/jobs", {{"owner", "ada"}}, Role::Manage, "eve"), "secret"));
}

TEST_F(ShopPages, a_job_that_is_no_number_or_not_there_is_a_page_that_says_so) {
  for (const char* const path : {"/jobs/0", "/jobs/9", "/jobs/x", "/jobs/-1"}) {
    const auto page = Ask(path);
    EXPECT_EQ(page.status, 404) << path;
    EXPECT_TRUE(Has(page, "There is no such job")) << path;
  }
}

TEST_F(ShopPages, a_bad_filter_is_a_page_that_says_why) {
  const auto page = Ask("/jobs", {{"state", "<b>"}});
  EXPECT_EQ(page.status, 400);
  EXPECT_TRUE(Has(page, "there is no state &#39;&lt;b&gt;&#39;"));
}

TEST_F(ShopPages, a_long_list_comes_in_pieces_of_fifty) {
  for (int i = 0; i < 50; ++i) Submit("one");
  EXPECT_FALSE(Has(Ask("/jobs"), "rel=\"next\""));
  Submit("the fifty-first");
  const auto first = Ask("/jobs", {{"text", "e"}, {"state", "queued"}});
  EXPECT_TRUE(Has(first,
                  "rel=\"next\" href=\"/jobs?text=e&amp;state=queued&amp;limit=50&amp;"
                  "offset=50\""));
  EXPECT_FALSE(Has(first, "rel=\"prev\""));
  EXPECT_FALSE(Has(Ask("/jobs", {{"order", "id"}, {"descending", "true"}, {"offset", "50"}}),
                   "fifty-first"));
  EXPECT_TRUE(Has(Ask("/jobs", {{"offset", "50"}}), "rel=\"prev\""));
}

TEST_F(ShopPages, only_who_may_bring_jobs_gets_the_form_for_it) {
  EXPECT_FALSE(Has(Ask("/", {}, Role::See), "id=\"upload\""));
  EXPECT_TRUE(Has(Ask("/", {}, Role::Print), "id=\"upload\""));
}

TEST_F(ShopPages, the_page_of_a_job_shows_the_chosen_page) {
  test::WriteRgbPage(m_Root, "two.cfm/p0001", 2, 2, test::CountingBytes(12));
  test::WriteRgbPage(m_Root, "two.cfm/p0002", 2, 2, test::CountingBytes(12));
  const JobId id = Keep("two", {"p0001", "p0002"});
  const std::string picture = "/api/v1/jobs/" + std::to_string(id) + "/pages/";
  EXPECT_TRUE(Has(Ask(At(id)), picture + "1.png?width=1024"));
  EXPECT_TRUE(Has(Ask(At(id), {{"page", "2"}}), picture + "2.png?width=1024"));
  for (const char* const page : {"0", "3", "x", "\"><b>"})
    EXPECT_TRUE(Has(Ask(At(id), {{"page", page}}), picture + "1.png?width=1024")) << page;
}

TEST_F(ShopPages, the_sign_in_leads_to_no_other_server) {
  EXPECT_TRUE(Has(Ask("/login", {{"next", "/jobs/3"}}), "name=\"next\" value=\"/jobs/3\""));
  for (const char* const next : {"//evil.example/", "https://evil.example/", "javascript:x", ""})
    EXPECT_TRUE(Has(Ask("/login", {{"next", next}}), "name=\"next\" value=\"/\"")) << next;
}

TEST_F(ShopPages, a_german_browser_gets_german_and_the_rest_in_english) {
  Request request;
  request.headers.emplace_back("accept-language", "de-AT,de;q=0.9,en;q=0.5");
  const Words words = Words::Read(m_Shop.pageFiles).For(request);
  EXPECT_STREQ(words.Language(), "de");
  EXPECT_EQ(words("All jobs"), "Alle Aufträge");
  EXPECT_EQ(words("Job {0}", "7"), "Auftrag 7");
  EXPECT_EQ(words("Devices"), "Devices");
  request.headers[0].second = "en-GB,de;q=0.5";
  EXPECT_EQ(Words::Read(m_Shop.pageFiles).For(request)("All jobs"), "All jobs");
  request.headers[0].second = "de";
  EXPECT_STREQ(Words::Read(m_Root.Path("nowhere")).For(request).Language(), "en");
}

}  // namespace
}  // namespace rastrel::server::web
