// Real files, if there are any: a folder beside the sources, with a table that describes each.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "rastrel/platform/os/path.h"
#include "rastrel/psscan/ps_parser.h"
#include "tests/support/memory_file.h"
#include "tests/support/ps_scan_answers.h"

namespace {

namespace fs = std::filesystem;

const fs::path Corpus = fs::path(RASTREL_SOURCE_DIR).parent_path() / "shared/corpus";

std::vector<fs::path> FilesOf(std::initializer_list<const char*> folders) {
  std::vector<fs::path> files;
  for (const char* const folder : folders)
    if (fs::is_directory(Corpus / folder))
      for (const auto& entry : fs::directory_iterator(Corpus / folder))
        files.push_back(entry.path());
  return files;
}

// The column of the table, for a file; "(none)" without it.
std::string Fact(const fs::path& file, std::size_t column) {
  std::ifstream table(Corpus / "INDEX.tsv");
  const std::string name = fs::relative(file, Corpus).string() + "\t";
  for (std::string line; std::getline(table, line);) {
    if (!line.starts_with(name)) continue;
    std::size_t begin = 0;
    for (; column > 0 && begin != std::string::npos; --column) begin = line.find('\t', begin) + 1;
    return line.substr(begin, line.find('\t', begin) - begin);
  }
  return "(none)";
}

constexpr std::size_t HeaderColumn = 6;

}  // namespace

TEST(Corpus, every_file_is_scanned_as_the_literal_scans_do) {
  for (const fs::path& file : FilesOf({"eps", "doseps", "ps", "pdf"}))
    EXPECT_EQ(rastrel::test::DifferencesFromLiteral(file), "") << file;
}

TEST(Corpus, every_file_cut_short_is_scanned_as_the_literal_scans_do) {
  const rastrel::test::MemoryFile cut;
  for (const fs::path& file : FilesOf({"eps", "doseps", "ps"})) {
    std::ifstream stream(file, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(stream), {}};
    for (std::size_t size = 1; size < content.size(); size += content.size() / 16 + 1) {
      cut.Write(content.substr(0, size));
      EXPECT_EQ(rastrel::test::DifferencesFromLiteral(cut.Path()), "")
          << file << " cut at " << size;
    }
  }
}

TEST(Corpus, the_kind_agrees_with_the_table_of_first_lines) {
  for (const fs::path& file : FilesOf({"eps", "doseps", "ps"})) {
    const std::string header = Fact(file, HeaderColumn);
    EXPECT_EQ(IsPostscriptFile(rastrel::os::FromNative(file.string()).c_str()),
              header.starts_with("%!PS-Adobe"))
        << file;
    EXPECT_EQ(IsEPSFile(rastrel::os::FromNative(file.string()).c_str()),
              header.find("EPSF") != std::string::npos)
        << file;
  }
}
