#include "server/web/pages/template_pages.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "tests/server/web/template_test_support.h"
#include "tests/support/shop_fixture.h"

namespace rastrel::server::web {
namespace {

constexpr const char* HostileName = "<img src=x onerror=alert(1)>&\"'.xml";

class TemplatePagesTest : public test::ShopFixture {
 protected:
  TemplatePagesTest() {
    m_Shop.pageFiles = RASTREL_SOURCE_DIR "/share/web";
    m_Shop.devices = [] { return std::vector<std::string>{"Plotter", "<b>Knife"}; };
    m_Shop.modes = [] { return std::vector<std::string>{"RGB/300 dpi.ps"}; };
    m_Shop.check = [](const JobRequest& request) -> Expected<void> {
      if (request.options.contains("copies") && request.options.at("copies") == "0")
        return FailureOf("'0' is no number of <copies>");
      return {};
    };
    WriteTemplate(m_Directory, "badge.xml");
    WriteTemplate(m_Directory, "broken.xml");
    WriteTemplate(m_Directory, HostileName);
    std::filesystem::create_directories(m_Place.Path() + "/drawn");
    m_Templates = std::make_unique<Templates>(m_Directory, m_Place.Path() + "/drawn", m_Merge,
                                              Templates::Limits());
    AddTemplatePages(m_Router, m_Shop, *m_Templates);
  }
  // The form sent with these fields.
  Response Send(const Fields& form, const std::string& language = "en",
                const std::string& path = "/templates/badge.xml") {
    const auto match = m_Router.Find(Method::Post, path);
    Request request;
    request.method = Method::Post;
    request.path = path;
    request.places = match.places;
    request.caller = {"ada", Role::Print, true, "secret-token"};
    request.headers = {{"accept-language", language}};
    request.form = form;
    return match.route->handler(request);
  }
  static bool Has(const Response& response, const std::string& text) {
    return response.text.find(text) != std::string::npos;
  }

