#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <map>

#include "queue_test_support.h"

namespace rastrel::server {
namespace {

class States : public QueueTest {
 protected:
  /// A job that has come to a state by the steps that lead there.
  JobId JobIn(JobState state) {
    const JobId id = Submit(Request());
    switch (state) {
      case JobState::Queued: break;
      case JobState::Held: EXPECT_TRUE(m_Queue->Hold(id)); break;
      case JobState::Canceled: EXPECT_TRUE(m_Queue->Cancel(id)); break;
      case JobState::Interpreting: Interpret(); break;
      case JobState::Failed:
        Interpret();
        EXPECT_TRUE(m_Queue->SetFailed(id, 1, "the RIP failed"));
        break;
      case JobState::Quarantined:
        for (int count = 0; count < 3; ++count) CountDeath(id);
        break;
      default: Deliver(id, state); break;
    }
    EXPECT_EQ(StateName(id), NameOf(state));
    return id;
  }

  JobId Interpret() {
    const auto job = m_Queue->ClaimToInterpret();
    EXPECT_TRUE(job && *job);
    return job && *job ? (*job)->id : 0;
  }

  void MakeReady(JobId id) {
    EXPECT_EQ(Interpret(), id);
    EXPECT_TRUE(m_Queue->SetReady(id, "job-" + std::to_string(id), 3, ""));
  }

  // Its worker is killed.
  void CountDeath(JobId id);

  void Deliver(JobId id, JobState state) {
    MakeReady(id);
    if (state == JobState::Ready) return;
    const auto job = m_Queue->ClaimToDeliver("Plotter");
    EXPECT_TRUE(job && *job);
    if (state == JobState::Done) {
      EXPECT_TRUE(m_Queue->SetDone(id));
    }
    if (state == JobState::Uncertain) {
      EXPECT_TRUE(m_Queue->SetUncertain(id, 512, "the line broke"));
    }
  }

