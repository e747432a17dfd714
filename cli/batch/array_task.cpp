#include "cli/batch/array_task.h"

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <limits>
#include <span>
#include <string>
#include <system_error>
#include <thread>

#include "cli/batch/array_plan.h"
#include "cli/batch/batch_piece.h"
#include "cli/batch/batch_record.h"
#include "cli/console/error_message.h"
#include "cli/console/exit_status.h"
#include "cli/console/run_program.h"
#include "cli/console/values.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {
namespace {

constexpr const char* TaskNumber = "SLURM_ARRAY_TASK_ID";
// A folder of another machine may show a new file some moments late.
constexpr int Looks = 25;
constexpr std::chrono::milliseconds LookInterval{200};

struct Task {
  BatchRecord record;
  ArrayPlan plan;
};

Expected<Task> OpenTask(const std::string& results, const std::string& name) {
  auto record = BatchRecord::Open(results);
  if (!record) return record.Error();
  auto plan = ReadArrayPlan(*record, name);
  if (!plan) return plan.Error();
  return Task{*std::move(record), *std::move(plan)};
}

ExitStatus RunTask(std::span<const char* const> words) {
  if (words.size() != 4) throw CommandError(ExitStatus::WrongUse, "a task has two arguments");
  auto task = OpenTask(words[2], words[3]);
  for (int look = 1; !task && look < Looks; ++look) {
    std::this_thread::sleep_for(LookInterval);
    task = OpenTask(words[2], words[3]);
  }
  std::error_code error;
  if (task) std::filesystem::current_path(task->plan.directory, error);
  if (!task || error) return static_cast<ExitStatus>(NotSharedStatus);
  const auto number = static_cast<std::size_t>(
      OrEnd(ExitStatus::WrongUse, WholeNumberOf(TaskNumber, os::EnvironmentValue(TaskNumber), 0,
                                                std::numeric_limits<int>::max())));
  if (number >= task->plan.pieces.size())
    throw CommandError(ExitStatus::WrongUse, "the array has not so many pieces");
  return DoPiece(task->record, task->plan.pieces[number]);
}

}  // namespace

int RunArrayTask(int count, const char* const* arguments) {
  return RunReported(
      [&] { return RunTask(std::span(arguments, static_cast<std::size_t>(count))); });
}

}  // namespace rastrel::cli
