#include "server/web/pages/template_form.h"

#include <algorithm>
#include <array>
#include <utility>

#include "rastrel/platform/os/base64.h"
#include "server/web/api/template_request.h"
#include "server/web/pages/html.h"

namespace rastrel::server::web {
namespace {

std::string NoteText(const Caller& caller, const Words& words, const FieldNote& note) {
  return words(SentenceOf(note.code), Escaped(ValueFor(caller, note)));
}

// The hint below a field that does not take just any text.
std::string HintOf(const TemplateField& field, const Words& words) {
  const std::string most = std::to_string(field.maximum);
  if (field.kind == "number") return words("A number");
  if (field.kind == "color") return words("The name of a colour");
  if (field.kind == "file") return words("The name of a file beside the template");
  if (field.kind == "value") return words("A setting of the plate");
  if (field.maximum > 0 && field.maximum < ValueLimit) return words("At most {0} characters", most);
  return {};
}

std::string FieldMarkup(const TemplateField& field, std::size_t place, const Request& request,
                        const Words& words, const TemplateView& view) {
  const std::string id = "field-" + std::to_string(place);
  const auto typed = view.values.find(field.name);
  const std::string hint = HintOf(field, words);
  std::string notes;
  for (const FieldNote& note : view.notes)
    if (note.field == field.name)
      notes += (notes.empty() ? "" : " ") + NoteText(request.caller, words, note);
  std::string markup = "<div class=\"field\"><label for=\"" + id + "\">" + Isolated(field.name) +
                       "</label><input id=\"" + id + "\" name=\"value." + KeptInField(field.name) +
                       "\" value=\"" +
                       (typed == view.values.end() ? std::string() : KeptInField(typed->second)) +
                       "\" autocomplete=\"off\"";
  if (field.kind == "number") markup += " inputmode=\"decimal\"";
  markup += " aria-describedby=\"" + id + "-hint " + id + "-note\"";
  if (!notes.empty()) markup += " aria-invalid=\"true\"";
  return markup + "><p class=\"hint\" id=\"" + id + "-hint\">" + hint +
         "</p><p class=\"note\" aria-live=\"polite\" id=\"" + id + "-note\">" + notes +
         "</p></div>\n";
}

std::string Chosen(const Fields& fields, std::string_view name) {
  const auto found = std::ranges::find(fields, name, &Fields::value_type::first);
  return found == fields.end() ? std::string() : found->second;
}

std::string Choice(const char* name, const std::vector<std::string>& values,
                   const std::string& chosen, const Words& words) {
  std::string choice = std::string("<select name=\"") + name + "\"><option value=\"\">" +
                       words("the usual one") + "</option>";
  for (const std::string& value : values)
    choice += "<option value=\"" + Escaped(value) + "\"" + (value == chosen ? " selected" : "") +
              ">" + Escaped(value) + "</option>";
  return choice + "</select>";
}

std::string Labelled(const std::string& label, const std::string& input) {
  return "<label><span>" + label + "</span>" + input + "</label>\n";
}

// Of the job, for who may bring one.
std::string JobFields(Shop& shop, const Words& words, const Fields& chosen) {
  const std::vector<std::string> devices =
      shop.devices ? shop.devices().ValueOr({}) : std::vector<std::string>();
  const std::vector<std::string> modes = shop.modes ? shop.modes() : std::vector<std::string>();
  return Labelled(words("Device"), Choice("device", devices, Chosen(chosen, "device"), words)) +
         Labelled(words("Print mode"), Choice("mode", modes, Chosen(chosen, "mode"), words)) +
         Labelled(words("Copies"),
                  "<input type=\"number\" name=\"copies\" min=\"1\" max=\"999\" value=\"" +
                      Escaped(Chosen(chosen, "copies")) + "\">") +
         "<label class=\"check\"><input type=\"checkbox\" name=\"hold\" value=\"true\"" +
         (Chosen(chosen, "hold").empty() ? "" : " checked") + "><span>" +
         words("Hold until released") + "</span></label>\n";
}

std::string BlankField(const Words& words, const std::string& blank, const char* usual) {
  return Labelled(words("Blank"), "<input name=\"blank\" autocomplete=\"off\" placeholder=\"" +
                                      words(usual) + "\" value=\"" +
                                      (blank == "plate" ? std::string() : Escaped(blank)) + "\">");
}

std::string FormToken(const Request& request) {
  return "<input type=\"hidden\" name=\"csrf\" value=\"" + Escaped(request.caller.formToken) +
         "\">\n";
}

std::string PlateForm(Shop& shop, const Request& request, const Words& words,
                      const TemplateView& view, const std::string& address) {
  const bool mayPrint = request.caller.role >= Role::Print;
  std::string form = "<form id=\"plate\" class=\"plate\" method=\"post\" action=\"" + address +
                     "\">\n" + FormToken(request);
  std::size_t place = 0;
  for (const TemplateField& field : view.fields)
    form += FieldMarkup(field, ++place, request, words, view);
  form += "<div class=\"job-fields\">\n" + BlankField(words, view.blank, "as large as the plate") +
          (mayPrint ? JobFields(shop, words, view.job) : std::string()) + "</div>\n" +
          "<div class=\"buttons\"><button name=\"action\" value=\"show\">" + words("Show") +
          "</button>";
  if (mayPrint)
    form +=
        "<button class=\"main\" name=\"action\" value=\"print\">" + words("Print") + "</button>";
  return form + "</div>\n</form>\n";
}

std::string TableForm(Shop& shop, const Request& request, const Words& words,
                      const std::string& address) {
  if (request.caller.role < Role::Print) return {};
  return "<section aria-labelledby=\"table-title\">\n<h2 id=\"table-title\">" +
         words("A plate for each row of a table") + "</h2>\n<p>" +
         words(
             "A text with separators or a spreadsheet; its first row has the names of the "
             "fields.") +
         "</p>\n<form class=\"table\" method=\"post\" enctype=\"multipart/form-data\" action=\"" +
         address + "/table\">\n" + FormToken(request) +
         Labelled(words("Table"),
                  "<input type=\"file\" name=\"file\" required accept=\".csv,.tsv,.txt,.xlsx,"
                  ".ods,.fods\">") +
         Labelled(words("Sheet"), "<input name=\"sheet\" autocomplete=\"off\">") +
         BlankField(words, "", "60x40cm") + JobFields(shop, words, {}) + "<button class=\"main\">" +
         words("Print") + "</button>\n</form>\n</section>\n";
}

std::string GeneralNotes(const Request& request, const Words& words, const TemplateView& view) {
  std::string list;
  for (const FieldNote& note : view.notes) {
    const bool isOfField = std::ranges::any_of(
        view.fields, [&](const TemplateField& field) { return field.name == note.field; });
    if (!isOfField) list += "<li>" + NoteText(request.caller, words, note) + "</li>\n";
  }
  return "<ul id=\"plate-notes\">\n" + list + "</ul>\n";
}

std::string PictureMarkup(const Request& request, const Words& words, const TemplateView& view) {
  const bool isThere = view.picture && !view.picture->png.empty();
  const std::string state = isThere        ? words("The picture shows what is typed.")
                            : view.picture ? words("There is no picture of it.")
                                           : words("There is no picture yet.");
  std::string markup =
      "<section class=\"plate-picture\" aria-labelledby=\"picture-title\">\n<h2 "
      "id=\"picture-title\">" +
      words("Picture") + "</h2>\n<p id=\"picture-state\" role=\"status\" aria-live=\"polite\">" +
      state + "</p>\n<div id=\"picture\">";
  if (isThere)
    markup += "<img src=\"data:image/png;base64," + os::Base64FromBytes(view.picture->png) +
              "\" alt=\"" + words("The plate with the values that are typed") + "\">";
  return markup + "</div>\n" + GeneralNotes(request, words, view) + "</section>\n";
}

}  // namespace

std::string TemplateMarkup(Shop& shop, const Request& request, const Words& words,
                           const TemplateView& view) {
  const std::string address = "/templates/" + QueryValue(view.file.name);
  std::string markup = "<p><a href=\"/templates\">" + words("All templates") + "</a></p>\n<h1>" +
                       Isolated(view.file.name) + "</h1>\n";
  if (!view.refusal.empty())
    markup += "<p class=\"refusal\" role=\"alert\">" + words(view.refusal) + "</p>\n";
  if (view.fields.size() > FieldsLimit) {
    markup +=
        "<p>" + words("It has more fields than can be filled in here; bring a table.") + "</p>\n";
  } else if (!view.fields.empty()) {
    markup +=
        "<div class=\"template\">\n<section aria-labelledby=\"fields-title\">\n<h2 "
        "id=\"fields-title\">" +
        words("Fields") + "</h2>\n" + PlateForm(shop, request, words, view, address) +
        "</section>\n" + PictureMarkup(request, words, view) + "</div>\n";
  }
  if (!view.fields.empty()) markup += TableForm(shop, request, words, address);
  return markup;
}

}  // namespace rastrel::server::web
