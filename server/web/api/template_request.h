#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "server/queue/job.h"
#include "server/web/http/request.h"
#include "server/web/http/response.h"
#include "server/web/shop.h"
#include "server/web/templates/templates.h"

namespace rastrel::server::web {

/// The content of a request for a plate.
struct PlateRequest {
  FieldValues values;
  std::string blank;   ///< "plate" if the request names none
  std::string action;  ///< the button of a form
  /// The request with all other fields, those of the job, as a form.
  Request rest;
};

/// Takes the fields "value.NAME", "blank" and "action" of a form, or "values", an object of texts,
/// and "blank" of a JSON object, of which the others may be texts, whole numbers, true and false.
/// The failure is FailureCode::BadInput: more fields than can be filled in, a field twice, another
/// type, a blank that is no size.
[[nodiscard]] Expected<PlateRequest> PlateRequestOf(const Request& request);

/// The template of the path's {name}, or the answer: 404, 400 with the template's fault, or 503.
struct FoundTemplate {
  Expected<TemplateForm> form = FailureOf("not looked for");
  Response refusal;
};
[[nodiscard]] FoundTemplate TemplateOf(Templates& templates, const Request& request);

/// Makes the job of a plate, or the answer to a fault.
[[nodiscard]] Response SubmitPlate(Shop& shop, Templates& templates, const PlateRequest& plate,
                                   const TemplateForm& form);

/// Makes the job of an uploaded table, a plate for each row, or the answer to a fault.
[[nodiscard]] Response SubmitTable(Shop& shop, const Request& request, const TemplateFile& file);

/// The sentence of a note in English, as a key of the page's texts: {0} is its value's place.
[[nodiscard]] std::string_view SentenceOf(std::string_view code);
/// A note's value as a caller may see it.
[[nodiscard]] std::string ValueFor(const Caller& caller, const FieldNote& note);
/// The whole sentence in English.
[[nodiscard]] std::string MessageOf(const Caller& caller, const FieldNote& note);

}  // namespace rastrel::server::web
