#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// A job of the print shop's queue, as all rooms of the server know it. Texts are UTF-8; those that
/// come from others (names, titles, messages) are kept as they came and cleaned when they are
/// shown.
namespace rastrel::server {

/// Number of a job, from 1, never used twice.
using JobId = std::int64_t;

/// Milliseconds since 1970-01-01 00:00 UTC; 0 is "not yet".
using Time = std::int64_t;

enum class JobState {
  Queued,        ///< waits to be interpreted
  Held,          ///< waits for a person; whatever was made of it is kept
  Interpreting,  ///< the RIP makes its pages
  Ready,         ///< its pages are made and kept; waits for its device
  Delivering,    ///< the output engine, or the way to the device, works on it
  Done,          ///< delivered; set only after the last byte is safe
  Failed,        ///< ended with an error; may be released again
  Canceled,      ///< ended by a person
  Uncertain,     ///< its delivery was cut off: a person decides whether it is sent again
  Quarantined,   ///< failed so often that it waits for a person
};

/// "queued", "held", ... as JSON, the database and commands spell it.
[[nodiscard]] const char* NameOf(JobState state);
/// The state of a name; false if there is none.
[[nodiscard]] bool StateOf(const std::string& name, JobState& state);
/// Whether a job in this state has ended: Done, Failed, Canceled. (Uncertain and Quarantined wait.)
[[nodiscard]] bool HasEnded(JobState state);

/// The work that a job is.
enum class JobWork {
  Print,  ///< print the file to the device
  Cut,    ///< cut it by rules, and bring the cut to the device
  Merge,  ///< fill a template from a table and print each plate
};

/// "print", "cut", "merge".
[[nodiscard]] const char* NameOf(JobWork work);
/// The work of a name; false if there is none.
[[nodiscard]] bool WorkOf(const std::string& name, JobWork& work);

/// The options of a job, by the long names of the command's options without dashes ("mode",
/// "scale", "levels", "copies", "pages", "planar", "cut-color", "rules", "data", ...). A flag has
/// the value "". They are checked when the job is submitted, by the same code as the command's.
using JobOptions = std::map<std::string, std::string>;

/// A job as it is brought.
struct JobRequest {
  std::string path;    ///< the file, which is copied into the queue; stays as it is
  std::string title;   ///< shown name; by default the file's name
  std::string owner;   ///< name of the user who brought it
  std::string source;  ///< "command", "web", "network printer", "folder NAME", "batch"
  std::string device;  ///< section of devices.txt, or of the server's settings
  JobWork work = JobWork::Print;
  JobOptions options;
  int priority = 50;  ///< 1 (last) to 100 (first)
  bool hold = false;  ///< begins as Held
  /// Not empty: Submit with a key that a job has already returns that job's number, and takes
  /// nothing. For who can't know whether it submitted before it was killed.
  std::string key{};
};

/// One row of the queue.
struct Job {
  JobId id = 0;
  std::string title;
  std::string owner;
  std::string source;
  std::string device;
  JobWork work = JobWork::Print;
  JobOptions options;
  int priority = 50;
  JobState state = JobState::Queued;
  std::string file;        ///< its file in the queue's directory, a full native path
  std::int64_t bytes = 0;  ///< of that file
  Time submitted = 0;
  Time started = 0;  ///< its RIP
  Time ended = 0;
  int attempts = 0;             ///< interpretations and deliveries begun
  int failures = 0;             ///< since a person released it
  int percent = 0;              ///< of the run that is on
  int pages = 0;                ///< made by the RIP
  std::string ink;              ///< coverage as JSON: an object a page, ink name to share 0..1
  std::string spool;            ///< name of its kept pages; empty: none
  std::int64_t sentBytes = -1;  ///< of a delivery that was cut off; -1 is unknown
  int result = 0;               ///< exit status of the run, as the command's; docs of exit_status.h
  std::string message;          ///< why it failed, waits or is uncertain; one sentence
};

/// A line of a job's story: state changes, and the words of its children.
struct JobEvent {
  std::int64_t number = 0;  ///< grows over all jobs: where a reader of events goes on
  JobId job = 0;
  Time time = 0;
  std::string kind;  ///< "state", "progress", "message"
  std::string text;  ///< the state's name; the percentage; a child's line
};

}  // namespace rastrel::server
