#include "rastrel/conversion/qrast.h"

#include <utility>

#include "rastrel/conversion/scan_group.h"
#include "rastrel/job/app_log.h"

using rastrel::conversion::ScanFloats;
using rastrel::conversion::ScanIntegers;

namespace PrintingThread {

namespace {

constexpr std::wstring_view Tag = L"QRAST:";
constexpr std::size_t KeywordLength = 5;

void StoreInteger(std::wstring_view text, std::int32_t& target) {
  static_cast<void>(ScanIntegers(text, {&target, 1}));
}

// The order on the wire is not that of the record: the second number is the height.
void StoreBox(std::wstring_view text, QRastPageInfo& info) {
  std::array<float, 4> box{};
  if (!ScanFloats(text, box)) return;
  info.bboxX = box[0];
  info.bboxHeight = box[1];
  info.bboxWidth = box[2];
  info.bboxY = box[3];
}

}  // namespace

CQRastStderrParser::CQRastStderrParser(HANDLE* pipe, QRastPageInfo* pageInfo,
                                       QRastLineHandler onLine)
    : CBaseStderrParser(pipe), m_pPageInfo(pageInfo), m_OnLine(std::move(onLine)) {}

CQRastStderrParser::~CQRastStderrParser() = default;

void CQRastStderrParser::ParseLine(const std::wstring& line) {
  if (line.empty()) return;
  CAppLog::Instance().Write(line.c_str());
  if (m_OnLine) m_OnLine(line);
  if (line.starts_with(Tag)) ParseRecord(std::wstring_view(line).substr(Tag.size()));
}

void CQRastStderrParser::ParseRecord(std::wstring_view record) {
  const std::wstring_view keyword = record.substr(0, KeywordLength);
  const std::wstring_view value = record.substr(keyword.size());
  if (keyword == L"name ") {
    m_pPageInfo->name = value;
  } else if (keyword == L"bits ") {
    StoreInteger(value, m_pPageInfo->bits);
  } else if (keyword == L"npls ") {
    StoreInteger(value, m_pPageInfo->npls);
  } else if (keyword == L"xdpi ") {
    StoreInteger(value, m_pPageInfo->xdpi);
  } else if (keyword == L"ydpi ") {
    StoreInteger(value, m_pPageInfo->ydpi);
  } else if (keyword == L"bbox ") {
    StoreBox(value, *m_pPageInfo);
  } else if (keyword == L"mavl ") {
    StoreInteger(value, m_pPageInfo->mavl);
  } else if (keyword == L"bmap ") {
    static_cast<void>(ScanIntegers(value, m_pPageInfo->bmap));
  }
}

}  // namespace PrintingThread
