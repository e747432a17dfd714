#include "rastrel/imports/xml_import.h"

CXMLImport::CXMLImport(const wchar_t* fileName) : m_pFileName(fileName) {}

CXMLImport::~CXMLImport() = default;
