#include "rastrel/job/job_data.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/archive_bytes.h"
#include "tests/support/private_member.h"

namespace {

using rastrel::test::Bytes;
using rastrel::test::Hex;
using rastrel::test::Joined;
using rastrel::test::Loaded;
using rastrel::test::PlaceOf;
using rastrel::test::Stored;

TEST(LevelsData, defaults_are_the_whole_range_at_gamma_1) {
  const CLevelsData levels;
  EXPECT_EQ(levels.Low, 0.0);
  EXPECT_EQ(levels.Gamma, 1.0);
  EXPECT_EQ(levels.High, 255.0);
  rastrel::test::ExpectInOrder({PlaceOf(levels.Low), PlaceOf(levels.Gamma), PlaceOf(levels.High)});
}

// Version, 0.5, 2.5, 100.
const char* const LevelsRecord =
    "01 00 00 00 "
    "00 00 00 00 00 00 E0 3F "
    "00 00 00 00 00 00 04 40 "
    "00 00 00 00 00 00 59 40";

TEST(LevelsData, is_written_and_read_byte_for_byte) {
  CLevelsData levels;
  levels.Low = 0.5;
  levels.Gamma = 2.5;
  levels.High = 100.0;
  EXPECT_EQ(Hex(LevelsRecord), Stored([&](CArchive& archive) { levels.Serialize(archive); }));
  CLevelsData loaded;
  EXPECT_TRUE(
      Loaded(Hex(LevelsRecord), [&](CArchive& archive) { loaded.Serialize(archive); }).empty());
  EXPECT_EQ(loaded.Low, 0.5);
  EXPECT_EQ(loaded.Gamma, 2.5);
  EXPECT_EQ(loaded.High, 100.0);
}

TEST(LevelsData, another_version_stops_behind_the_version) {
  Bytes bytes = Hex(LevelsRecord);
  bytes[0] = 2;
  CLevelsData levels;
  const Bytes rest = Loaded(bytes, [&](CArchive& archive) { levels.Serialize(archive); });
  EXPECT_EQ(rest.size(), 24U);
  EXPECT_EQ(levels.High, 255.0);
}

TEST(LevelsData, a_record_cut_at_any_byte_raises_and_keeps_fields_read_whole) {
  const Bytes whole = Hex(LevelsRecord);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    CLevelsData levels;
    const Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
    EXPECT_THROW(Loaded(part, [&](CArchive& archive) { levels.Serialize(archive); }),
                 CArchiveException);
    EXPECT_EQ(length >= 12 ? 0.5 : 0.0, levels.Low);
    EXPECT_EQ(length >= 20 ? 2.5 : 1.0, levels.Gamma);
    EXPECT_EQ(levels.High, 255.0);
  }
}

TEST(LevelsData, is_made_by_its_run_time_class) {
  const std::unique_ptr<CObject> levels(CLevelsData::GetThisClass()->CreateObject());
  EXPECT_NE(dynamic_cast<CLevelsData*>(levels.get()), nullptr);
}

TEST(JobData, the_fields_stand_in_order) {
  const CJobData data;
  rastrel::test::ExpectInOrder({PlaceOf(data.PrinterName),      PlaceOf(data.PrintModeName),
                                PlaceOf(data.PrintModeFolder),  PlaceOf(data.SpoolRequested),
                                PlaceOf(data.HostFlag1),        PlaceOf(data.SpoolAllowed),
                                PlaceOf(data.ScaleMode),        PlaceOf(data.ScaleTarget),
                                PlaceOf(data.ScaleWidthCm),     PlaceOf(data.ScaleHeightCm),
                                PlaceOf(data.HostValue),        PlaceOf(data.HostFlag2),
                                PlaceOf(data.LevelsEnabled),    PlaceOf(data.LevelsLinked),
                                PlaceOf(data.Levels),           PlaceOf(data.CutterEnabled),
                                PlaceOf(data.CutterColorModel), PlaceOf(data.CutterColor),
                                PlaceOf(data.CutterSeparation), PlaceOf(data.HostFlag3)});
  EXPECT_EQ(data.Levels.size(), 5U);
  EXPECT_EQ(data.CutterColor.size(), 4U);
  EXPECT_EQ(sizeof(data.CutterColor[0]), 4U);
}

void ExpectDefaults(const CJobData& data) {
  EXPECT_EQ(data.PrinterName + data.PrintModeName + data.PrintModeFolder + data.ScaleTarget +
                data.CutterSeparation,
            L"");
  EXPECT_FALSE(data.SpoolRequested || data.HostFlag1 || data.SpoolAllowed || data.HostFlag2 ||
               data.LevelsEnabled || data.CutterEnabled || data.HostFlag3);
  EXPECT_TRUE(data.LevelsLinked);
  EXPECT_EQ(data.ScaleMode, 0);
  EXPECT_EQ(data.ScaleWidthCm, 0.0);
  EXPECT_EQ(data.ScaleHeightCm, 0.0);
  EXPECT_EQ(data.CutterColorModel, 0);
  for (const std::int32_t component : data.CutterColor) EXPECT_EQ(component, 0);
}

