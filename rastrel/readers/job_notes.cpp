#include "rastrel/readers/job_notes.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>
#include <string_view>

#include "rastrel/imports/bounded_copy.h"
#include "rastrel/imports/file_extension.h"
#include "rastrel/platform/host/wait_cursor.h"
#include "rastrel/readers/record_budget.h"
#include "rastrel/xml/layer.h"

namespace {

using rastrel::imports::BoundedCopy;

template <typename Record>
struct TextField {
  std::wstring_view element;
  wchar_t (Record::*field)[JobNotesTextSize];
};

using Address = tagADDRESS_DATA;
using Contact = tagCONTACT_DATA;
using Job = tagJOB_DATA;

constexpr std::array AddressTexts{
    TextField<Address>{L"NAME", &Address::NAME},
    TextField<Address>{L"STREETADDRESS", &Address::STREETADDRESS},
    TextField<Address>{L"CITY", &Address::CITY},
    TextField<Address>{L"PROVINCE", &Address::PROVINCE},
    TextField<Address>{L"POSTALCODE", &Address::POSTALCODE},
};

constexpr std::array ContactTexts{
    TextField<Contact>{L"FIRSTNAME", &Contact::FIRSTNAME},
    TextField<Contact>{L"LASTNAME", &Contact::LASTNAME},
    TextField<Contact>{L"PHONE", &Contact::PHONE},
    TextField<Contact>{L"FAX", &Contact::FAX},
    TextField<Contact>{L"EMAIL", &Contact::EMAIL},
};

constexpr std::array JobTexts{
    TextField<Job>{L"JOBNUMBER", &Job::JOBNUMBER},
    TextField<Job>{L"JOBDEADLINE", &Job::JOBDEADLINE},
    TextField<Job>{L"JOBDESCRIPTION", &Job::JOBDESCRIPTION},
    TextField<Job>{L"JOBMATERIALNOTES", &Job::JOBMATERIALNOTES},
    TextField<Job>{L"JOBMATERIALTYPE", &Job::JOBMATERIALTYPE},
    TextField<Job>{L"JOBCOMPLEXITY", &Job::JOBCOMPLEXITY},
    TextField<Job>{L"JOBCUTTINGTIME", &Job::JOBCUTTINGTIME},
    TextField<Job>{L"JOBPRODUCTIONTIME", &Job::JOBPRODUCTIONTIME},
    TextField<Job>{L"JOBWEEDINGTIME", &Job::JOBWEEDINGTIME},
    TextField<Job>{L"JOBTRAVELTIME", &Job::JOBTRAVELTIME},
    TextField<Job>{L"JOBCOMPUTERTIME", &Job::JOBCOMPUTERTIME},
    TextField<Job>{L"JOBPRINTINGTIME", &Job::JOBPRINTINGTIME},
    TextField<Job>{L"JOBQUANTITY", &Job::JOBQUANTITY},
    TextField<Job>{L"JOBFILENAME", &Job::JOBFILENAME},
};

struct NumberField {
  std::wstring_view element;
  double Job::*field;
};

constexpr std::array JobNumbers{
    NumberField{L"JOBMATERIALSCOST", &Job::JOBMATERIALSCOST},
    NumberField{L"JOBLABORCOST", &Job::JOBLABORCOST},
    NumberField{L"JOBSELLINGPRICE", &Job::JOBSELLINGPRICE},
};

std::vector<XmlNode> ChildrenOf(const XmlNode& node) {
  int count = 0;
  return NodeChildren(node, count);
}

/// Reads one file. The operations are false if a text does not fit its field, or if there are more
/// records than there is room for.
class Parser {
 public:
  explicit Parser(std::wstring_view path) : m_Path(path), m_Budget(path) {}

  bool ParseCompany(const XmlNode& node, tagCOMPANY_DATA& company) {
    for (const XmlNode& child : ChildrenOf(node)) {
      bool fits = true;
      if (NodeNameIs(child, L"ADDRESS"))
        fits = Append(company.m_Addresses) &&
               ParseTexts(child, AddressTexts, *company.m_Addresses.back());
      else if (NodeNameIs(child, L"CONTACT"))
        fits = Append(company.m_Contacts) &&
               ParseTexts(child, ContactTexts, *company.m_Contacts.back());
      else if (NodeNameIs(child, L"JOB"))
        fits = Append(company.m_Jobs) && ParseJob(child, *company.m_Jobs.back());
      if (!fits) return false;
    }
    return true;
  }

