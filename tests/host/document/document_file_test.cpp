#include "host/document/document_file.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "host/document/base64.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::document {
namespace {

// One object of each kind, every attribute other than its default somewhere.
std::unique_ptr<Document> FullDocument() {
  auto document = std::make_unique<Document>();
  document->SetBlank({30.48, 20.1, 1});
  document->SetPlates({{1, 2, 3, 4}, 0.5, 0.25});
  document->SetDisplayPage(2);
  document->AddSheetLayer({4, L"Messing \u00e9", 1, false});
  CVKFullColor ink;
  ink.SetColor(0.1, 0.2, 0.3, 0.4, COLORSPACE_CMYK);
  ink.SetColorName(L"Ink \U0001F600");
  document->Colors().Add({ink, true});

  PlateShape plate;
  plate.wanted = 2;
  plate.width = 10;
  plate.height = 5.08;
  plate.margins = {1, 2, 3, 4};
  plate.start = {1, 18.1};
  plate.placed = true;
  plate.panes = {{1, 18.1, 11, 13.02}, {11, 18.1, 21, 13.02}};
  Attributes attributes;
  attributes.layer = ink;
  attributes.lineColor = InvisibleColor();
  attributes.lineStyle = {0.1, LINESTYLE_NONE};
  attributes.sheetLayer = 4;
  attributes.pages = {2, 3};
  attributes.traits = DBTRAIT_VISIBLE | DBTRAIT_IN_DOCUMENT;
  attributes.locks = {1, 2, 3, 4};
  attributes.matrix = {0, 1, -1, 0, 0.1, 1.0 / 3};
  document->Insert(document->Create(plate, attributes), host::DocumentRoot);

  TextShape text;
  text.frame = {1, 10, 9, 2};
  text.paragraph.lineFit = LINEFIT_EQUAL_HEIGHT;
  text.paragraph.flags = 256;
  text.paragraph.leftMargin = 0.1;
  text.paragraph.rightPercent = 220;
  text.lineMode = 4;
  text.justifyMode = 2;
  TextLine line;
  line.justification = JUSTIFY_RIGHT;
  line.leading = 250;
  line.runs.push_back({L"A \"quoted\"\ttext", L"arial", 2, L"DejaVu Sans", 180.5, ink, true});
  line.runs.push_back({L"", L"b", 13, L"", 1, {}, false});
  text.lines.push_back(line);
  document->Insert(document->Create(text), host::DocumentRoot);

  const ObjectHandle group = document->Create(GroupShape());
  document->Insert(group, host::DocumentRoot);
  PathShape path;
  path.cutLine = true;
  path.subPaths.push_back(
      {{0, 0}, {{false, {{{}, {}, {1, 2}}}}, {true, {{{1, 1}, {2, 2}, {3, 0}}}}}, true});
  document->Insert(document->Create(path), group);
  document->Insert(document->Create(DrillShape{{1, 2}, 0.4064}), group);

  GraphicShape graphic;
  graphic.kind = GraphicKind::kEps;
  graphic.name = L"logo.eps";
  graphic.bytes = std::make_shared<const std::string>(std::string("%!PS\0\xff", 6));
  graphic.width = 3;
  graphic.height = 4;
  document->Insert(document->Create(graphic), host::DocumentRoot);
  return document;
}

void ExpectSame(const Document& a, const Document& b, ObjectHandle root) {
  ASSERT_EQ(a.Members(root), b.Members(root));
  for (const ObjectHandle member : a.Members(root)) {
    EXPECT_EQ(*a.Find(member), *b.Find(member)) << "object " << member;
    ExpectSame(a, b, member);
  }
}

// The text with one piece replaced, which must be there.
std::string With(std::string text, const std::string& old, const std::string& replacement) {
  const auto at = text.find(old);
  EXPECT_NE(at, std::string::npos) << old;
  return text.replace(at, old.size(), replacement);
}

TEST(DocumentFile, a_document_with_everything_comes_back_as_it_was) {
  const auto document = FullDocument();
  const auto read = ReadDocumentText(DocumentText(*document));
  ASSERT_TRUE(read) << std::string(read.Error().begin(), read.Error().end());
  const Document& back = **read;
  EXPECT_EQ(back.Blank(), document->Blank());
  EXPECT_EQ(back.Plates(), document->Plates());
  EXPECT_EQ(back.Colors(), document->Colors());
  EXPECT_EQ(back.SheetLayers(), document->SheetLayers());
  EXPECT_EQ(back.DisplayPage(), 2);
  EXPECT_EQ(back.HighestPage(), document->HighestPage());
  ExpectSame(*document, back, host::DocumentRoot);
  EXPECT_EQ(DocumentText(back), DocumentText(*document));
}

TEST(DocumentFile, a_file_is_saved_and_loaded) {
  const test::ScratchDirectory directory;
  const std::wstring path = directory.Wide("sign.rdoc");
  const auto document = FullDocument();
  ASSERT_TRUE(SaveDocument(*document, path));
  const auto read = LoadDocument(path);
  ASSERT_TRUE(read);
  ExpectSame(*document, **read, host::DocumentRoot);
  EXPECT_FALSE(SaveDocument(*document, directory.Wide("no/such/sign.rdoc")));
  EXPECT_FALSE(LoadDocument(directory.Wide("none.rdoc")));
}

TEST(DocumentFile, a_text_cut_off_anywhere_is_refused) {
  const std::string text = DocumentText(*FullDocument());
  for (std::size_t length = 0; length + 2 < text.size(); ++length) {
    EXPECT_FALSE(ReadDocumentText(text.substr(0, length))) << length;
  }
}

TEST(DocumentFile, a_fault_is_told_with_its_place) {
  const std::string text = DocumentText(*FullDocument());
  const struct {
    const char* old;
    const char* replacement;
    const wchar_t* told;
  } faults[] = {
      {"rastrel-document", "other", L"the file: is no document of this program"},
      {"\"version\": 1", "\"version\": 2", L"/version: is 2, and this program reads version 1"},
      {"\"origin\": 1", "\"origin\": 10", L"/blank/origin: is not between 1 and 9"},
      {"\"diameter\": 0.4064", "\"diameter\": -1",
       L"/objects/2/members/1/diameter: is not above 0"},
      {"\"diameter\": 0.4064", "\"diameter\": 1e999", L"number overflow"},
      {"\"kind\": \"plate\"", "\"kind\": \"plait\"", L"/objects/0/kind: unknown kind \"plait\""},
      {"\"continuation\": 0", "\"continuation\": 1", L"/objects/0/continuation: is no later plate"},
      {"\"continuation\": 0", "\"continuation\": 3", L"plate 2 is continued by no plate"},
      {"\"id\": 3", "\"id\": 2", L"/objects/1/id: is taken"},
      {"\"file\": \"JSF", "\"file\": \"?SF", L"/objects/3/file: is no base 64"},
      {"\"spot\": true", "\"spot\": 1", L"spot: is neither true nor false"},
      {"\"name\": \"White\"", "\"name\": \"Black\"", L"/palette/1: names a colour twice"},
  };
  for (const auto& fault : faults) {
    const auto read = ReadDocumentText(With(text, fault.old, fault.replacement));
    ASSERT_FALSE(read) << fault.replacement;
    EXPECT_NE(read.Error().find(fault.told), std::wstring::npos)
        << std::string(read.Error().begin(), read.Error().end());
  }
}

TEST(DocumentFile, what_it_does_not_know_is_passed_over) {
  const std::string text = DocumentText(*FullDocument());
  EXPECT_TRUE(ReadDocumentText(With(text, "\"unit\": \"cm\"", "\"unit\": \"cm\", \"new\": [1]")));
}

TEST(DocumentFile, groups_deeper_than_the_limit_are_refused) {
  for (const int depth : {DeepestGroup, DeepestGroup + 1}) {
    Document document;
    ObjectHandle parent = host::DocumentRoot;
    for (int i = 0; i < depth; ++i) {
      const ObjectHandle group = document.Create(GroupShape());
      document.Insert(group, parent);
      parent = group;
    }
    EXPECT_EQ(static_cast<bool>(ReadDocumentText(DocumentText(document))), depth <= DeepestGroup);
  }
}

TEST(DocumentFile, nesting_without_end_is_refused_without_a_crash) {
  EXPECT_FALSE(ReadDocumentText(std::string(1'000'000, '[')));
}

// The test vectors of RFC 4648, chapter 10.
TEST(Base64, the_standard_s_own_examples_hold_both_ways) {
  const std::pair<const char*, const char*> examples[] = {{"", ""},
                                                          {"f", "Zg=="},
                                                          {"fo", "Zm8="},
                                                          {"foo", "Zm9v"},
                                                          {"foob", "Zm9vYg=="},
                                                          {"fooba", "Zm9vYmE="},
                                                          {"foobar", "Zm9vYmFy"}};
  for (const auto& [bytes, text] : examples) {
    EXPECT_EQ(Base64FromBytes(bytes), text);
    EXPECT_EQ(BytesFromBase64(text), bytes);
  }
}

TEST(Base64, text_that_no_bytes_give_is_refused) {
  for (const char* text :
       {"Z", "Zg=", "Zg==Zg==", "Zh==", "Zm9=", "====", "Zm9 ", "Z===", "=Zm9"}) {
    EXPECT_FALSE(BytesFromBase64(text)) << text;
  }
}

}  // namespace
}  // namespace rastrel::document
