#include "server/web/preview/kept_pages.h"

#include <cerrno>
#include <string_view>
#include <utility>

#include "rastrel/cfm/kept_job.h"

namespace rastrel::server::web {
namespace {

// A name that leads to no other directory.
bool IsPlain(std::string_view name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos &&
         name.find('\0') == std::string_view::npos;
}

std::string WhyNoPages(const Job& job) {
  switch (job.state) {
    case JobState::Queued:
      return "The job waits to be interpreted; its pages can be seen after that.";
    case JobState::Interpreting:
      return "The job is being interpreted; its pages can be seen when all are made.";
    case JobState::Held: return "The job is held and was not interpreted yet.";
    case JobState::Failed:
    case JobState::Quarantined: return "The job failed before its pages were made.";
    case JobState::Canceled: return "The job was canceled before its pages were made.";
    default:
      return job.work == JobWork::Cut ? "A job that is cut by rules keeps no pages."
                                      : "No pages of this job are kept.";
  }
}

}  // namespace

Expected<KeptPages> KeptPagesOf(const std::string& spool, const Job& job) {
  if (job.spool.empty()) return FailureOf(WhyNoPages(job));
  if (!IsPlain(job.spool)) return FailureOf("The name of the job's kept pages is none.");
  KeptPages pages{spool + "/" + job.spool + ".cfm", {}};
  auto record = cfm::ReadKeptJob(pages.directory, cfm::KeptJobName);
  if (!record) {
    if (record.Error().error == ENOENT) return FailureOf("The kept pages of this job are gone.");
    return record.Error();
  }
  for (cfm::KeptPage& page : record->pages) {
    if (!IsPlain(page.title)) return FailureOf("The record of the kept pages names no directory.");
    pages.names.push_back(std::move(page.title));
  }
  return pages;
}

std::string ReasonOf(Failure failure) {
  failure.where.erase(0, failure.where.rfind('/') + 1);
  return Describe(failure);
}

Expected<KeptPage> ReadKeptPage(const KeptPages& pages, std::size_t number) {
  if (number < 1 || number > pages.names.size())
    return FailureOf("The job has " + std::to_string(pages.names.size()) + " pages.",
                     FailureCode::BadInput);
  KeptPage page{pages.directory + "/" + pages.names[number - 1], {}};
  auto info = pages::ReadPageInfo(page.directory);
  if (!info) return info.Error();
  page.info = *std::move(info);
  return page;
}

}  // namespace rastrel::server::web
