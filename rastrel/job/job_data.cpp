#include "rastrel/job/job_data.h"

#include "rastrel/job/record_version.h"
#include "rastrel/platform/mfc/archive.h"

RASTREL_IMPLEMENT_DYNCREATE(CLevelsData, CObject)
RASTREL_IMPLEMENT_DYNCREATE(CJobData, CObject)

using rastrel::job::ReadRecordVersion;
using rastrel::job::RecordVersion;

CLevelsData::~CLevelsData() = default;

void CLevelsData::Serialize(CArchive& archive) {
  if (archive.IsStoring()) {
    archive << RecordVersion << Low << Gamma << High;
  } else if (ReadRecordVersion(archive)) {
    archive >> Low >> Gamma >> High;
  }
}

CJobData::CJobData() = default;
CJobData::~CJobData() = default;

// In the record the folder comes before the name, the reverse of the fields' order in memory.
void CJobData::Serialize(CArchive& archive) {
  if (archive.IsStoring()) {
    archive << RecordVersion << PrinterName << PrintModeFolder << PrintModeName << SpoolRequested
            << HostFlag1 << SpoolAllowed << ScaleMode << ScaleWidthCm << ScaleHeightCm << HostFlag2
            << ScaleTarget << LevelsEnabled << LevelsLinked << HostFlag3;
  } else if (ReadRecordVersion(archive)) {
    archive >> PrinterName >> PrintModeFolder >> PrintModeName >> SpoolRequested >> HostFlag1 >>
        SpoolAllowed >> ScaleMode >> ScaleWidthCm >> ScaleHeightCm >> HostFlag2 >> ScaleTarget >>
        LevelsEnabled >> LevelsLinked >> HostFlag3;
  }
}

void CJobData::SetDefaults() {
  CJobData fresh;
  fresh.HostValue = HostValue;
  fresh.Levels = Levels;
  *this = fresh;
}
