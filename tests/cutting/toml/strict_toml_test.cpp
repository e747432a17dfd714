#include "cutting/toml/strict_toml.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace rastrel::cutting {
namespace {

TomlFile Parsed(std::string_view text) {
  auto file = TomlFile::Parse(text, "knife.toml");
  EXPECT_TRUE(file) << (file ? "" : Describe(file.Error()));
  return file ? *file : *TomlFile::Parse("", "knife.toml");
}

std::string Fault(const TomlFile& file) {
  const auto checked = file.Check();
  return checked ? "" : Describe(checked.Error());
}

std::string ParseFault(std::string_view text) {
  const auto file = TomlFile::Parse(text, "knife.toml");
  return file ? "" : Describe(file.Error());
}

TEST(StrictToml, ValuesAreTakenByTheirTypes) {
  const TomlFile file = Parsed(
      "text = 'a b'\ntruth = true\nwhole = 3\nnumber = 2.5\nlist = ['x', 'y']\nkind = 'two'\n"
      "[inner]\nlength = '2 cm'\n[[row]]\nn = 1\n[[row]]\nn = 2\n");
  TomlTable root = file.Root();
  EXPECT_EQ(root.Text("text"), "a b");
  EXPECT_EQ(root.Truth("truth"), true);
  EXPECT_EQ(root.Whole("whole", 0, 9), 3);
  EXPECT_EQ(root.Number("number", 0, 9), 2.5);
  EXPECT_EQ(root.Texts("list", 2), (std::vector<std::string>{"x", "y"}));
  const std::array<std::string_view, 2> kinds{"one", "two"};
  EXPECT_EQ(root.Choice("kind", kinds), 1u);
  auto inner = root.Table("inner");
  ASSERT_TRUE(inner);
  EXPECT_EQ(inner->Length("length", 0, 100), 20);
  auto rows = root.Tables("row", 2);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[1].Whole("n", 0, 9), 2);
  root.Finish();
  EXPECT_EQ(Fault(file), "");
}

// The library's own test of such a letter had no answer, so that the sanitizers ended here.
TEST(StrictToml, LettersBeyondAsciiAreFaultsWhereAKeyIsUnquotedAndTextInQuotes) {
  for (const char* text : {"\xC3\xA4 = 1\n", "key \xC3\xA4 = 1\n", "key = \xCA\x95\n"}) {
    const auto file = TomlFile::Parse(text, "file");
    ASSERT_FALSE(file);
    EXPECT_EQ(file.Error().line, 1);
  }
  const auto file =
      TomlFile::Parse("\"\xC3\xA4\" = \"\"\"\\\n  \xC3\xB6\"\"\"  # \xC3\xBC\n", "file");
  ASSERT_TRUE(file) << Describe(file.Error());
  auto root = file->Root();
  EXPECT_EQ(root.Text("\xC3\xA4"), "\xC3\xB6");
}

TEST(StrictToml, a_table_header_without_a_key_is_an_error_of_its_place) {
  for (const char* text : {"[{", "[[{", "[ ,", "[=]", "a.{ = 1"})
    EXPECT_TRUE(ParseFault(text).starts_with("knife.toml:1:")) << text;
}

TEST(StrictToml, AnAbsentKeyIsNoFault) {
  const TomlFile file = Parsed("");
  TomlTable root = file.Root();
  EXPECT_FALSE(root.Text("a"));
  EXPECT_FALSE(root.Truth("a"));
  EXPECT_FALSE(root.Whole("a", 0, 1));
  EXPECT_FALSE(root.Number("a", 0, 1));
  EXPECT_FALSE(root.Length("a", 0, 1));
  EXPECT_FALSE(root.Texts("a", 1));
  EXPECT_FALSE(root.Table("a"));
  EXPECT_TRUE(root.Tables("a", 1).empty());
  EXPECT_FALSE(root.Choice("a", {}));
  root.Finish();
  EXPECT_EQ(Fault(file), "");
}

TEST(StrictToml, AnUnknownKeyIsNamedWithItsPlaceAndTheLikeliestName) {
  const TomlFile file = Parsed("\nspeed = 3\n  sped = 4\n");
  TomlTable root = file.Root();
  static_cast<void>(root.Number("speed", 0, 9));
  root.Finish();
  EXPECT_EQ(Fault(file), "knife.toml:3:3: there is no key 'sped' here; did you mean 'speed'?");
}

TEST(StrictToml, TheFirstOfSeveralUnknownKeysIsNamed) {
  const TomlFile file = Parsed("zz = 1\naa = 2\n");
  file.Root().Finish();
  EXPECT_EQ(Fault(file), "knife.toml:1:1: there is no key 'zz' here");
}

TEST(StrictToml, TheFirstFaultIsKept) {
  const TomlFile file = Parsed("a = 1\nb = 2\n");
  TomlTable root = file.Root();
  static_cast<void>(root.Text("b"));
  static_cast<void>(root.Text("a"));
  EXPECT_EQ(Fault(file), "knife.toml:2:5: b must be a text in quotes");
}

