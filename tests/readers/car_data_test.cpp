#include "rastrel/readers/car_data.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>

#include "rastrel/readers/record_budget.h"
#include "tests/readers/written_file.h"

namespace {

using rastrel::test::Many;
using rastrel::test::WrittenFile;

class OpenCarData : public CXMLCarDataCut {
 public:
  using CXMLCarDataCut::CXMLCarDataCut;
  using CXMLCarDataCut::ParseFile;
  [[nodiscard]] bool Valid() const { return m_bValid; }
};

std::string Narrow(const wchar_t* text) {
  const std::wstring wide = text;
  return {wide.begin(), wide.end()};
}

// "name(child child)" of a folder and "name:url:extension" of a file.
std::string Text(const CFolderInfo& node) {
  EXPECT_EQ(node.m_Reserved, 0);
  const std::string name = Narrow(node.m_Name);
  if (node.m_Folder == 0) {
    EXPECT_TRUE(node.m_Children.empty());
    return name + ":" + Narrow(node.m_Url) + ":" + Narrow(node.m_Extension);
  }
  EXPECT_EQ(node.m_Folder, 1);
  EXPECT_STREQ(node.m_Url, L"");
  EXPECT_STREQ(node.m_Extension, L"");
  std::string text = name + "(";
  for (const auto& child : node.m_Children) text += (text.back() == '(' ? "" : " ") + Text(*child);
  return text + ")";
}

std::string Text(CXMLCarDataCut& cars) {
  std::string text;
  for (const auto* folder = cars.GetFirstFolder(); folder != nullptr; folder = cars.GetNextFolder())
    text += (text.empty() ? "" : " ") + Text(*folder);
  return text;
}

OpenCarData Read(const std::string& content, const std::string& name = "file.xml") {
  const WrittenFile file(content, name);
  return OpenCarData(file.Path().c_str());
}

// The tree of a library, or "refused".
std::string TreeOf(const std::string& inner) {
  OpenCarData cars = Read("<LIBRARY>" + inner + "</LIBRARY>");
  return cars.Valid() ? Text(cars) : "refused";
}

const std::string TwoFolders = "<LIBRARY><FOLDER name='a'/><FOLDER name='b'/></LIBRARY>";

TEST(CarData, a_null_empty_or_wrong_path_gives_no_folders) {
  for (const wchar_t* const path :
       {static_cast<const wchar_t*>(nullptr), L"", L"/no/such/file.xml", L"/tmp"}) {
    OpenCarData cars(path);
    EXPECT_FALSE(cars.Valid());
    EXPECT_EQ(cars.GetFirstFolder(), nullptr);
  }
}

TEST(CarData, the_extension_is_xml_in_any_case_with_blanks_around_it) {
  for (const char* const name : {"a.xml", "a.XML", "a.xml ", "a. Xml"})
    EXPECT_TRUE(Read(TwoFolders, name).Valid()) << name;
  for (const char* const name : {"a.xm", "a", "xml", "a.xml.txt"})
    EXPECT_FALSE(Read(TwoFolders, name).Valid()) << name;
}

TEST(CarData, another_root_is_refused) {
  EXPECT_FALSE(Read("<FOLDER/>").Valid());
  EXPECT_FALSE(Read("<Library/>").Valid());
}

TEST(CarData, an_empty_library_is_valid_and_has_no_folders) {
  OpenCarData cars = Read("<LIBRARY/>");
  EXPECT_TRUE(cars.Valid());
  EXPECT_EQ(cars.GetFirstFolder(), nullptr);
  EXPECT_EQ(cars.GetNextFolder(), nullptr);
}

TEST(CarData, folders_come_before_files_whatever_their_order_in_the_file) {
  EXPECT_EQ(TreeOf("<FOLDER name='top'><FILE name='1' url='u' extension='e'/><FOLDERS name='x'>"
                   "<FILE name='3'/><FOLDERS name='z'/></FOLDERS><FILE name='2'/>"
                   "<FOLDERS name='y'/></FOLDER>"),
            "top(x(z() 3::) y() 1:u:e 2::)");
}

TEST(CarData, the_top_level_is_singular_and_deeper_levels_are_plural) {
  EXPECT_EQ(TreeOf("<FOLDERS name='no'/><FILE name='no'/><FOLDER name='a'><FOLDER name='no'>"
                   "<FOLDERS name='no'/></FOLDER><FOLDERS name='b'><FOLDER name='no'/></FOLDERS>"
                   "</FOLDER>"),
            "a(b())");
}

TEST(CarData, missing_attributes_are_empty_and_a_folder_has_a_name_only) {
  EXPECT_EQ(TreeOf("<FOLDER url='u' extension='e'><FILE/><FILE Name='n' url=''/></FOLDER>"),
            "(:: ::)");
}

TEST(CarData, children_of_a_file_and_unknown_elements_are_passed_over) {
  EXPECT_EQ(TreeOf("text<!-- c --><other/><FOLDER name='a'>text<FILE name='f'><FILE name='no'/>"
                   "<FOLDERS name='no'/></FILE><file name='no'/></FOLDER>"),
            "a(f::)");
}

TEST(CarData, the_cursor_walks_the_top_level_and_stays_at_its_end) {
  OpenCarData cars = Read(TwoFolders);
  EXPECT_EQ(cars.GetNextFolder(), nullptr);
  EXPECT_STREQ(cars.GetFirstFolder()->m_Name, L"a");
  EXPECT_STREQ(cars.GetNextFolder()->m_Name, L"b");
  for (int call = 0; call < 3; ++call) EXPECT_EQ(cars.GetNextFolder(), nullptr);
  EXPECT_STREQ(cars.GetFirstFolder()->m_Name, L"a");
}

TEST(CarData, a_value_of_255_characters_fits_and_one_more_refuses_the_file) {
  const auto file = [](const std::string& attribute, std::size_t count) {
    return "<LIBRARY><FOLDER name='a'/><FOLDER><FOLDERS><FILE " + attribute + "='" + Many(count) +
           "'/></FOLDERS></FOLDER></LIBRARY>";
  };
  for (const std::string attribute : {"name", "url", "extension"}) {
    EXPECT_TRUE(Read(file(attribute, 255)).Valid()) << attribute;
    for (const std::size_t count : {256, 257, 70000}) {
      const WrittenFile written(file(attribute, count));
      OpenCarData cars(written.Path().c_str());
      EXPECT_FALSE(cars.Valid()) << attribute << count;
      EXPECT_EQ(cars.GetFirstFolder(), nullptr) << attribute << count;
      EXPECT_NE(written.LogTexts().find(attribute), std::string::npos) << written.LogTexts();
    }
  }
  for (const std::string folder : {"FOLDER", "FOLDERS"}) {
    const auto named = [&](std::size_t count) {
      const std::string node = "<" + folder + " name='" + Many(count) + "'/>";
      return Read("<LIBRARY>" + (folder == "FOLDERS" ? "<FOLDER>" + node + "</FOLDER>" : node) +
                  "</LIBRARY>");
    };
    EXPECT_TRUE(named(255).Valid()) << folder;
    EXPECT_FALSE(named(256).Valid()) << folder;
  }
}

TEST(CarData, nodes_up_to_the_limit_are_read_and_one_more_refuses_the_file) {
  const std::size_t count = rastrel::readers::RecordBytesLimit / sizeof(CFolderInfo);
  std::string files;
  for (std::size_t index = 2; index < count; ++index) files += "<FILE/>";
  for (const int more : {0, 1, 2}) {
    const WrittenFile file("<LIBRARY><FOLDER>" + files + "</FOLDER></LIBRARY>");
    OpenCarData cars(file.Path().c_str());
    EXPECT_EQ(cars.Valid(), more < 2) << more;
    EXPECT_EQ(cars.GetFirstFolder() != nullptr, more < 2);
    EXPECT_EQ(file.LogTexts().find("128 MiB") != std::string::npos, more == 2);
    files += "<FILE/>";
  }
}

TEST(CarData, a_value_that_nothing_reads_may_be_longer) {
  EXPECT_EQ(TreeOf("<FOLDER url='" + Many(256) + "'/><FOLDERS name='" + Many(256) + "'/>"), "()");
}

TEST(CarData, a_copy_has_the_cursor_and_the_same_nodes_and_they_outlive_either) {
  std::optional<OpenCarData> cars = Read(TwoFolders);
  CFolderInfo* const first = cars->GetFirstFolder();
  OpenCarData copy = *cars;
  EXPECT_TRUE(copy.Valid());
  EXPECT_EQ(copy.GetNextFolder(), cars->GetNextFolder());
  EXPECT_EQ(copy.GetFirstFolder(), first);
  OpenCarData assigned(L"/no/such/file.xml");
  assigned = copy;
  cars.reset();
  copy.ClearFolders();
  EXPECT_EQ(copy.GetFirstFolder(), nullptr);
  EXPECT_EQ(Text(assigned), "a() b()");
}

TEST(CarData, clearing_the_folders_below_a_node_leaves_the_node) {
  OpenCarData cars = Read("<LIBRARY><FOLDER name='a'><FOLDERS name='b'/></FOLDER></LIBRARY>");
  CFolderInfo* const folder = cars.GetFirstFolder();
  folder->ClearSubFolders();
  folder->ClearSubFolders();
  EXPECT_EQ(Text(*folder), "a()");
}

TEST(CarData, a_deep_tree_that_a_host_makes_is_freed_without_a_deep_stack) {
  auto top = std::make_unique<CFolderInfo>();
  CFolderInfo* deepest = top.get();
  for (int level = 0; level < 20000; ++level) {
    deepest->m_Children.push_back(std::make_unique<CFolderInfo>());
    deepest = deepest->m_Children.back().get();
  }
  top.reset();
}

TEST(CarData, a_file_cut_at_any_byte_has_no_folders) {
  const std::string whole =
      "<LIBRARY><FOLDER name='a&amp;b'><FOLDERS name='c'/><FILE url='u'/></FOLDER></LIBRARY>";
  const WrittenFile file("");
  for (std::size_t length = 0; length < whole.size(); ++length) {
    file.Write(std::string_view(whole).substr(0, length));
    OpenCarData cars(file.Path().c_str());
    ASSERT_FALSE(cars.Valid()) << length;
    ASSERT_EQ(cars.GetFirstFolder(), nullptr) << length;
  }
  file.Write(whole);
  EXPECT_TRUE(OpenCarData(file.Path().c_str()).Valid());
}

TEST(CarData, a_second_file_is_appended_and_one_that_is_refused_adds_nothing) {
  OpenCarData cars = Read(TwoFolders);
  const WrittenFile more("<LIBRARY><FOLDER name='c'/></LIBRARY>");
  EXPECT_TRUE(cars.ParseFile(more.Path().c_str()));
  more.Write("<LIBRARY><FOLDER/><FOLDER name='" + Many(256) + "'/></LIBRARY>");
  EXPECT_FALSE(cars.ParseFile(more.Path().c_str()));
  EXPECT_EQ(Text(cars), "a() b() c()");
}

// A random library and, made beside it, the text that it must become.
struct RandomLibrary {
  explicit RandomLibrary(unsigned seed) : random(seed) {
    for (int count = Up(4); count > 0; --count) {
      const bool known = Up(3) != 0;
      const std::string name = "t" + std::to_string(++names);
      const std::string tree = Node(known ? "FOLDER" : "FOLDERS", name, 0);
      if (known) text += (text.empty() ? "" : " ") + tree;
    }
  }

