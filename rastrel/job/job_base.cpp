#include "rastrel/job/job_base.h"

CRuntimeClass CJobBase::classCJobBase{"CJobBase", 0xFFFF, nullptr, &CObject::classCObject};

CJobBase::CJobBase() = default;
CJobBase::~CJobBase() = default;

CRuntimeClass* CJobBase::GetRuntimeClass() const { return &classCJobBase; }

void CJobBase::SetDefaults() {
  m_JobData.SetDefaults();
  m_JobName.clear();
  m_JobNote.clear();
  m_Status = JS_IDLE;
  m_Copies = 1;
  m_Error = JTE_NONE;
  m_Created = COleDateTime::GetCurrentTime();
  m_JobFile.SetDefaults();
  m_SecondFile.SetDefaults();
  m_Pages.clear();
}
