#include "server/web/api/template_routes.h"

#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "rastrel/platform/os/base64.h"
#include "server/web/access/gate.h"
#include "server/web/api/job_json.h"
#include "server/web/api/job_request.h"
#include "server/web/api/template_request.h"

namespace rastrel::server::web {
namespace {

using Json = nlohmann::ordered_json;

Json JsonOf(const TemplateFile& file) {
  return {{"name", file.name}, {"bytes", file.bytes}, {"changed", file.modified}};
}

Json JsonOf(const Caller& caller, const std::vector<FieldNote>& notes) {
  Json list = Json::array();
  for (const FieldNote& note : notes)
    list.push_back({{"field", note.field},
                    {"code", note.code},
                    {"value", ValueFor(caller, note)},
                    {"message", MessageOf(caller, note)}});
  return list;
}

Response ListTemplates(Templates& templates) {
  const auto files = templates.List();
  if (!files) return ErrorResponse(500, "failed", "the templates can't be read");
  Json list = Json::array();
  for (const TemplateFile& file : *files) list.push_back(JsonOf(file));
  return JsonResponse(200, TextOf({{"templates", std::move(list)}}));
}

Response ShowTemplate(Templates& templates, const Request& request) {
  FoundTemplate found = TemplateOf(templates, request);
  if (!found.form) return std::move(found.refusal);
  Json fields = Json::array();
  for (const TemplateField& field : found.form->fields)
    fields.push_back({{"name", field.name}, {"kind", field.kind}, {"maximum", field.maximum}});
  Json shown = JsonOf(found.form->file);
  shown["fields"] = std::move(fields);
  return JsonResponse(200, TextOf(shown));
}

Response AnswerToDelay(const Templates::Drawn& drawn) {
  Response response;
  switch (drawn.delay) {
    case PictureDelay::TooOften: return TooOften(drawn.wait);
    case PictureDelay::Busy:
      response = ErrorResponse(503, "busy", "other pictures are drawn at present");
      response.Add("Retry-After", RetryAfter(drawn.wait));
      return response;
    default: return ErrorResponse(500, "failed", "the picture can't be drawn");
  }
}

Response ShowPicture(Templates& templates, const Request& request) {
  FoundTemplate found = TemplateOf(templates, request);
  if (!found.form) return std::move(found.refusal);
  const auto plate = PlateRequestOf(request);
  if (!plate) return AnswerTo(plate.Error());
  const auto faults = FaultsOf(found.form->fields, plate->values);
  PlatePicture none;
  none.notes = faults;
  auto drawn = faults.empty()
                   ? templates.Draw(request.caller.name, *found.form, plate->values, plate->blank)
                   : Templates::Drawn{.picture = std::make_shared<const PlatePicture>(none)};
  if (!drawn.picture) return AnswerToDelay(drawn);
  const PlatePicture& picture = *drawn.picture;
  if (request.Header("accept") == "image/png" && !picture.png.empty())
    return TextResponse(200, "image/png", picture.png);
  return JsonResponse(
      200,
      TextOf({{"picture", picture.png.empty() ? Json() : Json(os::Base64FromBytes(picture.png))},
              {"pages", picture.pages},
              {"widthMm", picture.widthCm * 10},
              {"heightMm", picture.heightCm * 10},
              {"notes", JsonOf(request.caller, picture.notes)}}));
}

Response ShowSample(Templates& templates, const Request& request) {
  const auto file = templates.Find(request.Place("name"));
  if (!file) return ErrorResponse(404, "not-found", "there is no such template");
  const std::string tag = '"' + file->stamp + '"';
  Response response;
  response.status = 304;
  if (request.Header("if-none-match") != tag) {
    FoundTemplate found = TemplateOf(templates, request);
    if (!found.form) return std::move(found.refusal);
    const auto drawn = templates.Sample(request.caller.name, *found.form);
    if (!drawn.picture) return AnswerToDelay(drawn);
    if (drawn.picture->png.empty())
      return ErrorResponse(404, "no-pages", "there is no picture of the template");
    response = TextResponse(200, "image/png", drawn.picture->png);
  }
  response.Add("ETag", tag);
  response.Add("Cache-Control", "private, no-cache");
  return response;
}

Response AddPlate(Shop& shop, Templates& templates, const Request& request) {
  FoundTemplate found = TemplateOf(templates, request);
  if (!found.form) return std::move(found.refusal);
  const auto plate = PlateRequestOf(request);
  if (!plate) return AnswerTo(plate.Error());
  const auto faults = FaultsOf(found.form->fields, plate->values);
  if (faults.empty()) return SubmitPlate(shop, templates, *plate, *found.form);
  const FieldNote& first = faults.front();
  const std::string message =
      (first.field.empty() ? "" : first.field + ": ") + MessageOf(request.caller, first);
  return JsonResponse(400, TextOf({{"error", {{"code", "bad-values"}, {"message", message}}},
                                   {"notes", JsonOf(request.caller, faults)}}));
}

Response AddTable(Shop& shop, Templates& templates, const Request& request) {
  const auto file = templates.Find(request.Place("name"));
  if (!file) return ErrorResponse(404, "not-found", "there is no such template");
  return SubmitTable(shop, request, *file);
}

}  // namespace

void AddTemplates(Router& router, Shop& shop, Templates& templates) {
  const std::string all = "/api/v1/templates";
  router.Add({Method::Get, all, Role::See, Body::None,
              [&templates](const Request&) { return ListTemplates(templates); }});
  router.Add({Method::Get, all + "/{name}", Role::See, Body::None,
              [&templates](const Request& request) { return ShowTemplate(templates, request); }});
  router.Add({Method::Get, all + "/{name}/sample.png", Role::See, Body::None,
              [&templates](const Request& request) { return ShowSample(templates, request); }});
  router.Add({Method::Post, all + "/{name}/picture", Role::See, Body::Small,
              [&templates](const Request& request) { return ShowPicture(templates, request); }});
  router.Add(
      {Method::Post, all + "/{name}/jobs", Role::Print, Body::Small,
       [&shop, &templates](const Request& request) { return AddPlate(shop, templates, request); }});
  router.Add(
      {Method::Post, all + "/{name}/tables", Role::Print, Body::Upload,
       [&shop, &templates](const Request& request) { return AddTable(shop, templates, request); }});
}

}  // namespace rastrel::server::web
