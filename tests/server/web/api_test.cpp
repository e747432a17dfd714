#include <gtest/gtest.h>

#include <array>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "server/web/access/gate.h"
#include "server/web/access/password.h"
#include "server/web/access/users_file.h"
#include "server/web/api/event_feed.h"
#include "server/web/api/job_request.h"
#include "server/web/api/job_routes.h"
#include "server/web/api/session_routes.h"
#include "server/web/api/static_files.h"
#include "tests/server/web/web_test_support.h"

namespace rastrel::server::web {
namespace {

using Json = nlohmann::json;

class ApiTest : public WebTest {
 protected:
  ApiTest() { Start(); }
  [[nodiscard]] Json Get(const std::string& path) const {
    const Answer answer = Ask("GET /api/v1" + path);
    EXPECT_EQ(answer.status, 200) << path << answer.body;
    return Json::parse(answer.body, nullptr, false);
  }
  [[nodiscard]] static std::string JobPath(JobId id, const std::string& rest = {}) {
    return "/api/v1/jobs/" + std::to_string(id) + rest;
  }
};

TEST_F(ApiTest, lists_jobs_with_their_total) {
  for (const char* title : {"one", "two", "three"}) Submit("ada", title);
  Submit("bob", "four");
  const Json all = Get("/jobs?limit=2&offset=1&order=id&descending=false");
  EXPECT_EQ(all["total"], 4);
  ASSERT_EQ(all["jobs"].size(), 2U);
  EXPECT_EQ(all["jobs"][0]["title"], "two");
  EXPECT_EQ(Get("/jobs?owner=bob")["total"], 1);
  EXPECT_EQ(Get("/jobs?text=O")["total"], 3);
  EXPECT_EQ(Get("/jobs?state=held,failed")["total"], 0);
  EXPECT_EQ(Get("/jobs?device=Plotter&state=queued")["total"], 4);
  EXPECT_EQ(Get("/jobs?from=2026-01-01&until=2999-12-31")["total"], 4);
  EXPECT_EQ(Get("/jobs?until=2001-01-01")["total"], 0);
  EXPECT_EQ(Get("/jobs?from=253402300800000")["total"], 0);
}

TEST_F(ApiTest, refuses_filters_that_mean_nothing) {
  for (const char* query :
       {"state=none", "state=", "from=yesterday", "until=2026-02-30", "order=bytes", "limit=0",
        "limit=1001", "offset=-1", "limit=1x", "descending=yes", "offset=99999999999"})
    EXPECT_EQ(Ask(std::string("GET /api/v1/jobs?") + query).status,
              std::string(query) == "state=" ? 200 : 400)
        << query;
  EXPECT_EQ(Ask("GET /api/v1/jobs?limit=1000").status, 200);
}

TEST_F(ApiTest, changes_a_job_and_shows_it) {
  const JobId id = Submit("ada");
  const auto post = [&](const char* rest, const std::string& body = {}) {
    return Ask("POST " + JobPath(id, rest), body);
  };
  EXPECT_EQ(Json::parse(post("/hold").body)["state"], "held");
  const Answer twice = post("/hold");
  EXPECT_EQ(twice.status, 409);
  EXPECT_EQ(Json::parse(twice.body)["error"]["code"], "wrong-state");
  EXPECT_EQ(Json::parse(post("/release").body)["state"], "queued");
  EXPECT_EQ(Json::parse(post("/priority", R"({"priority":90})").body)["priority"], 90);
  EXPECT_EQ(Json::parse(post("/move", R"({"device":"Proofs"})").body)["device"], "Proofs");
  EXPECT_EQ(post("/accept").status, 409);
  EXPECT_EQ(Json::parse(post("/cancel").body)["state"], "canceled");
  EXPECT_EQ(Ask("DELETE " + JobPath(id)).status, 204);
  EXPECT_EQ(Ask("GET " + JobPath(id)).status, 404);
  EXPECT_EQ(post("/hold").status, 404);
}

TEST_F(ApiTest, refuses_changes_that_mean_nothing) {
  const JobId id = Submit("ada");
  for (const char* body : {"", "{}", "[]", "nonsense", R"({"priority":0})", R"({"priority":101})",
                           R"({"priority":1.5})", R"({"priority":null})"})
    EXPECT_EQ(Ask("POST " + JobPath(id, "/priority"), body).status, 400) << body;
  for (const char* body : {"", "{}", R"({"device":7})", R"({"device":"None"})"})
    EXPECT_EQ(Ask("POST " + JobPath(id, "/move"), body).status, 400) << body;
  EXPECT_EQ(Ask("POST " + JobPath(id, "/reprint"), "{}").status, 400);
  for (const char* id2 : {"0", "-1", "x", "1x", "99999999999999999999", "%31%00"})
    EXPECT_NE(Ask(std::string("GET /api/v1/jobs/") + id2).status, 200) << id2;
}

TEST_F(ApiTest, prints_kept_pages_again) {
  const JobId id = Submit("ada");
  ASSERT_TRUE(m_Queue->ClaimToInterpret());
  ASSERT_TRUE(m_Queue->SetReady(id, "job-1", 2, "[]"));
  const Answer answer = Ask("POST " + JobPath(id, "/reprint"), R"({"pages":"1"})");
  EXPECT_EQ(answer.status, 201);
  const Json job = Json::parse(answer.body);
  EXPECT_EQ(job["id"], id + 1);
  EXPECT_EQ(job["options"]["pages"], "1");
  EXPECT_NE(answer.head.find("Location: /api/v1/jobs/" + std::to_string(id + 1) + "\r\n"),
            std::string::npos);
}

TEST_F(ApiTest, takes_a_file_as_it_is_and_gives_it_back) {
  const std::string file = "%!PS\n\r\n" + std::string("\0\xff", 2) + "showpage";
  const Answer made = Ask("POST /api/v1/jobs?title=A%20sign&priority=70&hold=1&copies=2&key=k",
                          file, "Content-Type: application/pdf\r\n");
  ASSERT_EQ(made.status, 201) << made.body;
  const Json job = Json::parse(made.body);
  EXPECT_EQ(job["title"], "A sign");
  EXPECT_EQ(job["owner"], "ada");
  EXPECT_EQ(job["source"], "web");
  EXPECT_EQ(job["priority"], 70);
  EXPECT_EQ(job["state"], "held");
  EXPECT_EQ(job["device"], "*");
  EXPECT_EQ(job["options"], Json({{"copies", "2"}}));
  EXPECT_EQ(job["bytes"], file.size());
  const std::string path = JobPath(job["id"], "/file");
  const Answer back = Ask("GET " + path);
  EXPECT_EQ(back.body, file);
  EXPECT_NE(back.head.find("Content-Type: application/pdf\r\n"), std::string::npos);
  EXPECT_NE(back.head.find("attachment; filename=\"A sign.pdf\"; filename*=UTF-8''A%20sign.pdf"),
            std::string::npos);
  const Answer piece = Ask("GET " + path, "", "Range: bytes=2-3\r\n");
  EXPECT_EQ(piece.status, 206);
  EXPECT_EQ(piece.body, file.substr(2, 2));
  EXPECT_NE(piece.head.find("Content-Range: bytes 2-3/" + std::to_string(file.size()) + "\r\n"),
            std::string::npos)
      << piece.head;
  EXPECT_EQ(Ask("GET " + path, "", "Range: bytes=1000-\r\n").status, 416);
  // The same key again is the same job.
  const Answer again = Ask("POST /api/v1/jobs?key=k", file);
  EXPECT_EQ(Json::parse(again.body)["id"], job["id"]);
}

TEST_F(ApiTest, takes_a_form_with_a_file) {
  const std::string form =
      "--B\r\nContent-Disposition: form-data; name=\"title\"\r\n\r\n\r\n"
      "--B\r\nContent-Disposition: form-data; name=\"device\"\r\n\r\nPlotter\r\n"
      "--B\r\nContent-Disposition: form-data; name=\"file\"; "
      "filename=\"C:\\signs\\big.eps\"\r\n\r\n"
      "%!PS\r\n--B--\r\n";
  const Answer made =
      Ask("POST /api/v1/jobs", form, "Content-Type: multipart/form-data; boundary=B\r\n");
  ASSERT_EQ(made.status, 201) << made.body;
  const Json job = Json::parse(made.body);
  EXPECT_EQ(job["title"], "big.eps");
  EXPECT_EQ(job["device"], "Plotter");
  EXPECT_EQ(Ask("GET " + JobPath(job["id"], "/file")).body, "%!PS");
}

TEST_F(ApiTest, refuses_files_with_faults_of_their_fields) {
  const std::string file = "%!PS\n";
  EXPECT_EQ(Ask("POST /api/v1/jobs?nonsense=1", file).status, 400);
  EXPECT_EQ(Ask("POST /api/v1/jobs?device=None", file).status, 400);
  EXPECT_EQ(Ask("POST /api/v1/jobs?priority=0", file).status, 400);
  const auto form = [&](const std::string& body) {
    return Ask("POST /api/v1/jobs", body, "Content-Type: multipart/form-data; boundary=B\r\n")
        .status;
  };
  EXPECT_EQ(form("--B--\r\n"), 400);
  EXPECT_EQ(form("nothing"), 400);
  const std::string part =
      "--B\r\nContent-Disposition: form-data; name=\"file\"; filename=\"a\"\r\n\r\nx\r\n";
  EXPECT_EQ(form(part), 400);
  EXPECT_EQ(form(part + part + "--B--\r\n"), 400);
  EXPECT_EQ(Ask("POST /api/v1/jobs", "x", "Content-Type: multipart/form-data\r\n").status, 400);
  EXPECT_EQ(m_Queue->Count({}).ValueOr(-1), 0);
}

TEST_F(ApiTest, shows_the_story_of_a_job) {
  const JobId id = Submit("ada");
  ASSERT_TRUE(m_Queue->Hold(id));
  const Json all = Get("/jobs/1/events");
  ASSERT_EQ(all["events"].size(), 2U);
  EXPECT_EQ(all["events"][1]["text"], "held");
  EXPECT_EQ(all["more"], false);
  const Json first = Get("/jobs/1/events?limit=1");
  EXPECT_EQ(first["more"], true);
  const std::string after = std::to_string(first["events"][0]["number"].get<int>());
  EXPECT_EQ(Get("/jobs/1/events?after=" + after)["events"].size(), 1U);
  EXPECT_EQ(Ask("GET /api/v1/jobs/1/events?limit=1001").status, 400);
  EXPECT_EQ(Ask("GET /api/v1/jobs/2/events").status, 404);
}

TEST_F(ApiTest, shows_what_devices_do) {
  Submit("ada");
  const JobId id = Submit("ada");
  ASSERT_TRUE(m_Queue->SetPriority(id, 90));
  ASSERT_EQ((*m_Queue->ClaimToInterpret())->id, id);
  ASSERT_TRUE(m_Queue->SetReady(id, "job-2", 1, "[]"));
  Json devices = Get("/devices")["devices"];
  ASSERT_EQ(devices.size(), 2U);
  EXPECT_EQ(devices[0]["name"], "Plotter");
  EXPECT_EQ(devices[0]["state"], "idle");
  EXPECT_EQ(devices[0]["waiting"], 2);
  ASSERT_TRUE(*m_Queue->ClaimToDeliver("Plotter"));
  devices = Get("/devices")["devices"];
  EXPECT_EQ(devices[0]["state"], "working");
  EXPECT_EQ(devices[0]["job"], id);
  EXPECT_EQ(devices[0]["waiting"], 1);
  EXPECT_EQ(devices[1]["waiting"], 0);
}

// Handlers as users of other machines reach them.
class OwnersTest : public WebTest {
 protected:
  OwnersTest() : m_Shop(MakeShop()), m_Feed(*m_Queue) {
    AddJobViews(m_Router, m_Shop);
    AddJobChanges(m_Router, m_Shop);
    AddDevices(m_Router, m_Shop);
    AddEvents(m_Router, m_Feed, [](const std::string&, bool) { return true; });
    EXPECT_TRUE(m_Feed.Start());
    m_Own = Submit("ada", "own");
    m_Other = Submit("bob", "secret");
    EXPECT_EQ((*m_Queue->ClaimToInterpret())->id, m_Own);
    EXPECT_EQ((*m_Queue->ClaimToInterpret())->id, m_Other);
    EXPECT_TRUE(m_Queue->SetReady(m_Own, "job-1", 1, "[]"));
    EXPECT_TRUE(m_Queue->SetReady(m_Other, "job-2", 1, "[]"));
  }
  Response Call(Role role, Method method, const std::string& path, const Fields& query = {}) {
    auto match = m_Router.Find(method, path);
    EXPECT_TRUE(match.route) << path;
    Request request;
    request.method = method;
    request.path = path;
    request.query = query;
    request.places = match.places;
    request.caller = {"ada", role, false, ""};
    request.body = R"({"device":"Proofs","priority":7})";
    return match.route->handler(request);
  }

