#include "host/document_host.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/document/document.h"
#include "host/document/notices.h"
#include "host/graphics/native_graphics.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/text_compose.h"
#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::document {
namespace {

// A line of text, put into the document as an import does.
ObjectHandle AddLine(DocumentHost& host, const std::wstring& line) {
  host::TextCompose& text = *host.GetTextCompose();
  ParagraphInfo info;
  text.SetOpenParagraphInfo(info, 0);
  EXPECT_EQ(text.OpenParagraph(4, info, {0, 2000}, {4000, 0}), 0);
  CurrentParagraph current;
  text.GetCurParagraph(current);
  current.style->font = text.AddFont(0, host::FONTTYPE_TRUETYPE, L"DejaVuSans", -1, 1);
  current.style->size = 500;
  text.edPasteString(line.c_str(), static_cast<int>(line.size()), 0, nullptr, false);
  text.CloseParagraph(1, info);
  ELEMENT_ATTRIBUTES attributes;
  text.GetDefaultAttributes(attributes);
  host::ObjectStore& store = *host.GetObjectStore();
  const ParagraphEle element{info.first, info.second};
  const ObjectHandle object =
      store.DBInsertElement(&attributes, DBTYPE_PARAGRAPH, &element, 0, 0, 0, 1, false);
  store.DBSetTrait(object, DBTRAIT_IN_DOCUMENT, 1);
  store.UNOpenStep(L"Adding text");
  store.DSAddSourceObject(object, 2, object);
  store.UNCloseStep();
  return object;
}

TEST(DocumentHost, it_has_the_parts_that_an_import_needs_and_says_that_it_has_no_more) {
  DocumentHost host;
  EXPECT_NE(host.GetObjectStore(), nullptr);
  EXPECT_NE(host.GetTextCompose(), nullptr);
  EXPECT_NE(host.GetGraphicsIO(), nullptr);
  EXPECT_NE(host.GetApplication(), nullptr);
  EXPECT_NE(host.GetContourCut(), nullptr);
  EXPECT_NE(host.GetPlaneReader(), nullptr);
  EXPECT_EQ(host.GetTranslation().Translate(L"(*v*)Adding text"), L"Adding text");
}

TEST(DocumentHost, settings_for_a_load_stay_in_the_host_and_all_others_go_to_the_file) {
  const test::ScratchDirectory place;
  const test::EnvironmentGuard home("RASTREL_HOME", place.Path("root"));
  const auto read = [](host::Host& host, const wchar_t* section, const wchar_t* key) {
    return host.GetSettings().Read(section, key, DS_USER);
  };
  DocumentHost host;
  ASSERT_TRUE(host.GetSettings().Write(L"plottersetup", L"DeviceUsed", L"1", DS_USER));
  const std::string stored = place.Read("root/settings.ini");
  const struct {
    const wchar_t* section;
    const wchar_t* key;
  } settings[] = {{L"Pages", L"CollapseToZero"},
                  {L"Sheet Layer", L"Merge"},
                  {L"Grouping", L"CollapseDatabase"},
                  {L"IMPPDF", L"TextAsGraphics"},
                  {L"IMPPDF", L"ShowDialog"}};
  DocumentHost other;
  for (const auto& [section, key] : settings) {
    EXPECT_EQ(read(host, section, key), std::nullopt);
    ASSERT_TRUE(host.GetSettings().Write(section, key, L"7", DS_USER));
    EXPECT_EQ(read(host, section, key), L"7");
    EXPECT_EQ(read(other, section, key), std::nullopt);
  }
  EXPECT_EQ(read(host, L"PAGES", L"collapsetozero"), L"7") << "case does not count";
  EXPECT_EQ(place.Read("root/settings.ini"), stored);
  EXPECT_NE(stored.find("DeviceUsed = 1"), std::string::npos);
  EXPECT_EQ(read(other, L"plottersetup", L"DeviceUsed"), L"1");
}

TEST(DocumentHost, a_stored_setting_for_a_load_counts_until_the_import_writes_it) {
  const test::ScratchDirectory place;
  const test::EnvironmentGuard home("RASTREL_HOME", place.Path("root"));
  standalone::IniSettings file;
  ASSERT_TRUE(file.Write(L"IMPPDF", L"ShowDialog", L"5", DS_USER));
  DocumentHost host;
  EXPECT_EQ(host.GetSettings().Read(L"IMPPDF", L"ShowDialog", DS_USER), L"5");
  ASSERT_TRUE(host.GetSettings().Write(L"IMPPDF", L"ShowDialog", L"0", DS_USER));
  EXPECT_EQ(host.GetSettings().Read(L"IMPPDF", L"ShowDialog", DS_USER), L"0");
  EXPECT_EQ(file.Read(L"IMPPDF", L"ShowDialog", DS_USER), L"5");
}

TEST(DocumentHost, an_object_that_one_part_makes_the_others_find) {
  DocumentHost host;
  const ObjectHandle object = AddLine(host, L"Mill");
  ASSERT_NE(object, 0U);
  EXPECT_EQ(host.GetDocument().Members(host::DocumentRoot), std::vector<ObjectHandle>{object});
  EXPECT_EQ(host.GetDocument().StepNames(), std::vector<std::wstring>{L"Adding text"});
  EXPECT_EQ(host.GetObjectStore()->DBGetObjectType(object), DBTYPE_PARAGRAPH);
  EXPECT_EQ(host.StillOpen(), DocumentHost::OpenWork());
}

TEST(DocumentHost, objects_left_open_are_reported) {
  DocumentHost host;
  host.GetObjectStore()->UNOpenStep(L"step");
  const host::ListHandle list = host.GetObjectStore()->DBCreateEmptyList();
  ParagraphInfo info;
  ASSERT_EQ(host.GetTextCompose()->OpenParagraph(4, info, {0, 0}, {1, 1}), 0);
  EXPECT_EQ(host.StillOpen(), (DocumentHost::OpenWork{1, 1, true}));
  host.GetObjectStore()->UNCloseStep();
  host.GetObjectStore()->DBDestroyList(list);
  host.GetTextCompose()->CloseParagraph(0, info);
  EXPECT_EQ(host.StillOpen(), DocumentHost::OpenWork());
}

TEST(DocumentHost, a_new_document_ends_the_open_text_of_the_old_one) {
  DocumentHost host;
  AddLine(host, L"Mill");
  host.GetTextCompose()->InitNewText(nullptr, {0, 0}, {4000, 2000}, 1);
  host.GetApplication()->UIGetActiveView()->OnNew();
  EXPECT_EQ(host.StillOpen(), DocumentHost::OpenWork());
  EXPECT_EQ(host.GetDocument().ObjectCount(), 0U);
  EXPECT_NE(AddLine(host, L"Mill"), 0U);
}

TEST(DocumentHost, a_saved_document_opens_as_it_was) {
  const test::ScratchDirectory directory;
  DocumentHost host;
  const ObjectHandle object = AddLine(host, L"Mill");
  host.GetDocument().DeselectAll();  // the selection is not part of the file
  ASSERT_TRUE(host.Save(directory.Wide("mill.rdoc")));
  const auto opened = DocumentHost::Open(directory.Wide("mill.rdoc"));
  ASSERT_TRUE(opened);
  EXPECT_EQ(*(*opened)->GetDocument().Find(object), *host.GetDocument().Find(object));
}

TEST(DocumentHost, a_file_that_is_none_does_not_open_and_says_why) {
  const test::ScratchDirectory directory;
  directory.Write("broken.rdoc", "{");
  for (const char* name : {"broken.rdoc", "missing.rdoc"}) {
    const auto opened = DocumentHost::Open(directory.Wide(name));
    ASSERT_FALSE(opened);
    EXPECT_FALSE(Describe(opened.Error()).empty());
  }
  EXPECT_FALSE(DocumentHost().Save(directory.Wide("no/such/folder.rdoc")));
}

TEST(NativeGraphics, a_document_file_is_loaded_into_the_document_and_selected) {
  const test::ScratchDirectory directory;
  DocumentHost source;
  Document& document = source.GetDocument();
  const ObjectHandle group = document.Create(GroupShape());
  const ObjectHandle drill = document.Create(DrillShape{{3, 4}, 0.5});
  ASSERT_TRUE(document.Insert(drill, group));
  ASSERT_TRUE(document.Insert(group, host::DocumentRoot));
  document.AddSheetLayer({7, L"Steel", 0, true});
  ASSERT_TRUE(source.Save(directory.Wide("part.rdoc")));

  DocumentHost host;
  const ObjectHandle before = host.GetDocument().Create(DrillShape{{1, 1}, 1});
  ASSERT_TRUE(host.GetDocument().Insert(before, host::DocumentRoot));
  host.GetDocument().Select(before);
  ASSERT_EQ(host.GetGraphicsIO()->LoadVEFile(nullptr, directory.Wide("part.rdoc").c_str(), 1), 1);
  const auto& members = host.GetDocument().Members(host::DocumentRoot);
  ASSERT_EQ(members.size(), 2U);
  EXPECT_EQ(host.GetDocument().Selection(), std::vector<ObjectHandle>{members[1]});
  const ObjectHandle inner = host.GetDocument().Members(members[1]).at(0);
  EXPECT_EQ(std::get<DrillShape>(host.GetDocument().Find(inner)->shape), (DrillShape{{3, 4}, 0.5}));
  EXPECT_TRUE(host.GetDocument().SheetLayers().contains(7));
}

TEST(NativeGraphics, plates_that_continue_each_other_still_do_as_copies) {
  Document source;
  PlateShape plate;
  plate.width = plate.height = 1;
  const ObjectHandle first = source.Create(plate);
  const ObjectHandle second = source.Create(plate);
  source.Insert(first, host::DocumentRoot);
  source.Insert(second, host::DocumentRoot);
  std::get<PlateShape>(source.Edit(first)->shape).continuation = second;
  Document target;
  target.Insert(target.Create(DrillShape()), host::DocumentRoot);
  const auto copies = graphics::CopyObjects(source, target);
  ASSERT_EQ(copies.size(), 2U);
  EXPECT_EQ(std::get<PlateShape>(target.Find(copies[0])->shape).continuation, copies[1]);
  EXPECT_EQ(std::get<PlateShape>(target.Find(copies[1])->shape).continuation, 0U);
}

TEST(NativeGraphics, a_file_that_can_not_be_read_changes_nothing_and_is_reported) {
  const test::ScratchDirectory directory;
  directory.Write("broken.rdoc", "no document");
  ASSERT_TRUE(DocumentHost().Save(directory.Wide("empty.rdoc")));
  DocumentHost host;
  const ObjectHandle drill = host.GetDocument().Create(DrillShape());
  host.GetDocument().Insert(drill, host::DocumentRoot);
  host.GetDocument().Select(drill);
  for (const char* name : {"broken.rdoc", "missing.rdoc", "empty.rdoc"}) {
    EXPECT_EQ(host.GetGraphicsIO()->LoadVEFile(nullptr, directory.Wide(name).c_str(), 1), 0);
    EXPECT_NE(host.GetNotices().Losses().back().find(directory.Wide(name)), std::wstring::npos);
  }
  EXPECT_EQ(host.GetGraphicsIO()->LoadVEFile(nullptr, nullptr, 1), 0);
  EXPECT_EQ(host.GetDocument().ObjectCount(), 1U);
  EXPECT_EQ(host.GetDocument().Selection(), std::vector<ObjectHandle>{drill});
}

TEST(DocumentHost, a_graphic_that_may_not_be_read_is_not_loaded_and_the_reason_is_a_loss) {
  const test::ScratchDirectory place;
  place.Write("logo.svg",
              "<svg xmlns='http://www.w3.org/2000/svg' width='10' height='10'>"
              "<rect width='5' height='5'/></svg>");
  const DocumentHost saved;
  ASSERT_TRUE(saved.Save(place.Wide("own.krv")));
  DocumentHost host;
  std::vector<std::wstring> asked;
  host.SetReadPolicy([&](const std::wstring& path) {
    asked.push_back(path);
    return Expected<void>(FailureOf("it is elsewhere"));
  });
  const std::wstring graphic = place.Wide("logo.svg");
  const std::wstring own = place.Wide("own.krv");
  EXPECT_EQ(host.GetApplication()->LoadTHZ(nullptr, nullptr, graphic.c_str(), 1, 0), 0);
  EXPECT_EQ(host.GetGraphicsIO()->LoadVEFile(nullptr, own.c_str(), 1), 0);
  EXPECT_EQ(asked, (std::vector<std::wstring>{graphic, own}));
  EXPECT_EQ(host.GetNotices().Losses(), (std::vector<std::wstring>{graphic + L": it is elsewhere",
                                                                   own + L": it is elsewhere"}));
  EXPECT_EQ(host.GetDocument().ObjectCount(), 0U);
}

}  // namespace
}  // namespace rastrel::document
