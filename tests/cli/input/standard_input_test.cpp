#include "cli/input/standard_input.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/scratch_directory.h"

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;

// In a process of its own: the copy is process-wide, and standard input is used up.
class StandardInput : public testing::Test {
 protected:
  // Gives TakeStandardInput these bytes by a pipe. Returns the name of the copy, or the failure.
  std::string Take(const std::string& bytes, const std::string& title = {},
                   std::uint64_t limit = StandardInputLimit) {
    int ends[2];
    int answers[2];
    EXPECT_EQ(::pipe(ends), 0);
    EXPECT_EQ(::pipe(answers), 0);
    EXPECT_EQ(::write(ends[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    ::close(ends[1]);
    const pid_t child = ::fork();
    if (child == 0) {
      ::dup2(ends[0], 0);
      const auto taken = TakeStandardInput(m_Place.Path(), title, limit);
      const std::string answer =
          taken ? taken->substr(m_Place.Path().size() + 1) : Describe(taken.Error());
      ::_exit(::write(answers[1], answer.data(), answer.size()) < 0 ? 1 : 0);
    }
    ::close(ends[0]);
    ::close(answers[1]);
    std::string answer(4096, '\0');
    const ssize_t count = ::read(answers[0], answer.data(), answer.size());
    ::close(answers[0]);
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    answer.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
    return answer;
  }

  test::ScratchDirectory m_Place;
};

TEST_F(StandardInput, becomes_a_private_file_named_by_its_content) {
  EXPECT_EQ(Take("%!PS\n"), "standard input.ps");
  EXPECT_EQ(Take("%PDF-1.4\n"), "standard input.pdf");
  EXPECT_EQ(Take("<a/>"), "standard input.xml");
  EXPECT_EQ(Take("PK\x03\x04"), "standard input");
  EXPECT_EQ(m_Place.Read("standard input.ps"), "%!PS\n");
  EXPECT_EQ(fs::status(m_Place.Path("standard input.ps")).permissions(), fs::perms(0600));
}

TEST(AccessOf, a_file_has_its_own_with_both_for_the_owner_and_one_that_is_gone_the_owners_alone) {
  const test::ScratchDirectory place;
  place.Write("job.ps", "%!PS\n");
  fs::permissions(place.Path("job.ps"), fs::perms(0444));
  EXPECT_EQ(AccessOf(place.Path("job.ps")), 0644U);
  EXPECT_EQ(AccessOf(place.Path("none.ps")), 0600U);
}

TEST_F(StandardInput, has_the_title_for_a_name_but_never_leaves_its_directory) {
  EXPECT_EQ(Take("%!PS\n", "shop 1.5"), "shop 1.5.ps");
  EXPECT_EQ(Take("%!PS\n", "../../etc/passwd"), "_.._etc_passwd.ps");
}

TEST_F(StandardInput, has_a_limit_that_its_refusal_says) {
  const std::string bytes(std::size_t{1} << 14, '%');
  EXPECT_EQ(Take(bytes, "", bytes.size() - 1),
            "standard input is larger than 0 MiB, the most that is taken; put it into a file, and "
            "name that");
  EXPECT_EQ(Take(bytes, "", bytes.size()), "standard input");
}

}  // namespace
}  // namespace rastrel::cli
