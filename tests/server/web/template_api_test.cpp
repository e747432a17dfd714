#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "rastrel/platform/os/base64.h"
#include "server/web/api/job_json.h"
#include "server/web/api/template_request.h"
#include "server/web/api/template_routes.h"
#include "server/web/pages/template_pages.h"
#include "tests/server/web/template_test_support.h"
#include "tests/server/web/web_test_support.h"

namespace rastrel::server::web {
namespace {

using Json = nlohmann::json;

constexpr const char* Badge = "/api/v1/templates/badge.xml";
constexpr const char* FormType = "Content-Type: application/x-www-form-urlencoded\r\n";

class TemplateApiTest : public WebTest {
 protected:
  TemplateApiTest() {
    m_RunMerge = m_Merge;
    WriteTemplate(Root() + "/templates", "badge.xml");
    Start();
  }
  Json Post(const std::string& path, const std::string& body, int status,
            const std::string& headers = {}) const {
    const Answer answer = Ask("POST " + path, body, headers);
    EXPECT_EQ(answer.status, status) << path << answer.body.substr(0, 400);
    return Json::parse(answer.body, nullptr, false);
  }
  // The jobs that there are.
  [[nodiscard]] std::int64_t Jobs() const { return m_Queue->Count({}).ValueOr(-1); }

