#include "rastrel/platform/os/owner.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "rastrel/platform/os/process.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::os {
namespace {

ProcessIdentity Own() {
  const auto own = IdentityOfProcess(CurrentProcessId());
  EXPECT_TRUE(own);
  return own ? *own : ProcessIdentity{};
}

TEST(Owner, a_running_process_may_be_alive_and_has_one_identity) {
  EXPECT_TRUE(MayBeAlive(Own()));
  EXPECT_EQ(Own(), Own());
}

TEST(Owner, a_process_that_has_ended_is_not_alive_whether_it_was_reaped_or_not) {
  int gate[2];
  ASSERT_EQ(::pipe(gate), 0);
  const pid_t child = ::fork();
  if (child == 0) {
    char byte = 0;
    ::close(gate[1]);
    _exit(static_cast<int>(::read(gate[0], &byte, 1)));
  }
  ASSERT_GT(child, 0);
  const auto identity = IdentityOfProcess(static_cast<std::uint32_t>(child));
  ASSERT_TRUE(identity);
  EXPECT_TRUE(MayBeAlive(*identity));
  ::close(gate[0]);
  ::close(gate[1]);
  siginfo_t information{};
  ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(child), &information, WEXITED | WNOWAIT), 0);
  EXPECT_FALSE(MayBeAlive(*identity));
  ASSERT_EQ(::waitpid(child, nullptr, 0), child);
  EXPECT_FALSE(MayBeAlive(*identity));
  EXPECT_FALSE(IdentityOfProcess(static_cast<std::uint32_t>(child)));
}

TEST(Owner, another_process_of_the_same_id_is_not_the_owner) {
  ProcessIdentity earlier = Own();
  --earlier.start;
  EXPECT_FALSE(MayBeAlive(earlier));
  ProcessIdentity before = Own();
  before.boot = "another start of the machine";
  EXPECT_FALSE(MayBeAlive(before));
}

TEST(Owner, what_can_not_be_found_out_counts_as_alive) {
  ProcessIdentity elsewhere = Own();
  elsewhere.start = 1;
  elsewhere.space = "pid:[1]";
  EXPECT_TRUE(MayBeAlive(elsewhere));
  elsewhere.machine += "-two";
  elsewhere.boot = "its own";
  EXPECT_TRUE(MayBeAlive(elsewhere));
}

TEST(Owner, an_identity_is_one_line_and_back) {
  const auto own = ParseIdentity(FormatIdentity(Own()));
  ASSERT_TRUE(own);
  EXPECT_EQ(*own, Own());
  for (const char* text :
       {"", "1", "1 2 b s", "1 2 b s m more", "0 2 b s m", "x 2 b s m", "1 -2 b s m",
        "99999999999 2 b s m", "1 2  s m", "1 2 b  m", "1 2 b s  "})
    EXPECT_FALSE(ParseIdentity(text)) << text;
}

TEST(Owner, a_directory_names_its_owner_once) {
  const test::ScratchDirectory place;
  EXPECT_EQ(ReadOwner(place.Path()).Error().error, ENOENT);
  ASSERT_TRUE(WriteOwner(place.Path(), Own()));
  const auto owner = ReadOwner(place.Path());
  ASSERT_TRUE(owner);
  EXPECT_EQ(*owner, Own());
  EXPECT_EQ(WriteOwner(place.Path(), Own()).Error().error, EEXIST);
  EXPECT_TRUE(RemoveOwner(place.Path()));
  EXPECT_TRUE(RemoveOwner(place.Path()));
  EXPECT_FALSE(place.Has(".owner"));
}

TEST(Owner, a_file_that_is_cut_names_none) {
  const test::ScratchDirectory place;
  const std::string whole = FormatIdentity(Own()) + "\n";
  for (std::size_t length = 0; length < whole.size(); length += 3) {
    place.Write(".owner", whole.substr(0, length));
    EXPECT_FALSE(ReadOwner(place.Path())) << length;
  }
}

TEST(OwnTag, names_this_process_in_few_characters_and_a_fork_another) {
  const std::string own = OwnTag();
  EXPECT_LE(own.size(), 60U);
  EXPECT_TRUE(own.starts_with(std::to_string(CurrentProcessId()) + "."));
  EXPECT_EQ(OwnTag(), own);
  EXPECT_EQ(OwnerOfTag(own), TagOwner::MayLive);
  const pid_t child = ::fork();
  if (child == 0) _exit(OwnTag() != own && OwnerOfTag(own) == TagOwner::MayLive ? 0 : 1);
  int status = 1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST(OwnerOfTag, is_unknown_for_other_texts_and_ended_for_an_earlier_process_of_the_id) {
  for (const char* text : {"", "4711", "4711.8812.0ef1a2b3", "x.8812.0ef1a2b3.9c5d77aa",
                           "4711.y.0ef1a2b3.9c5d77aa", "1.2.3.4.5"})
    EXPECT_EQ(OwnerOfTag(text), TagOwner::Unknown) << text;
  const std::string own = OwnTag();
  const std::string id = std::to_string(CurrentProcessId());
  const std::string marks = own.substr(own.find('.', id.size() + 1));
  EXPECT_EQ(OwnerOfTag(id + ".1" + marks), TagOwner::Ended);
  EXPECT_EQ(OwnerOfTag(id + ".1" + marks.substr(0, 10) + "00000000"), TagOwner::MayLive);
}

}  // namespace
}  // namespace rastrel::os
