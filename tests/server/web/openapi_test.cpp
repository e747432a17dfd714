#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "tests/server/web/template_test_support.h"
#include "tests/server/web/web_test_support.h"

namespace rastrel::server::web {
namespace {

using Json = nlohmann::json;

Json Description() {
  std::ifstream file(RASTREL_SOURCE_DIR "/share/web/openapi.json");
  return Json::parse(file, nullptr, false);
}

std::string LowerName(Method method) {
  return method == Method::Get ? "get" : method == Method::Post ? "post" : "delete";
}

// Enough of JSON Schema for the description: the fault of a value, or an empty text.
class Schema {
 public:
  explicit Schema(const Json& description) : m_Description(description) {}

  [[nodiscard]] std::string FaultOf(const Json& schema, const Json& value,
                                    const std::string& at) const {
    if (schema.contains("$ref"))
      return FaultOf(
          m_Description.at(Json::json_pointer(schema["$ref"].get<std::string>().substr(1))), value,
          at);
    if (schema.contains("type") && !HasType(schema["type"], value)) return at + " has another type";
    if (schema.contains("enum") && !Contains(schema["enum"], value))
      return at + " is " + value.dump();
    if (value.is_array() && schema.contains("items"))
      for (const Json& item : value)
        if (auto fault = FaultOf(schema["items"], item, at + "[]"); !fault.empty()) return fault;
    return value.is_object() ? FaultOfObject(schema, value, at) : "";
  }

 private:
  [[nodiscard]] std::string FaultOfObject(const Json& schema, const Json& value,
                                          const std::string& at) const {
    if (schema.contains("required"))
      for (const Json& name : schema["required"])
        if (!value.contains(name.get<std::string>())) return at + " has no " + name.dump();
    const Json properties = schema.value("properties", Json::object());
    for (const auto& [name, member] : value.items()) {
      if (properties.contains(name)) {
        if (auto fault = FaultOf(properties[name], member, at + "." + name); !fault.empty())
          return fault;
      } else if (schema.contains("additionalProperties") &&
                 schema["additionalProperties"] == false) {
        return at + " has " + name;
      }
    }
    return "";
  }
  static bool Contains(const Json& list, const Json& value) {
    return std::find(list.begin(), list.end(), value) != list.end();
  }
  static bool HasType(const Json& type, const Json& value) {
    if (type.is_array()) {
      for (const Json& one : type)
        if (HasType(one, value)) return true;
      return false;
    }
    if (type == "object") return value.is_object();
    if (type == "array") return value.is_array();
    if (type == "string") return value.is_string();
    if (type == "integer") return value.is_number_integer();
    if (type == "number") return value.is_number();
    if (type == "boolean") return value.is_boolean();
    return type == "null" && value.is_null();
  }

  const Json& m_Description;
};

class OpenApiTest : public WebTest {
 protected:
  OpenApiTest() : m_Description(Description()) {
    m_RunMerge = FakeMerge{};
    WriteTemplate(Root() + "/templates", "badge.xml");
    WriteTemplate(Root() + "/templates", "broken.xml");
    Start();
  }

  /// Asks, and holds the answer against the description of its status.
  Json Check(const std::string& method, const std::string& pattern, const std::string& path,
             int status, const std::string& body = {}) {
    std::string upper = method;
    for (char& one : upper) one = static_cast<char>(one - 'a' + 'A');
    const Answer answer = Ask(upper + " " + path, body);
    EXPECT_EQ(answer.status, status) << path << " " << answer.body;
    Json response =
        m_Description["paths"][pattern][method]["responses"][std::to_string(answer.status)];
    EXPECT_FALSE(response.is_null()) << method << pattern << answer.status;
    if (response.contains("$ref"))
      response =
          m_Description.at(Json::json_pointer(response["$ref"].get<std::string>().substr(1)));
    m_Checked.insert(method + " " + pattern);
    if (answer.body.empty()) {
      EXPECT_FALSE(response.contains("content")) << pattern;
      return {};
    }
    const Json& content = response["content"];
    if (!content.contains("application/json")) return {};
    const Json value = Json::parse(answer.body, nullptr, false);
    EXPECT_EQ(Schema(m_Description).FaultOf(content["application/json"]["schema"], value, "answer"),
              "")
        << path << answer.body;
    return value;
  }

  void CheckTemplates() {
    const std::string all = "/api/v1/templates";
    const std::string one = all + "/{name}";
    const std::string badge = all + "/badge.xml";
    const std::string values = R"({"values":{"Name":"Ada"}})";
    EXPECT_EQ(Check("get", all, all, 200)["templates"].size(), 2U);
    EXPECT_EQ(Check("get", one, badge, 200)["fields"].size(), 2U);
    Check("get", one, all + "/none.xml", 404);
    Check("get", one, all + "/broken.xml", 400);
    Check("get", one + "/sample.png", badge + "/sample.png", 200);
    Check("get", one + "/sample.png", all + "/broken.xml/sample.png", 400);
    Check("get", one + "/sample.png", all + "/none.xml/sample.png", 404);
    EXPECT_EQ(Check("post", one + "/picture", badge + "/picture", 200, values)["pages"], 1);
    EXPECT_EQ(Check("post", one + "/picture", badge + "/picture", 200, "{}")["picture"], Json());
    Check("post", one + "/picture", badge + "/picture", 400, "[]");
    Check("post", one + "/picture", all + "/none.xml/picture", 404, values);
    EXPECT_EQ(Check("post", one + "/jobs", badge + "/jobs", 201, values)["work"], "merge");
    Check("post", one + "/jobs", badge + "/jobs", 400, "{}");
    Check("post", one + "/jobs", badge + "/jobs", 400, R"({"values":{"Name":"a"},"device":"x"})");
    Check("post", one + "/tables", badge + "/tables", 201, "Name,Team\nAda,A\n");
    Check("post", one + "/tables", badge + "/tables?blank=wide", 400, "Name\nAda\n");
    Check("post", one + "/tables", all + "/none.xml/tables", 404, "Name\nAda\n");
  }

