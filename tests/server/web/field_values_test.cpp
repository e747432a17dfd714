#include "server/web/templates/field_values.h"

#include <gtest/gtest.h>

#include "server/web/templates/merge_notes.h"

namespace rastrel::server::web {
namespace {

const std::vector<TemplateField> TestFields{
    {"Name", "text", 5}, {"Long", "text", 0}, {"Width", "number", 0}, {"Logo", "file", 0}};

// "field: code value" of each.
std::string Shown(const std::vector<FieldNote>& notes) {
  std::string shown;
  for (const FieldNote& note : notes)
    shown += (shown.empty() ? "" : "; ") + note.field + ": " + note.code +
             (note.value.empty() ? "" : " " + note.value);
  return shown;
}

std::string Faults(const FieldValues& values) { return Shown(FaultsOf(TestFields, values)); }

TEST(FieldValues, a_text_is_as_long_as_its_format_takes_it_and_no_longer) {
  EXPECT_EQ(Faults({{"Name", "abcd"}}), "");
  EXPECT_EQ(Faults({{"Name", "abcde"}}), "");
  EXPECT_EQ(Faults({{"Name", "abcdef"}}), "Name: too-long 5");
  // Characters and not bytes: five of two bytes each.
  EXPECT_EQ(Faults({{"Name", "\xC3\xBC\xC3\xBC\xC3\xBC\xC3\xBC\xC3\xBC"}}), "");
  EXPECT_EQ(Faults({{"Long", std::string(ValueLimit, 'x')}}), "");
  EXPECT_EQ(Faults({{"Long", std::string(ValueLimit + 1, 'x')}}), "Long: too-long 4096");
  EXPECT_EQ(Faults({{"Long", std::string(1'000'000, 'x')}}), "Long: too-long 4096");
}

TEST(FieldValues, what_moves_a_line_or_a_terminal_is_refused) {
  for (const char* value : {"a\nb", "a\tb", "a\x1b[2J", "a\x7f",
                            "a\xC2\x9B"
                            "2J",
                            "a\xE2\x80\xA8"})
    EXPECT_EQ(Faults({{"Long", value}}), "Long: control") << value;
  EXPECT_EQ(Faults({{"Long", std::string("a\0b", 3)}}), "Long: control");
  EXPECT_EQ(Faults({{"Long", "a\xFF"}}), "Long: not-text");
  EXPECT_EQ(Faults({{"Long", "<b>&\"' \xE2\x80\x9Cok\xE2\x80\x9D"}}), "");
}

TEST(FieldValues, a_number_is_one_as_xml_readers_take_it) {
  for (const char* value : {"2", "2.5", "-0.25", "0"}) EXPECT_EQ(Faults({{"Width", value}}), "");
  for (const char* value : {"2,5", "wide", "2in", "1e3", "nan", "inf", " 2", "9999999999"})
    EXPECT_EQ(Faults({{"Width", value}}), "Width: not-a-number") << value;
}

TEST(FieldValues, a_file_has_a_name_and_no_place) {
  EXPECT_EQ(Faults({{"Logo", "crest.svg"}}), "");
  for (const char* value :
       {"/etc/passwd", "../crest.svg", "a/b.svg", "..", ".hidden", "c:\\a.svg", "a\\b.svg"})
    EXPECT_EQ(Faults({{"Logo", value}}), "Logo: no-name") << value;
}

TEST(FieldValues, a_plate_without_a_value_and_a_value_without_a_field_are_refused) {
  EXPECT_EQ(Faults({}), ": all-empty");
  EXPECT_EQ(Faults({{"Name", ""}}), ": all-empty");
  EXPECT_EQ(Faults({{"Name", "a"}, {"<b>", "x"}}), "<b>: no-field");
}

TEST(FieldValues, the_table_has_each_value_in_its_column_whatever_it_holds) {
  const std::vector<TemplateField> fields{{"A \"b\"", "text", 0}, {"C,d", "text", 0}};
  EXPECT_EQ(TableOf(fields, {{"C,d", "x\"y;z,"}}),
            "\"A \"\"b\"\"\",\"C,d\"\r\n\"\",\"x\"\"y;z,\"\r\n");
  EXPECT_EQ(TableOf({{"One", "text", 0}}, {{"One", "=1+1"}}), "\"One\"\r\n\"=1+1\"\r\n");
}

TEST(FieldValues, a_sample_has_the_names_of_texts_that_fit_and_is_without_a_fault) {
  const std::vector<TemplateField> fields{{"Name", "text", 4},  {"Names", "text", 4},
                                          {"W", "number", 0},   {"Logo", "file", 0},
                                          {"Tone", "color", 0}, {"a\nb", "text", 0}};
  EXPECT_EQ(SampleValues(fields), (FieldValues{{"Name", "Name"}, {"W", "1"}}));
  EXPECT_TRUE(FaultsOf(fields, SampleValues(fields)).empty());
}

TEST(FieldValues, a_title_has_the_first_value) {
  EXPECT_EQ(TitleOfPlate("door.badge.xml", TestFields, {{"Long", "Ada"}}), "door.badge: Ada");
  EXPECT_EQ(TitleOfPlate("badge.xml", TestFields, {}), "badge");
  EXPECT_EQ(TitleOfPlate("badge.xml", {{"Width", "number", 0}, {"Name", "text", 0}},
                         {{"Width", "3"}, {"Name", "Ada"}}),
            "badge: Ada");
  EXPECT_EQ(TitleOfPlate("badge.xml", TestFields, {{"Width", "3"}}), "badge: 3");
}

TEST(FieldValues, fields_are_read_of_their_lines_alone) {
  const auto fields = FieldsOfLines(
      "noise\n[1]\n{\"event\":\"other\",\"name\":\"x\"}\n"
      "{\"event\":\"merge-field\",\"name\":\"Name\",\"kind\":\"text\",\"maximum\":255}\n"
      "{\"event\":\"merge-field\",\"name\":7,\"kind\":[],\"maximum\":-1}",
      0);
  ASSERT_TRUE(fields);
  ASSERT_EQ(fields->size(), 2U);
  EXPECT_EQ(fields->front().maximum, 255U);
  EXPECT_EQ(fields->back().name, "");
  EXPECT_EQ(fields->back().maximum, 0U);
  EXPECT_EQ(FieldsOfLines("{\"event\":\"failed\",\"text\":\"why\"}", 3).Error().why, "why");
  EXPECT_EQ(FieldsOfLines("", 0).Error().why, "it has no fields");
  // 128 and the signal that ended it.
  EXPECT_EQ(FieldsOfLines("", 137).Error().why, "reading it ended early, with status 137");
}

std::string Notes(const std::string& lines, const FieldValues& values) {
  PlatePicture picture;
  ReadMergeLines(lines, values, picture);
  return Shown(picture.notes);
}

TEST(MergeNotes, a_text_without_room_is_told_at_the_field_whose_value_it_has) {
  const std::string row =
      R"({"event":"merge-row","placed":true,"overflowed":[{"text":"Dr. Bartholomew","percent":303,"squeezed":true}]})";
  EXPECT_EQ(Notes(row, {{"Name", "Bartholomew"}, {"Title", "Dr."}}), "Name: squeezed 303");
  EXPECT_EQ(Notes(row, {{"Name", "Eve"}}), ": squeezed 303");
  EXPECT_EQ(
      Notes(
          R"({"event":"merge-row","overflowed":[{"text":"Bartholomew Feath...","percent":120,"squeezed":false}]})",
          {{"Name", "Bartholomew Featherstonehaugh"}, {"Other", "x"}}),
      "Name: beyond 120");
}

TEST(MergeNotes, what_is_not_as_it_should_be_is_told_and_other_shapes_are_passed_over) {
  PlatePicture picture;
  ReadMergeLines(
      "{\"event\":\"merge-row\",\"placed\":false,\"missing_fonts\":[\"Nova\",7],\"notes\":[\"n\"],"
      "\"overflowed\":[3,{\"text\":[]}]}\n"
      "{\"event\":\"left-out\",\"text\":\"logo\"}\n{\"event\":\"failed\",\"text\":\"why\"}\n"
      "{\"event\":\"document\",\"pages\":1e300,\"width_cm\":7.5,\"height_cm\":\"x\"}\nnoise",
      {}, picture);
  EXPECT_EQ(Shown(picture.notes),
            ": not-placed; : beyond; : beyond; : missing-font Nova; : note n; : left-out logo; "
            ": refused why");
  EXPECT_EQ(picture.pages, 1'000'000);
  EXPECT_EQ(picture.widthCm, 7.5);
  EXPECT_EQ(picture.heightCm, 0);
}

TEST(MergeNotes, a_sentence_is_told_once_and_at_the_field_whose_value_it_names) {
  EXPECT_EQ(Notes("{\"event\":\"note\",\"text\":\"no.svg can't be placed\"}\n"
                  "{\"event\":\"left-out\",\"text\":\"no.svg can't be placed\"}\n",
                  {{"Logo", "no.svg"}, {"Name", "n"}, {"Other", ""}}),
            "Logo: left-out no.svg can't be placed");
  EXPECT_EQ(Notes("{\"event\":\"left-out\",\"text\":\"the file \\\"no.svg\\\" is none\"}",
                  {{"Logo", "no.svg"}}),
            "Logo: left-out the file \"no.svg\" is none");
  EXPECT_EQ(Notes("{\"event\":\"note\",\"text\":\"no place\"}", {{"Logo", "n"}}),
            ": note no place");
}

TEST(MergeNotes, no_more_than_fifty_are_kept) {
  std::string lines;
  for (int i = 0; i < 51; ++i)
    lines += "{\"event\":\"note\",\"text\":\"n" + std::to_string(i) + "\"}\n";
  PlatePicture picture;
  ReadMergeLines(lines, {}, picture);
  EXPECT_EQ(picture.notes.size(), 50U);
}

}  // namespace
}  // namespace rastrel::server::web