  /// Runs `work` on the queue in another process, which is killed then.
  void InKilledProcess(const std::function<void(JobQueue&)>& work) {
    const pid_t child = ::fork();
    if (child == 0) {
      auto own = JobQueue::Open(Root());
      if (own) work(**own);
      ::_exit(0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
  }
};

void States::CountDeath(JobId) {
  InKilledProcess([](JobQueue& queue) { static_cast<void>(queue.ClaimToInterpret()); });
  EXPECT_EQ(m_Queue->RecoverClaims().ValueOr(-1), 1);
}

constexpr JobState AllStates[] = {
    JobState::Queued,     JobState::Held,       JobState::Interpreting, JobState::Ready,
    JobState::Delivering, JobState::Done,       JobState::Failed,       JobState::Canceled,
    JobState::Uncertain,  JobState::Quarantined};

struct ActionRow {
  const char* name;
  std::function<Expected<void>(JobQueue&, JobId)> act;
  /// State after it, where it is allowed; it is refused in all others.
  std::map<JobState, JobState> allowed;
};

// The table of docs/server.md.
std::vector<ActionRow> Actions() {
  using enum JobState;
  return {
      {"hold",
       [](JobQueue& queue, JobId id) { return queue.Hold(id); },
       {{Queued, Held}, {Ready, Held}, {Interpreting, Interpreting}}},
      {"release",
       [](JobQueue& queue, JobId id) { return queue.Release(id); },
       {{Held, Queued},
        {Failed, Queued},
        {Canceled, Queued},
        {Uncertain, Ready},
        {Quarantined, Queued}}},
      {"cancel",
       [](JobQueue& queue, JobId id) { return queue.Cancel(id); },
       {{Queued, Canceled},
        {Held, Canceled},
        {Ready, Canceled},
        {Failed, Canceled},
        {Uncertain, Canceled},
        {Quarantined, Canceled},
        {Interpreting, Interpreting},
        {Delivering, Delivering}}},
      {"move",
       [](JobQueue& queue, JobId id) { return queue.Move(id, "Other"); },
       {{Queued, Queued},
        {Held, Held},
        {Ready, Ready},
        {Failed, Failed},
        {Canceled, Canceled},
        {Uncertain, Uncertain},
        {Quarantined, Quarantined}}},
      {"priority",
       [](JobQueue& queue, JobId id) { return queue.SetPriority(id, 9); },
       {{Queued, Queued},
        {Held, Held},
        {Ready, Ready},
        {Interpreting, Interpreting},
        {Delivering, Delivering},
        {Uncertain, Uncertain},
        {Quarantined, Quarantined}}},
      {"accept",
       [](JobQueue& queue, JobId id) { return queue.AcceptAsDone(id); },
       {{Uncertain, Done}}},
  };
}

TEST_F(States, messages_of_a_run_call_the_jobs_file_by_its_title) {
  const JobId id = Submit(Request());
  ASSERT_EQ(Interpret(), id);
  const std::string file = Get(id).file;
  const std::string title = Get(id).title;
  ASSERT_TRUE(m_Queue->AddMessage(id, "RIP: reads " + file));
  ASSERT_TRUE(m_Queue->SetFailed(id, 3, "can't print '" + file + "'"));
  EXPECT_EQ(Get(id).message, "can't print '" + title + "'");
  const auto events = m_Queue->Events(0, id, 100);
  ASSERT_TRUE(events);
  for (const JobEvent& event : *events) EXPECT_EQ(event.text.find(file), event.text.npos);
}

TEST_F(States, APersonMayDoWhatTheStateAllowsAndNothingElse) {
  for (const ActionRow& row : Actions())
    for (const JobState state : AllStates) {
      const JobId id = JobIn(state);
      const auto allowed = row.allowed.find(state);
      const auto done = row.act(*m_Queue, id);
      if (allowed == row.allowed.end()) {
        EXPECT_EQ(WhyOf(done), "job " + std::to_string(id) + " is " + NameOf(state)) << row.name;
        EXPECT_EQ(StateName(id), NameOf(state)) << row.name;
      } else {
        EXPECT_TRUE(done) << row.name << " " << NameOf(state);
        EXPECT_EQ(StateName(id), NameOf(allowed->second)) << row.name << " " << NameOf(state);
      }
      Clear();
    }
}

TEST_F(States, AWorkersStepsNeedTheirState) {
  for (const JobState state : AllStates) {
    const JobId id = JobIn(state);
    const std::string refusal = "job " + std::to_string(id) + " is " + NameOf(state);
    const bool runs = state == JobState::Interpreting || state == JobState::Delivering;
    EXPECT_EQ(WhyOf(m_Queue->SetProgress(id, 5)), runs ? "" : refusal);
    EXPECT_EQ(WhyOf(m_Queue->AddMessage(id, "x")), runs ? "" : refusal);
    if (state != JobState::Interpreting) {
      EXPECT_EQ(WhyOf(m_Queue->SetReady(id, "", 0, "")), refusal);
    }
    if (state != JobState::Delivering) {
      EXPECT_EQ(WhyOf(m_Queue->SetDone(id)), refusal);
      EXPECT_EQ(WhyOf(m_Queue->SetSending(id, 1)), refusal);
      EXPECT_EQ(WhyOf(m_Queue->SetSent(id, 1)), refusal);
      EXPECT_EQ(WhyOf(m_Queue->SetUncertain(id, 1, "")), refusal);
    }
    if (!runs) {
      EXPECT_EQ(WhyOf(m_Queue->SetFailed(id, 1, "")), refusal);
    }
    Clear();
  }
}

TEST_F(States, OnlyTheClaimingProcessMayTakeSteps) {
  const JobId id = JobIn(JobState::Interpreting);
  std::string why;
  const pid_t child = ::fork();
  if (child == 0) {
    const auto own = JobQueue::Open(Root());
    const bool refused = own && WhyOf((*own)->SetFailed(id, 1, "")) ==
                                    "job " + std::to_string(id) + " belongs to another worker";
    ::_exit(refused ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(StateName(id), "interpreting");
}

TEST_F(States, AMissingJobIsNamed) {
  EXPECT_EQ(WhyOf(m_Queue->Hold(77)), "there is no job 77");
  EXPECT_EQ(WhyOf(m_Queue->Remove(77)), "there is no job 77");
  EXPECT_EQ(WhyOf(m_Queue->Reprint(77, {})), "there is no job 77");
}

TEST_F(States, AJobThatIsHeldWhileItsPagesAreMadeWaitsWithThem) {
  const JobId id = JobIn(JobState::Interpreting);
  ASSERT_TRUE(m_Queue->Hold(id));
  ASSERT_TRUE(m_Queue->SetReady(id, "job-1", 2, ""));
  EXPECT_EQ(StateName(id), "held");
  ASSERT_TRUE(m_Queue->Release(id));
  EXPECT_EQ(StateName(id), "ready");
}

TEST_F(States, ACanceledRunIsCanceledByItsWorker) {
  const JobId id = JobIn(JobState::Interpreting);
  EXPECT_EQ(WhyOf(m_Queue->SetCanceled(id)), "nobody canceled job 1");
  EXPECT_FALSE(m_Queue->IsCancelAsked(id).ValueOr(true));
  ASSERT_TRUE(m_Queue->Cancel(id));
  EXPECT_TRUE(m_Queue->IsCancelAsked(id).ValueOr(false));
  ASSERT_TRUE(m_Queue->SetCanceled(id));
  EXPECT_EQ(StateName(id), "canceled");
}

TEST_F(States, ACanceledDeliverySendsNothing) {
  const JobId id = JobIn(JobState::Delivering);
  ASSERT_TRUE(m_Queue->Cancel(id));
  EXPECT_EQ(WhyOf(m_Queue->SetSending(id, 10)), "job 1 is to be canceled");
}

TEST_F(States, AReprintIsAJobOfItsOwn) {
  const JobId id = JobIn(JobState::Done);
  const auto copy = m_Queue->Reprint(id, {1, 3});
  ASSERT_TRUE(copy);
  EXPECT_EQ(StateName(*copy), "ready");
  EXPECT_EQ(Get(*copy).options.at("pages"), "1,3");
  EXPECT_EQ(Get(*copy).spool, Get(id).spool);
  EXPECT_EQ(StateName(id), "done");
  for (const int page : {0, 4})
    EXPECT_EQ(WhyOf(m_Queue->Reprint(id, {page})),
              "there is no page " + std::to_string(page) + ": job 1 has 3");
  EXPECT_EQ(WhyOf(m_Queue->Reprint(JobIn(JobState::Queued), {})), "job 3 has no kept pages");
}

TEST_F(States, KeptPagesGoWithTheLastJobThatHasThem) {
  const JobId id = JobIn(JobState::Done);
  const auto copy = m_Queue->Reprint(id, {});
  ASSERT_TRUE(copy);
  EXPECT_EQ(m_Queue->Remove(id).ValueOr("failed"), "");
  EXPECT_EQ(m_Queue->Remove(*copy).ValueOr("failed"), "job-1");
  EXPECT_FALSE(std::filesystem::exists(m_Queue->DirectoryOf(id)));
}

TEST_F(States, AJobThatRunsIsNotRemoved) {
  const JobId id = JobIn(JobState::Delivering);
  EXPECT_EQ(WhyOf(m_Queue->Remove(id)), "job 1 is delivering");
  EXPECT_TRUE(std::filesystem::exists(Get(id).file));
}

TEST_F(States, FailuresLeadToQuarantineAtTheirNumber) {
  m_Queue = OpenQueue({.quarantineAfter = 2});
  const JobId id = Submit(Request());
  Interpret();
  ASSERT_TRUE(m_Queue->SetFailed(id, 1, "broken"));
  EXPECT_EQ(StateName(id), "failed");
  ASSERT_TRUE(m_Queue->Release(id));
  EXPECT_EQ(Get(id).failures, 0);
  CountDeath(id);
  EXPECT_EQ(StateName(id), "queued");
  CountDeath(id);
  EXPECT_EQ(StateName(id), "quarantined");
  EXPECT_EQ(Get(id).message, "its worker ended 2 times without a result");
}

TEST_F(States, OwnersTakeTurnsWithinAPriority) {
  for (const char* owner : {"ada", "ada", "ada", "bob", "eve"}) Submit(Request(owner));
  JobRequest urgent = Request("ada");
  urgent.priority = 60;
  const JobId first = Submit(urgent);
  std::string order;
  for (int count = 0; count < 6; ++count) {
    const auto job = m_Queue->ClaimToInterpret();
    ASSERT_TRUE(job && *job);
    order += (*job)->owner + std::to_string((*job)->id) + " ";
  }
  EXPECT_EQ(first, 6);
  EXPECT_EQ(order, "ada6 bob4 eve5 ada1 ada2 ada3 ");
  EXPECT_FALSE(*m_Queue->ClaimToInterpret());
}

TEST_F(States, ADeviceWorksOnOneJobAtATime) {
  MakeReady(Submit(Request()));
  MakeReady(Submit(Request()));
  const auto first = m_Queue->ClaimToDeliver("Plotter");
  ASSERT_TRUE(first && *first);
  EXPECT_FALSE(*m_Queue->ClaimToDeliver("Plotter"));
  EXPECT_TRUE(m_Queue->DevicesToServe()->empty());
  ASSERT_TRUE(m_Queue->SetDone((*first)->id));
  EXPECT_EQ(m_Queue->DevicesToServe()->size(), 1U);
  EXPECT_TRUE(*m_Queue->ClaimToDeliver("Plotter"));
  EXPECT_FALSE(*m_Queue->ClaimToDeliver("Other"));
}

TEST_F(States, AFullDeviceIsPassedOver) {
  m_Queue = OpenQueue({.readyJobs = 1});
  MakeReady(Submit(Request()));
  Submit(Request());
  EXPECT_FALSE(*m_Queue->ClaimToInterpret());
  JobRequest other = Request();
  other.device = "Other";
  const JobId id = Submit(other);
  EXPECT_EQ(Interpret(), id);
}

TEST_F(States, AKilledInterpretationBeginsAgain) {
  const JobId id = Submit(Request());
  InKilledProcess([](JobQueue& queue) { static_cast<void>(queue.ClaimToInterpret()); });
  EXPECT_EQ(StateName(id), "interpreting");
  EXPECT_EQ(m_Queue->RecoverClaims(true).ValueOr(-1), 1);
  EXPECT_EQ(StateName(id), "queued");
  EXPECT_EQ(Get(id).failures, 0);
}

TEST_F(States, AClaimOfALivingProcessIsLeftAlone) {
  const JobId id = JobIn(JobState::Delivering);
  EXPECT_EQ(m_Queue->RecoverClaims(true).ValueOr(-1), 0);
  EXPECT_EQ(StateName(id), "delivering");
}

TEST_F(States, AKilledDeliveryThatSentNothingIsReadyAgain) {
  const JobId id = Submit(Request());
  MakeReady(id);
  InKilledProcess([](JobQueue& queue) { static_cast<void>(queue.ClaimToDeliver("Plotter")); });
  EXPECT_EQ(m_Queue->RecoverClaims().ValueOr(-1), 1);
  EXPECT_EQ(StateName(id), "ready");
}

TEST_F(States, AKilledDeliveryThatMayHaveSentIsUncertain) {
  const JobId id = Submit(Request());
  MakeReady(id);
  InKilledProcess([id](JobQueue& queue) {
    static_cast<void>(queue.ClaimToDeliver("Plotter"));
    static_cast<void>(queue.SetSending(id, 1000));
    static_cast<void>(queue.SetSent(id, 512));
  });
  EXPECT_EQ(m_Queue->RecoverClaims().ValueOr(-1), 1);
  EXPECT_EQ(StateName(id), "uncertain");
  EXPECT_EQ(Get(id).sentBytes, 512);
  EXPECT_EQ(Get(id).message, "the delivery was cut off; at least 512 of 1000 bytes went");
}

TEST_F(States, ADeviceMayGetACutOffDeliveryAgain) {
  m_Queue = OpenQueue({.againAfterCutOff = {"Plotter"}});
  const JobId id = Submit(Request());
  MakeReady(id);
  InKilledProcess([id](JobQueue& queue) {
    static_cast<void>(queue.ClaimToDeliver("Plotter"));
    static_cast<void>(queue.SetSending(id, 1000));
  });
  EXPECT_EQ(m_Queue->RecoverClaims(true).ValueOr(-1), 1);
  EXPECT_EQ(StateName(id), "ready");
}

TEST_F(States, TheStoryHasEachChangeInItsOrder) {
  const JobId id = JobIn(JobState::Done);
  const auto events = m_Queue->Events(0, id, 100);
  ASSERT_TRUE(events);
  std::string story;
  for (const JobEvent& event : *events) story += event.text + " ";
  EXPECT_EQ(story, "queued interpreting ready delivering done ");
  EXPECT_EQ(m_Queue->Events(events->back().number, 0, 100)->size(), 0U);
  EXPECT_EQ(m_Queue->Events(0, 0, 2)->size(), 2U);
}

TEST_F(States, TwoProcessesClaimEachJobOnce) {
  constexpr int Jobs = 20;
  for (int count = 0; count < Jobs; ++count) Submit(Request());
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  const auto claimAll = [&] {
    const auto own = JobQueue::Open(Root());
    if (!own) ::_exit(1);
    for (;;) {
      const auto job = (*own)->ClaimToInterpret();
      if (!job) ::_exit(2);
      if (!*job) ::_exit(0);
      const char number = static_cast<char>((*job)->id);
      if (::write(ends[1], &number, 1) != 1) ::_exit(3);
    }
  };
  for (int count = 0; count < 2; ++count)
    if (::fork() == 0) claimAll();
  int status = 0;
  while (::wait(&status) > 0) EXPECT_EQ(status, 0);
  ::close(ends[1]);
  std::map<char, int> claims;
  for (char number = 0; ::read(ends[0], &number, 1) == 1;) ++claims[number];
  ::close(ends[0]);
  EXPECT_EQ(claims.size(), std::size_t{Jobs});
  for (const auto& [number, count] : claims) EXPECT_EQ(count, 1) << int{number};
}

}  // namespace
}  // namespace rastrel::server
