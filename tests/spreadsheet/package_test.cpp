// Unpacking: a package's parts come out whole, and a dishonest package is refused with a message
// that names the entry.

#include "spreadsheet/package.h"

#include <gtest/gtest.h>

#include <random>

#include "spreadsheet/error.h"
#include "spreadsheet/part_name.h"
#include "tests/spreadsheet/zip_bytes.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::test {
namespace {

using spreadsheet::Error;
using spreadsheet::OpenFolderPackage;
using spreadsheet::OpenZipPackage;
using spreadsheet::PackageLimits;
using spreadsheet::PrintableName;
using spreadsheet::RelationshipsOf;
using spreadsheet::ResolveTarget;
using spreadsheet::SameName;
using spreadsheet::WhyBadName;

std::string Noise(std::size_t size) {
  std::mt19937 random(7);
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

class PackageTest : public ::testing::Test {
 protected:
  // Opens a package and unpacks a part to "part"; the refusal's message, or none.
  std::string Try(const std::string& bytes, const std::string& part = "a",
                  const PackageLimits& limits = {}) {
    m_Scratch.Write("p.zip", bytes);
    try {
      const auto package = OpenZipPackage(m_Scratch.Path("p.zip"), limits);
      if (package->Find(part).empty()) return "not there";
      package->Unpack(part, m_Scratch.Path("part"), {});
      return {};
    } catch (const Error& error) {
      EXPECT_EQ(error.Reason().error, 0) << error.what();
      std::string words = error.what();
      EXPECT_TRUE(words.starts_with(m_Scratch.Path("p.zip: "))) << words;
      return words.substr(std::min(words.size(), m_Scratch.Path("p.zip: ").size()));
    }
  }
  std::string Try(const ZipEntry& entry) { return Try(ZipBytes({entry}).Make(), entry.name); }

  ScratchDirectory m_Scratch;
};

TEST_F(PackageTest, parts_come_out_as_they_are) {
  const std::string large = Noise(200'000) + std::string(300'000, 'x');
  for (const std::string& content : {std::string(), std::string("x"), large})
    for (const bool deflated : {false, true}) {
      EXPECT_EQ(Try(ZipBytes({{"b/c", "other"}, {"a", content, deflated}}).Make()), "");
      EXPECT_EQ(m_Scratch.Read("part"), content);
    }
}

TEST_F(PackageTest, a_part_is_found_by_its_case_or_without_it_if_only_one_could_be_meant) {
  m_Scratch.Write("p.zip", ZipBytes({{"xl/A", "1"}, {"xl/a", "2"}, {"xl/Strings", "3"}}).Make());
  const auto package = OpenZipPackage(m_Scratch.Path("p.zip"));
  EXPECT_EQ(package->Find("xl/a"), "xl/a");
  EXPECT_EQ(package->Find("xl/strings"), "xl/Strings");
  EXPECT_EQ(package->Find("XL/A"), "");
  EXPECT_EQ(package->Find("none"), "");
  EXPECT_EQ(package->SizeOf("xl/strings"), 1U);
}

TEST_F(PackageTest, folders_are_no_fault) {
  EXPECT_EQ(Try(ZipBytes({{"d/", "", false, 0, 3, 040755}, {"a", "x"}}).Make()), "");
}

TEST_F(PackageTest, names_that_lead_elsewhere_are_refused) {
  const std::vector<std::pair<std::string, std::string>> names{
      {"../a", "'../a': its name leads out of the package"},
      {"x/../../a", "'x/../../a': its name leads out of the package"},
      {"x/..", "'x/..': its name leads out of the package"},
      {"/etc/a", "'/etc/a': its name is an absolute path"},
      {"c:/a", "'c:/a': its name begins with a drive"},
      {"x\\a", "'x\\a': its name has a backslash"},
      {"x//a", "'x//a': its name has an empty element"},
      {"./a", "'./a': its name has an empty element"},
      {"a\nb", "'a\\x0ab': its name has a control character"},
      {"", "'': its name is empty"},
  };
  for (const auto& [name, words] : names) EXPECT_EQ(Try({name, "x"}), "entry " + words);
}

TEST_F(PackageTest, a_bad_name_of_an_entry_that_nobody_needs_is_refused_too) {
  EXPECT_EQ(Try(ZipBytes({{"a", "x"}, {"../b", "y"}}).Make()),
            "entry '../b': its name leads out of the package");
}

TEST_F(PackageTest, a_list_of_entries_that_is_none_is_refused_with_the_reason) {
  std::string bytes = ZipBytes({ZipEntry{"a", "x"}}).Make();
  const std::size_t list = bytes.find("PK\1\2");
  ASSERT_NE(list, bytes.npos);
  bytes[list] = 'X';
  const std::string refusal = Try(bytes);
  EXPECT_TRUE(refusal.starts_with("it is no sound zip file: ")) << refusal;
  EXPECT_NE(refusal.find("ip archive"), refusal.npos) << refusal;
}

TEST_F(PackageTest, names_are_bounded) {
  EXPECT_EQ(Try({std::string(255, 'n'), "x"}), "");
  EXPECT_NE(Try({std::string(256, 'n'), "x"}).find("element of more than 255"), std::string::npos);
  std::string path;
  while (path.size() < 1000) path += std::string(99, 'n') + "/";
  EXPECT_EQ(WhyBadName(path + std::string(24, 'n')), "");
  EXPECT_EQ(WhyBadName(path + std::string(25, 'n')), "its name has more than 1024 bytes");
}

TEST_F(PackageTest, links_and_devices_are_refused) {
  EXPECT_EQ(Try({"a", "/etc/passwd", false, 0, 3, 0120777}), "entry 'a': it is a link");
  for (const std::uint32_t kind : {0010000U, 0020000U, 0060000U, 0140000U})
    EXPECT_EQ(Try({"a", "x", false, 0, 3, kind | 0644}),
              "entry 'a': it is a device, a pipe or a socket");
  // Elsewhere those bits mean something else.
  EXPECT_EQ(Try({"a", "x", false, 0, 0, 0120777}), "");
  EXPECT_EQ(m_Scratch.Read("part"), "x");
}

TEST_F(PackageTest, a_name_that_comes_twice_is_refused) {
  EXPECT_EQ(Try(ZipBytes({{"a", "1"}, {"b", "2"}, {"a", "3"}}).Make()),
            "entry 'a': another entry has the same name");
}

TEST_F(PackageTest, encrypted_and_strangely_packed_entries_are_refused) {
  EXPECT_EQ(Try({"a", "x", false, 1}), "entry 'a': it is encrypted");
  ZipEntry entry{"a", "x"};
  entry.method = 12;
  EXPECT_EQ(Try(entry), "entry 'a': it is packed by method 12, which packages don't have");
}

TEST_F(PackageTest, entries_that_share_their_bytes_are_refused) {
  ZipEntry twin{"twin", Noise(10'000)};
  ZipEntry first = twin;
  first.name = "a";
  twin.sharesDataOf = 0;
  EXPECT_NE(Try(ZipBytes({first, twin}).Make()).find("entry 'twin': it overlaps others"),
            std::string::npos);
}

TEST_F(PackageTest, the_number_of_entries_is_bounded) {
  PackageLimits limits;
  limits.entries = 3;
  const std::vector<ZipEntry> entries{{"a", "1"}, {"b", "2"}, {"c", "3"}, {"d", "4"}};
  for (std::size_t count = 2; count <= 4; ++count) {
    const std::vector<ZipEntry> some(entries.begin(),
                                     entries.begin() + static_cast<std::ptrdiff_t>(count));
    EXPECT_EQ(Try(ZipBytes(some).Make(), "a", limits),
              count <= 3 ? "" : "it has 4 entries, and the limit is 3");
  }
}

TEST_F(PackageTest, a_list_of_entries_that_claims_to_be_huge_is_refused_unread) {
  EXPECT_EQ(Try(ZipBytes({ZipEntry{"a", "1"}}).Make(60'000)),
            "it has 60000 entries, and the limit is 10000");
  std::string bytes = ZipBytes({ZipEntry{"a", "1"}}).Make();
  bytes.replace(bytes.size() - 10, 4, std::string("\0\0\0\x7F", 4));
  EXPECT_NE(Try(bytes).find("the list of its entries has 2130706432 bytes"), std::string::npos);
  // The record for large files, which says so too.
  std::string large = "PK\x06\x06";
  AddNumber(large, 44, 8);
  AddNumber(large, 0, 2 + 2 + 4 + 4);
  AddNumber(large, 1ULL << 40, 8);
  AddNumber(large, 1ULL << 40, 8);
  AddNumber(large, 46ULL << 40, 8);
  AddNumber(large, 0, 8);
  EXPECT_NE(Try(large + ZipBytes({ZipEntry{"a", "1"}}).Make()).find("entries, and the limit is"),
            std::string::npos);
}

TEST_F(PackageTest, the_sum_of_unpacked_bytes_is_bounded) {
  for (const std::size_t size : {99U, 100U, 101U}) {
    PackageLimits limits;
    limits.totalBytes = 150;
    m_Scratch.Write("p.zip",
                    ZipBytes({{"a", std::string(50, 'x')}, {"b", std::string(size, 'y')}}).Make());
    const auto package = OpenZipPackage(m_Scratch.Path("p.zip"), limits);
    package->Unpack("a", m_Scratch.Path("a"), {});
    if (size <= 100) {
      package->Unpack("b", m_Scratch.Path("b"), {});
      EXPECT_EQ(m_Scratch.Read("b").size(), size);
    } else {
      EXPECT_THROW(package->Unpack("b", m_Scratch.Path("refused"), {}), Error);
      EXPECT_FALSE(m_Scratch.Has("refused"));
    }
  }
}

TEST_F(PackageTest, a_bomb_is_refused_by_its_ratio_and_only_above_a_size) {
  const std::string zeros(1'000'000, '\0');  // deflates to about a thousandth
  const std::string bytes = ZipBytes({ZipEntry{"a", zeros, true}}).Make();
  PackageLimits limits;
  limits.ratioFromBytes = zeros.size();
  EXPECT_EQ(Try(bytes, "a", limits), "");
  limits.ratioFromBytes = zeros.size() - 1;
  EXPECT_NE(Try(bytes, "a", limits).find("entry 'a': it unpacks to more than 250 times its"),
            std::string::npos);
  const std::uint64_t ratio = zeros.size() / Deflated(zeros).size();
  for (const std::uint64_t limit : {ratio - 1, ratio, ratio + 1}) {
    limits.ratio = limit;
    EXPECT_EQ(Try(bytes, "a", limits).empty(), limit >= ratio) << limit;
  }
}

TEST_F(PackageTest, sizes_and_check_sums_that_lie_are_refused) {
  const std::string content(1000, 'x');
  for (const bool deflated : {false, true})
    for (const std::uint32_t claim : {0U, 1U, 999U, 1001U, 0x7FFFFFFFU}) {
      ZipEntry entry{"a", content, deflated};
      entry.claimedSize = claim;
      const std::string words = Try(entry);
      EXPECT_NE(words, "") << claim;
    }
  ZipEntry entry{"a", content};
  entry.claimedCrc = 1;
  EXPECT_NE(Try(entry).find("entry 'a': it is damaged: "), std::string::npos);
}

TEST_F(PackageTest, a_package_cut_anywhere_is_refused) {
  const std::string whole =
      ZipBytes({{"[Content_Types].xml", "<Types/>"}, {"a", std::string(100, 'x'), true}}).Make();
  ASSERT_EQ(Try(whole), "");
  for (std::size_t size = 0; size < whole.size(); ++size)
    EXPECT_NE(Try(whole.substr(0, size)), "") << size;
}

TEST_F(PackageTest, a_package_with_any_byte_changed_gives_its_part_or_a_reason) {
  const std::string content(100, 'x');
  const std::string whole = ZipBytes({{"a", content, true}, {"b/c", "y"}}).Make();
  for (std::size_t at = 0; at < whole.size(); ++at)
    for (const int change : {1, 0x80, 0xFF}) {
      std::string bytes = whole;
      bytes[at] = static_cast<char>(bytes[at] ^ change);
      if (Try(bytes).empty()) {
        EXPECT_EQ(m_Scratch.Read("part"), content) << at;
      }
    }
}

TEST_F(PackageTest, a_stop_ends_the_unpacking_at_once) {
  m_Scratch.Write("p.zip", ZipBytes({ZipEntry{"a", Noise(300'000)}}).Make());
  const auto package = OpenZipPackage(m_Scratch.Path("p.zip"));
  int calls = 0;
  EXPECT_THROW(package->Unpack("a", m_Scratch.Path("part"),
                               [&](std::uint64_t done, std::uint64_t whole) {
                                 EXPECT_EQ(whole, 300'000U);
                                 EXPECT_EQ(done, 65'536U);
                                 ++calls;
                                 throw std::runtime_error("stop");
                               }),
               std::runtime_error);
  EXPECT_EQ(calls, 1);
}

TEST(FolderPackage, copies_files_and_follows_no_link) {
  const ScratchDirectory scratch;
  scratch.Write("p/xl/workbook.xml", "w");
  scratch.Write("secret", "s");
  std::filesystem::create_symlink("../../secret", scratch.Path("p/xl/styles.xml"));
  std::filesystem::create_directory_symlink("xl", scratch.Path("p/link"));
  const auto package = OpenFolderPackage(scratch.Path("p"));
  EXPECT_EQ(package->Find("xl/workbook.xml"), "xl/workbook.xml");
  EXPECT_EQ(package->SizeOf("xl/workbook.xml"), 1U);
  package->Unpack("xl/workbook.xml", scratch.Path("copy"), {});
  EXPECT_EQ(scratch.Read("copy"), "w");
  for (const char* part : {"xl", "none", "../secret", "xl/workbook.xml/x", "/etc/passwd"})
    EXPECT_EQ(package->Find(part), "") << part;
  EXPECT_THROW(static_cast<void>(package->Find("xl/styles.xml")), Error);
  EXPECT_THROW(static_cast<void>(package->Find("link/workbook.xml")), Error);
}

TEST(FolderPackage, is_bounded_as_a_whole) {
  const ScratchDirectory scratch;
  scratch.Write("p/a", std::string(50, 'x'));
  PackageLimits limits;
  for (const std::uint64_t most : {99U, 100U, 101U}) {
    limits.totalBytes = most;
    const auto package = OpenFolderPackage(scratch.Path("p"), limits);
    package->Unpack("a", scratch.Path("copy"), {});
    if (most < 100)
      EXPECT_THROW(package->Unpack("a", scratch.Path("copy"), {}), Error);
    else
      package->Unpack("a", scratch.Path("copy"), {});
  }
}

TEST(ResolveTarget, is_relative_to_the_part_or_absolute_in_the_package_and_never_leaves_it) {
  EXPECT_EQ(ResolveTarget("xl/workbook.xml", "worksheets/sheet1.xml"), "xl/worksheets/sheet1.xml");
  EXPECT_EQ(ResolveTarget("xl/workbook.xml", "/xl/worksheets/sheet1.xml"),
            "xl/worksheets/sheet1.xml");
  EXPECT_EQ(ResolveTarget("xl/worksheets/sheet1.xml", "../drawings/d.xml"), "xl/drawings/d.xml");
  EXPECT_EQ(ResolveTarget("xl/workbook.xml", "./a%20b.xml"), "xl/a b.xml");
  EXPECT_EQ(ResolveTarget("", "xl/workbook.xml"), "xl/workbook.xml");
  for (const char* target : {"../../secret", "/../secret", "%2e%2e/%2e%2e/secret", "", "/", "a\\b",
                             "../..", "c:/x/../../..", "a%00b"})
    EXPECT_EQ(ResolveTarget("xl/workbook.xml", target), target == std::string("") ? "xl" : "")
        << target;
}

TEST(RelationshipsOf, lie_in_a_folder_beside_the_part) {
  EXPECT_EQ(RelationshipsOf(""), "_rels/.rels");
  EXPECT_EQ(RelationshipsOf("xl/workbook.xml"), "xl/_rels/workbook.xml.rels");
  EXPECT_EQ(RelationshipsOf("workbook.xml"), "_rels/workbook.xml.rels");
}

TEST(PrintableName, shows_every_byte_and_has_an_end) {
  EXPECT_EQ(PrintableName("a b\x1b'\xff"), "a b\\x1b\\x27\\xff");
  EXPECT_EQ(PrintableName(std::string(201, 'x')), std::string(200, 'x') + "...");
  EXPECT_TRUE(SameName("Xl/A", "xL/a"));
  EXPECT_FALSE(SameName("xl/a", "xl/ab"));
}

}  // namespace
}  // namespace rastrel::test