  Json m_Description;
  std::set<std::string> m_Checked;
};

TEST_F(OpenApiTest, describes_each_route_with_its_role_and_no_other) {
  ASSERT_TRUE(m_Description.is_object());
  EXPECT_EQ(m_Description["openapi"], "3.1.0");
  std::map<std::string, std::string> described;
  for (const auto& [path, methods] : m_Description["paths"].items())
    for (const auto& [method, operation] : methods.items())
      described[method + " " + path] = operation["x-role"];
  std::map<std::string, std::string> routes;
  for (const Route& route : m_Server->Routes())
    if (route.pattern.starts_with("/api/v1/"))
      routes[LowerName(route.method) + " " + route.pattern] = NameOf(route.role);
  EXPECT_EQ(described, routes);
}

TEST_F(OpenApiTest, describes_each_answer) {
  const std::string jobs = "/api/v1/jobs";
  const std::string job = jobs + "/{id}";
  const JobId id = Submit("ada");
  const std::string own = jobs + "/" + std::to_string(id);
  ASSERT_TRUE(m_Queue->ClaimToInterpret());
  ASSERT_TRUE(m_Queue->SetReady(id, "job-1", 2, R"([{"Black":0.25},{"Black":0.5}])"));
  Check("get", "/api/v1/health", "/api/v1/health", 200);
  Check("get", "/api/v1/session", "/api/v1/session", 200);
  Check("post", "/api/v1/session", "/api/v1/session", 400, "{}");
  Check("post", "/api/v1/session", "/api/v1/session", 401, R"({"token":"x"})");
  Check("delete", "/api/v1/session", "/api/v1/session", 204);
  const Json code = Check("post", "/api/v1/handover", "/api/v1/handover", 201);
  Check("post", "/api/v1/session", "/api/v1/session", 200, code.dump());
  EXPECT_EQ(Check("get", jobs, jobs, 200)["jobs"].size(), 1U);
  Check("get", jobs, jobs + "?limit=0", 400);
  Check("post", jobs, jobs + "?title=a", 201, "%!PS\n");
  Check("post", jobs, jobs + "?nonsense=a", 400, "%!PS\n");
  Check("get", "/api/v1/jobs.csv", "/api/v1/jobs.csv", 200);
  EXPECT_EQ(Check("get", job, own, 200)["ink"][1]["Black"], 0.5);
  Check("get", job, jobs + "/99", 404);
  EXPECT_EQ(Check("get", job + "/events", own + "/events", 200)["events"].size(), 3U);
  Check("get", job + "/file", own + "/file", 200);
  // Its pages are gone, so that there is a reason and no picture.
  EXPECT_EQ(Check("get", job + "/pages", own + "/pages", 200)["count"], 0);
  Check("get", job + "/pages/{picture}", own + "/pages/1.png", 404);
  Check("get", job + "/pages/{picture}", own + "/pages/1.png?width=0", 400);
  Check("get", job + "/pages/{page}/tile/{level}/{column}/{picture}",
        own + "/pages/1/tile/0/0/0.png", 404);
  Check("get", job + "/pages/{page}/cut.svg", own + "/pages/1/cut.svg", 404);
  Check("post", job + "/hold", own + "/hold", 200);
  Check("post", job + "/hold", own + "/hold", 409);
  Check("post", job + "/release", own + "/release", 200);
  Check("post", job + "/move", own + "/move", 200, R"({"device":"Proofs"})");
  Check("post", job + "/priority", own + "/priority", 200, R"({"priority":1})");
  Check("post", job + "/reprint", own + "/reprint", 201, R"({"pages":"1"})");
  Check("post", job + "/accept", own + "/accept", 409);
  Check("post", job + "/cancel", own + "/cancel", 200);
  Check("get", "/api/v1/devices", "/api/v1/devices", 200);
  Check("get", "/api/v1/modes", "/api/v1/modes", 200);
  CheckTemplates();
  Check("delete", job, own, 204);
  Check("delete", job, own, 404);
  // A stream has no end, and the description itself is one of the page's files.
  m_Checked.insert({"get /api/v1/events", "get /api/v1/openapi.json"});
  for (const Route& route : m_Server->Routes()) {
    if (!route.pattern.starts_with("/api/v1/")) continue;
    EXPECT_TRUE(m_Checked.contains(LowerName(route.method) + " " + route.pattern)) << route.pattern;
  }
}

TEST_F(OpenApiTest, names_no_schema_that_is_not_there) {
  const std::string text = m_Description.dump();
  for (std::size_t at = text.find("\"$ref\":\"#"); at != text.npos;
       at = text.find("\"$ref\":\"#", at + 1)) {
    const std::size_t begin = at + 9;
    const std::string pointer = text.substr(begin, text.find('"', begin) - begin);
    EXPECT_TRUE(m_Description.contains(Json::json_pointer(pointer))) << pointer;
  }
}

}  // namespace
}  // namespace rastrel::server::web