  Shop m_Shop;
  EventFeed m_Feed;
  Router m_Router;
  JobId m_Own = 0;
  JobId m_Other = 0;
};

TEST_F(OwnersTest, a_job_of_another_is_as_one_that_is_not_there) {
  for (const Role role : {Role::See, Role::Print}) {
    const std::string other = "/api/v1/jobs/" + std::to_string(m_Other);
    for (const char* rest : {"", "/events", "/file"}) {
      const Response answer = Call(role, Method::Get, other + rest);
      EXPECT_EQ(answer.status, 404) << rest;
      EXPECT_EQ(answer.text.find("secret"), std::string::npos);
    }
    for (const char* rest :
         {"/hold", "/release", "/cancel", "/accept", "/move", "/priority", "/reprint"})
      EXPECT_EQ(Call(role, Method::Post, other + rest).status, 404) << rest;
    EXPECT_EQ(Call(role, Method::Delete, other).status, 404);
  }
  EXPECT_EQ((*m_Queue->Find(m_Other))->state, JobState::Ready);
  EXPECT_EQ((*m_Queue->Find(m_Other))->priority, 50);
  EXPECT_EQ(m_Queue->Count({}).ValueOr(0), 2);
}

TEST_F(OwnersTest, lists_and_counts_have_the_own_jobs_alone) {
  for (const Fields& query :
       {Fields{}, Fields{{"text", "secret"}}, Fields{{"owner", "bob"}}, Fields{{"owner", ""}}}) {
    const Response list = Call(Role::See, Method::Get, "/api/v1/jobs", query);
    EXPECT_EQ(list.text.find("secret"), std::string::npos);
    const Json object = Json::parse(list.text);
    EXPECT_EQ(object["total"], object["jobs"].size());
    EXPECT_LE(object["total"], 1);
  }
  EXPECT_EQ(Call(Role::See, Method::Get, "/api/v1/jobs.csv").text,
            "job\r\n" + std::to_string(m_Own) + "\r\n");
  EXPECT_EQ(Json::parse(Call(Role::Manage, Method::Get, "/api/v1/jobs").text)["total"], 2);
}

TEST_F(OwnersTest, folders_of_the_server_are_shown_to_those_who_manage_alone) {
  ASSERT_EQ((*m_Queue->ClaimToDeliver("Plotter"))->id, m_Own);
  ASSERT_TRUE(m_Queue->AddMessage(m_Own, "delivered /srv/the shop/own-1.tif"));
  ASSERT_TRUE(m_Queue->SetFailed(m_Own, 1, "can't write '/srv/the shop/own-2.tif'"));
  const std::string own = "/api/v1/jobs/" + std::to_string(m_Own);
  for (const std::string& path : {own, own + "/events", std::string("/api/v1/jobs")}) {
    const std::string all = Call(Role::Manage, Method::Get, path).text;
    EXPECT_NE(all.find("/srv/the shop/own-"), all.npos) << all;
    for (const Role role : {Role::See, Role::Print}) {
      const std::string text = Call(role, Method::Get, path).text;
      EXPECT_EQ(text.find("/srv"), text.npos) << text;
      EXPECT_NE(text.find("own-"), text.npos) << text;
    }
  }
}

TEST_F(OwnersTest, devices_show_the_own_jobs_alone) {
  ASSERT_EQ((*m_Queue->ClaimToDeliver("Plotter"))->id, m_Own);
  ASSERT_TRUE(m_Queue->SetDone(m_Own));
  ASSERT_EQ((*m_Queue->ClaimToDeliver("Plotter"))->id, m_Other);
  const Json own = Json::parse(Call(Role::Print, Method::Get, "/api/v1/devices").text);
  EXPECT_EQ(own["devices"][0]["state"], "idle");
  EXPECT_EQ(own["devices"][0]["waiting"], 0);
  const Json all = Json::parse(Call(Role::Manage, Method::Get, "/api/v1/devices").text);
  EXPECT_EQ(all["devices"][0]["job"], m_Other);
}

TEST_F(OwnersTest, events_are_those_of_the_own_jobs) {
  Request request;
  request.caller = {"ada", Role::See, false, ""};
  request.query = {{"after", "0"}};
  const Response answer = m_Router.Find(Method::Get, "/api/v1/events").route->handler(request);
  ASSERT_TRUE(answer.stream);
  ASSERT_TRUE(m_Queue->SetPriority(m_Other, 9));
  ASSERT_TRUE(m_Queue->Cancel(m_Other));
  ASSERT_TRUE(m_Queue->Cancel(m_Own));
  std::string text;
  EXPECT_TRUE(test::WaitUntil([&] {
    std::array<char, 1024> piece{};
    text.append(piece.data(), answer.stream->Take(piece.data(), piece.size()));
    return text.find("\"canceled\"") != text.npos;
  }));
  EXPECT_EQ(text.find("\"job\":" + std::to_string(m_Other)), text.npos) << text;
  EXPECT_EQ(text.find("changed"), text.npos);
  answer.stream->Abandon();
}

TEST_F(OwnersTest, who_may_only_look_is_offered_no_action) {
  const auto actions = [&](Role role) {
    const Response answer = Call(role, Method::Get, "/api/v1/jobs/" + std::to_string(m_Own));
    return Json::parse(answer.text)["actions"];
  };
  EXPECT_TRUE(actions(Role::See).empty());
  EXPECT_FALSE(actions(Role::Print).empty());
}

TEST_F(OwnersTest, the_actions_that_are_offered_are_those_that_the_queue_takes) {
  // In `ready` nothing but hold, cancel, move, priority, reprint and remove is taken.
  const Response answer = Call(Role::Print, Method::Get, "/api/v1/jobs/" + std::to_string(m_Own));
  EXPECT_EQ(Json::parse(answer.text)["actions"],
            Json({"hold", "cancel", "move", "priority", "reprint", "remove"}));
  EXPECT_EQ(
      Call(Role::Print, Method::Post, "/api/v1/jobs/" + std::to_string(m_Own) + "/release").status,
      409);
}

// The least role of each route of the interface.
TEST_F(WebTest, each_route_has_its_role) {
  const std::map<std::string, Role> wanted{
      {"GET /", Role::Nobody},
      {"GET /static/{name}", Role::Nobody},
      {"GET /api/v1/health", Role::Nobody},
      {"GET /api/v1/openapi.json", Role::Nobody},
      {"GET /api/v1/session", Role::Nobody},
      {"POST /api/v1/session", Role::Nobody},
      {"DELETE /api/v1/session", Role::See},
      {"POST /api/v1/handover", Role::Manage},
      {"GET /api/v1/jobs", Role::See},
      {"GET /api/v1/jobs.csv", Role::See},
      {"GET /api/v1/jobs/{id}", Role::See},
      {"GET /api/v1/jobs/{id}/events", Role::See},
      {"GET /api/v1/jobs/{id}/file", Role::See},
      {"GET /api/v1/events", Role::See},
      {"GET /api/v1/devices", Role::See},
      {"GET /api/v1/modes", Role::See},
      {"POST /api/v1/jobs", Role::Print},
      {"POST /api/v1/jobs/{id}/hold", Role::Print},
      {"POST /api/v1/jobs/{id}/release", Role::Print},
      {"POST /api/v1/jobs/{id}/cancel", Role::Print},
      {"POST /api/v1/jobs/{id}/accept", Role::Print},
      {"POST /api/v1/jobs/{id}/move", Role::Print},
      {"POST /api/v1/jobs/{id}/priority", Role::Print},
      {"POST /api/v1/jobs/{id}/reprint", Role::Print},
      {"DELETE /api/v1/jobs/{id}", Role::Print},
      {"GET /api/v1/templates", Role::See},
      {"GET /api/v1/templates/{name}", Role::See},
      {"GET /api/v1/templates/{name}/sample.png", Role::See},
      {"POST /api/v1/templates/{name}/picture", Role::See},
      {"POST /api/v1/templates/{name}/jobs", Role::Print},
      {"POST /api/v1/templates/{name}/tables", Role::Print},
  };
  Start();
  std::map<std::string, Role> found;
  for (const Route& route : m_Server->Routes())
    if (route.pattern.starts_with("/api/") || route.pattern == "/" ||
        route.pattern.starts_with("/static/"))
      found[std::string(NameOf(route.method)) + " " + route.pattern] = route.role;
  for (const auto& [name, role] : wanted) EXPECT_EQ(found[name], role) << name;
  for (const auto& [name, role] : found)
    EXPECT_TRUE(wanted.contains(name) || name.find("/jobs/{id}/pages") != name.npos) << name;
}

// Each role at each route, as the gate lets it in.
TEST_F(WebTest, each_role_comes_to_its_routes_alone) {
  Start();
  Gate gate({Root(), "ada", "token", {"shop"}}, {.requests = 10000});
  ASSERT_TRUE(WriteUsers(Root(), {{"s", Role::See, *HashOfPassword("password")},
                                  {"p", Role::Print, *HashOfPassword("password")},
                                  {"m", Role::Manage, *HashOfPassword("password")}}));
  Request base;
  base.isSecure = true;
  base.address = "10.0.0.7";
  base.headers = {{"host", "shop"}};
  const auto signedIn = [&](const std::string& name) {
    Request request = base;
    Caller caller;
    std::string secret;
    EXPECT_FALSE(gate.SignInByPassword(base, name, "password", caller, secret));
    request.cookies = {{SessionCookie, secret}};
    request.headers.emplace_back("x-csrf-token", caller.formToken);
    return request;
  };
  const std::map<Role, Request> callers{{Role::Nobody, base},
                                        {Role::See, signedIn("s")},
                                        {Role::Print, signedIn("p")},
                                        {Role::Manage, signedIn("m")}};
  for (const Route& route : m_Server->Routes())
    for (const auto& [role, caller] : callers) {
      Request request = caller;
      request.method = route.method;
      const auto refused = gate.Admit(request, &route, Door::Kind::Tls, 0);
      const int status = refused ? refused->status : 0;
      const int wanted = role >= route.role ? 0 : role == Role::Nobody ? 401 : 403;
      EXPECT_EQ(status, wanted) << NameOf(route.method) << route.pattern << " " << NameOf(role);
    }
}

}  // namespace
}  // namespace rastrel::server::web
