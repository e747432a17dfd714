// Job notes of any bytes: every record that comes out of them is whole, and copies share it.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>

#include "rastrel/readers/job_notes.h"
#include "tests/support/named_document.h"

namespace {

void Expect(bool condition) {
  if (!condition) std::abort();
}

void ExpectText(const wchar_t (&field)[JobNotesTextSize]) {
  Expect(std::ranges::find(field, L'\0') != std::end(field));
}

void ExpectWhole(const tagCOMPANY_DATA& company) {
  Expect(company.m_Reserved == 0);
  for (const auto& address : company.m_Addresses)
    for (const auto* const field : {&address->NAME, &address->STREETADDRESS, &address->CITY,
                                    &address->PROVINCE, &address->POSTALCODE})
      ExpectText(*field);
  for (const auto& contact : company.m_Contacts)
    for (const auto* const field :
         {&contact->FIRSTNAME, &contact->LASTNAME, &contact->PHONE, &contact->FAX, &contact->EMAIL})
      ExpectText(*field);
  for (const auto& job : company.m_Jobs) {
    ExpectText(job->JOBNUMBER);
    ExpectText(job->JOBFILENAME);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static rastrel::test::NamedDocument document;
  const std::string content(bytes, bytes + size);
  CJobNotesFileImport notes(document.Write(content).c_str());
  CJobNotesFileImport copy = notes;
  for (const tagCOMPANY_DATA* company = notes.GetFirstCompany(); company != nullptr;
       company = notes.GetNextCompany())
    ExpectWhole(*company);
  Expect(notes.GetNextCompany() == nullptr);
  const tagCOMPANY_DATA* const first = notes.GetFirstCompany();
  notes.ClearCompanies();
  Expect(copy.GetFirstCompany() == first);
  if (first != nullptr) ExpectWhole(*first);
  return 0;
}
