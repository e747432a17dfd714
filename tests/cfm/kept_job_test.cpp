#include "rastrel/cfm/kept_job.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "rastrel/job/cfm_file.h"
#include "tests/support/library_fixture.h"

namespace {

namespace cfm = rastrel::cfm;
namespace fs = std::filesystem;
using rastrel::test::LibraryTest;
using rastrel::test::ScratchDirectory;

// Two pages, with 2 files of 5 bytes and with 1 of 7, as a RIP leaves them and then in a job.
class KeptJob : public LibraryTest {
 protected:
  KeptJob() {
    for (const char* place : {"run", "job"}) {
      m_Scratch.Write(std::string(place) + "/A/pixels", "1234");
      m_Scratch.Write(std::string(place) + "/A/sub/.info", "5");
      m_Scratch.Write(std::string(place) + "/B/pixels", "1234567");
    }
    m_Pages.AddEntry(m_Scratch.Wide("run") + L"/", L"A");
    m_Pages.AddEntry(m_Scratch.Wide("run") + L"/", L"B");
  }
  [[nodiscard]] std::string Job() const { return m_Scratch.Path("job"); }
  [[nodiscard]] cfm::KeptJob Begin() const {
    const auto job = cfm::BeginKeptJob(m_Pages, Job());
    EXPECT_TRUE(job) << Describe(job.Error());
    return job ? *job : cfm::KeptJob{};
  }

  ScratchDirectory m_Scratch;
  CCFMFile m_Pages;
};

TEST_F(KeptJob, the_record_comes_when_the_pages_are_compared) {
  m_Scratch.Write("job/.kept", "of an earlier job");
  const cfm::KeptJob job = Begin();
  EXPECT_FALSE(m_Scratch.Has("job/.kept"));
  const auto unfinished = cfm::ReadKeptJob(Job(), cfm::UnfinishedJobName);
  ASSERT_TRUE(unfinished);
  EXPECT_TRUE(unfinished->mover && rastrel::os::MayBeAlive(*unfinished->mover));
  EXPECT_EQ(unfinished->pages.at(1).source, m_Scratch.Path("run/B"));
  ASSERT_TRUE(cfm::FinishKeptJob(job, Job()));
  EXPECT_EQ(m_Scratch.Read("job/.kept"),
            "Rastrel kept job 1\npages: 2\npage: 2 5 A\npage: 1 7 B\nend\n");
  EXPECT_FALSE(m_Scratch.Has("job/.kept-unfinished"));
}

TEST_F(KeptJob, a_page_that_lacks_a_byte_a_file_or_all_has_no_record) {
  const cfm::KeptJob job = Begin();
  const auto expectFailure = [&](const std::string& path) {
    const auto finished = cfm::FinishKeptJob(job, Job());
    ASSERT_FALSE(finished) << path;
    EXPECT_EQ(finished.Error().where, m_Scratch.Path(path));
    EXPECT_FALSE(m_Scratch.Has("job/.kept"));
    EXPECT_TRUE(m_Scratch.Has("job/.kept-unfinished"));
  };
  m_Scratch.Write("job/B/pixels", "123456");
  expectFailure("job/B");
  m_Scratch.Write("job/B/pixels", "12345678");
  expectFailure("job/B");
  m_Scratch.Write("job/B/pixels", "1234567");
  m_Scratch.Write("job/A/pixels", "12345");
  fs::remove(m_Scratch.Path("job/A/sub/.info"));
  expectFailure("job/A");
  fs::remove_all(m_Scratch.Path("job/A"));
  expectFailure("job/A");
}

TEST_F(KeptJob, a_page_that_is_not_there_can_not_be_noted) {
  m_Pages.AddEntry(m_Scratch.Wide("run") + L"/", L"C");
  const auto job = cfm::BeginKeptJob(m_Pages, Job());
  ASSERT_FALSE(job);
  EXPECT_EQ(job.Error().where, m_Scratch.Path("run/C"));
  EXPECT_FALSE(m_Scratch.Has("job/.kept-unfinished"));
}

TEST_F(KeptJob, a_text_of_any_title_and_source_comes_back) {
  cfm::KeptJob job;
  job.pages.push_back({"100% \xC3\xA9 a\nb\x7F", 0, 18446744073709551615U, "/a\n%41/b"});
  job.pages.push_back({"p", 1, 2, {}});
  const auto read = cfm::ParseKeptJob(cfm::FormatKeptJob(job));
  ASSERT_TRUE(read) << Describe(read.Error());
  ASSERT_EQ(read->pages.size(), 2U);
  EXPECT_EQ(read->pages[0].title, job.pages[0].title);
  EXPECT_EQ(read->pages[0].bytes, job.pages[0].bytes);
  EXPECT_EQ(read->pages[0].source, job.pages[0].source);
  EXPECT_EQ(read->pages[1].source, "");
}

TEST_F(KeptJob, a_text_that_is_cut_or_says_anything_else_is_refused_with_its_line) {
  const std::string whole = "Rastrel kept job 1\npages: 2\npage: 2 5 A\npage: 1 7 B\nend\n";
  ASSERT_TRUE(cfm::ParseKeptJob(whole));
  for (std::size_t length = 0; length < whole.size(); ++length)
    EXPECT_FALSE(cfm::ParseKeptJob(whole.substr(0, length))) << length;
  const std::string head = "Rastrel kept job 1\n";
  for (const auto& [text, line] : std::vector<std::pair<std::string, int>>{
           {"Rastrel kept job 2\npages: 0\nend\n", 1},
           {head + "pages: 1\nend\n", 3},
           {head + "pages: -1\nend\n", 2},
           {head + "pages: 0\nfrom: /a\nend\n", 3},
           {head + "pages: 1\npage: 1 1 ..\nend\n", 3},
           {head + "pages: 1\npage: 1 1 a/b\nend\n", 3},
           {head + "pages: 1\npage: 1 1 %2\nend\n", 3},
           {head + "pages: 1\npage: 1 99999999999999999999 a\nend\n", 3},
           {head + "mover: nobody\npages: 0\nend\n", 2},
           {head + "pages: 0\nend\nmore\n", 3},
           // The same job in other words than those that are written of it.
           {head + "pages: 01\npage: 1 1 a\nend\n", 2},
           {head + "pages: 1\npage: 1 007 a\nend\n", 3},
           {head + "pages: 1\npage: 1 1 %0a\nend\n", 3},
           {head + "pages: 1\npage: 1 1 %41\nend\n", 3},
           {head + "pages: 1\npage: 1 1 a\nfrom: /a\nfrom: /b\nend\n", 4},
           {head + "pages: 1\npage: 1 1 a\nfrom: \nend\n", 4}}) {
    const auto job = cfm::ParseKeptJob(text);
    ASSERT_FALSE(job) << text;
    EXPECT_EQ(job.Error().line, line) << text;
  }
}

}  // namespace
