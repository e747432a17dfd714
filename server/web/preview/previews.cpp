#include "server/web/preview/previews.h"

#include <charconv>
#include <optional>
#include <string_view>
#include <utility>

#include "server/web/preview/cut_svg.h"
#include "server/web/preview/kept_pages.h"
#include "server/web/preview/pages_json.h"
#include "server/web/preview/picture_store.h"

namespace rastrel::server::web {
namespace {

constexpr unsigned DefaultWidth = 512;

// A number of digits alone, as the whole text.
std::optional<unsigned> NumberOf(std::string_view text) {
  unsigned number = 0;
  const char* const end = text.data() + text.size();
  const auto [at, error] = std::from_chars(text.data(), end, number);
  if (text.empty() || error != std::errc() || at != end) return std::nullopt;
  return number;
}

// The number in front of an ending: "3.png".
std::optional<unsigned> NumberBefore(std::string_view text, std::string_view ending) {
  if (!text.ends_with(ending)) return std::nullopt;
  return NumberOf(text.substr(0, text.size() - ending.size()));
}

Response NotFound(std::string_view why) { return ErrorResponse(404, "not-found", why); }
Response BadRequest(std::string_view why) { return ErrorResponse(400, "bad-request", why); }

Response Unreadable(const Failure& failure) {
  return ErrorResponse(500, "unreadable", ReasonOf(failure));
}

class Previews {
 public:
  explicit Previews(Shop& shop) : m_Shop(shop) {}

  [[nodiscard]] Response Describe(const Request& request) const {
    const auto job = Visible(request);
    if (!job) return NoJob(request);
    return JsonResponse(200, PagesJson(*job, KeptPagesOf(Spool(), *job)));
  }

  [[nodiscard]] Response Whole(const Request& request) const {
    const auto number = NumberBefore(request.Place("picture"), ".png");
    if (!number) return NotFound("There is no such picture; a page's is NUMBER.png.");
    const auto width =
        request.HasQuery("width") ? NumberOf(request.Query("width")) : std::optional(DefaultWidth);
    if (!width || *width < 1 || *width > MaximumPictureSide)
      return BadRequest("\"width\" is a number from 1 to " + std::to_string(MaximumPictureSide) +
                        ".");
    return WithPage(request, *number, [&](const Job& job, const KeptPage& page) {
      auto part = WholePage(page.info, *width);
      if (!TakeInk(request, page.info, part)) return BadRequest("The page has no such ink.");
      return Png(part.plane ? DrawPng(page.directory, page.info, part)
                            : WholePagePng(page.directory, page.info, *width,
                                           m_Shop.queue.DirectoryOf(job.id)));
    });
  }

  [[nodiscard]] Response OneTile(const Request& request) const {
    const auto number = NumberOf(request.Place("page"));
    const auto level = NumberOf(request.Place("level"));
    const auto column = NumberOf(request.Place("column"));
    const auto row = NumberBefore(request.Place("picture"), ".png");
    if (!number || !level || !column || !row)
      return NotFound("There is no such tile; one is LEVEL/COLUMN/ROW.png.");
    return WithPage(request, *number, [&](const Job&, const KeptPage& page) {
      auto part = Tile(page.info, *level, *column, *row);
      if (!part) return NotFound("The page has no such tile.");
      if (!TakeInk(request, page.info, *part)) return BadRequest("The page has no such ink.");
      return Png(DrawPng(page.directory, page.info, *part));
    });
  }

  [[nodiscard]] Response Cut(const Request& request) const {
    const auto number = NumberOf(request.Place("page"));
    if (!number) return NotFound("There is no such page.");
    return WithPage(request, *number, [](const Job&, const KeptPage& page) {
      if (!HasCutPaths(page.info)) return NotFound("The page has no cut paths.");
      auto svg = CutSvgOfPage(page.directory, page.info);
      return svg ? TextResponse(200, "image/svg+xml", *std::move(svg)) : Unreadable(svg.Error());
    });
  }

 private:
  [[nodiscard]] std::string Spool() const {
    return m_Shop.spool.empty() ? m_Shop.dataRoot + "/Queue/rip/CFM" : m_Shop.spool;
  }

  // The job of the request, if its sender may see it.
  [[nodiscard]] std::optional<Job> Visible(const Request& request) const {
    const auto id = NumberOf(request.Place("id"));
    if (!id) return std::nullopt;
    auto job = m_Shop.queue.Find(*id);
    if (!job || !*job) return std::nullopt;
    const std::string owner = request.caller.VisibleOwner();
    if (!owner.empty() && (*job)->owner != owner) return std::nullopt;
    return **job;
  }

  static Response NoJob(const Request& request) {
    return NotFound("There is no job " + request.Place("id") + ".");
  }

  // Calls `draw` with the page, unless the sender has its picture of the same pixels still.
  template <typename Draw>
  [[nodiscard]] Response WithPage(const Request& request, unsigned number, const Draw& draw) const {
    const auto job = Visible(request);
    if (!job) return NoJob(request);
    const auto pages = KeptPagesOf(Spool(), *job);
    if (!pages) return ErrorResponse(404, "no-pages", ReasonOf(pages.Error()));
    const auto page = ReadKeptPage(*pages, number);
    if (!page && page.Error().code == FailureCode::BadInput) return NotFound(page.Error().why);
    if (!page) return Unreadable(page.Error());
    const std::string stamp = StampOf(page->info);
    const std::string tag = "\"" + stamp + "\"";
    Response response;
    response.status = 304;
    if (request.Header("if-none-match") != tag) response = draw(*job, *page);
    if (response.status != 200 && response.status != 304) return response;
    response.Add("ETag", tag);
    // An address with the stamp is always of the same pixels.
    response.Add("Cache-Control", request.Query("stamp") == stamp
                                      ? "private, max-age=604800, immutable"
                                      : "private, no-cache");
    return response;
  }

  // "ink" is a plane's place from 0; "tint=1" shows it in its color.
  static bool TakeInk(const Request& request, const pages::PageInfo& page, PictureRequest& part) {
    if (!request.HasQuery("ink")) return true;
    const auto ink = NumberOf(request.Query("ink"));
    if (!ink || *ink >= page.planes.size()) return false;
    part.plane = *ink;
    part.isTinted = request.Query("tint") == "1";
    return true;
  }

  static Response Png(Expected<std::string> bytes) {
    return bytes ? TextResponse(200, "image/png", *std::move(bytes)) : Unreadable(bytes.Error());
  }

  Shop& m_Shop;
};

}  // namespace

void AddPreviews(Router& router, Shop& shop) {
  const Previews previews(shop);
  const auto add = [&router, previews](std::string pattern,
                                       Response (Previews::*answer)(const Request&) const) {
    router.Add({.method = Method::Get,
                .pattern = "/api/v1/jobs/{id}/pages" + std::move(pattern),
                .role = Role::See,
                .handler = [previews, answer](const Request& request) {
                  return (previews.*answer)(request);
                }});
  };
  add("", &Previews::Describe);
  add("/{picture}", &Previews::Whole);
  add("/{page}/tile/{level}/{column}/{picture}", &Previews::OneTile);
  add("/{page}/cut.svg", &Previews::Cut);
}

}  // namespace rastrel::server::web
