// Graphics of several objects in CRO templates.

#include "host/document/document_application.h"
#include "tests/host/layout/cro_template.h"
#include "tests/host/layout/laid_out_template.h"

namespace rastrel::layout {
namespace {

constexpr double Inch = 2.54;
constexpr double Near = 1e-6;

class CroGroups : public test::LaidOutTemplate {
 protected:
  CroGroups() { Doc().SetBlank({30, 20, 1}); }
};

TEST_F(CroGroups, a_graphic_of_several_objects_is_a_group_on_each_plate) {
  document::Document drawing;
  for (const double x : {0.0, 3.0}) {
    document::DrillShape hole{{x, 0}, 2};
    drawing.Insert(drawing.Create(hole), host::DocumentRoot);
  }
  // Two holes of 2 cm, 3 cm apart: 5 by 2 cm. The loader copies those of a drawing.
  auto* application = dynamic_cast<document::DocumentApplication*>(m_Host.GetApplication());
  ASSERT_NE(application, nullptr);
  application->SetGraphicLoader([&](const std::wstring&, bool) {
    for (const auto handle : drawing.Members(host::DocumentRoot)) {
      const auto made = Doc().Create(drawing.Find(handle)->shape);
      Doc().Insert(made, host::DocumentRoot);
      Doc().Select(made);
    }
    return 1;
  });
  ASSERT_TRUE(Cro(Size("5", "3") + Graphic("a", "<WIDTH>2</WIDTH><ORIGIN>bottom left</ORIGIN>") +
                  Plates({"<GRAPHIC>a</GRAPHIC>", "<GRAPHIC>a</GRAPHIC>"})));
  const auto groups = All<document::GroupShape>();
  ASSERT_EQ(groups.size(), 2U);
  EXPECT_EQ(std::get<document::GroupShape>(groups[0]->shape).members.size(), 2U);
  EXPECT_TRUE(All<document::DrillShape>().empty()) << "none is left outside of the groups";
  ASSERT_EQ(Graphics().size(), 2U);
  for (const std::size_t i : {0U, 1U}) {
    const BOUNDS box = Graphics()[i];
    EXPECT_NEAR(box.xmin, static_cast<double>(i) * 5 * Inch, Near);
    EXPECT_NEAR(box.xmax - box.xmin, 2 * Inch, Near);
    EXPECT_NEAR(box.ymax - box.ymin, 2 * Inch * 2 / 5, Near);
    EXPECT_NEAR(box.ymin, 20 - 3 * Inch, Near);
  }
}

// Two of the three holes are a group of the drawing's own.
TEST_F(CroGroups, a_graphic_with_groups_of_its_own_keeps_them_on_each_plate) {
  auto* application = dynamic_cast<document::DocumentApplication*>(m_Host.GetApplication());
  ASSERT_NE(application, nullptr);
  application->SetGraphicLoader([&](const std::wstring&, bool) {
    const auto group = Doc().Create(document::GroupShape());
    Doc().Insert(group, host::DocumentRoot);
    for (const double x : {0.0, 3.0})
      Doc().Insert(Doc().Create(document::DrillShape{{x, 0}, 2}), group);
    const auto alone = Doc().Create(document::DrillShape{{6, 0}, 2});
    Doc().Insert(alone, host::DocumentRoot);
    Doc().Select(group);
    Doc().Select(alone);
    return 1;
  });
  ASSERT_TRUE(Cro(Size("9", "3") + Graphic("a", "<ORIGIN>bottom left</ORIGIN>") +
                  Plates({"<GRAPHIC>a</GRAPHIC>", "<GRAPHIC>a</GRAPHIC>"})));
  const auto groups = All<document::GroupShape>();
  ASSERT_EQ(groups.size(), 2U);
  for (const auto* group : groups) {
    const auto& members = std::get<document::GroupShape>(group->shape).members;
    ASSERT_EQ(members.size(), 2U);
    std::size_t inner = 0;
    for (const auto member : members)
      if (const auto* own = std::get_if<document::GroupShape>(&Doc().Find(member)->shape))
        inner = own->members.size();
    EXPECT_EQ(inner, 2U);
  }
}

}  // namespace
}  // namespace rastrel::layout
