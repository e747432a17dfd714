#include "rastrel/cfm/cfm2.h"

#include "rastrel/cfm/cfm2_instruction.h"

using namespace rastrel::cfm;  // the instruction codes

CCFM2::CCFM2()
    : m_Instructions{{L"begin", InstructionBegin},   {L"id", InstructionId},
                     {L"dir", InstructionDirectory}, {L"title", InstructionTitle},
                     {L"copies", InstructionCopies}, {L"end", InstructionEnd}},
      m_TicketTypes{{L"once", PrintingThread::CFM2_ONCE},
                    {L"reprint", PrintingThread::CFM2_REPRINT},
                    {L"only", PrintingThread::CFM2_ONLY},
                    {L"delete", PrintingThread::CFM2_DELETE}} {}

std::wstring_view CCFM2::Instruction(std::int32_t code) const {
  for (const CFM2Keyword& keyword : m_Instructions)
    if (keyword.m_Code == code) return keyword.m_Keyword;
  return {};
}
