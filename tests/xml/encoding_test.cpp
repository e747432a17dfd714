// Documents in other encodings than UTF-8, and documents that end too early.

#include <array>
#include <utility>

#include "rastrel/xml/stream.h"
#include "tests/support/memory_file.h"
#include "tests/xml/xml_fixture.h"

namespace {

using rastrel::os::Utf16FromWide;
using rastrel::os::Utf8FromWide;

class XmlEncodingTest : public rastrel::test::XmlTest {};

enum class Order { Little, Big };

std::string Utf16(std::wstring_view text, Order order, bool mark = true) {
  std::string bytes;
  const auto append = [&](std::uint16_t unit) {
    const auto low = static_cast<char>(unit & 0xFF);
    const auto high = static_cast<char>(unit >> 8);
    bytes += order == Order::Little ? low : high;
    bytes += order == Order::Little ? high : low;
  };
  if (mark) append(0xFEFF);
  for (const std::uint16_t unit : Utf16FromWide(text)) append(unit);
  return bytes;
}

const std::wstring Mixed = L"<a n='\u00E9'>Gr\u00FC\u00DFe \u20AC \u0416 \U0001F600</a>";

TEST_F(XmlEncodingTest, utf_8_with_and_without_a_mark) {
  const std::string bytes = Utf8FromWide(Mixed);
  for (const std::string& content :
       {bytes, "\xEF\xBB\xBF" + bytes, "<?xml version='1.0' encoding='utf-8'?>" + bytes,
        "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?>" + bytes}) {
    const XmlNode root = LoadFile(content);
    EXPECT_EQ(Text(root), L"Gr\u00FC\u00DFe \u20AC \u0416 \U0001F600");
    EXPECT_EQ(Attribute(root, L"n"), L"\u00E9");
  }
}

TEST_F(XmlEncodingTest, utf_16_in_both_orders) {
  const std::wstring declared = L"<?xml version='1.0' encoding='UTF-16'?>";
  for (const Order order : {Order::Little, Order::Big})
    for (const std::string& content :
         {Utf16(Mixed, order), Utf16(declared + Mixed, order),
          Utf16(declared + Mixed, order, false), Utf16(L"<?xml version='1.0'?>" + Mixed, order)}) {
      const XmlNode root = LoadFile(content);
      EXPECT_EQ(Text(root), L"Gr\u00FC\u00DFe \u20AC \u0416 \U0001F600") << Reason();
      EXPECT_EQ(Attribute(root, L"n"), L"\u00E9");
    }
}

TEST_F(XmlEncodingTest, iso_and_windows_ones_by_their_names) {
  struct Sample {
    const char* name;
    const char* bytes;
    const wchar_t* text;
  };
  // By the tables of the Unicode Consortium.
  constexpr std::array samples{Sample{"ISO-8859-1", "\xE9\xFC\xA4", L"\u00E9\u00FC\u00A4"},
                               Sample{"ISO-8859-2", "\xB3\xE8", L"\u0142\u010D"},
                               Sample{"ISO-8859-5", "\xD0\xF0", L"\u0430\u2116"},
                               Sample{"ISO-8859-7", "\xE1\xF9", L"\u03B1\u03C9"},
                               Sample{"ISO-8859-9", "\xFE\xF0", L"\u015F\u011F"},
                               Sample{"ISO-8859-15", "\xA4\xBD", L"\u20AC\u0153"},
                               Sample{"windows-1250", "\x9C\x8A\xE8", L"\u015B\u0160\u010D"},
                               Sample{"windows-1251", "\xC6\xE6\x96", L"\u0416\u0436\u2013"},
                               Sample{"windows-1252", "\x80\x93\xE9", L"\u20AC\u201C\u00E9"},
                               Sample{"windows-1253", "\xE1\xF9", L"\u03B1\u03C9"},
                               Sample{"windows-1254", "\xFE\xF0", L"\u015F\u011F"},
                               Sample{"windows-1257", "\xC0\xFE", L"\u0104\u017E"},
                               Sample{"US-ASCII", "plain", L"plain"},
                               Sample{"Shift_JIS", "\x93\xFA\x96\x7B", L"\u65E5\u672C"}};
  for (const Sample& sample : samples)
    for (const std::size_t padding : {std::size_t{0}, std::size_t{70000}, std::size_t{300000}}) {
      std::string content = "<?xml version=\"1.0\" encoding=\"" + std::string(sample.name) + "\"?>";
      content += "<a n='" + std::string(sample.bytes) + "'><!--" + std::string(padding, 'x') +
                 "--><b>" + sample.bytes + "</b></a>";
      const XmlNode root = LoadFile(content);
      EXPECT_EQ(sample.text, Text(root)) << sample.name << ' ' << padding << ' ' << Reason();
      EXPECT_EQ(sample.text, Attribute(root, L"n")) << sample.name;
    }
}

TEST_F(XmlEncodingTest, large_documents_of_two_bytes_a_character) {
  std::wstring body;
  for (int index = 0; index < 60000; ++index) body += L"<b>\u0416\U0001F600</b>";
  for (const Order order : {Order::Little, Order::Big}) {
    const XmlNode root = LoadFile(Utf16(L"<a>" + body + L"</a>", order));
    int count = 0;
    EXPECT_FALSE(NodeChildren(root, count).empty()) << Reason();
    EXPECT_EQ(count, 60000);
    EXPECT_EQ(Text(root).size(), 120000U);
  }
}

TEST_F(XmlEncodingTest, a_declaration_that_does_not_hold_is_refused) {
  const std::string latin = "<?xml version='1.0' encoding='ISO-8859-1'?><a/>";
  EXPECT_EQ(ReasonOfFile(latin), "");
  EXPECT_NE(ReasonOfFile("\xEF\xBB\xBF" + latin), "");
  EXPECT_NE(ReasonOfFile("<?xml version='1.0' encoding='UTF-16'?><a/>"), "");
  EXPECT_NE(ReasonOfFile("<?xml version='1.0' encoding='no-such'?><a/>"), "");
  EXPECT_NE(ReasonOfFile("<?xml version='1.0' encoding='-'?><a/>"), "");
  for (const Order order : {Order::Little, Order::Big}) {
    EXPECT_NE(ReasonOfFile(Utf16(L"<?xml version='1.0' encoding='UTF-8'?><a/>", order)), "");
    EXPECT_NE(ReasonOfFile(Utf16(L"<?xml version='1.0' encoding='ISO-8859-1'?><a/>", order)), "");
  }
}

TEST_F(XmlEncodingTest, other_spellings_of_unicode_encodings_are_refused) {
  const auto reason = [this](const std::string& name) {
    return ReasonOfFile("<?xml version='1.0' encoding='" + name + "'?><a>\xC3\xA9</a>");
  };
  for (const std::string name : {"UTF_8", "UTF-8-", "utf..8", "UTF8."})
    EXPECT_TRUE(reason(name).ends_with("\"" + name + "\" is no name of an encoding")) << name;
  // The parser may know an encoding of these names from before.
  for (const std::string name : {"UTF-16-", "UTF_16", "u-tf-16le"})
    EXPECT_NE(reason(name), "") << name;
  for (const std::string name : {"UTF-8", "utf-8", "UTF8", "Utf-8"})
    EXPECT_EQ(reason(name), "") << name;
}

TEST_F(XmlEncodingTest, a_text_in_memory_keeps_its_encoding_whatever_it_declares) {
  for (const wchar_t* const name : {L"UTF-8", L"UTF-16", L"ISO-8859-1", L"windows-1252"})
    EXPECT_EQ(Text(Load(L"<?xml version='1.0' encoding='" + std::wstring(name) +
                        L"'?><a>\u00E9\u20AC</a>")),
              L"\u00E9\u20AC");
}

TEST_F(XmlEncodingTest, bytes_that_are_no_characters_are_refused_anywhere) {
  const std::array<std::string, 7> wrong{
      "\xFF", "\xC0\xAF", "\xE9", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\x80", "\xE2\x82"};
  for (const std::string& bytes : wrong)
    for (const std::size_t padding : {std::size_t{0}, std::size_t{65530}, std::size_t{100000}}) {
      const std::string blanks(padding, ' ');
      EXPECT_NE(ReasonOfFile("<a>" + blanks + bytes + "</a>"), "");
      EXPECT_NE(ReasonOfFile("<a n='" + bytes + "'>" + blanks + "</a>"), "");
      EXPECT_NE(ReasonOfFile("<a><!--" + blanks + bytes + "--></a>"), "");
      EXPECT_NE(ReasonOfFile("<a><![CDATA[" + blanks + bytes + "]]></a>"), "");
      EXPECT_NE(ReasonOfFile("<a><?x " + blanks + bytes + "?></a>"), "");
      EXPECT_NE(ReasonOfFile("<a>" + blanks + "</a><!--" + bytes + "-->"), "");
      EXPECT_NE(ReasonOfFile("<a>" + blanks + "<b" + bytes + "/></a>"), "");
    }
  for (const Order order : {Order::Little, Order::Big}) {
    EXPECT_NE(ReasonOfFile(Utf16(std::wstring(L"<a>") + wchar_t(0xD800) + L"</a>", order)), "");
    EXPECT_NE(ReasonOfFile(Utf16(std::wstring(L"<a>") + wchar_t(0xDC00) + L"</a>", order)), "");
    EXPECT_NE(ReasonOfFile(Utf16(L"<a/>", order) + "\n"), "");
    EXPECT_NE(ReasonOfFile(Utf16(L"<a/>\n", order) + "x"), "");
  }
  EXPECT_NE(ReasonOfFile("<?xml version='1.0' encoding='windows-1252'?><a>\x81</a>"), "");
  EXPECT_NE(ReasonOfFile("<?xml version='1.0' encoding='US-ASCII'?><a>\xE9</a>"), "");
}

// The byte is at the fifth character of the third line.
TEST_F(XmlEncodingTest, a_bad_byte_is_named_in_one_sentence_at_its_place) {
  struct Sample {
    const char* encoding;
    std::string bytes;
    const char* byte;
  };
  // By the tables of the Unicode Consortium: these bytes have no character.
  const std::array samples{
      Sample{"US-ASCII", "\xE9", "0xE9"},     Sample{"us-ascii", "\x80", "0x80"},
      Sample{"windows-1252", "\x81", "0x81"}, Sample{"ISO-8859-3", "\xA5", "0xA5"},
      Sample{"windows-1253", "\xAA", "0xAA"}, Sample{"Shift_JIS", "\xFD", "0xFD"},
      Sample{"UTF-8", "\xFF", "0xFF"},        Sample{"UTF-8", "\xC3(", "0xC3"}};
  for (const Sample& sample : samples)
    for (const std::size_t padding : {std::size_t{0}, std::size_t{65530}, std::size_t{300000}})
      for (const auto& [before, after] : {std::pair("<b>x", "</b>"), std::pair("<!--", "-->"),
                                          std::pair("<b c", "/>"), std::pair("<?p ", "?>")}) {
        const std::string declaration =
            "<?xml version='1.0' encoding='" + std::string(sample.encoding) + "'?>";
        const std::string reason =
            ReasonOfFile(declaration + "\n<a>" + std::string(padding, 'p') + "\n" + before +
                         sample.bytes + "z" + after + "</a>");
        EXPECT_TRUE(reason.ends_with(":3:5: the byte " + std::string(sample.byte) +
                                     " begins no character of " + sample.encoding))
            << sample.encoding << ' ' << padding << ' ' << before << ": " << reason;
      }
}

TEST_F(XmlEncodingTest, a_bad_byte_in_a_section_is_named_at_its_place) {
  EXPECT_TRUE(ReasonOfFile("<a>\n<![CDATA[x\n\u00E9y\xFFz]]></a>")
                  .ends_with(":3:3: the byte 0xFF begins no character of UTF-8"));
  EXPECT_TRUE(ReasonOfFile("<a>\n<![CDATA[x\xFFz]]></a>")
                  .ends_with(":2:11: the byte 0xFF begins no character of UTF-8"));
  // Sections are read in pieces.
  for (const std::size_t lines : {std::size_t{200}, std::size_t{60000}}) {
    std::string section = "x";
    for (std::size_t line = 0; line < lines; ++line) section += "\u00E9\n";
    EXPECT_TRUE(ReasonOfFile("<a>\n<b/><![CDATA[" + section + "\u00E9b\xFFz]]></a>")
                    .ends_with(":" + std::to_string(2 + lines) +
                               ":3: the byte 0xFF begins no character of UTF-8"))
        << Reason();
  }
}

// U+FFFE is UTF-8, and no character of XML.
TEST_F(XmlEncodingTest, a_byte_that_xml_does_not_allow_in_a_section_is_named) {
  using namespace std::string_literals;
  EXPECT_TRUE(ReasonOfFile("<a><![CDATA[xy\0]]></a>"s)
                  .ends_with(":1:15: the byte 0x00 begins no character of XML"))
      << Reason();
  EXPECT_TRUE(ReasonOfFile("<a><![CDATA[\uFFFE]]></a>")
                  .ends_with(":1:13: the byte 0xEF begins no character of XML"));
}

TEST_F(XmlEncodingTest, a_fault_before_a_bad_byte_is_the_one_that_counts) {
  const std::string reason =
      ReasonOfFile("<?xml version='1.0' encoding='US-ASCII'?>\n<a></b>\xE9</a>");
  EXPECT_EQ(reason.find("0xE9"), reason.npos) << reason;
  EXPECT_NE(reason.find(":2:"), reason.npos) << reason;
}

// Enters the document element and takes all else as nodes.
class Listener : public rastrel::xml::XmlStreamHandler {
 public:
  rastrel::xml::StreamChoice Begin(std::wstring_view, const XmlNode&, int depth) override {
    return depth == 0 ? rastrel::xml::StreamChoice::Enter : rastrel::xml::StreamChoice::Node;
  }
  void Node(const XmlNode&) override {}
  void End(std::wstring_view, int) override {}
};

// A text that is cut off within the document element, or within anything after it, is no document.
TEST_F(XmlEncodingTest, a_document_cut_anywhere_is_refused_or_whole) {
  const std::wstring document =
      L"<?xml version='1.0'?><!--\u00E9--><p:a xmlns:p='u' n='\u20AC'>x&amp;<b/>"
      L"<![CDATA[\U0001F600]]><?i d?><c>y</c></p:a>";
  const rastrel::test::MemoryFile file;
  for (const std::string& whole : {Utf8FromWide(document), "\xEF\xBB\xBF" + Utf8FromWide(document),
                                   Utf16(document, Order::Little), Utf16(document, Order::Big),
                                   Utf16(document, Order::Little, false)}) {
    for (std::size_t length = 0; length <= whole.size(); ++length) {
      file.Write(std::string_view(whole).substr(0, length));
      const bool loads = static_cast<bool>(LoadXmlFile(file.Wide()));
      Listener listener;
      const bool streams = rastrel::xml::StreamXmlFile(file.Wide(), listener);
      EXPECT_EQ(length == whole.size(), loads) << length << " of " << whole.size();
      EXPECT_EQ(loads, streams) << length;
      EXPECT_EQ(loads, Reason().empty()) << length;
    }
  }
}

}  // namespace
