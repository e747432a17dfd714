#include "server/web/templates/template_folder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "rastrel/platform/os/private_directory.h"
#include "tests/server/web/template_test_support.h"

namespace rastrel::server::web {
namespace {

class TemplateFolderTest : public testing::Test {
 protected:
  void Put(const std::string& name) { WriteTemplate(m_Directory, name); }
  [[nodiscard]] std::vector<std::string> Names() const {
    std::vector<std::string> names;
    const auto files = m_Folder.List();
    EXPECT_TRUE(files);
    if (files)
      for (const TemplateFile& file : *files) names.push_back(file.name);
    return names;
  }

  os::PrivateDirectory m_Place = *os::PrivateDirectory::Make("rastrel-folder-");
  std::string m_Directory = m_Place.Path() + "/templates";
  TemplateFolder m_Folder{m_Directory};
};

TEST_F(TemplateFolderTest, a_directory_that_is_not_there_has_none) {
  EXPECT_TRUE(Names().empty());
  EXPECT_FALSE(m_Folder.Find("a.xml"));
}

TEST_F(TemplateFolderTest, templates_come_by_name_and_all_else_is_passed_over) {
  for (const char* name :
       {"b.cro", "a.XML", "c.zml", "logo.svg", ".hidden.xml", "xml", "n.xml.txt"})
    Put(name);
  std::filesystem::create_directories(m_Directory + "/folder.xml");
  EXPECT_EQ(Names(), (std::vector<std::string>{"a.XML", "b.cro", "c.zml"}));
}

TEST_F(TemplateFolderTest, links_are_no_templates_wherever_they_lead) {
  Put("a.xml");
  ASSERT_EQ(::symlink("a.xml", (m_Directory + "/link.xml").c_str()), 0);
  ASSERT_EQ(::symlink("/etc/passwd", (m_Directory + "/out.xml").c_str()), 0);
  ASSERT_EQ(::symlink("nowhere", (m_Directory + "/dead.xml").c_str()), 0);
  EXPECT_EQ(Names(), std::vector<std::string>{"a.xml"});
  for (const char* name : {"link.xml", "out.xml", "dead.xml"}) EXPECT_FALSE(m_Folder.Find(name));
}

TEST_F(TemplateFolderTest, a_name_leads_to_no_other_place) {
  Put("a.xml");
  WriteTemplate(m_Place.Path(), "above.xml");
  WriteTemplate(m_Directory + "/below", "deep.xml");
  for (const std::string& name :
       {std::string("../above.xml"), std::string("below/deep.xml"), std::string("./a.xml"),
        m_Directory + "/a.xml", std::string("a.xml/"), std::string("..\\above.xml"),
        std::string("a.xml\0.xml", 10), std::string(""), std::string("."), std::string("..")}) {
    const auto found = m_Folder.Find(name);
    ASSERT_FALSE(found) << name;
    EXPECT_EQ(found.Error().code, FailureCode::BadInput) << name;
  }
  EXPECT_TRUE(m_Folder.Find("a.xml"));
  EXPECT_FALSE(m_Folder.Find("A.xml"));
}

TEST_F(TemplateFolderTest, names_have_255_bytes_at_most_and_are_text) {
  EXPECT_TRUE(IsTemplateName(std::string(250, 'a') + ".xml"));
  EXPECT_TRUE(IsTemplateName(std::string(251, 'a') + ".xml"));
  EXPECT_FALSE(IsTemplateName(std::string(252, 'a') + ".xml"));
  EXPECT_TRUE(IsTemplateName("T\xC3\xBCr & <b>.xml"));
  EXPECT_FALSE(IsTemplateName("\xFF.xml"));
  EXPECT_FALSE(IsTemplateName("a\x1b[31m.xml"));
  EXPECT_FALSE(IsTemplateName("a\n.xml"));
}

TEST_F(TemplateFolderTest, no_more_than_a_thousand_are_listed) {
  for (int i = 0; i < 1001; ++i) Put(std::to_string(i) + ".xml");
  EXPECT_EQ(Names().size(), TemplateFolder::ListLimit);
}

TEST_F(TemplateFolderTest, a_file_that_is_changed_has_another_stamp) {
  Put("a.xml");
  const std::string before = m_Folder.Find("a.xml")->stamp;
  EXPECT_EQ(m_Folder.Find("a.xml")->stamp, before);
  std::ofstream(m_Directory + "/a.xml", std::ios::app) << " ";
  EXPECT_NE(m_Folder.Find("a.xml")->stamp, before);
}

}  // namespace
}  // namespace rastrel::server::web