  FakeMerge m_Merge;
};

TEST_F(TemplateApiTest, lists_templates_and_shows_their_fields) {
  WriteTemplate(Root() + "/templates", "crest.svg");
  const Json list = Json::parse(Ask("GET /api/v1/templates").body);
  ASSERT_EQ(list["templates"].size(), 1U);
  EXPECT_EQ(list["templates"][0]["name"], "badge.xml");
  const Json shown = Json::parse(Ask(std::string("GET ") + Badge).body);
  EXPECT_EQ(shown["fields"][0], Json({{"name", "Name"}, {"kind", "text"}, {"maximum", 255}}));
}

TEST_F(TemplateApiTest, a_folder_that_can_not_be_read_is_an_error_of_the_server) {
  std::filesystem::remove_all(Root() + "/templates");
  std::ofstream(Root() + "/templates") << "no folder";
  EXPECT_EQ(Ask("GET /api/v1/templates").status, 500);
}

TEST_F(TemplateApiTest, the_page_says_of_a_picture_that_fails_that_it_can_not_be_drawn) {
  m_Merge.state->fails = true;
  const Answer page = Ask("POST /templates/badge.xml", "action=draw&value.Name=Ada", FormType);
  EXPECT_EQ(page.status, 500);
  EXPECT_NE(page.body.find("The picture can not be drawn now."), std::string::npos) << page.body;
}

TEST_F(TemplateApiTest, draws_a_picture_of_the_values_of_json_or_of_a_form) {
  const std::string path = std::string(Badge) + "/picture";
  const std::string wanted = "PNG of \"Name\",\"Width\"\r\n\"A & B\",\"2\"\r\n";
  const Json of = Post(path, R"({"values":{"Name":"A & B","Width":"2"}})", 200);
  EXPECT_EQ(os::BytesFromBase64(of["picture"].get<std::string>()), wanted);
  EXPECT_EQ(of["widthMm"], 76.2);
  const Answer raw = Ask("POST " + path, "value.Name=A+%26+B&value.Width=2",
                         std::string(FormType) + "Accept: image/png\r\n");
  EXPECT_EQ(raw.status, 200);
  EXPECT_EQ(raw.body, wanted);
  EXPECT_NE(raw.head.find("image/png"), std::string::npos);
  EXPECT_NE(raw.head.find("no-store"), std::string::npos);
}

TEST_F(TemplateApiTest, the_sample_has_the_names_of_the_fields_and_is_drawn_once_for_all) {
  const std::string path = std::string("GET ") + Badge + "/sample.png";
  const Answer first = Ask(path);
  EXPECT_EQ(first.status, 200);
  EXPECT_EQ(first.body, "PNG of \"Name\",\"Width\"\r\n\"Name\",\"1\"\r\n");
  const std::size_t begin = first.head.find("ETag: ") + 6;
  const std::string tag = first.head.substr(begin, first.head.find("\r\n", begin) - begin);
  EXPECT_EQ(Ask(path, "", "If-None-Match: " + tag + "\r\n").status, 304);
  EXPECT_EQ(Ask(path, "", "If-None-Match: \"other\"\r\n").status, 200);
  EXPECT_EQ(m_Merge.Count("-o"), 1);
  EXPECT_NE(first.head.find("Cache-Control: private, no-cache"), std::string::npos);
  std::ofstream(Root() + "/templates/badge.xml", std::ios::app) << " ";
  EXPECT_EQ(Ask(path, "", "If-None-Match: " + tag + "\r\n").status, 200);
  EXPECT_EQ(m_Merge.Count("-o"), 2);
  m_Merge.state->draws = false;
  std::ofstream(Root() + "/templates/badge.xml", std::ios::app) << " ";
  EXPECT_EQ(Ask(path).status, 404);
}

TEST_F(TemplateApiTest, makes_a_merge_job_of_the_values) {
  const Json job =
      Post(std::string(Badge) + "/jobs",
           R"({"values":{"Name":"Ada"},"device":"Plotter","copies":2,"hold":true})", 201);
  EXPECT_EQ(job["work"], "merge");
  EXPECT_EQ(job["state"], "held");
  EXPECT_EQ(job["title"], "badge: Ada");
  EXPECT_EQ(job["owner"], "ada");
  EXPECT_EQ(
      job["options"],
      Json({{"blank", "plate"}, {"copies", "2"}, {"template", Root() + "/templates/badge.xml"}}));
  const auto kept = m_Queue->Find(job["id"].get<JobId>());
  EXPECT_EQ(ContentOf((*kept)->file), "\"Name\",\"Width\"\r\n\"Ada\",\"\"\r\n");
  EXPECT_TRUE(std::filesystem::is_empty(Root() + "/server/web/uploads"));
}

TEST_F(TemplateApiTest, makes_a_job_of_a_table) {
  const Json job = Post(std::string(Badge) + "/tables?title=monday&blank=3x1in&sheet=2",
                        "Name,Width\nAda,1\nEve,2\n", 201);
  EXPECT_EQ(job["work"], "merge");
  EXPECT_EQ(job["title"], "monday");
  EXPECT_EQ(job["options"]["sheet"], "2");
  EXPECT_EQ(job["options"]["template"], Root() + "/templates/badge.xml");
  EXPECT_EQ(ContentOf((*m_Queue->Find(job["id"].get<JobId>()))->file),
            "Name,Width\nAda,1\nEve,2\n");
}

TEST_F(TemplateApiTest, values_that_are_wrong_make_no_job_and_no_picture) {
  const std::string body = R"({"values":{"Name":"a\u001b[2Jb","Width":"wide","<b>":"x"}})";
  const Json refused = Post(std::string(Badge) + "/jobs", body, 400);
  EXPECT_EQ(refused["error"]["code"], "bad-values");
  ASSERT_EQ(refused["notes"].size(), 3U);
  EXPECT_EQ(refused["notes"][0]["field"], "Name");
  EXPECT_EQ(refused["notes"][1]["code"], "not-a-number");
  EXPECT_EQ(refused["notes"][2]["field"], "<b>");
  EXPECT_EQ(Post(std::string(Badge) + "/picture", body, 200)["picture"], Json());
  EXPECT_EQ(m_Merge.Count("-o"), 0);
  EXPECT_EQ(Jobs(), 0);
}

TEST_F(TemplateApiTest, a_job_takes_no_file_that_its_sender_names) {
  const Json job =
      Post(std::string(Badge) + "/jobs",
           R"({"values":{"Name":"Ada"},"template":"/etc/passwd","data":"/etc/shadow"})", 201);
  EXPECT_EQ(job["options"]["template"], Root() + "/templates/badge.xml");
  EXPECT_FALSE(job["options"].contains("data"));
  const Json table = Post(std::string(Badge) + "/tables?template=/etc/passwd&data=/etc/shadow",
                          "Name\nAda\n", 201);
  EXPECT_EQ(table["options"]["template"], Root() + "/templates/badge.xml");
  EXPECT_FALSE(table["options"].contains("data"));
}

TEST_F(TemplateApiTest, names_lead_out_of_the_directory_nowhere) {
  WriteTemplate(Root(), "secret.xml");
  ASSERT_EQ(::symlink((Root() + "/secret.xml").c_str(), (Root() + "/templates/link.xml").c_str()),
            0);
  for (const char* name :
       {"..%2Fsecret.xml", "..", "%2e%2e%2fsecret.xml", "%2Fetc%2Fpasswd", "link.xml", "secret.xml",
        "..%5Csecret.xml", "badge.xml%00", "%00", "%FF.xml", "badge.xml/../../secret.xml"}) {
    const std::string path = std::string("/api/v1/templates/") + name;
    for (const std::string& request :
         {"GET " + path, "POST " + path + "/picture", "POST " + path + "/jobs"}) {
      const Answer answer =
          Ask(request, request.starts_with("GET") ? "" : R"({"values":{"Name":"a"}})");
      EXPECT_TRUE(answer.status == 404 || answer.status == 400 || answer.status == 405)
          << request << answer.status;
      EXPECT_EQ(answer.body.find(Root()), std::string::npos) << answer.body;
    }
    EXPECT_NE(Ask("POST " + path + "/tables", "Name\na\n").status, 201) << name;
  }
  EXPECT_EQ(m_Merge.Count("merge"), 0);
  EXPECT_EQ(Jobs(), 0);
}

TEST_F(TemplateApiTest, bodies_that_are_too_much_are_refused) {
  const std::string picture = std::string(Badge) + "/picture";
  const auto withFields = [](int count) {
    Json values = Json::object();
    for (int i = 0; i < count; ++i) values["f" + std::to_string(i)] = "x";
    return Json({{"values", values}}).dump();
  };
  EXPECT_EQ(Post(picture, withFields(80), 200)["notes"].size(), 80U);
  Post(picture, withFields(81), 400);
  Post(picture, withFields(10000), 400);
  std::string form;
  for (int i = 0; i < 81; ++i) form += "value.f" + std::to_string(i) + "=x&";
  Post(picture, form, 400, FormType);
  for (int i = 81; i < 5000; ++i) form += "value.f" + std::to_string(i) + "=x&";
  Post(picture, form, 400, FormType);
  Post(picture, R"({"values":{"Name":")" + std::string(2'000'000, 'x') + "\"}}", 413);
  const Json large =
      Post(picture, R"({"values":{"Name":")" + std::string(1'000'000, 'x') + "\"}}", 200);
  EXPECT_EQ(large["notes"][0]["code"], "too-long");
  Post(picture, "value.Name=a&value.Name=b", 400, FormType);
  Post(picture, std::string(500'000, '['), 400);
  for (const char* body : {"[]", "7", "\"x\"", "{", R"({"values":[]})", R"({"values":{"Name":7}})",
                           R"({"values":{"Name":null}})", R"({"blank":{}})", R"({"blank":"wide"})"})
    Post(picture, body, 400);
  EXPECT_EQ(m_Merge.Count("-o"), 0);
}

TEST_F(TemplateApiTest, a_table_larger_than_a_job_is_refused) {
  m_Server.reset();
  m_JobMegabytes = 1;
  Start();
  EXPECT_EQ(Ask(std::string("POST ") + Badge + "/tables", std::string(1'000'001, 'x')).status, 413);
  EXPECT_EQ(Jobs(), 0);
}

TEST_F(TemplateApiTest, who_asks_too_often_is_told_when_to_come_again) {
  m_Server.reset();
  m_Settings.templates.atOnce = 1;
  m_Settings.templates.interval = std::chrono::hours(1);
  Start();
  const std::string path = std::string("POST ") + Badge + "/picture";
  EXPECT_EQ(Ask(path, R"({"values":{"Name":"a"}})").status, 200);
  const Answer second = Ask(path, R"({"values":{"Name":"b"}})");
  EXPECT_EQ(second.status, 429);
  EXPECT_NE(second.head.find("Retry-After: "), std::string::npos);
}

TEST_F(TemplateApiTest, a_drawing_that_does_not_end_is_a_failure_without_the_programs_words) {
  m_Merge.state->fails = true;
  const Json failed = Post(std::string(Badge) + "/picture", R"({"values":{"Name":"a"}})", 500);
  EXPECT_EQ(failed["error"]["code"], "failed");
  EXPECT_EQ(failed["error"]["message"], "the picture can't be drawn");
}

TEST_F(TemplateApiTest, without_sign_in_there_is_nothing) {
  for (const char* request : {"GET /api/v1/templates", "GET /api/v1/templates/badge.xml",
                              "GET /api/v1/templates/badge.xml/sample.png"})
    EXPECT_EQ(AskPort(request, Host()).status, 401) << request;
  for (const char* rest : {"/picture", "/jobs", "/tables"})
    EXPECT_EQ(AskPort(std::string("POST ") + Badge + rest, Host(), "{}").status, 401) << rest;
  // Also where a page would lead to the sign-in: nothing of the shop is in the answer.
  const Answer page = AskPort("GET /templates/badge.xml", Host());
  EXPECT_EQ(page.status, 303);
  EXPECT_NE(page.head.find("/login?next=%2Ftemplates%2Fbadge.xml"), std::string::npos);
  EXPECT_EQ(AskPort("GET /templates/none.xml", Host()).status, 303);
}

// A session of a browser: its cookie, and the token of its forms.
struct Session {
  std::string cookie;
  std::string token;
};

class TemplateSessionTest : public TemplateApiTest {
 protected:
  TemplateSessionTest() {
    const Answer in = AskPort("POST /api/v1/session", Host() + "Content-Type: application/json\r\n",
                              R"({"token":")" + Token() + "\"}");
    EXPECT_EQ(in.status, 200);
    const std::size_t begin = in.head.find("rastrel-session=");
    m_Session.cookie = in.head.substr(begin, in.head.find(';', begin) - begin);
    m_Session.token = Json::parse(in.body)["csrf"];
  }
  [[nodiscard]] Answer Send(const std::string& path, const std::string& body,
                            const std::string& headers = {}) const {
    return AskPort("POST " + path,
                   Host() + "Cookie: " + m_Session.cookie + "\r\n" + FormType + headers, body);
  }

  Session m_Session;
};

TEST_F(TemplateSessionTest, a_forged_form_does_nothing) {
  const std::string values = "value.Name=Ada&action=print";
  for (const char* path : {"/templates/badge.xml", "/api/v1/templates/badge.xml/jobs",
                           "/api/v1/templates/badge.xml/picture"}) {
    EXPECT_EQ(Send(path, values).status, 403) << path;
    EXPECT_EQ(Send(path, values + "&csrf=wrong").status, 403) << path;
    EXPECT_EQ(
        Send(path, values + "&csrf=" + m_Session.token, "Origin: http://evil.example\r\n").status,
        403)
        << path;
  }
  EXPECT_EQ(Jobs(), 0);
  EXPECT_EQ(m_Merge.Count("merge"), 0);
}

TEST_F(TemplateSessionTest, the_audit_log_has_jobs_and_forged_forms_and_no_pictures) {
  const std::string values = "value.Name=Ada&csrf=" + m_Session.token;
  EXPECT_EQ(Send("/api/v1/templates/badge.xml/picture", values).status, 200);
  EXPECT_EQ(Send("/templates/badge.xml", values + "&action=show").status, 200);
  const std::string before = ContentOf(AuditPath(Root()));
  EXPECT_EQ(before.find("badge.xml"), before.npos) << before;
  EXPECT_EQ(Send("/api/v1/templates/badge.xml/picture", "value.Name=Ada").status, 403);
  EXPECT_EQ(Send("/templates/badge.xml", values + "&action=print").status, 303);
  EXPECT_EQ(Send("/api/v1/templates/badge.xml/jobs", values).status, 201);
  // Of two buttons the first counts, so that none hides a job.
  EXPECT_EQ(Send("/templates/badge.xml", values + "&action=show&action=print").status, 200);
  EXPECT_EQ(Jobs(), 2);
  const std::string after = ContentOf(AuditPath(Root()));
  for (const char* path : {"/api/v1/templates/badge.xml/picture", "\"/templates/badge.xml\"",
                           "/api/v1/templates/badge.xml/jobs"})
    EXPECT_NE(after.find(path), after.npos) << path << after;
}

TEST_F(TemplateSessionTest, a_form_with_its_token_makes_the_job_and_leads_to_it) {
  const Answer made =
      Send("/templates/badge.xml", "value.Name=Ada&action=print&csrf=" + m_Session.token);
  EXPECT_EQ(made.status, 303);
  EXPECT_NE(made.head.find("Location: /jobs/1\r\n"), std::string::npos) << made.head;
  EXPECT_EQ(Jobs(), 1);
}

TEST_F(TemplateSessionTest, a_table_of_a_form_without_its_token_is_no_job) {
  const auto body = [](const std::string& token) {
    return "--b\r\nContent-Disposition: form-data; name=\"csrf\"\r\n\r\n" + token +
           "\r\n--b\r\nContent-Disposition: form-data; name=\"file\"; filename=\"n.csv\"\r\n\r\n"
           "Name\r\nAda\r\n\r\n--b--\r\n";
  };
  const auto send = [&](const std::string& token) {
    return AskPort("POST /templates/badge.xml/table",
                   Host() + "Cookie: " + m_Session.cookie +
                       "\r\nContent-Type: multipart/form-data; boundary=b\r\n",
                   body(token));
  };
  EXPECT_EQ(send("").status, 403);
  EXPECT_EQ(Jobs(), 0);
  const Answer made = send(m_Session.token);
  EXPECT_EQ(made.status, 303);
  EXPECT_NE(made.head.find("Location: /jobs/1\r\n"), std::string::npos);
  EXPECT_EQ(Jobs(), 1);
}

// Handlers as users of other machines reach them.
class TemplateOwnersTest : public WebTest {
 protected:
  TemplateOwnersTest() : m_Shop(MakeShop()) {
    WriteTemplate(Root() + "/templates", "badge.xml");
    WriteTemplate(Root() + "/templates", "broken.xml");
    std::filesystem::create_directories(Root() + "/drawn");
    m_Templates = std::make_unique<Templates>(Root() + "/templates", Root() + "/drawn", m_Merge,
                                              Templates::Limits());
    AddTemplates(m_Router, m_Shop, *m_Templates);
    AddTemplatePages(m_Router, m_Shop, *m_Templates);
  }
  Response Call(const std::string& name, Role role, Method method, const std::string& path,
                const Fields& form = {}) {
    auto match = m_Router.Find(method, path);
    EXPECT_TRUE(match.route) << path;
    Request request;
    request.method = method;
    request.path = path;
    request.places = match.places;
    request.caller = {name, role, false, ""};
    request.form = form;
    return match.route->handler(request);
  }

  Shop m_Shop;
  FakeMerge m_Merge;
  std::unique_ptr<Templates> m_Templates;
  Router m_Router;
};

TEST_F(TemplateOwnersTest, a_job_is_its_callers_and_names_no_folder_to_it) {
  const Json job = Json::parse(Call("bob", Role::Print, Method::Post, std::string(Badge) + "/jobs",
                                    {{"value.Name", "Ada"}, {"owner", "ada"}})
                                   .text);
  EXPECT_EQ(job["owner"], "bob");
  EXPECT_EQ(job["options"]["template"], "badge.xml");
}

TEST_F(TemplateOwnersTest, a_fault_of_a_template_names_its_folder_to_none_but_who_manages) {
  const std::string path = "/api/v1/templates/broken.xml";
  const Response seen = Call("bob", Role::See, Method::Get, path);
  EXPECT_EQ(seen.status, 400);
  EXPECT_EQ(seen.text.find("/root"), std::string::npos) << seen.text;
  EXPECT_NE(seen.text.find("broken.xml:3"), std::string::npos) << seen.text;
  EXPECT_NE(Call("ada", Role::Manage, Method::Get, path).text.find("/root/x/"), std::string::npos);
  EXPECT_EQ(Call("bob", Role::See, Method::Get, "/templates/broken.xml").text.find("/root"),
            std::string::npos);
}

TEST_F(TemplateOwnersTest, who_only_sees_gets_the_picture_and_no_job) {
  const Response shown = Call("bob", Role::See, Method::Post, "/templates/badge.xml",
                              {{"value.Name", "Ada"}, {"action", "show"}});
  EXPECT_EQ(shown.status, 200);
  EXPECT_NE(shown.text.find("data:image/png;base64,"), std::string::npos);
  EXPECT_EQ(shown.text.find("value=\"print\""), std::string::npos);
  EXPECT_EQ(shown.text.find("/table\""), std::string::npos);
  EXPECT_EQ(Call("bob", Role::See, Method::Post, "/templates/badge.xml",
                 {{"value.Name", "Ada"}, {"action", "print"}})
                .status,
            403);
  EXPECT_EQ(m_Queue->Count({}).ValueOr(-1), 0);
}

TEST_F(TemplateOwnersTest, each_persons_picture_is_drawn_for_them_alone) {
  const auto show = [&](const char* name) {
    return Call(name, Role::See, Method::Post, std::string(Badge) + "/picture",
                {{"value.Name", "x"}});
  };
  EXPECT_EQ(show("ada").status, 200);
  EXPECT_EQ(show("ada").status, 200);
  EXPECT_EQ(m_Merge.Count("-o"), 1);
  EXPECT_EQ(show("bob").status, 200);
  EXPECT_EQ(m_Merge.Count("-o"), 2);
}

}  // namespace
}  // namespace rastrel::server::web
