#pragma once

#include <array>
#include <cstdint>

#include "rastrel/export.h"
#include "rastrel/platform/mfc/object.h"
#include "rastrel/platform/mfc/string.h"

/// One levels adjustment of a color channel, on a scale of 0 to 255.
class RASTREL_API CLevelsData : public CObject {
 public:
  CLevelsData() = default;
  CLevelsData(const CLevelsData&) = default;
  CLevelsData& operator=(const CLevelsData&) = default;
  ~CLevelsData() override;
  RASTREL_DECLARE_DYNCREATE(CLevelsData)

  /// Writes 28 bytes, or reads them:
  ///
  ///     +-------------+----------+------------+-----------+
  ///     | version = 1 | Low      | Gamma      | High      |
  ///     | 32 bits     | double   | double     | double    |
  ///     +-------------+----------+------------+-----------+
  ///
  /// A read of another version stops after it and changes nothing. CArchiveException passes. Only
  /// hosts call it: a job's record does not hold its levels.
  void Serialize(CArchive& archive) override;

  double Low = 0.0;     ///< lower end of the input range
  double Gamma = 1.0;   ///< the exponent used is its reciprocal
  double High = 255.0;  ///< upper end of the input range
};

/// All settings of a job. The host reads and writes the fields directly, and leaves them alone
/// while the job prints. The names (printer, print mode, scale target, separation) are written into
/// the prefix unescaped.
class RASTREL_API CJobData : public CObject {
 public:
  /// Every field at its default.
  CJobData();
  CJobData(const CJobData&) = default;
  CJobData& operator=(const CJobData&) = default;
  ~CJobData() override;
  RASTREL_DECLARE_DYNCREATE(CJobData)

  /// Reads or writes the settings' record (docs/formats/job-record.md). Levels, the cutter fields
  /// and HostValue are not part of it. A read of a version other than 1 stops after it and changes
  /// nothing. CArchiveException passes; the fields before the failure are read then.
  void Serialize(CArchive& archive) override;

  /// Resets every field to the default given here, except HostValue and Levels: a ticket that is
  /// reset keeps its last levels.
  void SetDefaults();

  CString PrinterName;                ///< RIP device; empty leaves the choice to the job
  CString PrintModeName;              ///< print mode file; empty leaves the choice to the job
  CString PrintModeFolder;            ///< folder of the print mode file
  bool SpoolRequested = false;        ///< with SpoolAllowed: keep the pages after output
  bool HostFlag1 = false;             ///< kept for the host
  bool SpoolAllowed = false;          ///< with SpoolRequested: keep the pages after output
  std::int32_t ScaleMode = 0;         ///< 0 none, 1 named target, 2 custom size
  CString ScaleTarget;                ///< name of a scale target
  double ScaleWidthCm = 0.0;          ///< custom width in centimetres
  double ScaleHeightCm = 0.0;         ///< custom height in centimetres
  std::int32_t HostValue = 0;         ///< kept for the host
  bool HostFlag2 = false;             ///< kept for the host
  bool LevelsEnabled = false;         ///< write the levels section of the prefix
  bool LevelsLinked = true;           ///< the first of Levels serves all channels
  std::array<CLevelsData, 5> Levels;  ///< master, red, green, blue, gray
  bool CutterEnabled = false;         ///< a cutter color is set
  std::int32_t CutterColorModel =
      0;  ///< 0 RGB, 1 CMYK, 2 a separation (only a CVKJobTicket's prefix)
  /// Components in order. For a CJobTicket 0 to 255 each. For a CVKJobTicket RGB is 0 to 255 and
  /// CMYK 0 to 1000.
  std::array<std::int32_t, 4> CutterColor{};
  CString CutterSeparation;  ///< name of the separation
  bool HostFlag3 = false;    ///< kept for the host
};
