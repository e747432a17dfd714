#include "cli/reading/notes_command.h"

#include <array>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/console/json_text.h"
#include "cli/console/long_output.h"
#include "cli/console/standard_streams.h"
#include "cli/input/xml_input.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/readers/job_notes.h"

namespace rastrel::cli {
namespace {

using Json = nlohmann::ordered_json;

template <typename Record>
struct TextRow {
  const char* element;
  const char* label;
  wchar_t (Record::*field)[JobNotesTextSize];
};

using Address = tagADDRESS_DATA;
using Contact = tagCONTACT_DATA;
using Job = tagJOB_DATA;

constexpr std::array AddressTexts{
    TextRow<Address>{"NAME", "name", &Address::NAME},
    TextRow<Address>{"STREETADDRESS", "street", &Address::STREETADDRESS},
    TextRow<Address>{"CITY", "city", &Address::CITY},
    TextRow<Address>{"PROVINCE", "province", &Address::PROVINCE},
    TextRow<Address>{"POSTALCODE", "postal code", &Address::POSTALCODE},
};

constexpr std::array ContactTexts{
    TextRow<Contact>{"FIRSTNAME", "first name", &Contact::FIRSTNAME},
    TextRow<Contact>{"LASTNAME", "last name", &Contact::LASTNAME},
    TextRow<Contact>{"PHONE", "phone", &Contact::PHONE},
    TextRow<Contact>{"FAX", "fax", &Contact::FAX},
    TextRow<Contact>{"EMAIL", "email", &Contact::EMAIL},
};

constexpr std::array JobTexts{
    TextRow<Job>{"JOBNUMBER", "number", &Job::JOBNUMBER},
    TextRow<Job>{"JOBDEADLINE", "deadline", &Job::JOBDEADLINE},
    TextRow<Job>{"JOBDESCRIPTION", "description", &Job::JOBDESCRIPTION},
    TextRow<Job>{"JOBMATERIALNOTES", "material notes", &Job::JOBMATERIALNOTES},
    TextRow<Job>{"JOBMATERIALTYPE", "material", &Job::JOBMATERIALTYPE},
    TextRow<Job>{"JOBCOMPLEXITY", "complexity", &Job::JOBCOMPLEXITY},
    TextRow<Job>{"JOBCUTTINGTIME", "cutting time", &Job::JOBCUTTINGTIME},
    TextRow<Job>{"JOBPRODUCTIONTIME", "production time", &Job::JOBPRODUCTIONTIME},
    TextRow<Job>{"JOBWEEDINGTIME", "weeding time", &Job::JOBWEEDINGTIME},
    TextRow<Job>{"JOBTRAVELTIME", "travel time", &Job::JOBTRAVELTIME},
    TextRow<Job>{"JOBCOMPUTERTIME", "computer time", &Job::JOBCOMPUTERTIME},
    TextRow<Job>{"JOBPRINTINGTIME", "printing time", &Job::JOBPRINTINGTIME},
    TextRow<Job>{"JOBQUANTITY", "quantity", &Job::JOBQUANTITY},
    TextRow<Job>{"JOBFILENAME", "file", &Job::JOBFILENAME},
};

struct NumberRow {
  const char* element;
  const char* label;
  double Job::*field;
};

constexpr std::array JobNumbers{
    NumberRow{"JOBMATERIALSCOST", "materials cost", &Job::JOBMATERIALSCOST},
    NumberRow{"JOBLABORCOST", "labor cost", &Job::JOBLABORCOST},
    NumberRow{"JOBSELLINGPRICE", "selling price", &Job::JOBSELLINGPRICE},
};

constexpr std::size_t LabelColumn = 17;

std::string Line(std::string label, const std::string& value) {
  label += ':';
  label.resize(LabelColumn, ' ');
  return "    " + label + value + "\n";
}

template <typename Record, std::size_t Count>
std::string TextLines(const Record& record, const std::array<TextRow<Record>, Count>& rows) {
  std::string text;
  for (const TextRow<Record>& row : rows)
    if (*(record.*row.field) != L'\0') text += Line(row.label, OneLineText(record.*row.field));
  return text;
}

std::string NumberLines(const Job& job) {
  std::string text;
  for (const NumberRow& row : JobNumbers)
    if (job.*row.field != 0) text += Line(row.label, os::ShortestDecimal(job.*row.field));
  if (job.JOBDELIVERY != 0) text += Line("delivery", std::to_string(job.JOBDELIVERY));
  return text;
}

void WriteText(const tagCOMPANY_DATA& company, int number, LongOutput& output) {
  output.Append("company " + std::to_string(number) + "\n");
  for (const auto& address : company.m_Addresses)
    output.Append("  address\n" + TextLines(*address, AddressTexts));
  for (const auto& contact : company.m_Contacts)
    output.Append("  contact\n" + TextLines(*contact, ContactTexts));
  for (const auto& job : company.m_Jobs)
    output.Append("  job\n" + TextLines(*job, JobTexts) + NumberLines(*job));
}

template <typename Record, std::size_t Count>
Json TextObject(const Record& record, const std::array<TextRow<Record>, Count>& rows) {
  Json object = Json::object();
  for (const TextRow<Record>& row : rows) object[row.element] = os::Utf8FromWide(record.*row.field);
  return object;
}

Json JobObject(const Job& job) {
  Json object = TextObject(job, JobTexts);
  for (const NumberRow& row : JobNumbers) object[row.element] = job.*row.field;
  object["JOBDELIVERY"] = job.JOBDELIVERY;
  return object;
}

// A member of the company's object, record by record.
template <typename Record, typename MakeObject>
void WriteRecords(const char* name, const std::vector<std::unique_ptr<Record>>& records,
                  const MakeObject& makeObject, LongOutput& output) {
  output.Append(std::string(",\"") + name + "\":[");
  for (const auto& record : records) {
    if (record != records.front()) output.Append(",");
    output.Append(JsonText(makeObject(*record)));
  }
  output.Append("]");
}

void WriteObject(const tagCOMPANY_DATA& company, LongOutput& output) {
  output.Append("{\"event\":\"company\"");
  WriteRecords(
      "addresses", company.m_Addresses,
      [](const Address& address) { return TextObject(address, AddressTexts); }, output);
  WriteRecords(
      "contacts", company.m_Contacts,
      [](const Contact& contact) { return TextObject(contact, ContactTexts); }, output);
  WriteRecords("jobs", company.m_Jobs, JobObject, output);
  output.Append("}\n");
}

}  // namespace

ExitStatus NotesCommand(const Invocation& invocation) {
  const bool json = invocation.Has(OptionId::Json);
  CJobNotesFileImport notes(ReaderPath(invocation.operand).c_str());
  const tagCOMPANY_DATA* company = notes.GetFirstCompany();
  if (company == nullptr) {
    OrEnd(ExitStatus::NotInstalled, CheckXmlParser());
    OrEnd(ExitStatus::BadInput, CheckXmlInput({invocation.operand, L"JOBNOTESLIST", true}));
    if (!json) WriteOutLine("no companies");
  }
  LongOutput output;
  for (int number = 1; company != nullptr; company = notes.GetNextCompany(), ++number) {
    if (json)
      WriteObject(*company, output);
    else
      WriteText(*company, number, output);
  }
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
