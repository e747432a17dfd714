#include "server/web/api/session_routes.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "server/web/api/job_json.h"
#include "server/web/api/job_request.h"
#include "server/web/http/address_text.h"

namespace rastrel::server::web {
namespace {

using Json = nlohmann::ordered_json;

Response ShowCaller(const Caller& caller) {
  const bool isKnown = caller.role != Role::Nobody;
  return JsonResponse(200, TextOf({{"name", isKnown ? Json(caller.name) : Json()},
                                   {"role", NameOf(caller.role)},
                                   {"csrf", caller.byCookie ? Json(caller.formToken) : Json()}}));
}

// A path of this server and of no other: "//host" is another's.
bool IsOwnPath(const std::string& path) {
  return path.starts_with('/') && !path.starts_with("//") && PathOf(path.substr(0, path.find('?')));
}

Response SignIn(Gate& gate, const Request& request) {
  const std::string token = BodyField(request, "token").value_or("");
  const std::string name = BodyField(request, "name").value_or("");
  Caller caller;
  std::string secret;
  std::optional<Response> refused;
  if (!token.empty()) {
    refused = gate.SignInByToken(request, token, caller, secret);
  } else if (!name.empty()) {
    refused = gate.SignInByPassword(request, name, BodyField(request, "password").value_or(""),
                                    caller, secret);
  } else {
    refused = ErrorResponse(400, "bad-request", "give token, or name and password");
  }
  if (refused) return *std::move(refused);
  // The session that the browser had until now ends.
  gate.SignOut(request);
  const std::string& next = request.Form("next");
  Response response = IsOwnPath(next) ? RedirectResponse(next) : ShowCaller(caller);
  response.Add("Set-Cookie", SessionCookieOf(secret, request.isSecure));
  return response;
}

Response SignOut(Gate& gate, const Request& request) {
  gate.SignOut(request);
  Response response;
  response.status = 204;
  response.Add("Set-Cookie", SessionCookieOf("", request.isSecure));
  return response;
}

Response HandOver(Gate& gate) {
  const auto code = gate.NewCode();
  if (!code) return ErrorResponse(503, "busy", code.Error().why);
  return JsonResponse(201, TextOf({{"token", *code}}));
}

}  // namespace

void AddSessions(Router& router, Gate& gate) {
  router.Add({Method::Get, "/api/v1/session", Role::Nobody, Body::None,
              [](const Request& request) { return ShowCaller(request.caller); }});
  Route signIn{Method::Post, "/api/v1/session", Role::Nobody, Body::Small,
               [&gate](const Request& request) { return SignIn(gate, request); }};
  signIn.beginsSession = true;
  router.Add(signIn);
  router.Add({Method::Delete, "/api/v1/session", Role::See, Body::None,
              [&gate](const Request& request) { return SignOut(gate, request); }});
  router.Add({Method::Post, "/api/v1/handover", Role::Manage, Body::Small,
              [&gate](const Request&) { return HandOver(gate); }});
}

}  // namespace rastrel::server::web
