#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "rastrel/export.h"

/// Size of each text field of the job notes, in wide characters, the terminator among them.
inline constexpr std::size_t JobNotesTextSize = 255;

// The fields are named as the elements of the file are.

/// Where a company is.
struct tagADDRESS_DATA {
  wchar_t NAME[JobNotesTextSize] = {};
  wchar_t STREETADDRESS[JobNotesTextSize] = {};
  wchar_t CITY[JobNotesTextSize] = {};
  wchar_t PROVINCE[JobNotesTextSize] = {};
  wchar_t POSTALCODE[JobNotesTextSize] = {};
};

/// Whom to talk to.
struct tagCONTACT_DATA {
  wchar_t FIRSTNAME[JobNotesTextSize] = {};
  wchar_t LASTNAME[JobNotesTextSize] = {};
  wchar_t PHONE[JobNotesTextSize] = {};
  wchar_t FAX[JobNotesTextSize] = {};
  wchar_t EMAIL[JobNotesTextSize] = {};
};

/// What is to be made. Times and the quantity are texts as the file has them.
struct tagJOB_DATA {
  wchar_t JOBNUMBER[JobNotesTextSize] = {};
  wchar_t JOBDEADLINE[JobNotesTextSize] = {};
  wchar_t JOBDESCRIPTION[JobNotesTextSize] = {};
  wchar_t JOBMATERIALNOTES[JobNotesTextSize] = {};
  wchar_t JOBMATERIALTYPE[JobNotesTextSize] = {};
  wchar_t JOBCOMPLEXITY[JobNotesTextSize] = {};
  wchar_t JOBCUTTINGTIME[JobNotesTextSize] = {};
  wchar_t JOBPRODUCTIONTIME[JobNotesTextSize] = {};
  wchar_t JOBWEEDINGTIME[JobNotesTextSize] = {};
  wchar_t JOBTRAVELTIME[JobNotesTextSize] = {};
  wchar_t JOBCOMPUTERTIME[JobNotesTextSize] = {};
  wchar_t JOBPRINTINGTIME[JobNotesTextSize] = {};
  wchar_t JOBQUANTITY[JobNotesTextSize] = {};
  wchar_t JOBFILENAME[JobNotesTextSize] = {};
  double JOBMATERIALSCOST = 0;
  double JOBLABORCOST = 0;
  double JOBSELLINGPRICE = 0;
  std::int32_t JOBDELIVERY = 0;
};

/// A company with all that belongs to it, each list in the file's order. Owns its records.
struct tagCOMPANY_DATA {
  std::int32_t m_Reserved = 0;  ///< always 0
  std::vector<std::unique_ptr<tagADDRESS_DATA>> m_Addresses;
  std::vector<std::unique_ptr<tagCONTACT_DATA>> m_Contacts;
  std::vector<std::unique_ptr<tagJOB_DATA>> m_Jobs;
};

/// Companies, addresses, contacts and jobs of an XML file (docs/formats/job-notes.md), as records
/// for the host to walk. Nothing is made of them here.
///
/// A copy has the result and the cursor of its original and **the same records**, not equal ones:
/// what is changed in a record through one is seen through the other. A record lives until the last
/// object that holds it is gone or was cleared, so either may go first.
///
/// One thread at a time; objects that share records count as one.
class RASTREL_API CJobNotesFileImport {
 public:
  /// Reads the file (library text, see platform/os/path.h) at once. Nothing is told of a failure:
  /// there are no companies then. Failures are a null or empty path, a file that does not exist, an
  /// extension other than "xml" in any case, a document that the XML layer refuses, another root
  /// than "JOBNOTESLIST", a text that its field does not hold, and more records than fit 128 MiB.
  /// The last two and the refusal of a document stand in the application log.
  explicit CJobNotesFileImport(const wchar_t* path);
  CJobNotesFileImport(const CJobNotesFileImport&);
  CJobNotesFileImport& operator=(const CJobNotesFileImport&);
  virtual ~CJobNotesFileImport();

  /// Puts the cursor on the first company and returns it; null if there is none. Owned by the
  /// object.
  tagCOMPANY_DATA* GetFirstCompany();
  /// Moves the cursor on; null behind the last company, and at every call from then on. Null too
  /// before GetFirstCompany was called.
  tagCOMPANY_DATA* GetNextCompany();

  /// Shows the host's wait cursor. The companies and the cursor stay as they are: hosts take the
  /// records with the two operations above. Always 0, whether the file could be read or not.
  int ImportXMLFile();

  /// Lets go of all records.
  void ClearCompanies();

 protected:
  /// Appends what the file holds; false, and nothing appended, if it is refused.
  bool ParseFile(const wchar_t* path);

  bool m_bValid = false;  ///< what ParseFile gave

 private:
  static constexpr std::size_t AtEnd = static_cast<std::size_t>(-1);

  std::vector<std::shared_ptr<tagCOMPANY_DATA>> m_Companies;
  std::size_t m_Cursor = AtEnd;
};
