#pragma once

#include "rastrel/export.h"

/// What the importers have in common that are made on a path, parse it at once, and import when
/// they are told to. A derived class parses in its own constructor and keeps the result in
/// m_bParsed. Runs on the host's thread, inside one command; nothing here throws.
class RASTREL_API CXMLImport {
 public:
  /// `fileName` is kept as it is given, not copied: it must live as long as the importer. May be
  /// null, which no importer can parse.
  explicit CXMLImport(const wchar_t* fileName);
  CXMLImport(const CXMLImport&) = delete;
  CXMLImport& operator=(const CXMLImport&) = delete;

  virtual ~CXMLImport();
  /// Makes of the records what the importer is for. 1 if it could, 0 if not, also when the parse
  /// failed.
  virtual int ImportXMLFile() = 0;
  /// Frees all records.
  virtual void ClearPlates() = 0;
  /// The first record, and the one behind the last that was given; null at the end. The type is the
  /// derived class's, and the record stays its own.
  virtual void* GetFirstPlate() = 0;
  virtual void* GetNextPlate() = 0;

 protected:
  /// Reads the file into records. False if it can't be read, is refused, or is another format.
  virtual bool ParseFile(const wchar_t* fileName) = 0;

  const wchar_t* m_pFileName;  // as given
  bool m_bParsed = false;      // what ParseFile said
  bool m_bTextOpen = false;    // a paragraph of the text engine is open
};
