#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "rastrel/cfm/kept_job.h"
#include "rastrel/platform/os/private_directory.h"
#include "server/queue/job_queue.h"
#include "server/web/http/router.h"
#include "server/web/shop.h"
#include "tests/support/page_files.h"

namespace rastrel::test {

/// A shop with a queue and a spool of its own, and the routes that a test adds.
class ShopFixture : public testing::Test {
 protected:
  ShopFixture()
      : m_Place(*os::PrivateDirectory::Make("rastrel-shop-")),
        m_Queue(*server::JobQueue::Open(m_Place.Path())),
        m_Shop{.queue = *m_Queue,
               .dataRoot = m_Place.Path(),
               .pageFiles = {},
               .settings = {},
               .devices = {},
               .check = {},
               .pagesOf = {},
               .modes = {},
               .tableHead = {},
               .tableRow = {},
               .removePages = {},
               .spool = m_Root.Path()} {}

  /// A job of a file with this title.
  server::JobId Submit(const std::string& title = "sign", const std::string& owner = "ada",
                       bool hold = false) {
    server::JobRequest request;
    m_Root.Write("sign.ps", "%!PS\nshowpage\n");
    request.path = m_Root.Path("sign.ps");
    request.title = title;
    request.owner = owner;
    request.source = "web";
    request.device = "Plotter";
    request.hold = hold;
    const auto id = m_Queue->Submit(request);
    EXPECT_TRUE(id) << (id ? "" : Describe(id.Error()));
    return id.ValueOr(0);
  }

  /// A job whose pages are the directories of `m_Root` below "NAME.cfm", which exist.
  server::JobId Keep(const std::string& name, const std::vector<std::string>& pages,
                     const std::string& owner = "ada", const std::string& ink = "") {
    cfm::KeptJob record;
    for (const std::string& page : pages) record.pages.push_back({page, 1, 1, {}});
    m_Root.Write(name + ".cfm/.kept", cfm::FormatKeptJob(record));
    const server::JobId id = Submit(name, owner);
    for (;;) {
      auto job = m_Queue->ClaimToInterpret();
      EXPECT_TRUE(job && *job);
      if (!job || !*job) return id;
      const bool isIt = (*job)->id == id;
      EXPECT_TRUE(m_Queue->SetReady((*job)->id, isIt ? name : "other",
                                    static_cast<int>(pages.size()), ink));
      if (isIt) return id;
    }
  }

  server::Job Get(server::JobId id) { return m_Queue->Find(id).ValueOr(std::nullopt).value(); }

  /// The answer to a GET of a person with this role and name.
  server::web::Response Ask(const std::string& path, server::web::Fields query = {},
                            server::web::Role role = server::web::Role::Manage,
                            const std::string& name = "ada", const std::string& tag = "") {
    const auto match = m_Router.Find(server::web::Method::Get, path);
    if (match.route == nullptr) return server::web::ErrorResponse(404, "no_route", path);
    server::web::Request request;
    request.method = server::web::Method::Get;
    request.path = path;
    request.query = std::move(query);
    request.places = match.places;
    request.caller.role = role;
    request.caller.name = name;
    if (!tag.empty()) request.headers.emplace_back("if-none-match", tag);
    return match.route->handler(request);
  }

  ScratchDirectory m_Root;
  os::PrivateDirectory m_Place;
  std::unique_ptr<server::JobQueue> m_Queue;
  server::web::Shop m_Shop;
  server::web::Router m_Router;
};

}  // namespace rastrel::test
