// A whole prefix file, with levels on, against writing the same bytes with one write. Both make the
// file, close it and remove it.
#include <memory>
#include <string>

#include "bench/data_root.h"
#include "bench/measure.h"
#include "bench/require.h"
#include "rastrel/job/job_ticket.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/prefix/ps_prefix.h"

namespace {

namespace os = rastrel::os;
using rastrel::bench::Require;

// Short rounds and many of them: what else the machine does falls on few of each side.
constexpr int FilesPerRound = 20;

struct Sample {
  const char* name;
  bool linked;
  double gamma;
};

void Fill(CJobTicket& ticket, const Sample& sample, const std::wstring& directory) {
  ticket.m_JobFile.Directory = directory;
  ticket.m_JobFile.FileName = L"job.ps";
  CJobData& settings = ticket.m_JobData;
  settings.PrinterName = L"KVI Tiff Screen Preview";
  settings.PrintModeFolder = L"TIFF";
  settings.PrintModeName = L"tiff default.ps";
  settings.ScaleMode = 2;
  settings.ScaleWidthCm = 25.4;
  settings.ScaleHeightCm = 12.7;
  settings.CutterEnabled = true;
  settings.CutterColor = {255, 0, 0, 0};
  settings.LevelsEnabled = true;
  settings.LevelsLinked = sample.linked;
  for (CLevelsData& levels : settings.Levels) {
    levels.Low = 4.0;
    levels.Gamma = sample.gamma;
    levels.High = 250.0;
  }
}

void WriteOnce(const std::wstring& path, const std::string& bytes) {
  const auto file = os::CreateForWriting(path);
  Require(file && os::WriteAll(file->Get(), bytes), "the bytes were not written");
}

// The bytes that the ticket's prefix has.
std::string BytesOf(CJobTicket& ticket) {
  const std::unique_ptr<PSPrefix> prefix(ticket.GetPrefix());
  Require(prefix->Generate() == 0, "a prefix was not written");
  auto bytes = os::ReadWholeFile(prefix->GetPrefixPath(), std::uint64_t{1} << 20);
  Require(static_cast<bool>(bytes), "a prefix can't be read");
  return std::move(*bytes);
}

void CompareSample(const Sample& sample, const std::wstring& directory) {
  CJobTicket ticket;
  Fill(ticket, sample, directory);
  const std::string bytes = BytesOf(ticket);
  const std::wstring path = directory + L"peer.psp";
  rastrel::bench::Compare(
      {.name = std::string("20 prefix files, ") + sample.name,
       .peerName = "one write of the same bytes",
       .rounds = 201,
       .limit = 3.0,
       .clock = rastrel::bench::Clock::Processor},
      [] {},
      [&] {
        for (int file = 0; file < FilesPerRound; ++file) {
          const std::unique_ptr<PSPrefix> prefix(ticket.GetPrefix());
          Require(prefix->Generate() == 0, "a prefix was not written");
        }
      },
      [&] {
        for (int file = 0; file < FilesPerRound; ++file) {
          WriteOnce(path, bytes);
          Require(static_cast<bool>(os::RemoveFile(path)), "a file can't be removed");
        }
      });
}

}  // namespace

int main() {
  const rastrel::bench::DataRoot place;
  for (const Sample& sample :
       {Sample{"linked levels", true, 2.2}, Sample{"levels of each channel", false, 2.2},
        Sample{"levels of gamma 1", false, 1.0}})
    CompareSample(sample, place.Wide() + L"/");
}