TEST(StrictToml, AWrongTypeIsAFaultOfItsLine) {
  const auto fault = [](auto take) {
    const TomlFile file = Parsed("number = 5\ntext = 'x'\nmixed = [1, 'a']\n");
    TomlTable root = file.Root();
    take(root);
    return Fault(file);
  };
  EXPECT_EQ(fault([](TomlTable& t) { static_cast<void>(t.Truth("text")); }),
            "knife.toml:2:8: text must be true or false");
  EXPECT_EQ(fault([](TomlTable& t) { static_cast<void>(t.Whole("text", 1, 2)); }),
            "knife.toml:2:8: text must be a whole number between 1 and 2");
  EXPECT_EQ(fault([](TomlTable& t) { static_cast<void>(t.Number("text", 1, 2)); }),
            "knife.toml:2:8: text must be a number between 1 and 2");
  EXPECT_EQ(fault([](TomlTable& t) { static_cast<void>(t.Texts("mixed", 9)); }),
            "knife.toml:3:9: mixed must be a row of texts: [\"...\", \"...\"]");
  EXPECT_EQ(fault([](TomlTable& t) { static_cast<void>(t.Table("number")); }),
            "knife.toml:1:10: number must be a table: [number]");
  EXPECT_EQ(fault([](TomlTable& t) { static_cast<void>(t.Tables("number", 9)); }),
            "knife.toml:1:10: number must be tables: [[number]]");
  EXPECT_EQ(fault([](TomlTable& t) { static_cast<void>(t.Length("text", 0, 9)); }),
            "knife.toml:2:8: text: 'x' is no length; write a number with mm, cm, in or pt");
}

TEST(StrictToml, ARangeHoldsItsEnds) {
  const auto fault = [](int value) {
    const TomlFile file = Parsed("n = " + std::to_string(value));
    static_cast<void>(file.Root().Whole("n", 1, 3));
    return !Fault(file).empty();
  };
  EXPECT_TRUE(fault(0));
  EXPECT_FALSE(fault(1));
  EXPECT_FALSE(fault(3));
  EXPECT_TRUE(fault(4));
}

TEST(StrictToml, NoNumberIsWithinARange) {
  const TomlFile file = Parsed("n = nan");
  EXPECT_FALSE(file.Root().Number("n", 0, 1));
  EXPECT_NE(Fault(file), "");
}

TEST(StrictToml, AWordThatIsNoChoiceNamesThemAll) {
  const TomlFile file = Parsed("kind = 'tow'");
  const std::array<std::string_view, 2> kinds{"one", "two"};
  EXPECT_FALSE(file.Root().Choice("kind", kinds));
  EXPECT_EQ(Fault(file),
            "knife.toml:1:8: kind is 'tow' and must be one of one, two; did you mean 'two'?");
}

TEST(StrictToml, LengthsHaveUnits) {
  EXPECT_EQ(*LengthFromText("3"), 3);
  EXPECT_EQ(*LengthFromText("3mm"), 3);
  EXPECT_EQ(*LengthFromText("1.5 cm"), 15);
  EXPECT_EQ(*LengthFromText("1 in"), 25.4);
  EXPECT_EQ(*LengthFromText("72pt"), 25.4);
  for (const char* bad : {"", "mm", "1 m", "1 mm x", "inf", "nan", "1,5", "1e999", "--1"}) {
    EXPECT_FALSE(LengthFromText(bad)) << bad;
  }
}

TEST(StrictToml, BrokenTextHasLineAndColumn) {
  const std::string fault = ParseFault("a = 1\nb = = 2\n");
  EXPECT_EQ(fault.substr(0, 15), "knife.toml:2:5:");
  EXPECT_NE(ParseFault("a = 1\na = 2\n").find("knife.toml:2:"), std::string::npos);
}

TEST(StrictToml, AFileOfMoreThanTheLimitIsRefused) {
  const std::string fits = "#" + std::string(TomlFileLimit - 1, 'x');
  EXPECT_EQ(ParseFault(fits), "");
  EXPECT_EQ(ParseFault(fits + "x"), "knife.toml: the file has more than 262144 bytes");
}

TEST(StrictToml, ATextOfMoreThanTheLimitIsAFault) {
  for (const std::size_t size : {TomlTextLimit - 1, TomlTextLimit, TomlTextLimit + 1}) {
    const TomlFile file = Parsed("t = '" + std::string(size, 'x') + "'");
    EXPECT_EQ(file.Root().Text("t").has_value(), size <= TomlTextLimit);
    EXPECT_EQ(Fault(file).empty(), size <= TomlTextLimit);
  }
}

TEST(StrictToml, AKeyOfManyPartsIsRefusedBeforeItsTreeIsBuilt) {
  std::string key = "a";
  for (int part = 1; part < 16; ++part) key += ".a";
  EXPECT_EQ(ParseFault(key + " = 1"), "");
  EXPECT_EQ(ParseFault("\n" + key + ".a = 1"), "knife.toml:2:1: a key has more than 16 parts");
  std::string deep;
  while (deep.size() < TomlFileLimit - 10) deep += "a . ";
  EXPECT_NE(ParseFault(deep + "a = 1"), "");
  EXPECT_NE(ParseFault("x = {" + deep + "a = 1}"), "");
  std::string quoted;
  while (quoted.size() < TomlFileLimit - 10) quoted += "\"a\".";
  EXPECT_NE(ParseFault("[" + quoted + "a]"), "");
}

TEST(StrictToml, DeepArraysAreRefused) {
  EXPECT_NE(ParseFault("a = " + std::string(100000, '[')), "");
  EXPECT_NE(ParseFault("a = " + std::string(100000, '[') + std::string(100000, ']')), "");
}

TEST(StrictToml, AZeroByteInATextIsAFault) {
  const TomlFile file = Parsed("t = \"a\\u0000b\"");
  EXPECT_FALSE(file.Root().Text("t"));
  EXPECT_EQ(Fault(file), "knife.toml:1:5: t holds a zero byte");
}

TEST(StrictToml, MessagesHoldNoControlCharactersOfTheFile) {
  const TomlFile file = Parsed("\"a\\u001b[31m\" = 1");
  file.Root().Finish();
  EXPECT_EQ(Fault(file).find('\x1b'), std::string::npos);
}

}  // namespace
}  // namespace rastrel::cutting
