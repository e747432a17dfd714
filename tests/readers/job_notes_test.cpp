#include "rastrel/readers/job_notes.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <optional>

#include "rastrel/readers/record_budget.h"
#include "tests/readers/written_file.h"
#include "tests/support/comma_locale.h"
#include "tests/support/test_host.h"

namespace {

using rastrel::test::Many;
using rastrel::test::WrittenFile;

class OpenJobNotes : public CJobNotesFileImport {
 public:
  using CJobNotesFileImport::CJobNotesFileImport;
  using CJobNotesFileImport::ParseFile;
  [[nodiscard]] bool Valid() const { return m_bValid; }
};

OpenJobNotes Read(const std::string& content, const std::string& name = "file.xml") {
  const WrittenFile file(content, name);
  return OpenJobNotes(file.Path().c_str());
}

int Count(CJobNotesFileImport& notes) {
  int count = 0;
  for (auto* company = notes.GetFirstCompany(); company != nullptr;
       company = notes.GetNextCompany())
    ++count;
  return count;
}

std::string List(const std::string& inner) { return "<JOBNOTESLIST>" + inner + "</JOBNOTESLIST>"; }
std::string Company(const std::string& inner) { return List("<COMPANY>" + inner + "</COMPANY>"); }

// The name of the first address of a company.
std::wstring NameOf(const tagCOMPANY_DATA* company) {
  return company == nullptr             ? L"(no company)"
         : company->m_Addresses.empty() ? L"(no address)"
                                        : company->m_Addresses.front()->NAME;
}

const std::string TwoCompanies = List(
    "<COMPANY><ADDRESS><NAME>First</NAME></ADDRESS></COMPANY>"
    "<COMPANY><ADDRESS><NAME>Second</NAME></ADDRESS></COMPANY>");

TEST(JobNotes, a_null_empty_or_wrong_path_gives_no_companies) {
  for (const wchar_t* const path :
       {static_cast<const wchar_t*>(nullptr), L"", L"/no/such/file.xml", L"/tmp"}) {
    OpenJobNotes notes(path);
    EXPECT_FALSE(notes.Valid());
    EXPECT_EQ(notes.GetFirstCompany(), nullptr);
  }
}

TEST(JobNotes, the_extension_is_xml_in_any_case_with_blanks_around_it) {
  for (const char* const name :
       {"a.xml", "a.XML", "a.xMl", "a.b.xml", ".xml", "a.xml ", "a. xml\t"})
    EXPECT_TRUE(Read(TwoCompanies, name).Valid()) << name;
  for (const char* const name : {"a.xm", "a.xmls", "a", "xml", "a.xml.txt", "a.x ml", "a."})
    EXPECT_FALSE(Read(TwoCompanies, name).Valid()) << name;
}

TEST(JobNotes, a_folder_with_the_extension_is_no_file) {
  const rastrel::test::ScratchDirectory scratch;
  scratch.Write("folder.xml/inside", "");
  EXPECT_FALSE(OpenJobNotes(scratch.Wide("folder.xml").c_str()).Valid());
}

TEST(JobNotes, another_root_or_the_roots_name_in_another_case_is_refused) {
  EXPECT_FALSE(Read("<JOBNOTES/>").Valid());
  EXPECT_FALSE(Read("<JobNotesList/>").Valid());
  EXPECT_TRUE(Read("<n:JOBNOTESLIST xmlns:n='urn:n'/>").Valid());
}

TEST(JobNotes, an_empty_list_is_valid_and_has_no_companies) {
  OpenJobNotes notes = Read("<JOBNOTESLIST/>");
  EXPECT_TRUE(notes.Valid());
  EXPECT_EQ(notes.GetFirstCompany(), nullptr);
  EXPECT_EQ(notes.GetNextCompany(), nullptr);
}

TEST(JobNotes, every_field_has_the_name_of_its_element) {
  const auto texts = [](std::initializer_list<const char*> names) {
    std::string inner;
    for (const std::string name : names) inner += "<" + name + ">the " + name + "</" + name + ">";
    return inner;
  };
  OpenJobNotes notes = Read(Company(
      "<ADDRESS>" + texts({"NAME", "STREETADDRESS", "CITY", "PROVINCE", "POSTALCODE"}) +
      "</ADDRESS><CONTACT>" + texts({"FIRSTNAME", "LASTNAME", "PHONE", "FAX", "EMAIL"}) +
      "</CONTACT><JOB>" +
      texts({"JOBNUMBER", "JOBDEADLINE", "JOBDESCRIPTION", "JOBMATERIALNOTES", "JOBMATERIALTYPE",
             "JOBCOMPLEXITY", "JOBCUTTINGTIME", "JOBPRODUCTIONTIME", "JOBWEEDINGTIME",
             "JOBTRAVELTIME", "JOBCOMPUTERTIME", "JOBPRINTINGTIME", "JOBQUANTITY", "JOBFILENAME"}) +
      "<JOBMATERIALSCOST>1.5</JOBMATERIALSCOST><JOBLABORCOST>-2e2</JOBLABORCOST>"
      "<JOBSELLINGPRICE>.25</JOBSELLINGPRICE><JOBDELIVERY>-7</JOBDELIVERY></JOB>"));
  const tagCOMPANY_DATA* const company = notes.GetFirstCompany();
  ASSERT_NE(company, nullptr);
  EXPECT_EQ(company->m_Reserved, 0);
  const tagADDRESS_DATA& address = *company->m_Addresses.at(0);
  EXPECT_STREQ(address.NAME, L"the NAME");
  EXPECT_STREQ(address.STREETADDRESS, L"the STREETADDRESS");
  EXPECT_STREQ(address.CITY, L"the CITY");
  EXPECT_STREQ(address.PROVINCE, L"the PROVINCE");
  EXPECT_STREQ(address.POSTALCODE, L"the POSTALCODE");
  const tagCONTACT_DATA& contact = *company->m_Contacts.at(0);
  EXPECT_STREQ(contact.FIRSTNAME, L"the FIRSTNAME");
  EXPECT_STREQ(contact.LASTNAME, L"the LASTNAME");
  EXPECT_STREQ(contact.PHONE, L"the PHONE");
  EXPECT_STREQ(contact.FAX, L"the FAX");
  EXPECT_STREQ(contact.EMAIL, L"the EMAIL");
  const tagJOB_DATA& job = *company->m_Jobs.at(0);
  EXPECT_STREQ(job.JOBNUMBER, L"the JOBNUMBER");
  EXPECT_STREQ(job.JOBDEADLINE, L"the JOBDEADLINE");
  EXPECT_STREQ(job.JOBDESCRIPTION, L"the JOBDESCRIPTION");
  EXPECT_STREQ(job.JOBMATERIALNOTES, L"the JOBMATERIALNOTES");
  EXPECT_STREQ(job.JOBMATERIALTYPE, L"the JOBMATERIALTYPE");
  EXPECT_STREQ(job.JOBCOMPLEXITY, L"the JOBCOMPLEXITY");
  EXPECT_STREQ(job.JOBCUTTINGTIME, L"the JOBCUTTINGTIME");
  EXPECT_STREQ(job.JOBPRODUCTIONTIME, L"the JOBPRODUCTIONTIME");
  EXPECT_STREQ(job.JOBWEEDINGTIME, L"the JOBWEEDINGTIME");
  EXPECT_STREQ(job.JOBTRAVELTIME, L"the JOBTRAVELTIME");
  EXPECT_STREQ(job.JOBCOMPUTERTIME, L"the JOBCOMPUTERTIME");
  EXPECT_STREQ(job.JOBPRINTINGTIME, L"the JOBPRINTINGTIME");
  EXPECT_STREQ(job.JOBQUANTITY, L"the JOBQUANTITY");
  EXPECT_STREQ(job.JOBFILENAME, L"the JOBFILENAME");
  EXPECT_EQ(job.JOBMATERIALSCOST, 1.5);
  EXPECT_EQ(job.JOBLABORCOST, -200);
  EXPECT_EQ(job.JOBSELLINGPRICE, 0.25);
  EXPECT_EQ(job.JOBDELIVERY, -7);
}

TEST(JobNotes, the_records_have_their_fields_in_the_order_that_hosts_count_on) {
  EXPECT_LT(offsetof(tagADDRESS_DATA, NAME), offsetof(tagADDRESS_DATA, POSTALCODE));
  EXPECT_EQ(offsetof(tagJOB_DATA, JOBFILENAME), 13 * sizeof(wchar_t) * 255);
  EXPECT_LT(offsetof(tagJOB_DATA, JOBFILENAME), offsetof(tagJOB_DATA, JOBMATERIALSCOST));
  EXPECT_LT(offsetof(tagJOB_DATA, JOBSELLINGPRICE), offsetof(tagJOB_DATA, JOBDELIVERY));
  EXPECT_EQ(sizeof(tagADDRESS_DATA), 5 * sizeof(wchar_t) * 255);
  EXPECT_EQ(sizeof(tagCONTACT_DATA), 5 * sizeof(wchar_t) * 255);
}

TEST(JobNotes, fields_that_nothing_sets_are_empty_or_0) {
  OpenJobNotes notes = Read(Company("<JOB><JOBNUMBER/></JOB><CONTACT/>"));
  const tagCOMPANY_DATA& company = *notes.GetFirstCompany();
  EXPECT_TRUE(company.m_Addresses.empty());
  EXPECT_STREQ(company.m_Contacts.at(0)->EMAIL, L"");
  const tagJOB_DATA& job = *company.m_Jobs.at(0);
  EXPECT_STREQ(job.JOBNUMBER, L"");
  EXPECT_EQ(job.JOBDELIVERY, 0);
  EXPECT_EQ(job.JOBMATERIALSCOST, 0);
}

TEST(JobNotes, a_later_element_overwrites_and_a_later_empty_one_does_not) {
  OpenJobNotes notes = Read(Company(
      "<ADDRESS><NAME>one</NAME><NAME>two</NAME><NAME/><CITY>long name</CITY>"
      "<CITY>x</CITY></ADDRESS><JOB><JOBDELIVERY>4</JOBDELIVERY><JOBDELIVERY> </JOBDELIVERY>"
      "<JOBLABORCOST>4</JOBLABORCOST><JOBLABORCOST>nothing</JOBLABORCOST></JOB>"));
  const tagCOMPANY_DATA& company = *notes.GetFirstCompany();
  EXPECT_STREQ(company.m_Addresses.at(0)->NAME, L"two");
  EXPECT_STREQ(company.m_Addresses.at(0)->CITY, L"x");
  EXPECT_EQ(company.m_Jobs.at(0)->JOBDELIVERY, 4);
  EXPECT_EQ(company.m_Jobs.at(0)->JOBLABORCOST, 0);
}

TEST(JobNotes, text_that_is_no_number_is_0_and_numbers_never_follow_the_locale) {
  const rastrel::test::CommaLocale locale;
  OpenJobNotes notes =
      Read(Company("<JOB><JOBMATERIALSCOST>1,5</JOBMATERIALSCOST><JOBLABORCOST>2.5 each"
                   "</JOBLABORCOST><JOBSELLINGPRICE>free</JOBSELLINGPRICE><JOBDELIVERY>3.9"
                   "</JOBDELIVERY></JOB><JOB><JOBDELIVERY>soon</JOBDELIVERY></JOB>"));
  const tagCOMPANY_DATA& company = *notes.GetFirstCompany();
  EXPECT_EQ(company.m_Jobs.at(0)->JOBMATERIALSCOST, 1);
  EXPECT_EQ(company.m_Jobs.at(0)->JOBLABORCOST, 2.5);
  EXPECT_EQ(company.m_Jobs.at(0)->JOBSELLINGPRICE, 0);
  EXPECT_EQ(company.m_Jobs.at(0)->JOBDELIVERY, 3);
  EXPECT_EQ(company.m_Jobs.at(1)->JOBDELIVERY, 0);
}

TEST(JobNotes, unknown_elements_comments_and_misplaced_ones_are_passed_over) {
  OpenJobNotes notes = Read(
      List("<!-- a --><ADDRESS><NAME>top</NAME></ADDRESS><?go on?><company/>text<COMPANY><NAME>n"
           "</NAME><ADDRESS><JOBNUMBER>9</JOBNUMBER><name>low</name><ADDRESS/></ADDRESS>"
           "<COMPANY/></COMPANY>"));
  ASSERT_EQ(Count(notes), 1);
  const tagCOMPANY_DATA& company = *notes.GetFirstCompany();
  ASSERT_EQ(company.m_Addresses.size(), 1U);
  EXPECT_STREQ(company.m_Addresses.at(0)->NAME, L"");
}

TEST(JobNotes, records_stand_in_the_files_order) {
  OpenJobNotes notes =
      Read(Company("<JOB><JOBNUMBER>1</JOBNUMBER></JOB><ADDRESS><NAME>a</NAME></ADDRESS>"
                   "<JOB><JOBNUMBER>2</JOBNUMBER></JOB><ADDRESS><NAME>b</NAME></ADDRESS>"));
  const tagCOMPANY_DATA& company = *notes.GetFirstCompany();
  EXPECT_STREQ(company.m_Jobs.at(0)->JOBNUMBER, L"1");
  EXPECT_STREQ(company.m_Jobs.at(1)->JOBNUMBER, L"2");
  EXPECT_STREQ(company.m_Addresses.at(1)->NAME, L"b");
}

TEST(JobNotes, the_cursor_walks_the_list_and_stays_at_its_end) {
  OpenJobNotes notes = Read(TwoCompanies);
  EXPECT_EQ(notes.GetNextCompany(), nullptr);
  EXPECT_EQ(NameOf(notes.GetFirstCompany()), L"First");
  EXPECT_EQ(NameOf(notes.GetNextCompany()), L"Second");
  EXPECT_EQ(notes.GetNextCompany(), nullptr);
  EXPECT_EQ(notes.GetNextCompany(), nullptr);
  EXPECT_EQ(NameOf(notes.GetFirstCompany()), L"First");
}

TEST(JobNotes, a_text_of_254_characters_fits_and_one_more_refuses_the_file) {
  const auto file = [](std::size_t count) {
    return List("<COMPANY><JOB><JOBNUMBER>1</JOBNUMBER></JOB></COMPANY><COMPANY><ADDRESS><NAME> " +
                Many(count) + "\n</NAME></ADDRESS></COMPANY><COMPANY/>");
  };
  OpenJobNotes fits = Read(file(254));
  EXPECT_TRUE(fits.Valid());
  EXPECT_EQ(Count(fits), 3);
  fits.GetFirstCompany();
  EXPECT_EQ(NameOf(fits.GetNextCompany()), std::wstring(254, L'x'));
  for (const std::size_t count : {255, 256, 100000}) {
    const WrittenFile written(file(count));
    OpenJobNotes notes(written.Path().c_str());
    EXPECT_FALSE(notes.Valid()) << count;
    EXPECT_EQ(notes.GetFirstCompany(), nullptr) << count;
    EXPECT_NE(written.LogTexts().find("NAME"), std::string::npos) << written.LogTexts();
  }
}

TEST(JobNotes, every_text_field_has_the_same_limit) {
  const auto refused = [](const std::string& record, const std::string& field) {
    const auto file = [&](std::size_t count) {
      return Company("<" + record + "><" + field + ">" + Many(count) + "</" + field + "></" +
                     record + ">");
    };
    EXPECT_TRUE(Read(file(254)).Valid()) << field;
    EXPECT_FALSE(Read(file(255)).Valid()) << field;
  };
  for (const char* field : {"NAME", "STREETADDRESS", "CITY", "PROVINCE", "POSTALCODE"})
    refused("ADDRESS", field);
  for (const char* field : {"FIRSTNAME", "LASTNAME", "PHONE", "FAX", "EMAIL"})
    refused("CONTACT", field);
  for (const char* field :
       {"JOBNUMBER", "JOBDEADLINE", "JOBDESCRIPTION", "JOBMATERIALNOTES", "JOBMATERIALTYPE",
        "JOBCOMPLEXITY", "JOBCUTTINGTIME", "JOBPRODUCTIONTIME", "JOBWEEDINGTIME", "JOBTRAVELTIME",
        "JOBCOMPUTERTIME", "JOBPRINTINGTIME", "JOBQUANTITY", "JOBFILENAME"})
    refused("JOB", field);
}

TEST(JobNotes, records_up_to_the_limit_are_read_and_one_more_refuses_the_file) {
  const std::size_t count = rastrel::readers::RecordBytesLimit / sizeof(tagJOB_DATA);
  std::string jobs;
  for (std::size_t index = 1; index < count; ++index) jobs += "<JOB/>";
  for (const int more : {0, 1, 2}) {
    const WrittenFile file(List("<COMPANY/><COMPANY>" + jobs + "</COMPANY>"));
    OpenJobNotes notes(file.Path().c_str());
    EXPECT_EQ(notes.Valid(), more < 2) << more;
    EXPECT_EQ(Count(notes), more < 2 ? 2 : 0);
    EXPECT_EQ(file.LogTexts().find("128 MiB") != std::string::npos, more == 2);
    jobs += "<JOB/>";
  }
}

TEST(JobNotes, a_number_may_be_as_long_as_it_likes) {
  OpenJobNotes notes =
      Read(Company("<JOB><JOBLABORCOST>" + Many(400, '0') + "7</JOBLABORCOST></JOB>"));
  EXPECT_EQ(notes.GetFirstCompany()->m_Jobs.at(0)->JOBLABORCOST, 7);
}

TEST(JobNotes, importing_gives_0_in_every_case_and_leaves_all_as_it_is) {
  rastrel::test::TestHost host;
  OpenJobNotes missing(L"/no/such/file.xml");
  EXPECT_EQ(missing.ImportXMLFile(), 0);
  OpenJobNotes notes = Read(TwoCompanies);
  EXPECT_EQ(NameOf(notes.GetFirstCompany()), L"First");
  host.m_WaitCursors = 0;
  EXPECT_EQ(notes.ImportXMLFile(), 0);
  EXPECT_EQ(host.m_WaitCursors, 1);
  EXPECT_EQ(NameOf(notes.GetNextCompany()), L"Second");
  EXPECT_EQ(Count(notes), 2);
}

TEST(JobNotes, a_copy_has_the_result_the_cursor_and_the_same_records) {
  OpenJobNotes notes = Read(TwoCompanies);
  tagCOMPANY_DATA* const first = notes.GetFirstCompany();
  OpenJobNotes copy = notes;
  EXPECT_TRUE(copy.Valid());
  EXPECT_EQ(copy.GetNextCompany(), notes.GetNextCompany());
  EXPECT_EQ(copy.GetFirstCompany(), first);
  std::wcscpy(first->m_Addresses.at(0)->NAME, L"Changed");
  EXPECT_EQ(NameOf(copy.GetFirstCompany()), L"Changed");
}

TEST(JobNotes, records_outlive_whichever_of_two_copies_goes_first) {
  std::optional<OpenJobNotes> notes = Read(TwoCompanies);
  OpenJobNotes copy = *notes;
  OpenJobNotes assigned(L"/no/such/file.xml");
  assigned = copy;
  EXPECT_TRUE(assigned.Valid());
  notes.reset();
  copy.ClearCompanies();
  EXPECT_EQ(copy.GetFirstCompany(), nullptr);
  EXPECT_EQ(copy.GetNextCompany(), nullptr);
  EXPECT_EQ(NameOf(assigned.GetFirstCompany()), L"First");
  const OpenJobNotes& same = assigned;
  assigned = same;
  EXPECT_EQ(Count(assigned), 2);
}

TEST(JobNotes, clearing_lets_go_of_all_and_may_be_done_twice) {
  OpenJobNotes notes = Read(TwoCompanies);
  notes.GetFirstCompany();
  notes.ClearCompanies();
  EXPECT_EQ(notes.GetNextCompany(), nullptr);
  notes.ClearCompanies();
  EXPECT_EQ(notes.GetFirstCompany(), nullptr);
}

TEST(JobNotes, a_deleted_object_is_deleted_as_its_own_type) {
  const WrittenFile file(TwoCompanies);
  CJobNotesFileImport* const notes = new OpenJobNotes(file.Path().c_str());
  delete notes;
}

TEST(JobNotes, a_file_cut_at_any_byte_has_no_companies) {
  const std::string whole = Company(
      "<ADDRESS><NAME>A &amp; B \xC3\xA9</NAME></ADDRESS><JOB><JOBDELIVERY>3</JOBDELIVERY></JOB>");
  const WrittenFile file("");
  for (std::size_t length = 0; length < whole.size(); ++length) {
    file.Write(std::string_view(whole).substr(0, length));
    OpenJobNotes notes(file.Path().c_str());
    ASSERT_FALSE(notes.Valid()) << length;
    ASSERT_EQ(notes.GetFirstCompany(), nullptr) << length;
  }
  file.Write(whole);
  EXPECT_TRUE(OpenJobNotes(file.Path().c_str()).Valid());
}

TEST(JobNotes,
     a_document_with_a_type_or_an_undeclared_entity_is_refused_with_a_message_in_the_log) {
  for (const std::string& content : {"<!DOCTYPE JOBNOTESLIST>" + TwoCompanies, List("&nothing;"),
                                     List("<COMPANY a='1' a='1'/>")}) {
    const WrittenFile file(content);
    EXPECT_FALSE(OpenJobNotes(file.Path().c_str()).Valid()) << content;
    EXPECT_NE(file.LogTexts().find("file.xml"), std::string::npos) << file.LogTexts();
  }
}

TEST(JobNotes, a_second_file_is_appended_and_one_that_is_refused_adds_nothing) {
  OpenJobNotes notes = Read(TwoCompanies);
  const WrittenFile more(TwoCompanies);
  EXPECT_TRUE(notes.ParseFile(more.Path().c_str()));
  EXPECT_EQ(Count(notes), 4);
  more.Write(
      List("<COMPANY/><COMPANY><ADDRESS><NAME>" + Many(255) + "</NAME></ADDRESS></COMPANY>"));
  EXPECT_FALSE(notes.ParseFile(more.Path().c_str()));
  EXPECT_EQ(Count(notes), 4);
}

TEST(JobNotes, the_example_reads) {
  OpenJobNotes notes(rastrel::test::ExamplePath("job-notes.xml").c_str());
  ASSERT_EQ(Count(notes), 2);
  const tagCOMPANY_DATA& company = *notes.GetFirstCompany();
  EXPECT_STREQ(company.m_Contacts.at(0)->FIRSTNAME, L"Zo\x00EB");
  EXPECT_EQ(company.m_Jobs.at(0)->JOBSELLINGPRICE, 265);
  EXPECT_EQ(company.m_Jobs.size(), 2U);
}

}  // namespace