  int Up(int end) { return static_cast<int>(random() % static_cast<unsigned>(end)); }

  std::string Node(const std::string& element, const std::string& name, int depth) {
    xml += "<" + element + " name='" + name + "'>";
    std::string folders;
    std::string files;
    for (int count = depth < 5 ? Up(5) : 0; count > 0; --count) {
      const std::string child = "n" + std::to_string(++names);
      const int kind = Up(4);
      if (kind == 0) {
        (void)Node("FOLDER", child, depth + 1);
      } else if (kind == 1) {
        xml += "<FILE url='u" + child + "' name='" + child + "'/>";
        files += " " + child + ":u" + child + ":";
      } else {
        folders += " " + Node("FOLDERS", child, depth + 1);
      }
    }
    xml += "</" + element + ">";
    const std::string inner = folders + files;
    return name + "(" + (inner.empty() ? inner : inner.substr(1)) + ")";
  }

  std::mt19937 random;
  int names = 0;
  std::string xml;
  std::string text;
};

TEST(CarData, random_libraries_give_the_tree_that_they_were_made_from) {
  const WrittenFile file("");
  for (unsigned seed = 0; seed < 300; ++seed) {
    const RandomLibrary library(seed);
    file.Write("<LIBRARY>" + library.xml + "</LIBRARY>");
    OpenCarData cars(file.Path().c_str());
    ASSERT_TRUE(cars.Valid()) << seed;
    ASSERT_EQ(Text(cars), library.text) << seed;
  }
}

TEST(CarData, the_example_reads) {
  OpenCarData cars(rastrel::test::ExamplePath("car-library.xml").c_str());
  EXPECT_EQ(Text(cars),
            "Vans(Long wheelbase(Left side:vans/long-left.eps:eps Right side:vans/long-right.eps"
            ":eps) Short wheelbase(Left side:vans/short-left.eps:eps) Price list:vans/prices.txt"
            ":txt) Estate cars(Rear:estates/rear.eps:eps)");
}

}  // namespace
