#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "rastrel/export.h"

/// Size of each text field of the job notes, in wide characters, the terminator among them.
inline constexpr std::size_t JobNotesTextSize = 255;

// The fields are named as the elements of the file are. A text that the file does not have is
// empty, and a number 0. Costs and prices are numbers as the file has them, without a currency.

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

/// A job. Times and the quantity are texts as the file has them.
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
/// for the host to walk.
///
/// A copy has the result and the cursor of its original and **shares its records**: a change made
/// to a record through one is seen through the other. A record lives until the last object that
/// holds it is destroyed or cleared, in whatever order.
///
/// One thread at a time; objects that share records count as one. Nothing throws but
/// std::bad_alloc.
class RASTREL_API CJobNotesFileImport {
 public:
  /// Reads the file at a library path (platform/os/path.h) at once. After a failure there are no
  /// companies, and no operation reports it. It fails if the path is null or empty, if the file
  /// does not exist or has another extension than "xml" in any case, if the XML layer refuses the
  /// document, if the root is not "JOBNOTESLIST", if a text is longer than its field, or if the
  /// records would take more than 128 MiB. The application log has the reason if the document was
  /// refused, and for the last two.
  explicit CJobNotesFileImport(const wchar_t* path);
  CJobNotesFileImport(const CJobNotesFileImport&);
  CJobNotesFileImport& operator=(const CJobNotesFileImport&);
  virtual ~CJobNotesFileImport();

  /// Moves the cursor to the first company and returns it, or null if there is none. The object
  /// stays its owner.
  tagCOMPANY_DATA* GetFirstCompany();
  /// Moves the cursor to the next company and returns it. Null after the last, at every call from
  /// then on, and before GetFirstCompany was called.
  tagCOMPANY_DATA* GetNextCompany();

  /// Shows the host's wait cursor and does nothing else: hosts take the records with the two
  /// operations above. Always returns 0, whether the file could be read or not.
  int ImportXMLFile();

  /// Gives up all records, which are freed with the last object that shares them.
  void ClearCompanies();

 protected:
  /// Appends the companies of a file. Returns false, with nothing appended, where the constructor
  /// fails.
  bool ParseFile(const wchar_t* path);

  bool m_bValid = false;  ///< the result of the constructor's ParseFile

 private:
  static constexpr std::size_t AtEnd = static_cast<std::size_t>(-1);

  std::vector<std::shared_ptr<tagCOMPANY_DATA>> m_Companies;
  std::size_t m_Cursor = AtEnd;
};
