#include "server/web/pages/template_pages.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "server/web/api/job_request.h"
#include "server/web/api/template_request.h"
#include "server/web/pages/html.h"
#include "server/web/pages/layout.h"
#include "server/web/pages/template_form.h"
#include "server/web/pages/words.h"

namespace rastrel::server::web {
namespace {

using Json = nlohmann::json;

// The reason of an answer to a program.
std::string ReasonOf(const Response& response) {
  const Json answer = Json::parse(response.text, nullptr, false);
  const auto reason = Json::json_pointer("/error/message");
  if (!answer.is_object() || !answer.contains(reason) || !answer[reason].is_string())
    return "That did not work";
  return answer[reason].get<std::string>();
}

Response Failed(int status, const Request& request, const Words& words, const std::string& why) {
  return PageResponse(
      status, request, words,
      {words("Failure"),
       "failure",
       {},
       "<h1>" + words("That did not work") + "</h1>\n<p>" + words(why) +
           "</p>\n<p><a href=\"/templates\">" + words("All templates") + "</a></p>\n"});
}

Response ListPage(Templates& templates, const Request& request, const Words& words) {
  const auto files = templates.List();
  if (!files) return Failed(500, request, words, "The templates can not be read.");
  std::string body = "<h1>" + words("Templates") + "</h1>\n";
  if (files->empty()) {
    body += "<p>" + words("There are no templates.") + "</p>\n";
  } else {
    body += "<ul class=\"templates\">\n";
    for (const TemplateFile& file : *files)
      body += "<li><a href=\"/templates/" + QueryValue(file.name) +
              "\"><span class=\"sample\"><img src=\"/api/v1/templates/" + QueryValue(file.name) +
              "/sample.png\" alt=\"\" loading=\"lazy\"></span>" + Isolated(file.name) + "</a> " +
              TimeElement(file.modified) + "</li>\n";
    body += "</ul>\n";
  }
  return PageResponse(200, request, words, {words("Templates"), "templates", {}, body});
}

class TemplatePages {
 public:
  TemplatePages(Shop& shop, Templates& templates, Words words)
      : m_Shop(shop), m_Templates(templates), m_Words(std::move(words)) {}

  [[nodiscard]] Response List(const Request& request) const {
    if (request.caller.role == Role::Nobody) return ToSignIn("/templates");
    return ListPage(m_Templates, request, m_Words.For(request));
  }

  [[nodiscard]] Response Show(const Request& request) const {
    if (request.caller.role == Role::Nobody) return ToSignIn(request.path);
    auto view = Begin(request);
    if (!view) return NoTemplate(request);
    return Page(view->status, request, *view);
  }

  // The form with a button.
  [[nodiscard]] Response Take(const Request& request) const {
    if (request.caller.role == Role::Nobody) return ToSignIn(request.path);
    auto view = Begin(request);
    if (!view) return NoTemplate(request);
    if (!view->refusal.empty()) return Page(view->status, request, *view);
    auto plate = PlateRequestOf(request);
    if (!plate) {
      view->refusal = plate.Error().why;
      return Page(400, request, *view);
    }
    view->values = plate->values;
    view->blank = plate->blank;
    view->job = plate->rest.form;
    view->notes = FaultsOf(view->fields, plate->values);
    if (!view->notes.empty()) return Page(400, request, *view);
    const TemplateForm form{view->file, view->fields};
    return plate->action == "print" ? Print(request, *plate, form, *view)
                                    : Draw(request, *plate, form, *view);
  }

  [[nodiscard]] Response TakeTable(const Request& request) const {
    const auto file = m_Templates.Find(request.Place("name"));
    if (!file) return NoTemplate(request);
    const Response made = SubmitTable(m_Shop, request, *file);
    if (made.status == 201) return ToJob(made);
    return Failed(made.status, request, m_Words.For(request), ReasonOf(made));
  }

 private:
  static Response ToSignIn(const std::string& path) {
    return RedirectResponse("/login?next=" + QueryValue(path));
  }

  static Response ToJob(const Response& made) {
    const std::string& location = made.Header("Location");
    return RedirectResponse("/jobs" + location.substr(location.rfind('/')));
  }

  // The view without values; nothing if there is no such template.
  [[nodiscard]] std::optional<TemplateView> Begin(const Request& request) const {
    auto file = m_Templates.Find(request.Place("name"));
    if (!file) return std::nullopt;
    TemplateView view;
    view.file = *std::move(file);
    FoundTemplate found = TemplateOf(m_Templates, request);
    if (found.form) {
      view.fields = found.form->fields;
    } else {
      view.refusal = ReasonOf(found.refusal);
      view.status = found.refusal.status;
    }
    return view;
  }

  [[nodiscard]] Response NoTemplate(const Request& request) const {
    return Failed(404, request, m_Words.For(request), "There is no such template.");
  }

  [[nodiscard]] Response Page(int status, const Request& request, const TemplateView& view) const {
    const Words words = m_Words.For(request);
    return PageResponse(status, request, words,
                        {Escaped(view.file.name), "template",
                         " data-template=\"" + Escaped(QueryValue(view.file.name)) + "\"",
                         TemplateMarkup(m_Shop, request, words, view)});
  }

  [[nodiscard]] Response Draw(const Request& request, const PlateRequest& plate,
                              const TemplateForm& form, TemplateView& view) const {
    const auto drawn = m_Templates.Draw(request.caller.name, form, plate.values, plate.blank);
    if (!drawn.picture) {
      view.refusal = drawn.delay == PictureDelay::Failed
                         ? "The picture can not be drawn now."
                         : "Other pictures are drawn at present; try again in a moment.";
      return Page(drawn.delay == PictureDelay::Failed ? 500 : 503, request, view);
    }
    view.picture = drawn.picture;
    view.notes = drawn.picture->notes;
    return Page(200, request, view);
  }

  [[nodiscard]] Response Print(const Request& request, const PlateRequest& plate,
                               const TemplateForm& form, TemplateView& view) const {
    if (request.caller.role < Role::Print) {
      view.refusal = "Your role does not allow this.";
      return Page(403, request, view);
    }
    const Response made = SubmitPlate(m_Shop, m_Templates, plate, form);
    if (made.status == 201) return ToJob(made);
    view.refusal = ReasonOf(made);
    return Page(made.status, request, view);
  }

  Shop& m_Shop;
  Templates& m_Templates;
  Words m_Words;
};

}  // namespace

void AddTemplatePages(Router& router, Shop& shop, Templates& templates) {
  const TemplatePages pages(shop, templates, Words::Read(shop.pageFiles));
  const auto add = [&](Method method, const char* pattern, Role role, Body body,
                       Response (TemplatePages::*page)(const Request&) const) {
    router.Add({method, pattern, role, body,
                [pages, page](const Request& request) { return (pages.*page)(request); }});
  };
  // Not Role::See: a browser is to get a page and no error.
  add(Method::Get, "/templates", Role::Nobody, Body::None, &TemplatePages::List);
  add(Method::Get, "/templates/{name}", Role::Nobody, Body::None, &TemplatePages::Show);
  add(Method::Post, "/templates/{name}", Role::Nobody, Body::Small, &TemplatePages::Take);
  add(Method::Post, "/templates/{name}/table", Role::Print, Body::Upload,
      &TemplatePages::TakeTable);
}

}  // namespace rastrel::server::web