CJobData Filled() {
  CJobData data;
  data.PrinterName = L"P";
  data.PrintModeName = L"N";
  data.PrintModeFolder = L"F";
  data.SpoolRequested = data.HostFlag1 = data.SpoolAllowed = data.HostFlag2 = data.LevelsEnabled =
      true;
  data.LevelsLinked = false;
  data.CutterEnabled = data.HostFlag3 = true;
  data.ScaleMode = -2;
  data.ScaleTarget = L"T";
  data.ScaleWidthCm = 12.25;
  data.ScaleHeightCm = 30.5;
  data.HostValue = 9;
  data.Levels[4].Gamma = 3.0;
  data.CutterColorModel = 2;
  data.CutterColor = {1, 2, 3, 4};
  data.CutterSeparation = L"S";
  return data;
}

TEST(JobData, a_fresh_record_has_the_defaults_and_linked_levels) {
  const CJobData data;
  ExpectDefaults(data);
  for (const CLevelsData& levels : data.Levels) EXPECT_EQ(levels.High, 255.0);
}

TEST(JobData, set_defaults_keeps_the_levels_and_the_hosts_value) {
  CJobData data = Filled();
  data.SetDefaults();
  ExpectDefaults(data);
  EXPECT_EQ(data.Levels[4].Gamma, 3.0);
  EXPECT_EQ(data.HostValue, 9);
}

Bytes GoldenRecord() {
  return Hex(
      "01 00 00 00 "              // version
      "FF FE FF 01 50 00 "        // printer P
      "FF FE FF 01 46 00 "        // folder F, before the name
      "FF FE FF 01 4E 00 "        // name N
      "01 01 01 "                 // spool requested, first flag, spool allowed
      "FE FF FF FF "              // scale mode -2
      "00 00 00 00 00 80 28 40 "  // width 12.25
      "00 00 00 00 00 80 3E 40 "  // height 30.5
      "01 "                       // second flag
      "FF FE FF 01 54 00 "        // scale target T
      "01 00 01");                // levels enabled, not linked, third flag
}

TEST(JobData, is_written_byte_for_byte) {
  CJobData data = Filled();
  EXPECT_EQ(GoldenRecord(), Stored([&](CArchive& archive) { data.Serialize(archive); }));
}

TEST(JobData, is_read_with_levels_and_cutter_as_they_were) {
  CJobData data;
  data.Levels[1].Low = 8.0;
  data.CutterColor = {5, 6, 7, 8};
  data.CutterSeparation = L"kept";
  data.HostValue = 4;
  EXPECT_TRUE(Loaded(GoldenRecord(), [&](CArchive& archive) { data.Serialize(archive); }).empty());
  EXPECT_EQ(data.PrinterName, L"P");
  EXPECT_EQ(data.PrintModeFolder, L"F");
  EXPECT_EQ(data.PrintModeName, L"N");
  EXPECT_TRUE(data.SpoolRequested && data.HostFlag1 && data.SpoolAllowed && data.HostFlag2 &&
              data.LevelsEnabled && data.HostFlag3);
  EXPECT_FALSE(data.LevelsLinked);
  EXPECT_EQ(data.ScaleMode, -2);
  EXPECT_EQ(data.ScaleWidthCm, 12.25);
  EXPECT_EQ(data.ScaleHeightCm, 30.5);
  EXPECT_EQ(data.ScaleTarget, L"T");
  EXPECT_EQ(data.Levels[1].Low, 8.0);
  EXPECT_EQ(data.CutterColor, (std::array<std::int32_t, 4>{5, 6, 7, 8}));
  EXPECT_EQ(data.CutterSeparation, L"kept");
  EXPECT_EQ(data.HostValue, 4);
}

TEST(JobData, any_byte_but_0_is_a_true_boolean) {
  Bytes bytes = GoldenRecord();
  bytes[22] = 0x80;
  CJobData data;
  Loaded(bytes, [&](CArchive& archive) { data.Serialize(archive); });
  EXPECT_TRUE(data.SpoolRequested);
}

TEST(JobData, another_version_changes_nothing_and_leaves_the_rest_unread) {
  Bytes bytes = GoldenRecord();
  bytes[0] = 0;
  CJobData data;
  const Bytes rest = Loaded(bytes, [&](CArchive& archive) { data.Serialize(archive); });
  EXPECT_EQ(bytes.size() - 4, rest.size());
  ExpectDefaults(data);
}

TEST(JobData, is_made_by_its_run_time_class) {
  const std::unique_ptr<CObject> data(CJobData::GetThisClass()->CreateObject());
  EXPECT_NE(dynamic_cast<CJobData*>(data.get()), nullptr);
  EXPECT_EQ(CJobData::GetThisClass(), data->GetRuntimeClass());
}

}  // namespace
