#pragma once

#include <sys/types.h>

#include <list>
#include <string>

#include "interpreter/warm/job.h"
#include "interpreter/warm/library.h"
#include "interpreter/warm_message.h"
#include "interpreter/warm_place.h"
#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::interpreter::warm {

/// How long a warm interpreter lives.
struct Lifetime {
  unsigned restSeconds = 0;  ///< without a job
  unsigned jobs = 0;         ///< until another has to take its place
};

/// The waiting process: accepts connections, forks for each, and says how the forks have ended. It
/// reads nothing that anybody sends; that is the forks' affair. One thread.
class Keeper {
 public:
  /// Takes the name of the options, which no other process may have, in the place. Ends the one
  /// that had no job for the longest time if there would be too many else. Fails if the name is
  /// taken.
  [[nodiscard]] static Expected<Keeper> Make(WarmPlace place, const WarmOptions& options,
                                             Lifetime lifetime);
  /// Begins to listen and serves jobs to the end of its life. The socket is gone then.
  [[nodiscard]] Expected<void> Serve(Library& library);

 private:
  struct Job {
    pid_t process;
    os::FileDescriptor connection;
    bool hasEnded = false;
  };

  Keeper(WarmPlace place, std::string name, JobBase base, Lifetime lifetime,
         os::FileDescriptor lock)
      : m_Place(std::move(place)),
        m_Name(std::move(name)),
        m_Base(std::move(base)),
        m_Lifetime(lifetime),
        m_Lock(std::move(lock)) {}

  [[nodiscard]] bool MustEnd() const;
  [[nodiscard]] bool IsStillNamed() const;
  void Wait();
  void Accept(Library& library);
  void TakeEnds();
  void TakeLeft(Job& job);
  void StopListening();

  WarmPlace m_Place;
  std::string m_Name;
  JobBase m_Base;
  Lifetime m_Lifetime;
  os::FileDescriptor m_Lock;
  os::FileDescriptor m_Listening;
  os::FileDescriptor m_Signals;  // SIGCHLD, and SIGTERM, which asks for the end
  ino_t m_Inode = 0;             // of the socket
  std::list<Job> m_Jobs;
  unsigned m_Done = 0;
  bool m_Ends = false;
  os::Deadline m_Rest;
};

}  // namespace rastrel::interpreter::warm
