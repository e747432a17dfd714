#include "rastrel/platform/mfc/object.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "rastrel/platform/mfc/archive.h"

namespace {

class CDerived : public CObject {
 public:
  RASTREL_DECLARE_DYNCREATE(CDerived)
  int value = 5;
};

class CFurther : public CDerived {
 public:
  RASTREL_DECLARE_DYNCREATE(CFurther)
};

RASTREL_IMPLEMENT_DYNCREATE(CDerived, CObject)
RASTREL_IMPLEMENT_DYNCREATE(CFurther, CDerived)

class COther : public CObject {
 public:
  COther() = default;
};

}  // namespace

TEST(CObject, a_class_knows_its_name_its_base_and_how_to_make_an_object) {
  const CRuntimeClass* known = CDerived::GetThisClass();
  EXPECT_EQ(std::string(known->m_lpszClassName), "CDerived");
  EXPECT_EQ(known->m_pBaseClass, CObject::GetThisClass());
  const std::unique_ptr<CObject> made(known->CreateObject());
  ASSERT_NE(dynamic_cast<CDerived*>(made.get()), nullptr);
  EXPECT_EQ(made->GetRuntimeClass(), known);
}

TEST(CObject, derivation_is_followed_to_the_root) {
  const CRuntimeClass* further = CFurther::GetThisClass();
  EXPECT_TRUE(further->IsDerivedFrom(CFurther::GetThisClass()));
  EXPECT_TRUE(further->IsDerivedFrom(CDerived::GetThisClass()));
  EXPECT_TRUE(further->IsDerivedFrom(CObject::GetThisClass()));
  EXPECT_FALSE(CDerived::GetThisClass()->IsDerivedFrom(further));
}

TEST(CObject, the_root_can_not_be_made_dynamically) {
  EXPECT_EQ(CObject::GetThisClass()->CreateObject(), nullptr);
  EXPECT_EQ(std::string(CObject::GetThisClass()->m_lpszClassName), "CObject");
  EXPECT_EQ(COther().GetRuntimeClass(), CObject::GetThisClass());
}

TEST(CObject, serialising_the_root_writes_nothing) {
  CMemFile file;
  CArchive archive(&file, CArchive::store);
  COther().Serialize(archive);
  archive.Close();
  EXPECT_TRUE(file.Bytes().empty());
  COther().AssertValid();
}
