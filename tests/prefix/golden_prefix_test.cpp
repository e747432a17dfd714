// Complete prefix files, byte for byte, against those that golden_prefix.py works out.

#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "rastrel/job/vk_job_ticket.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/prefix/ps_prefix.h"
#include "tests/support/comma_locale.h"
#include "tests/support/library_fixture.h"

namespace {

namespace fs = std::filesystem;
using rastrel::os::WideFromUtf8;

const fs::path Golden = RASTREL_GOLDEN_PREFIX;

std::string BytesOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The names of the cases, in order.
std::vector<std::string> Cases() {
  std::vector<std::string> names;
  std::error_code none;
  for (const fs::directory_entry& entry : fs::directory_iterator(Golden, none))
    if (entry.path().extension() == ".settings") names.push_back(entry.path().stem());
  std::sort(names.begin(), names.end());
  return names;
}

// The settings of a case.
class Settings {
 public:
  explicit Settings(const std::string& name) {
    std::istringstream lines(BytesOf(Golden / (name + ".settings")));
    for (std::string line; std::getline(lines, line);) {
      const std::size_t equals = line.find('=');
      m_Values[line.substr(0, equals)] = line.substr(equals + 1);
    }
  }

  [[nodiscard]] const std::string& Text(const std::string& key) const { return m_Values.at(key); }
  [[nodiscard]] std::wstring Wide(const std::string& key) const { return WideFromUtf8(Text(key)); }
  [[nodiscard]] bool Flag(const std::string& key) const { return Text(key) == "1"; }
  [[nodiscard]] int Number(const std::string& key) const { return Numbers<int>(key).at(0); }
  [[nodiscard]] double Real(const std::string& key) const { return Numbers<double>(key).at(0); }

  template <typename Value>
  [[nodiscard]] std::vector<Value> Numbers(const std::string& key) const {
    const std::string& text = Text(key);
    std::vector<Value> values;
    for (std::size_t at = 0; at < text.size(); at = std::min(text.find(' ', at), text.size()) + 1) {
      Value value{};
      const auto end = std::from_chars(text.data() + at, text.data() + text.size(), value);
      EXPECT_EQ(std::errc(), end.ec) << text;
      values.push_back(value);
    }
    return values;
  }

 private:
  std::map<std::string, std::string> m_Values;
};

void FillData(CJobData& data, const Settings& settings) {
  data.PrinterName = settings.Wide("PrinterName");
  data.PrintModeFolder = settings.Wide("PrintModeFolder");
  data.PrintModeName = settings.Wide("PrintModeName");
  data.ScaleMode = settings.Number("ScaleMode");
  data.ScaleTarget = settings.Wide("ScaleTarget");
  data.ScaleWidthCm = settings.Real("ScaleWidthCm");
  data.ScaleHeightCm = settings.Real("ScaleHeightCm");
  data.LevelsEnabled = settings.Flag("LevelsEnabled");
  data.LevelsLinked = settings.Flag("LevelsLinked");
  const auto levels = settings.Numbers<double>("Levels");
  for (std::size_t index = 0; index < data.Levels.size(); ++index) {
    data.Levels[index].Low = levels.at(3 * index);
    data.Levels[index].Gamma = levels.at(3 * index + 1);
    data.Levels[index].High = levels.at(3 * index + 2);
  }
  data.CutterEnabled = settings.Flag("CutterEnabled");
  data.CutterColorModel = settings.Number("CutterColorModel");
  const auto color = settings.Numbers<int>("CutterColor");
  std::copy_n(color.begin(), data.CutterColor.size(), data.CutterColor.begin());
  data.CutterSeparation = settings.Wide("CutterSeparation");
}

std::unique_ptr<CJobTicket> TicketOf(const Settings& settings) {
  if (settings.Text("Generator") == "ordinary") return std::make_unique<CJobTicket>();
  auto ticket = std::make_unique<CVKJobTicket>();
  ticket->SetDPI(settings.Number("DPI"));
  ticket->SetScale(settings.Flag("Scale"));
  ticket->SetCutOnly(settings.Flag("CutOnly"));
  return ticket;
}

// The library's prefix for a case.
std::string Generated(const std::string& name) {
  const rastrel::test::ScratchDirectory scratch;
  const Settings settings(name);
  const std::unique_ptr<CJobTicket> ticket = TicketOf(settings);
  FillData(ticket->m_JobData, settings);
  ticket->SetPlanar(settings.Flag("Planar"));
  ticket->m_JobFile.Directory = scratch.Wide() + L"\\";
  ticket->m_JobFile.FileName = settings.Wide("File");
  const std::unique_ptr<PSPrefix> prefix(ticket->GetPrefix());
  EXPECT_EQ(prefix->Generate(), 0U);
  return scratch.Read(fs::path(settings.Text("File")).replace_extension(".psp").string());
}

class GoldenPrefix : public ::testing::TestWithParam<std::string> {
 protected:
  rastrel::test::LibraryRoot m_Library;
};

TEST_P(GoldenPrefix, is_written_byte_for_byte) {
  EXPECT_EQ(BytesOf(Golden / (GetParam() + ".psp")), Generated(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Cases, GoldenPrefix, ::testing::ValuesIn(Cases()),
                         [](const auto& test) { return test.param; });

TEST(GoldenPrefixCases, are_all_there) {
  const std::vector<std::string> names = Cases();
  EXPECT_LE(100U, names.size());
  for (const std::string& name : names)
    EXPECT_TRUE(BytesOf(Golden / (name + ".psp")).ends_with('\x04')) << name;
}

TEST(GoldenPrefixCases, are_the_same_in_a_locale_of_commas) {
  const rastrel::test::LibraryRoot library;
  const rastrel::test::CommaLocale locale;
  if (locale.HasC()) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", 1.5);
    ASSERT_STREQ(text, "1,5");
  } else {
    std::printf("note: no locale of the C library could be made here; streams' locale only\n");
  }
  for (const std::string& name : Cases())
    EXPECT_EQ(BytesOf(Golden / (name + ".psp")), Generated(name)) << name;
}

}  // namespace
