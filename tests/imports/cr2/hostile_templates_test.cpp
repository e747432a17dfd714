// Templates of both generations that are broken, huge or made to do harm.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "rastrel/imports/cr2/template_reader.h"
#include "rastrel/platform/os/text.h"
#include "tests/imports/cr2/cr2_fixture.h"
#include "tests/imports/cr2/template_records.h"

namespace {

using namespace rastrel::test;
using rastrel::imports::Cr2Document;
using rastrel::imports::ParseCr2File;
using rastrel::imports::ParseZmlFile;
using rastrel::imports::ZmlFile;

class HostileTemplates : public TemplateTest {
 protected:
  HostileTemplates() { Calls().Limit(0); }

  bool Cr2(std::string_view text) {
    m_Document = {};
    m_Memory.Write("template.cr2", text);
    return ParseCr2File(m_Memory.Wide("template.cr2").c_str(), m_Document);
  }
  bool Zml(std::string_view text) {
    m_Document = {};
    ZmlFile file;
    m_Memory.Write("template.zml", text);
    return ParseZmlFile(m_Memory.Wide("template.zml").c_str(), m_Document, file);
  }
  static std::string Text(const TemplateParts& parts) {
    return TemplateText(parts, "engraving_template");
  }
  /// A file of the fuzz targets' corpus.
  static std::string Corpus(const std::string& name) {
    std::ifstream file(std::string(RASTREL_SOURCE_DIR) + "/fuzz/corpus/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  static std::string Repeated(std::string_view text, int count) {
    std::string all;
    for (int number = 0; number < count; ++number) all += text;
    return all;
  }
  std::string Refusal() {
    const auto refused = rastrel::xml::TakeXmlFailure();
    return refused ? "" : Describe(refused.Error());
  }

  Cr2Document m_Document;
  /// Thousands of files are written here.
  MemoryScratchDirectory m_Memory;
};

TEST_F(HostileTemplates, a_file_cut_at_any_byte_has_no_plates) {
  const std::string cr2 = Corpus("cr2_parse/template.cr2");
  ASSERT_GT(cr2.size(), 1000U);
  EXPECT_TRUE(Cr2(cr2));
  EXPECT_EQ(m_Document.plates.size(), 2U);
  const std::size_t end = cr2.find_last_of('>');
  for (std::size_t length = 0; length < end; ++length) {
    ASSERT_TRUE(Cr2(std::string_view(cr2).substr(0, length))) << length;
    ASSERT_TRUE(m_Document.plates.empty()) << length;
  }
  const std::string zml = Corpus("zml_parse/template.zml");
  EXPECT_TRUE(Zml(zml));
  for (std::size_t length = 0; length < zml.find_last_of('>'); ++length)
    ASSERT_FALSE(Zml(std::string_view(zml).substr(0, length))) << length;
}

TEST_F(HostileTemplates, a_hundred_thousand_plates_are_read) {
  TemplateParts parts;
  parts.plates =
      "<plates>" +
      Repeated(
          "<plate>" + TextFrame("<font face='Arial' size='1'><line>A</line></font>") + "</plate>",
          100'000) +
      "</plates>";
  EXPECT_TRUE(Cr2(Text(parts)));
  EXPECT_EQ(m_Document.plates.size(), 100'000U);
  EXPECT_EQ(m_Document.plates.back().textFrames.at(0).texts.at(0).lines.at(0).spans.at(0).text,
            L"A");
  EXPECT_TRUE(Zml(Text(parts)));
  EXPECT_EQ(m_Document.plates.size(), 100'000U);
}

TEST_F(HostileTemplates, a_million_empty_spans_are_read) {
  const std::string text = Text(
      WithPlate(TextFrame("<font><line>" + Repeated("<span/>", 1'000'000) + "</line></font>")));
  EXPECT_TRUE(Cr2(text));
  EXPECT_EQ(m_Document.plates.at(0).textFrames.at(0).texts.at(0).lines.at(0).spans.size(),
            1'000'000U);
  EXPECT_TRUE(Zml(text));
}

TEST_F(HostileTemplates, deep_nesting_is_refused_by_name) {
  const std::string text = Text(WithPlate(Repeated("<a>", 100'000)));
  EXPECT_TRUE(Cr2(text));
  EXPECT_TRUE(m_Document.plates.empty());
  EXPECT_NE(Refusal(), "");
  EXPECT_FALSE(Zml(text));
  EXPECT_NE(Refusal(), "");
}

TEST_F(HostileTemplates, nesting_as_deep_as_xml_allows_is_passed_over) {
  const std::string text =
      Text(WithPlate(Repeated("<text_frame>", 250) + Repeated("</text_frame>", 250)));
  EXPECT_TRUE(Cr2(text));
  EXPECT_EQ(m_Document.plates.at(0).textFrames.size(), 1U);
}

TEST_F(HostileTemplates, numbers_beyond_all_measure_are_infinite_and_no_text_is_a_number) {
  const auto placement = [&](const char* width) {
    TemplateParts parts;
    parts.placement = std::string("<placement height='1' width='") + width + "'/>";
    return Text(parts);
  };
  const double infinite = std::numeric_limits<double>::infinity();
  for (const char* number : {"1e999", "1e309"}) {
    EXPECT_TRUE(Cr2(placement(number)));
    EXPECT_EQ(m_Document.plateTemplate.placement.width, infinite);
  }
  EXPECT_TRUE(Cr2(placement("1e308")));
  EXPECT_EQ(m_Document.plateTemplate.placement.width, 1e308);
  EXPECT_TRUE(Zml(placement("1e308")));  // times 2.54
  EXPECT_EQ(m_Document.plateTemplate.placement.width, infinite);
  for (const char* text : {"nan", "NaN", "inf", "-infinity", "0x10"}) {
    EXPECT_TRUE(Cr2(placement(text)));
    EXPECT_EQ(m_Document.plateTemplate.placement.width, 0.0) << text;
    EXPECT_TRUE(Zml(placement(text)));
    EXPECT_EQ(m_Document.plateTemplate.placement.width, 0.0) << text;
  }
}

TEST_F(HostileTemplates, a_text_of_10_megabytes_is_taken_whole) {
  const std::string text =
      Text(WithPlate(TextFrame("<font><line>" + std::string(10 << 20, 'x') + "</line></font>")));
  EXPECT_TRUE(Cr2(text));
  EXPECT_EQ(
      m_Document.plates.at(0).textFrames.at(0).texts.at(0).lines.at(0).spans.at(0).text.size(),
      std::size_t{10} << 20);
  EXPECT_TRUE(Zml(text));
}

TEST_F(HostileTemplates, a_face_of_10_megabytes_is_refused) {
  const std::string text =
      Text(WithPlate(TextFrame("<font face='" + std::string(10 << 20, 'x') + "'/>")));
  EXPECT_TRUE(Cr2(text));
  EXPECT_TRUE(m_Document.plates.empty());
  EXPECT_NE(Refusal(), "");
  EXPECT_FALSE(Zml(text));
}

TEST_F(HostileTemplates, a_path_that_is_no_file_is_a_template_without_records) {
  const auto isEmpty = [&](const std::string& name) {
    m_Document = {};
    const bool cr2 = ParseCr2File(m_Memory.Wide(name + ".cr2").c_str(), m_Document);
    ZmlFile file;
    const bool zml = ParseZmlFile(m_Memory.Wide(name + ".zml").c_str(), m_Document, file);
    return cr2 && !zml && m_Document.tableSize.placement.origin == 0;
  };
  for (const char* extension : {".cr2", ".zml"}) {
    std::filesystem::create_directory(m_Memory.Path(std::string("folder") + extension));
    ASSERT_EQ(::mkfifo(m_Memory.Path(std::string("pipe") + extension).c_str(), 0600), 0);
    std::filesystem::create_symlink("/dev/zero", m_Memory.Path(std::string("device") + extension));
  }
  EXPECT_TRUE(isEmpty("folder"));
  EXPECT_TRUE(isEmpty("pipe"));
  EXPECT_TRUE(isEmpty("device"));
}

/// A million characters in each of 16 lines are the limit, and `characters` more or less.
std::string Inheriting(int characters) {
  constexpr int lineCount = 16;
  constexpr int size = rastrel::imports::TemplateReader::MaxInheritedCharacters / lineCount;
  const auto block = [](int face, int lines) {
    std::string text = "<font face='" + std::string(static_cast<std::size_t>(face), 'f') + "'>";
    for (int line = 0; line < lines; ++line) text += "<line/>";
    return text + "</font>";
  };
  return TextFrame(block(size, lineCount - 1) + block(size + characters, 1));
}

TEST_F(HostileTemplates, spans_that_take_16_mebi_characters_from_their_fonts_are_the_limit) {
  for (const int characters : {-1, 0}) {
    EXPECT_TRUE(Cr2(Text(WithPlate(Inheriting(characters)))));
    EXPECT_EQ(m_Document.plates.at(0).textFrames.at(0).texts.size(), 2U);
    EXPECT_TRUE(Zml(Text(WithPlate(Inheriting(characters)))));
  }
  const std::string reason =
      "the faces and styles that spans take from their fonts have more than 16777216 characters "
      "together";
  EXPECT_FALSE(Cr2(Text(WithPlate(Inheriting(1)))));
  EXPECT_TRUE(m_Document.plates.empty());
  EXPECT_EQ(m_Document.tableSize.placement.origin, 0);
  EXPECT_EQ(Refusal(), rastrel::os::Utf8FromWide(m_Memory.Wide("template.cr2")) + ":1: " + reason);
  EXPECT_FALSE(Zml(Text(WithPlate(Inheriting(1)))));
  EXPECT_NE(Log().find(reason), std::string::npos);
}

TEST_F(HostileTemplates, a_face_that_a_million_spans_would_copy_is_refused_before) {
  const std::string text = Text(WithPlate(TextFrame(
      "<font face='" + std::string(1 << 20, 'f') + "'><line>" + Repeated("<span/>", 1'000'000) +
      "</line>" + Repeated("<line/>", 1'000'000) + "</font>")));
  EXPECT_FALSE(Cr2(text));
  EXPECT_FALSE(Zml(text));
  EXPECT_TRUE(m_Document.plates.empty());
}

TEST_F(HostileTemplates, the_corpus_of_the_fuzz_targets_keeps_the_rules_of_records) {
  for (const char* name : {"template.cr2", "refused.cr2", "extremes.cr2"}) {
    static_cast<void>(Cr2(Corpus(std::string("cr2_parse/") + name)));
    EXPECT_TRUE(TemplateRecords::AreSound(m_Document, false)) << name;
  }
  for (const char* name : {"template.zml", "extremes.zml"}) {
    EXPECT_TRUE(Zml(Corpus(std::string("zml_parse/") + name)));
    EXPECT_TRUE(TemplateRecords::AreSound(m_Document, true)) << name;
  }
}

}  // namespace
