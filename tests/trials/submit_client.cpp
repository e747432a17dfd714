// A client of the queue for trials: submits a file so many times, held, and prints how long each
// took, in microseconds, one a line.
//
//   submit_client DATA_ROOT FILE TITLE COUNT

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "server/queue/job_queue.h"

int main(int count, char** arguments) {
  using namespace rastrel;
  using Clock = std::chrono::steady_clock;
  if (count != 5) return EXIT_FAILURE;
  const auto queue = server::JobQueue::Open(arguments[1]);
  if (!queue) {
    std::fprintf(stderr, "%s\n", Describe(queue.Error()).c_str());
    return EXIT_FAILURE;
  }
  server::JobRequest request;
  request.path = arguments[2];
  request.owner = arguments[3];
  request.source = "trial";
  request.device = "Sign";
  request.hold = true;
  const int jobs = std::atoi(arguments[4]);
  for (int job = 0; job < jobs; ++job) {
    request.title = std::string(arguments[3]) + "-" + std::to_string(job);
    const auto start = Clock::now();
    const auto id = (*queue)->Submit(request);
    const auto time = Clock::now() - start;
    if (!id) {
      std::fprintf(stderr, "%s\n", Describe(id.Error()).c_str());
      return EXIT_FAILURE;
    }
    const auto micros = std::chrono::duration_cast<std::chrono::microseconds>(time).count();
    std::printf("%lld\n", static_cast<long long>(micros));
  }
  return EXIT_SUCCESS;
}
