// The importers' common base.

#include "rastrel/imports/xml_import.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

class Recorder : public CXMLImport {
 public:
  Recorder(const wchar_t* fileName, bool& cleared) : CXMLImport(fileName), m_Cleared(cleared) {
    EXPECT_FALSE(m_bParsed);
    EXPECT_FALSE(m_Text.isOpen);
    m_bParsed = ParseFile(m_pFileName);
  }
  ~Recorder() override { ClearPlates(); }
  int ImportXMLFile() override { return m_bParsed ? 1 : 0; }
  void ClearPlates() override { m_Cleared = true; }
  void* GetFirstPlate() override { return &m_Cleared; }
  void* GetNextPlate() override { return nullptr; }
  [[nodiscard]] const wchar_t* FileName() const { return m_pFileName; }

 protected:
  bool ParseFile(const wchar_t* fileName) override { return fileName != nullptr; }

 private:
  bool& m_Cleared;
};

TEST(XmlImport, keeps_the_file_name_as_given_and_ends_through_its_base) {
  const std::wstring name = L"plate.xml";
  bool cleared = false;
  auto importer = std::make_unique<Recorder>(name.c_str(), cleared);
  EXPECT_EQ(name.c_str(), importer->FileName());
  std::unique_ptr<CXMLImport> base = std::move(importer);
  EXPECT_EQ(base->ImportXMLFile(), 1);
  EXPECT_EQ(&cleared, base->GetFirstPlate());
  EXPECT_EQ(base->GetNextPlate(), nullptr);
  EXPECT_FALSE(cleared);
  base.reset();
  EXPECT_TRUE(cleared);
}

TEST(XmlImport, without_a_file_name_there_is_nothing_to_parse) {
  bool cleared = false;
  Recorder importer(nullptr, cleared);
  EXPECT_EQ(importer.ImportXMLFile(), 0);
}

}  // namespace
