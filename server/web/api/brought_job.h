#pragma once

#include "rastrel/platform/os/expected.h"
#include "server/queue/job.h"
#include "server/web/http/request.h"
#include "server/web/http/response.h"
#include "server/web/shop.h"

namespace rastrel::server::web {

/// A job as the fields of a request's address and form say it, with the request's file: title,
/// device, priority, hold, key, and all others as options of a print. The owner is the caller. The
/// failure is FailureCode::BadInput.
[[nodiscard]] Expected<JobRequest> BroughtJob(const Request& request);

/// Checks a job, puts it into the queue and answers with it (201), or with the reason against it.
[[nodiscard]] Response SubmitJob(Shop& shop, const Request& request, const JobRequest& job);

}  // namespace rastrel::server::web
