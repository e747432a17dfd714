#include "server/web/pages/layout.h"

#include "server/web/pages/html.h"

namespace rastrel::server::web {
namespace {

std::string NavigationLink(const Words& words, const Layout& layout, const char* name,
                           const char* address, const char* text) {
  const bool isCurrent =
      layout.name == name || (layout.name == "template" && name == std::string_view("templates"));
  return std::string("<li><a href=\"") + address + "\"" +
         (isCurrent ? " aria-current=\"page\"" : "") + ">" + words(text) + "</a></li>";
}

std::string Head(const Request& request, const Words& words, const Layout& layout) {
  return std::string("<!doctype html>\n<html lang=\"") + words.Language() +
         "\">\n<head>\n<meta charset=\"utf-8\">\n"
         "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
         "<meta name=\"color-scheme\" content=\"light dark\">\n"
         "<meta name=\"csrf\" content=\"" +
         Escaped(request.caller.formToken) + "\">\n<title>" + layout.title + " – " +
         words("Print shop") +
         "</title>\n<link rel=\"icon\" href=\"/static/icon.svg\" type=\"image/svg+xml\">\n"
         "<link rel=\"stylesheet\" href=\"/static/style.css\">\n"
         "<script src=\"/static/app.js\" type=\"module\"></script>\n</head>\n";
}

std::string Header(const Request& request, const Words& words, const Layout& layout) {
  std::string header =
      "<header>\n<a class=\"brand\" href=\"/\"><img src=\"/static/icon.svg\" "
      "alt=\"\" width=\"28\" height=\"28\">" +
      words("Print shop") + "</a>\n";
  if (request.caller.role != Role::Nobody) {
    header += "<nav aria-label=\"" + words("Main") + "\"><ul>" +
              NavigationLink(words, layout, "overview", "/", "Overview") +
              NavigationLink(words, layout, "jobs", "/jobs", "All jobs") +
              NavigationLink(words, layout, "templates", "/templates", "Templates") +
              NavigationLink(words, layout, "devices", "/devices", "Devices") + "</ul></nav>\n";
    header += "<p class=\"account\">" + Isolated(request.caller.name) + "</p>\n";
  }
  // These need the script, which shows them.
  header += "<p class=\"tools\"><button type=\"button\" id=\"keys\" hidden>" + words("Keyboard") +
            "</button>";
  if (request.caller.byCookie)
    header += "<button type=\"button\" id=\"sign-out\" hidden>" + words("Sign out") + "</button>";
  return header + "</p>\n</header>\n";
}

}  // namespace

Response PageResponse(int status, const Request& request, const Words& words,
                      const Layout& layout) {
  std::string page = Head(request, words, layout);
  page += "<body data-page=\"" + layout.name + "\" data-role=\"" + NameOf(request.caller.role) +
          "\">\n<a class=\"skip\" href=\"#main\">" + words("Skip to the content") + "</a>\n";
  page += Header(request, words, layout);
  page += "<p class=\"connection\" role=\"status\"><span>" +
          words("The connection is lost; this page goes on as soon as it is back.") +
          "</span></p>\n";
  page +=
      "<main id=\"main\" tabindex=\"-1\"" + layout.attributes + ">\n" + layout.body + "</main>\n";
  page +=
      "<p id=\"alert\" role=\"alert\"></p>\n<p id=\"status\" role=\"status\" "
      "aria-live=\"polite\"></p>\n</body>\n</html>\n";
  Response response = TextResponse(status, "text/html; charset=utf-8", std::move(page));
  response.Add("Vary", "Accept-Language, Cookie");
  return response;
}

}  // namespace rastrel::server::web
