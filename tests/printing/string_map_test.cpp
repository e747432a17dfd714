#include "rastrel/printing/string_map.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

// The tables of docs/formats/stderr-protocol.md.
const std::vector<std::pair<std::wstring, int>> infoKeywords = {
    {L"UNDEFINED", 255},      {L"INITIALISING", 256}, {L"READY", 257},     {L"INTERPRETING", 258},
    {L"CONVERTING", 259},     {L"FLUSHING", 260},     {L"PRINTING", 261},  {L"SPOOLING", 262},
    {L"VALID_RECOVERY", 263}, {L"CLQ_success", 10},   {L"CLQ_failure", 11}};
const std::vector<std::pair<std::wstring, int>> errorKeywords = {
    {L"ERROR", 255}, {L"RUN_INSTALL", 256}, {L"INVALID_RECOVERY", 257}};

TEST(StringMap, knows_every_state_keyword) {
  const InfoStringMap map;
  for (const auto& [keyword, code] : infoKeywords) EXPECT_EQ(map.Find(keyword), code) << code;
}

TEST(StringMap, knows_every_error_keyword) {
  const ErrorStringMap map;
  for (const auto& [keyword, code] : errorKeywords) EXPECT_EQ(map.Find(keyword), code) << code;
}

TEST(StringMap, gives_zero_for_a_keyword_of_the_other_table) {
  for (const auto& [keyword, code] : infoKeywords)
    EXPECT_EQ(ErrorStringMap().Find(keyword), 0) << code;
  for (const auto& [keyword, code] : errorKeywords)
    EXPECT_EQ(InfoStringMap().Find(keyword), 0) << code;
}

TEST(StringMap, compares_whole_words_by_case) {
  const InfoStringMap map;
  for (const wchar_t* word : {L"", L"ready", L"Ready", L"READ", L"READY ", L" READY", L"READYX",
                              L"CLQ_SUCCESS", L"BOGUS"})
    EXPECT_EQ(map.Find(word), 0) << std::wstring_view(word).size();
  EXPECT_EQ(map.Find(std::wstring_view(L"READY\0", 6)), 0);
}

}  // namespace
