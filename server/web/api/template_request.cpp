#include "server/web/api/template_request.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/shown_text.h"
#include "server/web/api/brought_job.h"
#include "server/web/api/job_json.h"
#include "server/web/api/job_request.h"

namespace rastrel::server::web {
namespace {

using Json = nlohmann::json;

constexpr std::string_view ValuePrefix = "value.";
constexpr const char* PlateBlank = "plate";
constexpr std::size_t LongestTitle = 255;

Failure Bad(std::string why) { return FailureOf(std::move(why), FailureCode::BadInput); }

Expected<void> AddValue(FieldValues& values, const std::string& name, const std::string& value) {
  if (values.size() >= FieldsLimit)
    return Bad("more than " + std::to_string(FieldsLimit) + " values");
  if (!values.emplace(name, value).second) return Bad("a field has two values");
  return {};
}

// The members of an object as the fields of a form.
Expected<Fields> FieldsOfJson(const std::string& body) {
  Fields fields;
  if (body.empty()) return fields;
  const Json object = Json::parse(body, nullptr, false);
  if (!object.is_object()) return Bad("the body is no form and no JSON object");
  for (const auto& [name, value] : object.items()) {
    if (name == "values" && value.is_object()) {
      if (value.size() > FieldsLimit)
        return Bad("more than " + std::to_string(FieldsLimit) + " values");
      for (const auto& [field, text] : value.items()) {
        if (!text.is_string()) return Bad("values: each is to be a text");
        fields.emplace_back(std::string(ValuePrefix) + field, text.get<std::string>());
      }
    } else if (value.is_string()) {
      fields.emplace_back(name, value.get<std::string>());
    } else if (value.is_number_integer() || value.is_boolean()) {
      fields.emplace_back(name, value.dump());
    } else {
      return Bad("a member of the body has another type");
    }
  }
  return fields;
}

}  // namespace

Expected<PlateRequest> PlateRequestOf(const Request& request) {
  PlateRequest plate;
  plate.rest = request;
  plate.rest.body.clear();
  plate.rest.form.clear();
  auto fields = request.form.empty() ? FieldsOfJson(request.body) : request.form;
  if (!fields) return fields.Error();
  for (auto& [name, value] : *fields) {
    if (name.starts_with(ValuePrefix)) {
      if (auto added = AddValue(plate.values, name.substr(ValuePrefix.size()), value); !added)
        return added.Error();
    } else if (name == "blank") {
      plate.blank = value;
    } else if (name == "action") {
      // The first counts, as for the audit log.
      if (plate.action.empty()) plate.action = value;
    } else {
      plate.rest.form.emplace_back(std::move(name), std::move(value));
    }
  }
  if (plate.blank.empty()) plate.blank = PlateBlank;
  if (!IsBlankSize(plate.blank))
    return Bad("blank: give a size up to 10 m, as 7.5x2.5cm or 3x1in, or \"plate\"");
  return plate;
}

FoundTemplate TemplateOf(Templates& templates, const Request& request) {
  FoundTemplate found;
  const std::string& name = request.Place("name");
  if (!templates.Find(name)) {
    found.refusal = ErrorResponse(404, "not-found", "there is no such template");
    return found;
  }
  found.form = templates.Form(name);
  if (found.form) return found;
  const Failure& failure = found.form.Error();
  if (failure.code == FailureCode::BadInput) {
    found.refusal = ErrorResponse(400, "bad-template",
                                  MessageFor(request.caller.VisibleOwner(), Describe(failure)));
  } else {
    found.refusal = ErrorResponse(503, "busy", "the template can't be read now");
    found.refusal.Add("Retry-After", "1");
  }
  return found;
}

Response SubmitPlate(Shop& shop, Templates& templates, const PlateRequest& plate,
                     const TemplateForm& form) {
  auto job = BroughtJob(plate.rest);
  if (!job) return AnswerTo(job.Error());
  const auto table = templates.WriteTable(form, plate.values);
  if (!table) return ErrorResponse(507, "no-room", "the job's file can't be written");
  job->path = *table;
  job->work = JobWork::Merge;
  job->options.erase("data");
  job->options["template"] = form.file.path;
  job->options["blank"] = plate.blank;
  if (plate.rest.Form("title").empty() && plate.rest.Query("title").empty()) {
    const std::string title = TitleOfPlate(form.file.name, form.fields, plate.values);
    const std::string start = title.substr(0, LongestTitle);
    job->title = os::CleanLine(start.substr(0, os::WholeCharacters(start)));
  }
  Response response = SubmitJob(shop, plate.rest, *job);
  static_cast<void>(os::RemoveFile(os::FromNative(*table)));
  return response;
}

Response SubmitTable(Shop& shop, const Request& request, const TemplateFile& file) {
  if (request.file.path.empty())
    return ErrorResponse(400, "bad-request", "the request brings no table");
  auto job = BroughtJob(request);
  if (!job) return AnswerTo(job.Error());
  const auto blank = job->options.find("blank");
  if (blank != job->options.end() && !IsBlankSize(blank->second))
    return ErrorResponse(400, "bad-request",
                         "blank: give a size up to 10 m, as 60x40cm or 24x16in, or \"plate\"");
  job->work = JobWork::Merge;
  job->options.erase("data");
  job->options["template"] = file.path;
  return SubmitJob(shop, request, *job);
}

std::string_view SentenceOf(std::string_view code) {
  if (code == "not-text") return "This is no text in UTF-8.";
  if (code == "control") return "A line end, tab or other control character can not be engraved.";
  if (code == "too-long") return "This is too long: at most {0} characters.";
  if (code == "not-a-number") return "Give a number, with a point, such as 2.5.";
  if (code == "no-name") return "Give a name alone, without a folder.";
  if (code == "no-field") return "The template has no such field.";
  if (code == "all-empty") return "Fill in at least one field.";
  if (code == "squeezed") return "The text needs {0} % of its room and is squeezed.";
  if (code == "beyond") return "The text needs {0} % of its room and goes beyond it.";
  if (code == "missing-font") return "The font {0} is missing; another one is used.";
  if (code == "not-placed") return "The plate has no room on the blank.";
  if (code == "refused") return "It can not be drawn: {0}.";
  if (code == "left-out") return "Left out: {0}.";
  return "{0}.";
}

std::string ValueFor(const Caller& caller, const FieldNote& note) {
  std::string value = MessageFor(caller.VisibleOwner(), note.value);
  while (value.ends_with('.')) value.pop_back();
  return value;
}

std::string MessageOf(const Caller& caller, const FieldNote& note) {
  std::string message(SentenceOf(note.code));
  if (const std::size_t at = message.find("{0}"); at != message.npos)
    message.replace(at, 3, ValueFor(caller, note));
  return os::CleanLine(message);
}

}  // namespace rastrel::server::web
