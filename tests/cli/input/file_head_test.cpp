#include "cli/input/file_head.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/support/ordinary_user.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::cli {
namespace {

using namespace std::string_view_literals;

// Why a file has no head, as a person reads it; empty if it has one.
std::string WhyNoHead(const std::string& path) {
  const auto head = ReadFileHead(path, 16);
  return head ? std::string() : Describe(head.Error());
}

TEST(FileHead, gives_as_many_bytes_as_are_asked_for_and_there) {
  const test::ScratchDirectory place;
  place.Write("file", "<a b/>");
  for (const std::size_t size : {5U, 6U, 7U}) {
    const auto head = ReadFileHead(place.Path("file"), size);
    ASSERT_TRUE(head) << Describe(head.Error());
    EXPECT_EQ(*head, std::string("<a b/>").substr(0, size));
  }
}

TEST(FileHead, says_why_there_are_none) {
  const test::ScratchDirectory place;
  place.Write("empty", "");
  place.Write("blank", " \t\r\n");
  ASSERT_EQ(::mkfifo(place.Path("pipe").c_str(), 0600), 0);
  const auto trouble = [&place](const std::string& name) { return WhyNoHead(place.Path(name)); };
  EXPECT_EQ(trouble("none"), "there is no such file");
  EXPECT_EQ(trouble("empty/below"), "there is no such file");
  EXPECT_EQ(WhyNoHead(place.Path()), "it is a directory");
  EXPECT_EQ(trouble("pipe"), "it is no regular file");
  EXPECT_EQ(WhyNoHead("/dev/null"), "it is no regular file");
  EXPECT_EQ(trouble("empty"), "it is empty");
  EXPECT_EQ(trouble("blank"), "it holds nothing but blanks");
  EXPECT_TRUE(ReadFileHead(place.Path("blank"), 4));
}

TEST(FileHead, says_that_a_file_may_not_be_read) {
  const test::ScratchDirectory place;
  std::filesystem::permissions(place.Path(), std::filesystem::perms{0755});
  place.Write("secret", "<a/>");
  std::filesystem::permissions(place.Path("secret"), std::filesystem::perms::none);
  const test::OrdinaryUser user;
  EXPECT_EQ(WhyNoHead(place.Path("secret")), "Permission denied");
}

TEST(FileHead, may_be_xml_if_markup_comes_behind_a_mark_and_blanks) {
  for (const std::string_view head :
       {"<a/>"sv, " \r\n\t<a/>"sv, "\xEF\xBB\xBF<a/>"sv, "\xEF\xBB\xBF\n<a/>"sv, "\xFF\xFE<\0"sv,
        "\xFE\xFF\0<"sv, "<\0a\0"sv, "\0<\0a"sv, "   "sv})
    EXPECT_TRUE(MayBeXml(head)) << head;
  for (const std::string_view head :
       {"a<b>"sv, "\xEF\xBB<a/>"sv, "%PDF-1.4"sv, "\0<"sv.substr(0, 1), "PK\3\4<"sv, "&lt;"sv})
    EXPECT_FALSE(MayBeXml(head)) << head;
}

TEST(FileHead, knows_some_other_kinds) {
  EXPECT_EQ(KnownKind("%PDF-1.7\n"), "a PDF file");
  EXPECT_EQ(KnownKind("%!PS-Adobe-3.0"), "PostScript");
  EXPECT_EQ(KnownKind("PK\3\4..."), "a zip file, as spreadsheets are");
  EXPECT_EQ(KnownKind("%PD"), "");
  EXPECT_EQ(KnownKind("words"), "");
  EXPECT_EQ(KnownKind(""), "");
}

}  // namespace
}  // namespace rastrel::cli
