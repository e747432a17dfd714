#include "server/web/pages/pages.h"

#include "server/web/pages/html.h"
#include "server/web/pages/job_page.h"
#include "server/web/pages/list_pages.h"
#include "server/web/pages/words.h"

namespace rastrel::server::web {
namespace {

// The address that was asked for, for after the sign-in.
std::string AddressOf(const Request& request) {
  std::string address = request.path;
  char sign = '?';
  for (const auto& [name, value] : request.query) {
    address += sign + QueryValue(name) + "=" + QueryValue(value);
    sign = '&';
  }
  return address;
}

}  // namespace

void AddPages(Router& router, Shop& shop) {
  const Words words = Words::Read(shop.pageFiles);
  const auto add = [&](const char* pattern, Response (*page)(Shop&, const Request&, const Words&)) {
    router.Add({.method = Method::Get,
                .pattern = pattern,
                // Not Role::See: a browser is to get a page and no error.
                .role = Role::Nobody,
                .handler = [&shop, words, page](const Request& request) {
                  if (request.caller.role == Role::Nobody)
                    return RedirectResponse("/login?next=" + QueryValue(AddressOf(request)));
                  return page(shop, request, words.For(request));
                }});
  };
  add("/", OverviewPage);
  add("/jobs", JobsPage);
  add("/jobs/{id}", JobPage);
  add("/devices", DevicesPage);
  router.Add({.method = Method::Get,
              .pattern = "/login",
              .role = Role::Nobody,
              .handler = [words](const Request& request) {
                return SignInPage(request, words.For(request));
              }});
}

}  // namespace rastrel::server::web
