#include <gtest/gtest.h>

#include <vector>

#include "host/document/document.h"
#include "host/document_host.h"
#include "rastrel/imports/add_plate_object.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/object_store.h"

// Where a plate's panes are for each code of the blank's origin, as an import asks for them.
namespace rastrel::document {
namespace {

// Plates of 4 by 2 on a blank of 20 by 10 with margins of 1, 0.5, 1 and 1.5: four of them and their
// gaps of 0.5 fill 17.5 of 18, and the fifth begins the second row, 0.25 further.
std::vector<CWorldRect> PanesWithOrigin(DocumentHost& host, int origin) {
  host::Application& application = *host.GetApplication();
  application.SetSignBlankSize(20, 10, 1);
  application.SetSignBlankOriginPos(origin);
  imports::PlateRequest request;
  request.count = 5;
  request.width = 4;
  request.height = 2;
  request.margins = {1, 0.5, 1, 1.5};
  request.horizontalGap = 0.5;
  request.verticalGap = 0.25;
  const imports::DocumentHost parts{*host.GetObjectStore(), *host.GetTextCompose(), application};
  const auto plate = imports::AddPlateObject(parts, request);
  if (!plate) return {};
  return std::get<PlateShape>(host.GetDocument().Find(*plate)->shape).panes;
}

TEST(PlateOrigin, code_7_lays_rows_out_from_the_bottom_and_all_others_from_the_top) {
  for (int origin = 1; origin <= 9; ++origin) {
    DocumentHost host;
    const auto panes = PanesWithOrigin(host, origin);
    EXPECT_EQ(host.GetApplication()->GetOriginPosIndex(), origin);
    const double first = origin == 7 ? 1.5 : 7.5;  // the lower edges of the rows
    const double second = origin == 7 ? 3.75 : 5.25;
    ASSERT_EQ(panes.size(), 5U) << origin;
    for (std::size_t i = 0; i < 4; ++i) {
      const double left = 1 + 4.5 * static_cast<double>(i);
      EXPECT_EQ(panes[i], (CWorldRect{left, first + 2, left + 4, first})) << origin;
    }
    EXPECT_EQ(panes[4], (CWorldRect{1, second + 2, 5, second})) << origin;
  }
}

TEST(PlateOrigin, the_document_s_origin_is_the_blank_s_for_each_code) {
  DocumentHost host;
  host::Application& application = *host.GetApplication();
  for (int origin = 1; origin <= 9; ++origin) {
    application.SetSignBlankOriginPos(origin);
    EXPECT_EQ(application.UIGetActiveView()->GetDocument()->GetOrigin(), origin);
    EXPECT_EQ(application.GetSignBlankOriginPos(), origin);
  }
}

TEST(PlateOrigin, panes_beyond_the_page_begin_in_the_same_corner_of_the_next) {
  for (const int origin : {1, 7}) {
    DocumentHost host;
    PanesWithOrigin(host, origin);
    const ObjectHandle plate = host.GetDocument().SharedPlateObjects()->front();
    // Three rows of 2 and their gaps are 6.5 of the 8 between the margins; a fourth would
    // need 8.75.
    host.GetApplication()->AddPanesToPlateObject(plate, 8);
    const auto plates = *host.GetDocument().SharedPlateObjects();
    ASSERT_EQ(plates.size(), 2U) << origin;
    const auto& next = std::get<PlateShape>(host.GetDocument().Find(plates[1])->shape);
    ASSERT_EQ(next.panes.size(), 1U);
    const double bottom = origin == 7 ? 1.5 : 7.5;
    EXPECT_EQ(next.panes[0], (CWorldRect{1, bottom + 2, 5, bottom})) << origin;
  }
}

}  // namespace
}  // namespace rastrel::document
