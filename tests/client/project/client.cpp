// Prints the test page that ships with the library, and asks a ticket about itself first: classes,
// run-time type, archive and host operations all come from the installed library.

#include <rastrel/rastrel.h>

#include <iostream>
#include <memory>

int main() {
  CMemFile memory;
  {
    CJobTicket ticket;
    ticket.m_JobName = L"client";
    CArchive archive(&memory, CArchive::store);
    ticket.Serialize(archive);
  }
  memory.Close();
  const std::unique_ptr<CObject> created(CJobTicket::CreateObject());
  auto* ticket = dynamic_cast<CJobTicket*>(created.get());
  if (ticket == nullptr) return 3;
  {
    CArchive archive(&memory, CArchive::load);
    ticket->Serialize(archive);
  }
  if (ticket->m_JobName != L"client") return 4;
  if (GetIntKorvane(L"client", L"missing", 7, DS_USER, nullptr) != 7) return 5;
  wchar_t text[TStringLimit] = L"";
  TString(L"Printing(*v*)", text, TStringLimit);
  std::wcout << text << std::endl;
  return TestPrint() ? 0 : 6;
}
