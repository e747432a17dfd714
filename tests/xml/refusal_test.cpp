// Texts that are no documents, and the message for each.

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "rastrel/platform/os/path.h"
#include "rastrel/xml/limits.h"
#include "rastrel/xml/save.h"
#include "rastrel/xml/stream.h"
#include "tests/support/processor_time.h"
#include "tests/xml/xml_fixture.h"

namespace {

using namespace rastrel::xml;
namespace fs = std::filesystem;

// A sanitizer keeps memory of its own, and more of it than any document takes.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool MemoryCanBeTold = false;
#else
constexpr bool MemoryCanBeTold = true;
#endif

class XmlRefusal : public rastrel::test::XmlTest {
 protected:
  // Highest memory, in MiB, that a process took for a file beyond an idle process.
  double MemoryFor(const std::wstring& path, bool loads) {
    const auto peak = [](const auto& work) {
      const pid_t child = ::fork();
      if (child == 0) ::_exit(work() ? 1 : 0);
      int status = 0;
      rusage used{};
      ::wait4(child, &status, 0, &used);
      return std::pair(static_cast<double>(used.ru_maxrss) / 1024.0, WEXITSTATUS(status));
    };
    const auto idle = peak([] { return false; });
    const auto work = peak([&] { return static_cast<bool>(LoadXmlFile(path)); });
    EXPECT_EQ(loads ? 1 : 0, work.second);
    return MemoryCanBeTold ? work.first - idle.first : 0.0;
  }
  // A hostile document is refused for the given reason, in memory that has nothing to do with the
  // size it wants.
  void ExpectCheapRefusal(const std::string& content, const std::string& reason) {
    const std::wstring path = FileOf(content);
    EXPECT_LT(MemoryFor(path, false), 64.0);
    EXPECT_FALSE(static_cast<bool>(LoadXmlFile(path)));
    const std::string told = Reason();
    EXPECT_NE(std::string::npos, told.find(reason)) << told;
  }
};

std::string Repeat(std::string_view text, std::size_t count) {
  std::string repeated;
  repeated.reserve(text.size() * count);
  for (std::size_t index = 0; index < count; ++index) repeated += text;
  return repeated;
}

TEST_F(XmlRefusal, a_text_that_is_not_well_formed_is_no_document) {
  for (const wchar_t* const text : {L"",
                                    L" ",
                                    L"text",
                                    L"<a>",
                                    L"<a></b>",
                                    L"<a/><b/>",
                                    L"<a/>text",
                                    L"text<a/>",
                                    L"<a",
                                    L"<a/",
                                    L"</a>",
                                    L"<a><b></a></b>",
                                    L"<a n=1/>",
                                    L"<a n/>",
                                    L"<a n='1>",
                                    L"<a n='<'/>",
                                    L"<a 1='2'/>",
                                    L"<1/>",
                                    L"< a/>",
                                    L"<a>&</a>",
                                    L"<a>&amp</a>",
                                    L"<a>&#0;</a>",
                                    L"<a>&#xD800;</a>",
                                    L"<a>&#x110000;</a>",
                                    L"<a>&#xFFFF;</a>",
                                    L"<a>]]></a>",
                                    L"<a><!-- -- --></a>",
                                    L"<a><!-- </a>",
                                    L"<a><![CDATA[ </a>",
                                    L"<a><?x </a>",
                                    L"<a>\x01</a>",
                                    L"<a><![CDATA[\x01]]></a>",
                                    L"<a><![CDATA[\xFFFF]]></a>",
                                    L"<a><!--\x01--></a>",
                                    L"<a>\xFFFE</a>",
                                    L" <?xml version='1.0'?><a/>",
                                    L"<a><?xml version='1.0'?></a>",
                                    L"<?xml?><a/>",
                                    L"<?xml version='1.0' encoding=''?><a/>",
                                    L"<?xml version='1.0' standalone='maybe'?><a/>",
                                    L"<![CDATA[x]]>",
                                    L"<a/>&amp;",
                                    L"<a/>&#32;"})
    EXPECT_NE(ReasonOf(text), "") << rastrel::os::Utf8FromWide(text);
}

TEST_F(XmlRefusal, an_attribute_stands_once) {
  EXPECT_NE(ReasonOf(L"<a n='1' n='2'/>"), "");
  EXPECT_NE(ReasonOf(L"<a xmlns:p='u' xmlns:q='u' p:n='1' q:n='2'/>"), "");
  EXPECT_NE(ReasonOf(L"<a xmlns:p='u' xmlns:p='v'/>"), "");
  EXPECT_EQ(ReasonOf(L"<a xmlns:p='u' xmlns:q='v' p:n='1' q:n='2' n='3'/>"), "");
}

TEST_F(XmlRefusal, an_entity_that_is_not_declared_is_none) {
  EXPECT_NE(ReasonOf(L"<a>&nbsp;</a>"), "");
  EXPECT_NE(ReasonOf(L"<a n='&nbsp;'/>"), "");
  EXPECT_NE(ReasonOf(L"<?xml version='1.0' standalone='no'?><a>&other;</a>"), "");
}

// The platform's parser refuses these as well.
TEST_F(XmlRefusal, a_prefix_has_to_be_declared_where_it_stands) {
  EXPECT_NE(ReasonOf(L"<p:a/>"), "");
  EXPECT_NE(ReasonOf(L"<a p:n='1'/>"), "");
  EXPECT_NE(ReasonOf(L"<a><b xmlns:p='u'/><p:c/></a>"), "");
  EXPECT_NE(ReasonOf(L"<a xmlns:p=''/>"), "");
  EXPECT_NE(ReasonOf(L"<a xmlns:xml='u'/>"), "");
  EXPECT_NE(ReasonOf(L"<a:b:c xmlns:a='u'/>"), "");
  EXPECT_EQ(ReasonOf(L"<a xml:lang='en' xml:space='preserve'/>"), "");
  EXPECT_EQ(ReasonOf(L"<a xmlns='u'><b xmlns=''/></a>"), "");
}

TEST_F(XmlRefusal, any_text_names_a_namespace) {
  for (const wchar_t* const name :
       {L"relative/path", L"two words", L"[x]", L"%", L"u&gt;", L"\u00E9"}) {
    const std::wstring text = name;
    EXPECT_EQ(ReasonOf(L"<p:a xmlns:p='" + text + L"'><p:b/></p:a>"), "");
    EXPECT_EQ(ReasonOf(L"<a xmlns='" + text + L"'><b/></a>"), "");
    // ... and excuses nothing else.
    EXPECT_NE(ReasonOf(L"<p:a xmlns:p='" + text + L"'><q:b/></p:a>"), "");
    EXPECT_NE(ReasonOf(L"<q:a xmlns:p='" + text + L"'/>"), "");
  }
}

TEST_F(XmlRefusal, a_document_type_is_not_accepted_whatever_it_holds) {
  for (const wchar_t* const text :
       {L"<!DOCTYPE a><a/>", L"<!DOCTYPE a []><a/>", L"<!DOCTYPE a SYSTEM 'a.dtd'><a/>",
        L"<!DOCTYPE a PUBLIC '-//X//Y' 'http://127.0.0.1:9/a.dtd'><a/>",
        L"<!DOCTYPE a [<!ENTITY e 'text'>]><a>&e;</a>"}) {
    const std::string reason = ReasonOf(text);
    EXPECT_TRUE(reason.ends_with("a document type is not accepted")) << reason;
  }
  EXPECT_NE(ReasonOf(L"<a><!DOCTYPE a></a>"), "");
  EXPECT_NE(ReasonOf(L"<!doctype a><a/>"), "");
}

TEST_F(XmlRefusal, another_version_of_xml_is_none_of_ours) {
  EXPECT_EQ(ReasonOf(L"<?xml version='1.0'?><a/>"), "");
  for (const wchar_t* const version : {L"1.1", L"2.0", L"1.00", L"1"})
    EXPECT_NE(ReasonOf(L"<?xml version='" + std::wstring(version) + L"'?><a/>"), "");
}

TEST_F(XmlRefusal, half_a_pair_is_no_character) {
  EXPECT_EQ(ReasonOf(std::wstring(L"<a>\nx") + wchar_t(0xD800) + L"</a>"),
            "2:2: the text holds half of a surrogate pair");
}

TEST_F(XmlRefusal, has_the_file_the_place_and_the_reason_and_is_logged) {
  const std::wstring path = FileOf("<a>\n  <b></c>\n</a>");
  const std::size_t mark = m_Library.LogMark();
  EXPECT_FALSE(static_cast<bool>(LoadXmlFile(path)));
  const auto state = TakeXmlFailure();
  ASSERT_FALSE(state);
  EXPECT_EQ(state.Error().where, rastrel::os::Utf8FromWide(path));
  EXPECT_EQ(state.Error().line, 2);
  EXPECT_GT(state.Error().column, 3);
  EXPECT_NE(std::string::npos, state.Error().why.find("b line 2 and c")) << Reason();
  EXPECT_EQ("[XML] " + Describe(state.Error()) + "\r\n", m_Library.LogTextsBehind(mark));
}

TEST_F(XmlRefusal, counts_columns_in_characters) {
  // Of one, two, three and four bytes, in a text, an attribute, a comment and a name.
  for (const char* const character : {"e", "\xC3\xA9", "\xE8\xAA\xB2", "\xF0\xA0\x80\x80"}) {
    const std::string two = std::string(character) + character;
    const std::pair<std::string, int> lines[] = {{"<b>" + two + "</b></c>", 14},
                                                 {"<b n='" + two + "'/></c>", 16},
                                                 {"<!--" + two + "--></c>", 14},
                                                 {"<" + two + " n='1'/></c>", 16}};
    for (const auto& [line, behind] : lines) {
      EXPECT_FALSE(static_cast<bool>(LoadFile("<a>\n" + line)));
      const auto state = TakeXmlFailure();
      ASSERT_FALSE(state);
      EXPECT_EQ(state.Error().line, 2);
      EXPECT_EQ(behind, state.Error().column) << line;
    }
  }
}

TEST_F(XmlRefusal, is_reported_once_and_not_after_a_success) {
  EXPECT_FALSE(static_cast<bool>(LoadXmlString(L"<a>")));
  EXPECT_TRUE(static_cast<bool>(LoadXmlString(L"<a/>")));
  EXPECT_FALSE(TakeXmlFailure());
  EXPECT_TRUE(TakeXmlFailure());
}

TEST_F(XmlRefusal, is_described_without_unknown_parts) {
  EXPECT_EQ(rastrel::Describe({.where = "a.xml", .why = "why", .line = 3, .column = 4}),
            "a.xml:3:4: why");
  EXPECT_EQ(rastrel::Describe({.where = "a.xml", .why = "why"}), "a.xml: why");
  EXPECT_EQ(rastrel::Describe({.why = "why", .line = 3, .column = 4}), "3:4: why");
  EXPECT_EQ(rastrel::Describe({.why = "why"}), "why");
}

TEST_F(XmlRefusal, a_file_that_can_not_be_read_says_so) {
  EXPECT_FALSE(static_cast<bool>(LoadXmlFile(m_Files.Wide() + L"/absent.xml")));
  EXPECT_NE(std::string::npos, Reason().find("No such file"));
  EXPECT_FALSE(static_cast<bool>(LoadXmlFile(m_Files.Wide())));
  EXPECT_NE(Reason(), "");
  EXPECT_FALSE(static_cast<bool>(LoadXmlFile(L"")));
  EXPECT_NE(Reason(), "");
  EXPECT_FALSE(static_cast<bool>(LoadXmlFile(FileOf(""))));
  EXPECT_TRUE(Reason().ends_with("1:1: the document is empty"));
}

TEST_F(XmlRefusal, a_text_without_markup_says_so) {
  for (const char* const content : {"%PDF-1.7\n", "<!-- c -->\nplates"}) {
    EXPECT_FALSE(static_cast<bool>(LoadXmlFile(FileOf(content))));
    EXPECT_TRUE(Reason().ends_with("no tag stands where the document should begin")) << content;
  }
}

TEST_F(XmlRefusal, a_billion_laughs_stay_unheard) {
  std::string content = "<!DOCTYPE a [<!ENTITY e0 \"ha\">";
  for (int level = 1; level < 30; ++level)
    content += "<!ENTITY e" + std::to_string(level) + " \"" +
               Repeat("&e" + std::to_string(level - 1) + ";", 10) + "\">";
  ExpectCheapRefusal(content + "]><a>&e29;</a>", "a document type is not accepted");
}

TEST_F(XmlRefusal, an_entity_used_a_million_times_is_not_expanded) {
  ExpectCheapRefusal("<!DOCTYPE a [<!ENTITY e \"" + std::string(60000, 'x') + "\">]><a>" +
                         Repeat("&e;", 1000000) + "</a>",
                     "a document type is not accepted");
}

TEST_F(XmlRefusal, nothing_outside_is_read) {
  m_Files.Write("secret", "secret");
  m_Files.Write("a.dtd", "<!ENTITY e 'secret'>");
  const std::string file = "file://" + m_Files.Path("secret");
  ExpectCheapRefusal("<!DOCTYPE a [<!ENTITY e SYSTEM '" + file + "'>]><a>&e;</a>",
                     "a document type is not accepted");
  ExpectCheapRefusal(
      "<!DOCTYPE a [<!ENTITY % e SYSTEM 'file://" + m_Files.Path("a.dtd") + "'>%e;]><a>&e;</a>",
      "a document type is not accepted");
  // An inclusion is an element like any other.
  std::string address;
  AppendXmlText(address, file, true);
  const XmlNode root = LoadFile("<a xmlns:x='http://www.w3.org/2001/XInclude'><x:include href=\"" +
                                address + "\" parse='text'/></a>");
  EXPECT_EQ(Text(root), L"(none)");
  EXPECT_TRUE(static_cast<bool>(FirstChildNamed(root, L"include")));
}

TEST_F(XmlRefusal, a_million_levels_are_too_deep) {
  ExpectCheapRefusal(Repeat("<a>", 1000000) + Repeat("</a>", 1000000), "deep");
}

TEST_F(XmlRefusal, depth_has_its_limit_at_one_number) {
  const auto nested = [](int depth) {
    const auto count = static_cast<std::size_t>(depth);
    return Repeat("<a>", count) + Repeat("</a>", count);
  };
  EXPECT_EQ(ReasonOfFile(nested(limits::Depth - 1)), "");
  EXPECT_EQ(ReasonOfFile(nested(limits::Depth)), "");
  EXPECT_NE(ReasonOfFile(nested(limits::Depth + 1)), "");
}

std::string Attributes(std::size_t count) {
  std::string text = "<a";
  for (std::size_t index = 0; index < count; ++index) text += " n" + std::to_string(index) + "='1'";
  return text + "/>";
}

TEST_F(XmlRefusal, a_million_attributes_are_too_many) {
  ExpectCheapRefusal(Attributes(1000000), "attributes");
}

TEST_F(XmlRefusal, attributes_have_their_limit_at_one_number) {
  EXPECT_EQ(ReasonOfFile(Attributes(limits::Attributes - 1)), "");
  EXPECT_EQ(ReasonOfFile(Attributes(limits::Attributes)), "");
  EXPECT_NE(ReasonOfFile(Attributes(limits::Attributes + 1)), "");
  // With declarations among them.
  std::string mixed = Attributes(limits::Attributes - 1);
  EXPECT_EQ(ReasonOfFile(mixed.insert(2, " xmlns:p='u'")), "");
  EXPECT_NE(ReasonOfFile(mixed.insert(2, " xmlns:q='u'")), "");
}

TEST_F(XmlRefusal, namespaces_have_their_limit_at_one_number) {
  const auto nested = [](std::size_t count) {
    std::string text;
    for (std::size_t index = 0; index < count; ++index) {
      if (index % 2 == 0) text += "<a";
      text += " xmlns:p" + std::to_string(index) + "='u'";
      if (index % 2 == 1 || index + 1 == count) text += ">";
    }
    return text + Repeat("</a>", (count + 1) / 2);
  };
  EXPECT_EQ(ReasonOfFile(nested(limits::Namespaces - 1)), "");
  EXPECT_EQ(ReasonOfFile(nested(limits::Namespaces)), "");
  EXPECT_NE(ReasonOfFile(nested(limits::Namespaces + 1)), "");
}

TEST_F(XmlRefusal, names_have_their_limit_at_one_number) {
  const auto many = [](std::size_t count) {
    std::string text = "<a>";
    for (std::size_t index = 1; index < count; ++index) text += "<n" + std::to_string(index) + "/>";
    return text + "</a>";
  };
  EXPECT_EQ(ReasonOfFile(many(limits::Names - 1)), "");
  EXPECT_EQ(ReasonOfFile(many(limits::Names)), "");
  EXPECT_NE(ReasonOfFile(many(limits::Names + 1)), "");
}

TEST_F(XmlRefusal, an_attribute_of_ten_megabytes_is_too_long) {
  ExpectCheapRefusal("<a n='" + std::string(10000000, 'x') + "'/>", "has more than 4194304 bytes");
  ExpectCheapRefusal("<a><!--" + std::string(10000000, 'x') + "--></a>", "more than 4194304 bytes");
  ExpectCheapRefusal("<a><![CDATA[" + std::string(10000000, 'x') + "]]></a>",
                     "more than 4194304 bytes");
}

TEST_F(XmlRefusal, markup_has_its_limit_to_within_a_piece_of_reading) {
  const std::size_t piece = std::size_t{64} << 10;
  const auto tag = [](std::size_t length) {
    return "<a n='" + std::string(length - 9, 'x') + "'/>";
  };
  EXPECT_EQ(ReasonOfFile(tag(limits::MarkupBytes)), "");
  EXPECT_NE(ReasonOfFile(tag(limits::MarkupBytes + 2 * piece)), "");
}

TEST_F(XmlRefusal, a_text_is_as_long_as_memory_allows) {
  const std::wstring path = FileOf("<a>" + std::string(20000000, 'x') + "</a>");
  EXPECT_LT(MemoryFor(path, true), 120.0);
  const XmlNode root = LoadXmlFile(path);
  std::wstring text;
  EXPECT_TRUE(NodeText(root, text));
  EXPECT_EQ(text.size(), 20000000U);
}

TEST_F(XmlRefusal, a_document_that_takes_too_much_memory_is_refused) {
  const std::wstring path = FileOf("<a>" + Repeat("<b/>", 5000000) + "</a>");
  EXPECT_LT(MemoryFor(path, false), 160.0);
  EXPECT_FALSE(static_cast<bool>(LoadXmlFile(path)));
  EXPECT_NE(std::string::npos, Reason().find("takes more than 134217728 bytes of memory"));
}

TEST_F(XmlRefusal, two_documents_of_the_hostile_set_are_sound_and_the_others_are_not) {
  const std::string told = rastrel::os::EnvironmentValue("RASTREL_TEST_CORPUS");
  const fs::path corpus =
      told.empty() ? fs::path(RASTREL_SOURCE_DIR).parent_path() / "shared/corpus" : fs::path(told);
  const fs::path folder = corpus / "xml-hostile";
  if (!fs::is_directory(folder)) GTEST_SKIP() << "no corpus beside the sources";
  std::vector<std::string> sound;
  for (const auto& entry : fs::directory_iterator(folder)) {
    const std::wstring path = rastrel::os::FromNative(entry.path().string());
    const double before = rastrel::test::ProcessorSeconds();
    const XmlNode root = LoadXmlFile(path);
    EXPECT_LT(rastrel::test::ProcessorSeconds() - before, 1.0) << entry.path();
    EXPECT_LT(MemoryFor(path, static_cast<bool>(root)), 64.0) << entry.path();
    if (root) sound.push_back(entry.path().filename());
    const std::string reason = root ? "sound" : Reason();
    EXPECT_GT(reason.size(), 4U) << entry.path();
  }
  std::sort(sound.begin(), sound.end());
  EXPECT_EQ(sound, (std::vector<std::string>{"libxml2-iso-8859-5.xml", "libxml2-utf16lebom.xml"}));
}

}  // namespace
