#include "host/cutfile/exchange_writer.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "host/drawing/exchange_reader.h"
#include "host/graphics/indexed_color.h"
#include "tests/host/cutfile/drawings.h"
#include "tests/host/drawing/path_files.h"

namespace rastrel::cutfile {
namespace {

using Rgb = graphics::VectorPath::Rgb;

struct Pair {
  int code;
  std::string value;
  bool operator==(const Pair&) const = default;
};

// A reader of pairs that shares nothing with the product's.
std::vector<Pair> PairsOf(const std::string& file) {
  std::vector<Pair> pairs;
  std::istringstream lines(file);
  std::string code;
  std::string value;
  while (std::getline(lines, code) && std::getline(lines, value)) {
    EXPECT_TRUE(code.ends_with('\r'));
    EXPECT_TRUE(value.ends_with('\r'));
    value.pop_back();
    pairs.push_back({std::stoi(code), value});
  }
  return pairs;
}

std::string Lines(const std::vector<Pair>& pairs) {
  std::string text;
  for (const Pair& pair : pairs) {
    const std::string code = std::to_string(pair.code);
    text += std::string(3 - std::min<std::size_t>(code.size(), 3), ' ') + code + "\r\n" +
            pair.value + "\r\n";
  }
  return text;
}

// The file of a page of 10 by 5 cm that one closed triangle is cut out of, in millimetres.
const std::string Triangle =
    Lines({{0, "SECTION"},     {2, "HEADER"},     {9, "$ACADVER"},     {1, "AC1009"},
           {9, "$INSUNITS"},   {70, "4"},         {9, "$MEASUREMENT"}, {70, "1"},
           {9, "$EXTMIN"},     {10, "0.0"},       {20, "0.0"},         {30, "0.0"},
           {9, "$EXTMAX"},     {10, "100.0"},     {20, "50.0"},        {30, "0.0"},
           {0, "ENDSEC"},      {0, "SECTION"},    {2, "TABLES"},       {0, "TABLE"},
           {2, "LTYPE"},       {70, "1"},         {0, "LTYPE"},        {2, "CONTINUOUS"},
           {70, "0"},          {3, "Solid line"}, {72, "65"},          {73, "0"},
           {40, "0.0"},        {0, "ENDTAB"},     {0, "TABLE"},        {2, "LAYER"},
           {70, "3"},          {0, "LAYER"},      {2, "LINES"},        {70, "0"},
           {62, "7"},          {6, "CONTINUOUS"}, {0, "LAYER"},        {2, "CUT"},
           {70, "0"},          {62, "1"},         {6, "CONTINUOUS"},   {0, "LAYER"},
           {2, "CUT_THROUGH"}, {70, "0"},         {62, "5"},           {6, "CONTINUOUS"},
           {0, "ENDTAB"},      {0, "ENDSEC"},     {0, "SECTION"},      {2, "ENTITIES"},
           {0, "POLYLINE"},    {8, "CUT"},        {66, "1"},           {10, "0.0"},
           {20, "0.0"},        {30, "0.0"},       {70, "1"},           {0, "VERTEX"},
           {8, "CUT"},         {10, "10.0"},      {20, "20.0"},        {30, "0.0"},
           {0, "VERTEX"},      {8, "CUT"},        {10, "40.5"},        {20, "20.0"},
           {30, "0.0"},        {0, "VERTEX"},     {8, "CUT"},          {10, "10.0001"},
           {20, "-0.5"},       {30, "0.0"},       {0, "SEQEND"},       {8, "CUT"},
           {0, "ENDSEC"},      {0, "EOF"}});

CutDrawing TriangleDrawing() {
  return {10,
          5,
          {test::CutObjectOf(CutKind::Cut, test::Rgb(9, 9, 9),
                             {{1, 2}, {4.05, 2}, {1.00001, -0.05}}, true)}};
}

TEST(ExchangeFile, a_closed_triangle_is_this_file) {
  std::string expected = Triangle;
  // The triangle leaves the page below.
  const std::string before = "$EXTMIN\r\n 10\r\n0.0\r\n 20\r\n0.0";
  expected.replace(expected.find(before), before.size(), "$EXTMIN\r\n 10\r\n0.0\r\n 20\r\n-0.5");
  EXPECT_EQ(ExchangeFileText(TriangleDrawing()), expected);
}

TEST(ExchangeFile, a_page_without_lines_is_a_whole_file_without_entities) {
  const std::string text = ExchangeFileText({10, 5, {}});
  EXPECT_EQ(text, Triangle.substr(0, Triangle.find("  0\r\nPOLYLINE")) +
                      "  0\r\nENDSEC\r\n  0\r\nEOF\r\n");
}

TEST(ExchangeFile, each_kind_of_line_is_on_its_layer) {
  std::map<std::string, int> layers;
  bool polyline = false;
  for (const Pair& pair : PairsOf(ExchangeFileText(test::ThreeKinds()))) {
    if (pair.code == 0) polyline = pair.value == "POLYLINE";
    if (polyline && pair.code == 8) ++layers[pair.value];
  }
  EXPECT_EQ(layers, (std::map<std::string, int>{{"CUT", 1}, {"CUT_THROUGH", 1}, {"LINES", 1}}));
}

TEST(ExchangeFile, our_reader_finds_the_same_lines_in_the_colors_of_their_kinds) {
  const auto read = test::PathsBy(drawing::ReadExchangeFile, ExchangeFileText(test::ThreeKinds()));
  EXPECT_EQ(read.refusal, "");
  ASSERT_EQ(read.paths.size(), 3U);
  test::ExpectBox(read.paths[0], 1, 1, 4, 3);
  test::ExpectBox(read.paths[1], 5, 1, 9, 4.5);
  test::ExpectBox(read.paths[2], 0, 0, 0.125, 2.5);
  EXPECT_TRUE(read.paths[0].shape.subPaths.at(0).closed);
  EXPECT_TRUE(read.paths[1].shape.subPaths.at(0).closed);
  EXPECT_FALSE(read.paths[2].shape.subPaths.at(0).closed);
  EXPECT_EQ(read.paths[0].line, (Rgb{255, 0, 0}));
  EXPECT_EQ(read.paths[1].line, (Rgb{0, 0, 255}));
  EXPECT_EQ(read.paths[2].line, (Rgb{0, 255, 0}));
}

TEST(ExchangeFile, numbers_do_not_follow_the_locale) {
  const char* german = std::setlocale(LC_ALL, "de_DE.UTF-8");
  const std::string text = ExchangeFileText(test::ThreeKinds());
  std::setlocale(LC_ALL, "C");
  if (german == nullptr) GTEST_SKIP() << "there is no locale de_DE.UTF-8";
  EXPECT_EQ(text, ExchangeFileText(test::ThreeKinds()));
}

TEST(IndexOfColor, each_numbered_color_has_a_number_of_that_color) {
  for (int index = 1; index <= 255; ++index) {
    const Rgb color = graphics::IndexedColor(index);
    EXPECT_EQ(graphics::IndexedColor(graphics::IndexOfColor(color)), color) << index;
  }
}

TEST(IndexOfColor, a_color_between_two_has_the_nearer_ones_number) {
  EXPECT_EQ(graphics::IndexOfColor({250, 3, 2}), 1);
  EXPECT_EQ(graphics::IndexOfColor({2, 1, 0}), 7);
  EXPECT_EQ(graphics::IndexOfColor({250, 130, 0}), 30);
  EXPECT_EQ(graphics::IndexOfColor({NAN, 0, 255}), 5);
}

}  // namespace
}  // namespace rastrel::cutfile
