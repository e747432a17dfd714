#include "host/document/document_application.h"
#include "tests/host/layout/laid_out_template.h"

namespace rastrel::layout {
namespace {

std::string Repeated(int count, const std::string& text) {
  std::string all;
  all.reserve(static_cast<std::size_t>(count) * text.size());
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

const std::string SmallPlates = "<TEMPLATESIZE><WIDTH>1</WIDTH><HEIGHT>0.5</HEIGHT></TEMPLATESIZE>";

class HostileTemplate : public test::LaidOutTemplate {
 protected:
  // A loader whose every file is paths of so many points each.
  void LoadPaths(int paths, int points) {
    auto* application = dynamic_cast<document::DocumentApplication*>(m_Host.GetApplication());
    ASSERT_NE(application, nullptr);
    application->SetGraphicLoader([this, paths, points](const std::wstring&, bool) {
      document::PathShape path;
      path.subPaths.resize(1);
      path.subPaths[0].segments.resize(static_cast<std::size_t>(points - 1));
      path.subPaths[0].segments.back().points[2] = {1, 1};
      for (int i = 0; i < paths; ++i) {
        const auto handle = Doc().Create(path);
        Doc().Insert(handle, host::DocumentRoot);
        Doc().Select(handle);
      }
      return 1;
    });
  }
};

TEST_F(HostileTemplate, a_hundred_thousand_plates_are_all_placed) {
  constexpr int count = 100'000;
  ASSERT_TRUE(Cro(SmallPlates + "<PLATES>" + Repeated(count, "<PLATE><TEXT>i</TEXT></PLATE>") +
                  "</PLATES>"));
  EXPECT_EQ(Panes().size(), static_cast<std::size_t>(count));
  EXPECT_EQ(All<document::TextShape>().size(), static_cast<std::size_t>(count));
}

TEST_F(HostileTemplate, each_of_many_plates_may_have_a_page_of_its_own) {
  constexpr int count = 20'000;
  ASSERT_TRUE(
      Cro("<TEMPLATESIZE><WIDTH>4</WIDTH><HEIGHT>3</HEIGHT><USETEMPLATEBLANKSIZE>TRUE</"
          "USETEMPLATEBLANKSIZE></TEMPLATESIZE><PLATES>" +
          Repeated(count, "<PLATE/>") + "</PLATES>"));
  EXPECT_EQ(Doc().HighestPage(), count);
}

TEST_F(HostileTemplate, a_text_of_ten_megabytes_is_cut_off) {
  ASSERT_TRUE(Cro(SmallPlates + "<PLATES><PLATE><TEXT>" + std::string(10'000'000, 'i') +
                  "</TEXT></PLATE></PLATES>"));
  ASSERT_EQ(m_Host.GetNotices().Losses().size(), 1U);
  EXPECT_EQ(m_Host.GetNotices().Losses()[0],
            L"plate 1, line 1, is cut off after 100000 characters");
  ASSERT_TRUE(
      Llx("<WIDTH>4</WIDTH><HEIGHT>3</HEIGHT><ARCTEXT><RADIUS>1</RADIUS><HEIGHT>1</HEIGHT>"
          "<TEXT>" +
          std::string(10'000'000, 'i') + "</TEXT></ARCTEXT>"));
  EXPECT_FALSE(DrawSvg().empty());
}

TEST_F(HostileTemplate, a_hundred_thousand_lines_of_a_plate_are_cut_off) {
  ASSERT_TRUE(Cro(SmallPlates + "<PLATES><PLATE>" + Repeated(100'000, "<TEXT>i</TEXT>") +
                  "</PLATE></PLATES>"));
  EXPECT_FALSE(DrawSvg().empty());
}

TEST_F(HostileTemplate, many_styles_and_graphics_are_found_without_looking_at_all) {
  std::string template_ = SmallPlates;
  std::string plates;
  constexpr int count = 20'000;
  LoadPaths(1, 2);
  for (int i = 0; i < count; ++i) {
    const std::string number = std::to_string(i);
    template_ += "<TEMPLATEGRAPHIC name=\"g" + number + "\"><FILE>x</FILE></TEMPLATEGRAPHIC>";
    plates +=
        "<PLATE><TEMPLATETEXT line=\"1\"><HEIGHT>0.1</HEIGHT></TEMPLATETEXT><TEXT>i</TEXT>"
        "<GRAPHIC>g" +
        number + "</GRAPHIC></PLATE>";
  }
  ASSERT_TRUE(Cro(template_ + "<PLATES>" + plates + "</PLATES>"));
  EXPECT_EQ(All<document::PathShape>().size(), static_cast<std::size_t>(count));
}

TEST_F(HostileTemplate, a_graphic_of_many_objects_is_placed_and_grouped) {
  LoadPaths(50'000, 2);
  ASSERT_TRUE(Cro(SmallPlates +
                  "<TEMPLATEGRAPHIC name=\"a\"><FILE>x</FILE></TEMPLATEGRAPHIC><PLATES>" +
                  Repeated(2, "<PLATE><GRAPHIC>a</GRAPHIC></PLATE>") + "</PLATES>"));
  EXPECT_EQ(All<document::GroupShape>().size(), 2U);
  EXPECT_TRUE(All<document::PathShape>().empty());
}

// A path of 989 points counts as 1,000 with the ten of its object and the one of its beginning.
TEST_F(HostileTemplate, graphics_of_more_points_than_the_maximum_are_left_out) {
  constexpr int allowed = MaximumGraphicPoints / 1'000;
  for (const int count : {allowed - 1, allowed, allowed + 1}) {
    document::DocumentHost host;
    auto* application = dynamic_cast<document::DocumentApplication*>(host.GetApplication());
    application->SetGraphicLoader([&host](const std::wstring&, bool) {
      document::PathShape path;
      path.subPaths.resize(1);
      path.subPaths[0].segments.resize(989);
      const auto handle = host.GetDocument().Create(path);
      host.GetDocument().Insert(handle, host::DocumentRoot);
      host.GetDocument().Select(handle);
      return 1;
    });
    m_Directory.Write("many.cro",
                      "<ENGRAVINGTEMPLATE>" + SmallPlates +
                          "<TEMPLATEGRAPHIC name=\"a\"><FILE>x</FILE></TEMPLATEGRAPHIC><PLATES>" +
                          Repeated(count, "<PLATE><GRAPHIC>a</GRAPHIC></PLATE>") +
                          "</PLATES></ENGRAVINGTEMPLATE>");
    const CCROFileImport file(m_Directory.Wide("many.cro").c_str(), nullptr);
    ASSERT_TRUE(ImportCro(file, host, {}));
    EXPECT_EQ(host.GetNotices().Losses().size(), count > allowed ? 1U : 0U) << count;
  }
}

}  // namespace
}  // namespace rastrel::layout
