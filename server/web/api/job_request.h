#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"
#include "server/queue/job_queue.h"
#include "server/web/http/request.h"
#include "server/web/http/response.h"
#include "server/web/shop.h"

/// From a request to what it asks of the queue, and from the queue's refusals to answers.
namespace rastrel::server::web {

/// A whole number of a text, within a range; nothing for any other text.
[[nodiscard]] std::optional<std::int64_t> WholeNumber(std::string_view text, std::int64_t least,
                                                      std::int64_t greatest);

/// A field of a body that is a form or a JSON object. A whole number counts as its text; nothing if
/// there is no such field, or if it is anything else.
[[nodiscard]] std::optional<std::string> BodyField(const Request& request, const std::string& name);

/// The filter of the query's fields: state, owner, device, text, from, until, order, descending,
/// offset, limit. It shows no other owner's jobs than the caller may see. The failure is a reason
/// alone.
[[nodiscard]] Expected<JobFilter> FilterOf(const Request& request, int usualLimit,
                                           int greatestLimit);

/// A message of a job or its story, for one who sees the jobs of `owner` alone
/// (Caller::VisibleOwner): it names files without the folders of this machine. Whoever manages all
/// jobs reads all of it.
[[nodiscard]] std::string MessageFor(const std::string& owner, const std::string& message);

/// The value of a job's option, for the same: of a template or a table the file's name alone.
[[nodiscard]] std::string OptionFor(const std::string& owner, const std::string& name,
                                    const std::string& value);

/// The job of the path's {id}, if the caller may see it; else the answer: 404, whether there is
/// none or it is another's.
struct FoundJob {
  std::optional<Job> job;
  Response refusal;
};
[[nodiscard]] FoundJob JobOf(Shop& shop, const Request& request);

/// The answer to a failure of the queue: 400, 404, 409 if the job's state does not allow it, or
/// 500.
[[nodiscard]] Response AnswerTo(const Failure& failure);

}  // namespace rastrel::server::web