 private:
  template <typename Record>
  bool Append(std::vector<std::unique_ptr<Record>>& records) {
    if (!m_Budget.Take(sizeof(Record))) return false;
    records.push_back(std::make_unique<Record>());
    return true;
  }

  template <typename Record, std::size_t Count>
  bool ParseTexts(const XmlNode& node, const std::array<TextField<Record>, Count>& fields,
                  Record& record) {
    return std::ranges::all_of(
        ChildrenOf(node), [&](const XmlNode& child) { return StoreText(child, fields, record); });
  }

  bool ParseJob(const XmlNode& node, Job& job) {
    for (const XmlNode& child : ChildrenOf(node)) {
      if (!StoreText(child, JobTexts, job)) return false;
      const auto number = std::ranges::find_if(
          JobNumbers, [&](const NumberField& field) { return NodeNameIs(child, field.element); });
      if (number != JobNumbers.end()) NodeDouble(child, job.*number->field);
      if (NodeNameIs(child, L"JOBDELIVERY")) NodeInt(child, job.JOBDELIVERY);
    }
    return true;
  }

  // True also for a child that has another name.
  template <typename Record, std::size_t Count>
  bool StoreText(const XmlNode& child, const std::array<TextField<Record>, Count>& fields,
                 Record& record) {
    const auto field = std::ranges::find_if(fields, [&](const TextField<Record>& candidate) {
      return NodeNameIs(child, candidate.element);
    });
    if (field == fields.end() || !NodeText(child, m_Text)) return true;
    return BoundedCopy(record.*field->field, m_Text, field->element, m_Path);
  }

  std::wstring_view m_Path;
  rastrel::readers::RecordBudget m_Budget;
  std::wstring m_Text;
};

}  // namespace

CJobNotesFileImport::CJobNotesFileImport(const wchar_t* path) { m_bValid = ParseFile(path); }

CJobNotesFileImport::CJobNotesFileImport(const CJobNotesFileImport&) = default;
CJobNotesFileImport& CJobNotesFileImport::operator=(const CJobNotesFileImport&) = default;

CJobNotesFileImport::~CJobNotesFileImport() { ClearCompanies(); }

bool CJobNotesFileImport::ParseFile(const wchar_t* path) {
  using rastrel::imports::ExtensionTrim;
  if (!rastrel::imports::IsFileOfType(path, {L"xml"}, ExtensionTrim::Whitespace)) return false;
  const XmlNode root = LoadXmlFile(path);
  if (!root || !NodeNameIs(root, L"JOBNOTESLIST")) return false;
  Parser parser(path);
  std::vector<std::shared_ptr<tagCOMPANY_DATA>> companies;
  for (const XmlNode& node : ChildrenNamed(root, L"COMPANY"))
    if (!parser.ParseCompany(node, *companies.emplace_back(std::make_shared<tagCOMPANY_DATA>())))
      return false;
  std::ranges::move(companies, std::back_inserter(m_Companies));
  return true;
}

tagCOMPANY_DATA* CJobNotesFileImport::GetFirstCompany() {
  m_Cursor = 0;
  return m_Companies.empty() ? nullptr : m_Companies.front().get();
}

tagCOMPANY_DATA* CJobNotesFileImport::GetNextCompany() {
  if (m_Cursor < m_Companies.size() && ++m_Cursor < m_Companies.size())
    return m_Companies[m_Cursor].get();
  m_Cursor = AtEnd;
  return nullptr;
}

int CJobNotesFileImport::ImportXMLFile() {
  // Nothing is made of the companies: hosts count on the number alone, and on their cursor staying.
  BeginWaitCursor();
  return 0;
}

void CJobNotesFileImport::ClearCompanies() {
  m_Companies.clear();
  m_Cursor = AtEnd;
}