  FakeMerge m_Merge;
  std::string m_Directory = m_Place.Path() + "/templates";
  std::unique_ptr<Templates> m_Templates;
};

TEST_F(TemplatePagesTest, who_has_not_signed_in_is_sent_to_do_so) {
  for (const char* path : {"/templates", "/templates/badge.xml", "/templates/none.xml"})
    EXPECT_EQ(Ask(path, {}, Role::Nobody, "").status, 303) << path;
}

TEST_F(TemplatePagesTest, the_list_leads_to_each_template_whatever_its_name_is) {
  const auto page = Ask("/templates");
  EXPECT_EQ(page.status, 200);
  EXPECT_TRUE(Has(page, "<a href=\"/templates/badge.xml\">"));
  EXPECT_FALSE(Has(page, "<img src=x"));
  EXPECT_TRUE(Has(page, "/templates/%3Cimg%20src%3Dx%20onerror%3Dalert%281%29%3E%26%22%27.xml\""));
  EXPECT_EQ(Ask(std::string("/templates/") + HostileName).status, 200);
}

TEST_F(TemplatePagesTest, each_field_has_its_label_its_hint_and_the_place_of_its_fault) {
  const auto page = Ask("/templates/badge.xml");
  EXPECT_EQ(page.status, 200);
  EXPECT_TRUE(Has(page,
                  "<label for=\"field-1\"><bdi>Name</bdi></label><input id=\"field-1\" "
                  "name=\"value.Name\" value=\"\""));
  EXPECT_TRUE(Has(page, "aria-describedby=\"field-1-hint field-1-note\""));
  EXPECT_TRUE(Has(page, "At most 255 characters"));
  EXPECT_TRUE(Has(page, "inputmode=\"decimal\""));
  EXPECT_TRUE(Has(page, "role=\"status\" aria-live=\"polite\">There is no picture yet."));
  // "Show" comes first: the Enter key in a field prints nothing.
  EXPECT_LT(page.text.find("value=\"show\""), page.text.find("value=\"print\""));
}

TEST_F(TemplatePagesTest, show_keeps_the_typed_values_and_has_the_picture) {
  const auto page = Send({{"value.Name", "A \"<b>\" & \xE2\x80\x8FZ\xC3\xBC"},
                          {"device", "<b>Knife"},
                          {"copies", "3"},
                          {"hold", "true"},
                          {"blank", "3x1in"},
                          {"action", "show"}});
  EXPECT_EQ(page.status, 200);
  // Also a mark of direction, which is only the writer's own.
  EXPECT_TRUE(Has(page, "value=\"A &quot;&lt;b&gt;&quot; &amp; \xE2\x80\x8FZ\xC3\xBC\""));
  EXPECT_TRUE(Has(page, "<option value=\"&lt;b&gt;Knife\" selected>"));
  EXPECT_TRUE(Has(page, "name=\"copies\" min=\"1\" max=\"999\" value=\"3\""));
  EXPECT_TRUE(Has(page, "value=\"true\" checked"));
  EXPECT_TRUE(Has(page, "value=\"3x1in\""));
  EXPECT_TRUE(Has(page, "<img src=\"data:image/png;base64,"));
  EXPECT_TRUE(Has(page, "name=\"csrf\" value=\"secret-token\""));
  EXPECT_EQ(m_Queue->Count({}).ValueOr(-1), 0);
}

TEST_F(TemplatePagesTest, faults_are_told_beside_their_fields_and_nothing_is_printed) {
  for (const char* action : {"show", "print"}) {
    const auto page =
        Send({{"value.Name", "a\x1b[2Jb"}, {"value.Width", "wide"}, {"action", action}});
    EXPECT_EQ(page.status, 400);
    EXPECT_TRUE(Has(page, "id=\"field-1-note\">A line end, tab or other control character"));
    EXPECT_TRUE(Has(page, "id=\"field-2-note\">Give a number, with a point"));
    EXPECT_TRUE(Has(page, "aria-invalid=\"true\""));
    EXPECT_TRUE(Has(page, "value=\"wide\""));
    EXPECT_FALSE(Has(page, "\x1b"));
  }
  EXPECT_EQ(m_Queue->Count({}).ValueOr(-1), 0);
}

TEST_F(TemplatePagesTest, print_leads_to_the_job) {
  const auto made = Send({{"value.Name", "Ada"}, {"device", "Plotter"}, {"action", "print"}});
  EXPECT_EQ(made.status, 303);
  EXPECT_EQ(made.Header("Location"), "/jobs/1");
  EXPECT_EQ(Get(1).title, "badge: Ada");
  EXPECT_EQ(Get(1).work, JobWork::Merge);
}

TEST_F(TemplatePagesTest, a_job_that_is_refused_says_why_and_keeps_the_values) {
  const auto page = Send({{"value.Name", "Ada"}, {"copies", "0"}, {"action", "print"}});
  EXPECT_EQ(page.status, 400);
  EXPECT_TRUE(Has(page, "role=\"alert\">&#39;0&#39; is no number of &lt;copies&gt;"));
  EXPECT_TRUE(Has(page, "value=\"Ada\""));
}

TEST_F(TemplatePagesTest, what_the_program_says_is_text) {
  m_Merge.state->lines =
      R"({"event":"left-out","text":"<script>x</script> \u001b[2J"})"
      "\n"
      R"({"event":"merge-row","placed":true,"overflowed":[{"text":"Ada","percent":150,"squeezed":true}]})"
      "\n";
  const auto page = Send({{"value.Name", "Ada"}, {"action", "show"}});
  EXPECT_TRUE(Has(page, "<li>Left out: &lt;script&gt;x&lt;/script&gt; \\x1b[2J.</li>"))
      << page.text;
  EXPECT_TRUE(Has(page, "id=\"field-1-note\">The text needs 150 % of its room and is squeezed."));
  EXPECT_FALSE(Has(page, "<script>x"));
}

TEST_F(TemplatePagesTest, a_template_with_a_fault_shows_the_fault_and_no_form) {
  const auto page = Ask("/templates/broken.xml");
  EXPECT_EQ(page.status, 400);
  EXPECT_TRUE(Has(page, "broken.xml:3: it has a fault"));
  EXPECT_FALSE(Has(page, "<form id=\"plate\""));
  const auto none = Ask("/templates/none.xml");
  EXPECT_EQ(none.status, 404);
  EXPECT_TRUE(Has(none, "There is no such template."));
}

TEST_F(TemplatePagesTest, a_template_with_more_fields_than_can_be_filled_in_takes_a_table) {
  WriteTemplate(m_Directory, "most.xml");
  WriteTemplate(m_Directory, "more.xml");
  m_Merge.state->fields = 80;
  const auto most = Ask("/templates/most.xml");
  EXPECT_TRUE(Has(most, "id=\"field-80\""));
  m_Merge.state->fields = 81;
  const auto more = Ask("/templates/more.xml");
  EXPECT_EQ(more.status, 200);
  EXPECT_FALSE(Has(more, "id=\"field-1\""));
  EXPECT_TRUE(Has(more, "more fields than can be filled in here; bring a table."));
  EXPECT_TRUE(Has(more, "action=\"/templates/more.xml/table\""));
}

TEST_F(TemplatePagesTest, speaks_german_where_the_browser_asks_for_it) {
  const auto page = Send({{"value.Width", "wide"}, {"action", "show"}}, "de-DE,de;q=0.9");
  EXPECT_TRUE(Has(page, "lang=\"de\""));
  EXPECT_TRUE(Has(page, "Geben Sie eine Zahl an, mit Punkt, etwa 2.5."));
  EXPECT_TRUE(Has(page, ">Drucken</button>"));
}

TEST_F(TemplatePagesTest, nothing_on_a_page_is_inline) {
  for (const Response& page :
       {Ask("/templates"), Ask("/templates/badge.xml"), Send({{"value.Name", "a"}})}) {
    EXPECT_FALSE(Has(page, " style="));
    EXPECT_FALSE(std::regex_search(page.text, std::regex("<[^>]* on[a-z]+=")));
    EXPECT_FALSE(std::regex_search(page.text, std::regex("<script>")));
  }
}

}  // namespace
}  // namespace rastrel::server::web
