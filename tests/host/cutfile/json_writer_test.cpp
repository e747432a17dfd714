#include "host/cutfile/json_writer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/host/cutfile/drawings.h"

namespace rastrel::cutfile {
namespace {

TEST(JsonFile, the_three_kinds_are_this_document) {
  EXPECT_EQ(
      JsonFileText(test::ThreeKinds()),
      R"({"format":"rastrel-cut-lines","version":1,"unit":"cm","width":10,"height":5,"objects":[)"
      "\n"
      R"({"kind":"cut","colour":{"model":"rgb","components":[255,0,0]},"runs":[)"
      "\n"
      R"({"closed":true,"points":[[1,1],[4,1],[4,3],[1,3]]}]},)"
      "\n"
      R"({"kind":"cut-through","colour":{"model":"rgb","components":[0,0,255]},"runs":[)"
      "\n"
      R"({"closed":true,"points":[[5,1],[9,1],[7,4.5]]}]},)"
      "\n"
      R"({"kind":"line","colour":{"model":"rgb","components":[0,255,0]},"runs":[)"
      "\n"
      R"({"closed":false,"points":[[0,0],[0.125,2.5]]}]}]})"
      "\n");
}

TEST(JsonFile, any_document_is_json) {
  CutDrawing drawing = test::ThreeKinds();
  CVKColor ink;
  ink.SetColor(NAN, 1, 0.5, 0, COLORSPACE_CMYK);
  drawing.objects[0].color = ink;
  drawing.objects[0].runs.push_back({{{1e-9, -123456.7891234}, {0, 0}}, false});
  const auto json = nlohmann::json::parse(JsonFileText(drawing));
  EXPECT_EQ(json["objects"].size(), 3U);
  EXPECT_EQ(json["objects"][0]["colour"]["model"], "cmyk");
  EXPECT_EQ(json["objects"][0]["colour"]["components"], nlohmann::json({0, 1, 0.5, 0}));
  EXPECT_EQ(json["objects"][0]["runs"][1]["points"][0], nlohmann::json({0, -123456.789123}));
  EXPECT_EQ(nlohmann::json::parse(JsonFileText({1, 2, {}}))["objects"].size(), 0U);
}

}  // namespace
}  // namespace rastrel::cutfile
