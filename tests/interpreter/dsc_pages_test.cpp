#include "interpreter/dsc_pages.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <string>

#include "rastrel/platform/os/file_descriptor.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::interpreter {
namespace {

const std::string Head =
    "%!PS-Adobe-3.0\n%%Pages: 3\n%%EndComments\n/f { fill } def\n%%EndProlog\n";
const std::string Tail = "%%Trailer\nend\n%%EOF\n";

std::string Page(int number) {
  return "%%Page: x " + std::to_string(number) +
         "\n%%PageBoundingBox: 0 0 9 9\n/level save def\n0 0 9 9 rectfill\nlevel restore "
         "showpage\n%%PageTrailer\n";
}

std::string Document() { return Head + Page(1) + Page(2) + Page(3) + Tail; }

// With this text in the place of that, or the whole document where that is empty.
std::string With(const std::string& that, const std::string& text) {
  std::string document = Document();
  const std::size_t at = document.find(that);
  EXPECT_NE(at, std::string::npos) << that;
  return document.replace(at, that.size(), text);
}

Expected<DscPages> Find(const std::string& text, const std::string& before = "") {
  const test::ScratchDirectory place;
  place.Write("job.ps", before + text + "more");
  const os::FileDescriptor file(open(place.Path("job.ps").c_str(), O_RDONLY | O_CLOEXEC));
  return FindDscPages(
      file.Get(), {.kind = JobKind::PostScript, .offset = before.size(), .length = text.size()});
}

std::string ReasonOf(const std::string& text) {
  const auto found = Find(text);
  return found ? "sound" : Describe(found.Error());
}

TEST(DscPages, are_the_whole_job_in_order) {
  for (const std::string before : {"", "wrapper\n"}) {
    const auto found = Find(Document(), before);
    ASSERT_TRUE(found) << Describe(found.Error());
    EXPECT_EQ(found->head, (FilePart{before.size(), Head.size()}));
    ASSERT_EQ(found->pages.size(), 3U);
    std::uint64_t at = before.size() + Head.size();
    for (int page = 1; page <= 3; ++page) {
      EXPECT_EQ(found->pages[static_cast<std::size_t>(page) - 1],
                (FilePart{at, Page(page).size()}));
      at += Page(page).size();
    }
    EXPECT_EQ(found->tail, (FilePart{at, Tail.size()}));
    EXPECT_EQ(at + Tail.size(), before.size() + Document().size());
  }
}

TEST(DscPages, may_be_counted_at_the_end_and_saved_without_a_name) {
  EXPECT_EQ(ReasonOf(With("%%Pages: 3", "%%Pages: (atend)")),
            "its comments count 0 pages and name 3");
  std::string text = With("%%Pages: 3", "%%Pages: (atend)");
  text.insert(text.find("%%EOF"), "%%Pages: 3\n");
  EXPECT_EQ(ReasonOf(text), "sound");
  EXPECT_EQ(ReasonOf(With("/level save def\n0 0 9 9 rectfill\nlevel restore", "save\nrestore")),
            "sound");
}

TEST(DscPages, of_other_counts_are_refused) {
  EXPECT_EQ(ReasonOf(With("%%Pages: 3", "%%Pages: 2")), "its comments count 2 pages and name 3");
  EXPECT_EQ(ReasonOf(With("%%Pages: 3", "%%Pages: 4")), "its comments count 4 pages and name 3");
  EXPECT_EQ(ReasonOf(Head + Page(1) + Tail), "it has no comments of two pages");
  EXPECT_EQ(ReasonOf(Head + Tail), "it has no comments of two pages");
}

TEST(DscPages, that_say_so_depend_on_each_other) {
  EXPECT_EQ(ReasonOf(With("%%EndComments", "%%PageOrder: Special\n%%EndComments")),
            "its pages depend on each other (%%PageOrder: Special)");
  EXPECT_EQ(ReasonOf(With("%%EndComments", "%%PageOrder: Ascend\n%%EndComments")), "sound");
}

TEST(DscPages, within_enclosed_parts_are_refused) {
  for (const std::string part : {"Document: a.eps", "Data: 9 ASCII Lines", "Binary: 9"}) {
    const std::string name = part.substr(0, part.find(':'));
    const std::string reason = "a page's comment is within an enclosed part";
    EXPECT_EQ(ReasonOf(With("0 0 9 9 rectfill", "%%Begin" + part + "\n%%Page: 1 1\n%%End" + name)),
              reason);
    EXPECT_EQ(ReasonOf(With("0 0 9 9 rectfill", "%%Begin" + part + "\n%%Trailer\n%%End" + name)),
              "sound");
  }
  EXPECT_EQ(ReasonOf(With("%%EndProlog", "%%EndProlog\n%%EndDocument")),
            "its comments of enclosed parts do not match");
}

TEST(DscPages, without_the_ends_of_prolog_and_pages_are_refused) {
  EXPECT_EQ(ReasonOf(With("%%EndProlog\n", "")),
            "no comment ends its prolog or setup ahead of the pages");
  EXPECT_EQ(ReasonOf(With("%%EndProlog\n", "%%EndSetup\n")), "sound");
  EXPECT_EQ(ReasonOf(With("%%Trailer\n", "")), "no comment begins its trailer");
  EXPECT_EQ(ReasonOf(With("%%EOF", "%%Trailer")), "it has two trailers");
  EXPECT_EQ(ReasonOf(With("%%EOF", "%%Page: 4 4")), "a page's comment is after the trailer's");
  EXPECT_EQ(ReasonOf(With("%!PS-Adobe-3.0", "%!PS")),
            "its first line does not say that it keeps to the rules of comments");
}

TEST(DscPages, that_are_not_within_save_and_restore_are_refused) {
  const std::string reason = "page 1 is not within a save and its restore";
  EXPECT_EQ(ReasonOf(With("/level save def\n", "")), reason);
  EXPECT_EQ(
      ReasonOf(With("%%PageBoundingBox: 0 0 9 9\n/level save def\n0 0 9 9 rectfill\nlevel restore "
                    "showpage\n",
                    "")),
      reason)
      << "of a page of comments alone";
  EXPECT_EQ(ReasonOf(With("/level save def\n", "/x 1 def /level save def\n")), reason);
  EXPECT_EQ(ReasonOf(With("level restore showpage", "showpage")), reason);
  EXPECT_EQ(ReasonOf(With("level restore showpage", "level restore showpage /x 1 def")), reason);
  std::string text = Document();
  text.insert(text.find("%%Trailer"), "/x 1 def\n");
  EXPECT_EQ(ReasonOf(text), "page 3 is not within a save and its restore");
}

TEST(DscPages, that_leave_the_jobs_encapsulation_are_refused) {
  EXPECT_EQ(ReasonOf(With("rectfill", "\x04")), "it holds an end of the job");
  for (const char* word : {"exitserver", "startjob"}) {
    EXPECT_EQ(ReasonOf(With("rectfill", word)), "it changes the interpreter for later jobs");
  }
}

// Lines and names that lie across the pieces in which a file is read.
TEST(DscPages, are_found_wherever_they_lie) {
  for (std::size_t size = 262130; size < 262150; ++size) {
    const std::string padding = "%" + std::string(size - Head.size(), '-') + "\n";
    EXPECT_EQ(ReasonOf(With("%%Page: x 1", padding + "%%Page: x 1")), "sound") << size;
    EXPECT_EQ(ReasonOf(With("%%Page: x 1", padding + "exitserver %%Page: x 1")),
              "it changes the interpreter for later jobs");
  }
}

TEST(DscPages, with_other_line_ends_are_found) {
  for (const std::string end : {"\r", "\r\n"}) {
    std::string text;
    for (const char c : Document()) text += c == '\n' ? end : std::string(1, c);
    EXPECT_EQ(ReasonOf(text), "sound");
  }
}

}  // namespace
}  // namespace rastrel::interpreter
