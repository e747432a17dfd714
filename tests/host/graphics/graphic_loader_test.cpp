#include "host/graphics/graphic_loader.h"

#include <gtest/gtest.h>

#include "host/document/document_file.h"
#include "host/document_host.h"
#include "host/graphics/picture.h"
#include "rastrel/platform/host/application.h"
#include "tests/host/graphics/graphic_files.h"

namespace rastrel::graphics {
namespace {

using document::Document;
using document::GraphicKind;
using document::GraphicShape;

class GraphicLoaderTest : public testing::Test {
 protected:
  int Load(const std::string& name) {
    return LoadGraphic(m_Document, m_Notices, m_Directory.Wide(name));
  }
  Document m_Document;
  document::Notices m_Notices;
  test::ScratchDirectory m_Directory;
};

TEST_F(GraphicLoaderTest, a_file_stands_on_the_page_on_show_in_true_size_and_is_selected) {
  m_Directory.Write("halves.dat", test::PngFile(2835, 2835, 1));
  m_Document.SetDisplayPage(3);
  m_Document.Insert(m_Document.Create(document::DrillShape()), host::DocumentRoot);
  m_Document.Select(m_Document.Members(host::DocumentRoot)[0]);
  ASSERT_EQ(Load("halves.dat"), 1);
  const auto object = m_Document.Members(host::DocumentRoot).at(1);
  EXPECT_EQ(m_Document.Selection(), std::vector{object});
  const auto& shape = std::get<GraphicShape>(m_Document.Find(object)->shape);
  EXPECT_EQ(shape.kind, GraphicKind::Png);
  EXPECT_EQ(shape.name, L"halves.dat");
  EXPECT_EQ(*shape.bytes, test::PngFile(2835, 2835, 1));
  EXPECT_NEAR(shape.width, 20 * 2.54 / 72, 1e-4);
  EXPECT_NEAR(shape.height, 10 * 2.54 / 72, 1e-4);
  EXPECT_EQ(m_Document.Find(object)->attributes.pages, (VK_PAGE_RANGE{3, 3}));
  const BOUNDS bounds = m_Document.Bounds(object);
  EXPECT_EQ(bounds.xmin, 0);
  EXPECT_EQ(bounds.ymin, 0);
}

TEST_F(GraphicLoaderTest, where_all_pages_are_on_show_it_stands_on_the_first) {
  m_Directory.Write("halves", test::PngFile());
  m_Document.SetDisplayPage(0);
  ASSERT_EQ(Load("halves"), 1);
  EXPECT_EQ(m_Document.Find(m_Document.Selection().at(0))->attributes.pages, (VK_PAGE_RANGE{1, 1}));
}

TEST_F(GraphicLoaderTest, a_file_that_can_not_be_placed_changes_nothing_and_is_reported) {
  m_Directory.Write("text.txt", "some words");
  m_Directory.Write("cut.png", test::PngFile().substr(0, 50));
  m_Directory.Write("empty.svg", "");
  std::filesystem::create_directory(m_Directory.Path("folder.png"));
  std::filesystem::resize_file((m_Directory.Write("large.png", "x"), m_Directory.Path("large.png")),
                               LargestGraphicFile + 1);
  m_Document.Insert(m_Document.Create(document::DrillShape()), host::DocumentRoot);
  const auto drill = m_Document.Members(host::DocumentRoot)[0];
  m_Document.Select(drill);
  std::size_t told = 0;
  for (const char* name :
       {"text.txt", "cut.png", "empty.svg", "folder.png", "large.png", "missing.png"}) {
    EXPECT_EQ(Load(name), 0) << name;
    ASSERT_EQ(m_Notices.Losses().size(), ++told);
    EXPECT_EQ(m_Notices.Losses().back().find(m_Directory.Wide(name) + L" can't be placed: "), 0U);
  }
  EXPECT_EQ(m_Document.ObjectCount(), 1U);
  EXPECT_EQ(m_Document.Selection(), std::vector{drill});
}

TEST_F(GraphicLoaderTest, a_file_that_is_loaded_again_is_read_once_and_gives_new_objects) {
  m_Directory.Write("halves.svg", test::SvgFile("width=\"20\" height=\"10\""));
  GraphicLoader loader(m_Document, m_Notices);
  for (int i = 0; i < 3; ++i) ASSERT_EQ(loader.Load(m_Directory.Wide("halves.svg")), 1);
  EXPECT_EQ(loader.FilesRead(), 1U);
  EXPECT_EQ(m_Document.ObjectCount(), 6U);
  const auto& members = m_Document.Members(host::DocumentRoot);
  EXPECT_EQ(m_Document.Selection(), (std::vector{members[4], members[5]}));
}

TEST_F(GraphicLoaderTest, a_file_that_has_changed_is_read_again) {
  m_Directory.Write("a.svg", test::SvgFile("width=\"20\" height=\"10\""));
  GraphicLoader loader(m_Document, m_Notices);
  ASSERT_EQ(loader.Load(m_Directory.Wide("a.svg")), 1);
  m_Directory.Write("a.svg", test::SvgFile("width=\"20\" height=\"10\" id=\"other\""));
  ASSERT_EQ(loader.Load(m_Directory.Wide("a.svg")), 1);
  EXPECT_EQ(loader.FilesRead(), 2U);
}

TEST_F(GraphicLoaderTest, a_cut_line_and_a_drawing_of_one_file_are_read_apart) {
  m_Directory.Write("a.svg", test::SvgFile("width=\"20\" height=\"10\""));
  GraphicLoader loader(m_Document, m_Notices);
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(loader.Load(m_Directory.Wide("a.svg"), {false, false}), 1);
    ASSERT_EQ(loader.Load(m_Directory.Wide("a.svg"), {true, false}), 1);
  }
  EXPECT_EQ(loader.FilesRead(), 2U);
}

TEST_F(GraphicLoaderTest, only_the_64_files_that_were_used_last_are_kept) {
  GraphicLoader loader(m_Document, m_Notices);
  const auto load = [&](int number) {
    const std::string name = std::to_string(number) + ".png";
    if (loader.FilesRead() <= static_cast<std::size_t>(number)) {
      m_Directory.Write(name, test::PngFile());
    }
    ASSERT_EQ(loader.Load(m_Directory.Wide(name)), 1);
  };
  for (int i = 0; i < 64; ++i) load(i);
  load(0);
  EXPECT_EQ(loader.FilesRead(), 64U);
  load(64);  // in the place of 1
  load(0);
  EXPECT_EQ(loader.FilesRead(), 65U);
  load(1);
  EXPECT_EQ(loader.FilesRead(), 66U);
}

TEST_F(GraphicLoaderTest, a_document_is_loaded_by_its_content_and_stands_on_the_page_on_show) {
  document::Document source;
  document::Attributes attributes;
  attributes.pages = {2, 4};
  const auto group = source.Create(document::GroupShape(), attributes);
  source.Insert(group, host::DocumentRoot);
  source.Insert(source.Create(document::DrillShape{{3, 4}, 0.5}, attributes), group);
  ASSERT_TRUE(document::SaveDocument(source, m_Directory.Wide("part.dat")));
  m_Document.SetDisplayPage(3);
  ASSERT_EQ(Load("part.dat"), 1);
  const auto loaded = m_Document.Members(host::DocumentRoot).at(0);
  EXPECT_EQ(m_Document.Selection(), std::vector{loaded});
  EXPECT_EQ(m_Document.Find(loaded)->attributes.pages, (VK_PAGE_RANGE{3, 3}));
  EXPECT_EQ(m_Document.Find(m_Document.Members(loaded).at(0))->attributes.pages,
            (VK_PAGE_RANGE{3, 3}));
}

TEST_F(GraphicLoaderTest, a_document_without_objects_or_that_is_broken_is_reported) {
  ASSERT_TRUE(document::SaveDocument(document::Document(), m_Directory.Wide("empty.rdoc")));
  m_Directory.Write("broken.rdoc", "{\"format\": \"rastrel-document\", ");
  EXPECT_EQ(Load("empty.rdoc"), 0);
  EXPECT_EQ(Load("broken.rdoc"), 0);
  ASSERT_EQ(m_Notices.Losses().size(), 2U);
  EXPECT_NE(m_Notices.Losses()[0].find(L"it holds no objects"), std::wstring::npos);
}

TEST_F(GraphicLoaderTest, the_application_of_the_host_loads_with_it) {
  m_Directory.Write("halves.svg", test::SvgFile("width=\"20\" height=\"10\""));
  document::DocumentHost host;
  EXPECT_EQ(host.GetApplication()->LoadTHZ(nullptr, nullptr, m_Directory.Wide("halves.svg").c_str(),
                                           1, 0),
            1);
  EXPECT_EQ(host.GetDocument().ObjectCount(), 2U);
}

}  // namespace
}  // namespace rastrel::graphics
