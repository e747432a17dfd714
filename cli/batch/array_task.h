#pragma once

namespace rastrel::cli {

/// The first argument of a task of a batch's array, which no command has.
inline constexpr const char* ArrayTaskWord = ":batch-task";

/// Exit status of a task whose machine does not see the batch's record, or its working directory.
inline constexpr int NotSharedStatus = 71;
/// Those of the shell that starts a task, where the program is missing or can't run.
inline constexpr int ShellCannotRun = 126;
inline constexpr int ShellNotFound = 127;

/// Does the piece of one task on whatever machine the cluster chose: `rastrel :batch-task RESULTS
/// NAME` with the number of the task in the environment. Returns the exit status of main.
[[nodiscard]] int RunArrayTask(int count, const char* const* arguments);

}  // namespace rastrel::cli
