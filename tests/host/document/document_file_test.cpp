#include "host/document/document_file.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "host/document/json_stream.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::document {
namespace {

// One object of each kind, every attribute other than its default somewhere.
std::unique_ptr<Document> FullDocument() {
  auto document = std::make_unique<Document>();
  document->SetBlank({30.48, 20.1, 1});
  document->SetPlates({{1, 2, 3, 4}, 0.5, 0.25});
  document->SetDisplayPage(2);
  document->SetRotation(-90.5);
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
  path.cutLine = CutLine::Cut;
  path.subPaths.push_back(
      {{0, 0}, {{false, {{{}, {}, {1, 2}}}}, {true, {{{1, 1}, {2, 2}, {3, 0}}}}}, true});
  document->Insert(document->Create(path), group);
  path.cutLine = CutLine::None;
  path.fillRule = FillRule::NonZero;
  path.fillsOpen = true;
  const ObjectHandle drawing = document->Create(path);
  document->Insert(document->Create(DrillShape{{1, 2}, 0.4064}), group);
  path.cutLine = CutLine::Through;
  document->Insert(document->Create(path), group);

  GraphicShape graphic;
  graphic.kind = GraphicKind::Eps;
  graphic.name = L"logo.eps";
  graphic.bytes = std::make_shared<const std::string>(std::string("%!PS\0\xff", 6));
  graphic.width = 3;
  graphic.height = 4;
  document->Insert(document->Create(graphic), host::DocumentRoot);

  ArcTextShape arc;
  arc.center = {4, 5.5};
  arc.radius = 2.54;
  arc.rotation = -30;
  arc.justification = JUSTIFY_RIGHT;
  arc.run = {L"Round & round", L"arial", 2, L"DejaVu Sans", 180.5, ink, true};
  document->Insert(document->Create(arc), host::DocumentRoot);

  graphic.extent = CWorldRect{0.5, 3.5, 2.5, 1};
  graphic.reason = L"it has a gradient";
  document->Insert(drawing, host::DocumentRoot);
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

TEST(DocumentFile, a_file_without_a_rotation_has_none) {
  const std::string text = DocumentText(*FullDocument());
  const auto read = ReadDocumentText(With(text, "\"rotation\": -90.5,", ""));
  ASSERT_TRUE(read) << Describe(read.Error());
  EXPECT_EQ((*read)->Rotation(), 0);
  EXPECT_FALSE(ReadDocumentText(With(text, "\"rotation\": -90.5,", "\"rotation\": \"x\",")));
}

TEST(DocumentFile, a_cut_line_is_also_read_as_true_or_false) {
  const auto document = std::make_unique<Document>();
  document->Insert(document->Create(PathShape()), host::DocumentRoot);
  const std::string text = DocumentText(*document);
  const auto read = [&](const std::string& value) -> std::string {
    const auto back = ReadDocumentText(With(text, "\"none\"", value));
    if (!back) return Describe(back.Error());
    const auto& path = std::get<PathShape>((*back)->Find((*back)->Members(1).front())->shape);
    return std::to_string(static_cast<int>(path.cutLine));
  };
  EXPECT_EQ(read("false"), std::to_string(static_cast<int>(CutLine::None)));
  EXPECT_EQ(read("true"), std::to_string(static_cast<int>(CutLine::Cut)));
  EXPECT_EQ(read("\"none\""), std::to_string(static_cast<int>(CutLine::None)));
  EXPECT_EQ(read("\"cut\""), std::to_string(static_cast<int>(CutLine::Cut)));
  EXPECT_EQ(read("\"through\""), std::to_string(static_cast<int>(CutLine::Through)));
  EXPECT_EQ(read("\"half\""), "/objects/0/cutLine: unknown word \"half\"");
  EXPECT_NE(read("1").find("/objects/0/cutLine"), std::string::npos);
}

TEST(DocumentFile, a_document_with_everything_comes_back_as_it_was) {
  const auto document = FullDocument();
  const auto read = ReadDocumentText(DocumentText(*document));
  ASSERT_TRUE(read) << Describe(read.Error());
  const Document& back = **read;
  EXPECT_EQ(back.Blank(), document->Blank());
  EXPECT_EQ(back.Plates(), document->Plates());
  EXPECT_EQ(back.Colors(), document->Colors());
  EXPECT_EQ(back.SheetLayers(), document->SheetLayers());
  EXPECT_EQ(back.DisplayPage(), 2);
  EXPECT_EQ(back.Rotation(), -90.5);
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

TEST(DocumentFile, a_fault_is_reported_with_its_place) {
  const std::string text = DocumentText(*FullDocument());
  const struct {
    const char* old;
    const char* replacement;
    const char* told;
  } faults[] = {
      {"rastrel-document", "other", "the file: is no document of this program"},
      {"\"version\": 1", "\"version\": 2", "/version: is 2, and this program reads version 1"},
      {"\"origin\": 1", "\"origin\": 10", "/blank/origin: is not between 1 and 9"},
      {"\"diameter\": 0.4064", "\"diameter\": -1", "/objects/2/members/1/diameter: is not above 0"},
      {"\"diameter\": 0.4064", "\"diameter\": 1e999", "number overflow"},
      {"\"kind\": \"plate\"", "\"kind\": \"plait\"", "/objects/0/kind: unknown kind \"plait\""},
      {"\"continuation\": 0", "\"continuation\": 1", "/objects/0/continuation: is no later plate"},
      {"\"continuation\": 0", "\"continuation\": 3", "plate 2 is continued by no plate"},
      {"\"id\": 3", "\"id\": 2", "/objects/1/id: is taken"},
      {"\"radius\": 2.54", "\"radius\": 0", "/objects/4/radius: is not above 0"},
      {"\"kind\": \"arcText\"", "\"kind\": \"text\"", "/objects/4: lacks \"frame\""},
      {"\"file\": \"JSF", "\"file\": \"?SF", "/objects/3/file: is no base 64"},
      {"\"spot\": true", "\"spot\": 1", "spot: is neither true nor false"},
      {"\"name\": \"White\"", "\"name\": \"Black\"", "/palette/1: names a colour twice"},
  };
  for (const auto& fault : faults) {
    const auto read = ReadDocumentText(With(text, fault.old, fault.replacement));
    ASSERT_FALSE(read) << fault.replacement;
    EXPECT_NE(Describe(read.Error()).find(fault.told), std::string::npos) << Describe(read.Error());
  }
}

TEST(DocumentFile, an_unknown_key_is_passed_over) {
  const std::string text = DocumentText(*FullDocument());
  EXPECT_TRUE(ReadDocumentText(With(text, "\"unit\": \"cm\"", "\"unit\": \"cm\", \"new\": [1]")));
}

// The text of an object in a file, of a kind that needs nothing else.
std::string ObjectText(int id, const std::string& rest) {
  return R"({"id": )" + std::to_string(id) + R"(, "layer": "invisible", "lineColor": "invisible",
    "lineWidth": 0, "lineStyle": 0, "sheetLayer": 0, "pages": [1, 1], "traits": [], )" +
         rest + "}";
}

std::string PlateText(int id, int continuation) {
  const std::string zero = R"({"left": 0, "top": 0, "right": 0, "bottom": 0})";
  return ObjectText(id, R"("kind": "plate", "wanted": 0, "width": 1, "height": 1, "margins": )" +
                            zero + R"(, "horizontalGap": 0, "verticalGap": 0, "fromBottom": false,
    "start": [0, 0], "placed": true, "panes": [], "continuation": )" +
                            std::to_string(continuation));
}

// The text of a document without objects, with these members in place of its objects.
std::string FileWith(const std::string& members) {
  return With(DocumentText(Document()), "\"objects\": []", members);
}

TEST(DocumentFile, a_text_on_a_circle_has_a_maximum_length) {
  for (const std::size_t length : {MaximumArcText - 1, MaximumArcText, MaximumArcText + 1}) {
    Document document;
    ArcTextShape arc;
    arc.radius = 1;
    arc.run.text = std::wstring(length, L'\xE9');
    document.Insert(document.Create(arc), host::DocumentRoot);
    const auto read = ReadDocumentText(DocumentText(document));
    EXPECT_EQ(static_cast<bool>(read), length <= MaximumArcText) << length;
    if (read) continue;
    EXPECT_NE(Describe(read.Error())
                  .find("/objects/0/run/text: has more than 4096 characters on a circle"),
              std::string::npos)
        << Describe(read.Error());
  }
}

TEST(DocumentFile, groups_deeper_than_the_limit_are_refused) {
  for (const int depth : {DeepestGroup - 1, DeepestGroup, DeepestGroup + 1}) {
    // The innermost one may have its members or not.
    for (const char* members : {R"("kind": "group", "members": [])", R"("kind": "group")"}) {
      std::string objects = ObjectText(2, members);
      for (int i = 1; i < depth; ++i) {
        objects = ObjectText(2 + i, R"("kind": "group", "members": [)" + objects + "]");
      }
      const auto read = ReadDocumentText(FileWith("\"objects\": [" + objects + "]"));
      ASSERT_EQ(static_cast<bool>(read), depth <= DeepestGroup) << depth;
      if (read) {
        EXPECT_TRUE(ReadDocumentText(DocumentText(**read))) << depth;
      } else {
        EXPECT_NE(
            Describe(read.Error()).find("/members/0: groups stand more than 64 deep in groups"),
            std::string::npos);
      }
    }
  }
}

TEST(DocumentFile, the_deepest_groups_of_a_document_come_back) {
  Document document;
  ObjectHandle parent = host::DocumentRoot;
  for (ObjectHandle group = document.Create(GroupShape()); document.Insert(group, parent);
       group = document.Create(GroupShape())) {
    parent = group;
  }
  EXPECT_EQ(document.ObjectCount(), static_cast<std::size_t>(DeepestGroup));
  const auto read = ReadDocumentText(DocumentText(document));
  ASSERT_TRUE(read) << Describe(read.Error());
  EXPECT_EQ((*read)->ObjectCount(), document.ObjectCount());
}

TEST(DocumentFile, nesting_without_end_is_refused_without_a_crash) {
  EXPECT_FALSE(ReadDocumentText(std::string(1'000'000, '[')));
}

TEST(DocumentFile, an_unknown_value_may_be_as_deep_as_any_text) {
  for (const std::size_t depth : {DeepestJson - 2, DeepestJson - 1, DeepestJson}) {
    const std::string deep = std::string(depth, '[') + std::string(depth, ']');
    // It is in the document, which is the first level.
    const auto read = ReadDocumentText(FileWith("\"new\": " + deep + ", \"objects\": []"));
    ASSERT_EQ(static_cast<bool>(read), depth < DeepestJson) << depth;
    if (!read) {
      EXPECT_EQ(Describe(read.Error()), "the file: values stand more than 1000 deep in values");
    }
  }
}

TEST(DocumentFile, objects_may_come_before_the_keys_that_say_how_to_read_them) {
  const std::string objects = "\"objects\": [" + PlateText(2, 0) + "]";
  const std::string file = With(FileWith("\"end\": 0"), "{", "{" + objects + ",");
  const auto read = ReadDocumentText(file);
  ASSERT_TRUE(read) << Describe(read.Error());
  EXPECT_EQ((*read)->ObjectCount(), 1U);
  const auto later = ReadDocumentText(With(file, "\"version\": 1", "\"version\": 2"));
  ASSERT_FALSE(later);
  EXPECT_EQ(Describe(later.Error()), "/version: is 2, and this program reads version 1");
}

TEST(DocumentFile, of_a_later_version_no_object_is_looked_at) {
  const auto read = ReadDocumentText(
      With(FileWith("\"objects\": [{\"id\": \"new\"}]"), "\"version\": 1", "\"version\": 2"));
  ASSERT_FALSE(read);
  EXPECT_EQ(Describe(read.Error()), "/version: is 2, and this program reads version 1");
}

TEST(DocumentFile, objects_that_are_missing_repeated_or_no_array_are_refused) {
  const struct {
    const char* members;
    const char* told;
  } faults[] = {
      {"\"end\": 0", "the file: lacks \"objects\""},
      {"\"objects\": {}", "/objects: is no array"},
      {"\"objects\": [], \"objects\": []", "the file: has \"objects\" twice"},
      {"\"objects\": [], \"objects\": 1", "/objects: is no array"},
      {"\"objects\": [], \"version\": 2", "/version: is 2, and this program reads version 1"},
      {"\"objects\": [], \"blank\": 0", "/blank: is no object"},
      {"\"objects\": [1]", "/objects/0: is no object"},
  };
  for (const auto& fault : faults) {
    const auto read = ReadDocumentText(FileWith(fault.members));
    ASSERT_FALSE(read) << fault.members;
    EXPECT_EQ(Describe(read.Error()), fault.told) << Describe(read.Error());
  }
}

TEST(DocumentFile, a_syntax_fault_is_reported_with_its_line) {
  const auto read = ReadDocumentText("{\n\"format\": tru}");
  ASSERT_FALSE(read);
  EXPECT_EQ(Describe(read.Error()).find("the file: parse error at line 2, column 14: "), 0U)
      << Describe(read.Error());
}

TEST(DocumentFile, an_object_of_many_members_is_read_as_fast_as_they_are_written) {
  std::string members;
  for (int i = 0; i < 300'000; ++i) members += "\"m" + std::to_string(i) + "\": 0, ";
  EXPECT_TRUE(ReadDocumentText(FileWith(members + "\"objects\": []")));
}

TEST(DocumentFile, a_plate_in_a_group_is_continued_by_a_plate_or_refused) {
  const auto file = [](int continuation) {
    return FileWith(
        "\"objects\": [" +
        ObjectText(2, R"("kind": "group", "members": [)" + PlateText(3, continuation) + "]") +
        ", " + PlateText(4, 0) + ", " + ObjectText(5, "\"kind\": \"group\"") + "]");
  };
  EXPECT_TRUE(ReadDocumentText(file(0)));
  EXPECT_TRUE(ReadDocumentText(file(4)));
  for (const int continuation : {5, 6}) {
    const auto read = ReadDocumentText(file(continuation));
    ASSERT_FALSE(read) << continuation;
    EXPECT_EQ(Describe(read.Error()), "/objects: plate 3 is continued by no plate");
  }
}

TEST(DocumentFile, a_plate_whose_continuation_is_gone_is_saved_without_it) {
  for (const bool forGood : {true, false}) {
    Document document;
    PlateShape plate;
    plate.width = plate.height = 1;
    const ObjectHandle first = document.Create(plate);
    const ObjectHandle next = document.Create(plate);
    document.Insert(first, host::DocumentRoot);
    document.Insert(next, host::DocumentRoot);
    std::get<PlateShape>(document.Edit(first)->shape).continuation = next;
    const auto whole = ReadDocumentText(DocumentText(document));
    ASSERT_TRUE(whole) << Describe(whole.Error());
    EXPECT_EQ(std::get<PlateShape>((*whole)->Find(first)->shape).continuation, next);
    forGood ? document.Destroy(next) : static_cast<void>(document.Remove(next));
    const auto read = ReadDocumentText(DocumentText(document));
    ASSERT_TRUE(read) << Describe(read.Error());
    EXPECT_EQ(std::get<PlateShape>((*read)->Find(first)->shape).continuation, 0U);
  }
}

// As documents were before these members were.
TEST(DocumentFile, a_path_without_a_fill_rule_is_even_odd_and_fills_closed_runs) {
  Document document;
  PathShape path;
  path.subPaths.push_back({{0, 0}, {{false, {{{}, {}, {1, 2}}}}}, true});
  document.Insert(document.Create(path), host::DocumentRoot);
  const std::string text = DocumentText(document);
  EXPECT_EQ(text.find("fillRule"), std::string::npos);
  EXPECT_EQ(text.find("fillsOpen"), std::string::npos);
  const auto read = ReadDocumentText(text);
  ASSERT_TRUE(read);
  const ObjectHandle handle = (*read)->Members(host::DocumentRoot).at(0);
  EXPECT_EQ(std::get<PathShape>((*read)->Find(handle)->shape), path);
}

TEST(DocumentFile, a_fill_rule_of_another_name_is_refused) {
  Document document;
  PathShape path;
  path.fillRule = FillRule::NonZero;
  document.Insert(document.Create(path), host::DocumentRoot);
  std::string text = DocumentText(document);
  text.replace(text.find("nonzero"), 7, "winding");
  const auto read = ReadDocumentText(text);
  ASSERT_FALSE(read);
  EXPECT_EQ(read.Error().where, "/objects/0/fillRule");
}

}  // namespace
}  // namespace rastrel::document
