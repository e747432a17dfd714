#pragma once

#include <memory>
#include <string>
#include <vector>

#include "server/web/http/request.h"
#include "server/web/pages/words.h"
#include "server/web/shop.h"
#include "server/web/templates/templates.h"

namespace rastrel::server::web {

/// The content of the page of a template.
struct TemplateView {
  TemplateFile file;
  std::vector<TemplateField> fields;  ///< empty: the template has a fault, which `refusal` says
  FieldValues values;                 ///< as they were typed
  std::string blank;                  ///< ...; "plate" is shown as an empty field
  Fields job;                         ///< the fields of the job, as they were chosen
  std::vector<FieldNote> notes;
  std::shared_ptr<const PlatePicture> picture;  ///< null: none was asked for
  std::string refusal;                          ///< a sentence on the whole, in English or foreign
  int status = 200;                             ///< of the page
};

/// The markup of the page: the form, the picture, and the place for a table.
[[nodiscard]] std::string TemplateMarkup(Shop& shop, const Request& request, const Words& words,
                                         const TemplateView& view);

}  // namespace rastrel::server::web
