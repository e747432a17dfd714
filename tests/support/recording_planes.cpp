#include "tests/support/recording_planes.h"

#include <array>
#include <cstdio>
#include <utility>

namespace rastrel::test {
namespace {

// The functions that a library exports have no object: they record in the reader made last.
RecordingPlaneReader* g_Reader = nullptr;

// {20D77C57-E591-4554-9341-193D5265AEAD}
std::string TextOfId(const InterfaceId& id) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                id.first, id.second, id.third, id.rest[0], id.rest[1], id.rest[2], id.rest[3],
                id.rest[4], id.rest[5], id.rest[6], id.rest[7]);
  return text.data();
}

}  // namespace

RecordingPlaneReader::RecordingPlaneReader(HostCalls& calls)
    : m_Calls(calls), m_Outer(std::exchange(g_Reader, this)), m_Pixels(8, std::byte{0x7F}) {
  m_Header.biWidth = m_Width;
  m_Header.biHeight = m_Height;
  m_Header.biBitCount = 24;
}

RecordingPlaneReader::~RecordingPlaneReader() { g_Reader = m_Outer; }

std::vector<std::string> RecordingPlaneReader::LeftOpen() const {
  std::vector<std::string> open;
  if (m_LoadedLibraries != 0) open.emplace_back("plane reader's library");
  if (m_Readers != 0) open.emplace_back("plane reader");
  if (m_PixelBlocks != 0) open.emplace_back("plane's pixels");
  return open;
}

NameText RecordingPlaneReader::LibraryName(host::LibraryHandle library) const {
  return {library == m_Library ? "library" : "another library"};
}

std::wstring RecordingPlaneReader::SearchPath(const wchar_t* fileName) {
  return m_Calls.Answered(m_FoundPath, "SearchPath", fileName);
}

host::LibraryHandle RecordingPlaneReader::LoadLibrary(const wchar_t* path) {
  const bool loaded = m_Calls.Answer("LoadLibrary", 1) != 0;
  m_Calls.Answered(NameText{loaded ? "library" : "null"}, "LoadLibrary", path);
  if (loaded) ++m_LoadedLibraries;
  return loaded ? m_Library : nullptr;
}

host::PlaneReader::CreateFunction RecordingPlaneReader::GetCreateFunction(
    host::LibraryHandle library, const char* name) {
  const bool found = m_Calls.Answer("GetCreateFunction", 1) != 0;
  m_Calls.Answered(NameText{found ? "Create" : "null"}, "GetCreateFunction", LibraryName(library),
                   NameText{name});
  return found ? &Create : nullptr;
}

host::PlaneReader::DestroyFunction RecordingPlaneReader::GetDestroyFunction(
    host::LibraryHandle library, const char* name) {
  const bool found = m_Calls.Answer("GetDestroyFunction", 1) != 0;
  m_Calls.Answered(NameText{found ? "Destroy" : "null"}, "GetDestroyFunction", LibraryName(library),
                   NameText{name});
  return found ? &Destroy : nullptr;
}

void RecordingPlaneReader::FreeLibrary(host::LibraryHandle library) {
  m_Calls.Told("FreeLibrary", LibraryName(library));
  --m_LoadedLibraries;
}

CFMDllIF* RecordingPlaneReader::Create() {
  const bool made = g_Reader->m_Calls.Answer("Create", 1) != 0;
  g_Reader->m_Calls.Answered(NameText{made ? "reader" : "null"}, "Create");
  if (made) ++g_Reader->m_Readers;
  return made ? g_Reader : nullptr;
}

void RecordingPlaneReader::Destroy(CFMDllIF* reader) {
  const bool known = reader == static_cast<CFMDllIF*>(g_Reader);
  g_Reader->m_Calls.Told("Destroy", NameText{known ? "reader" : "another reader"});
  --g_Reader->m_Readers;
}

CFMPlane* RecordingPlaneReader::GetInterface(const InterfaceId& id) {
  const bool known = m_Calls.Answer("GetInterface", 1) != 0;
  m_Calls.Answered(NameText{known ? "plane" : "null"}, "GetInterface", NameText{TextOfId(id)});
  return known ? this : nullptr;
}

int RecordingPlaneReader::SetBaseDirectory(const wchar_t* path) {
  return m_Calls.Answered(m_Calls.Answer("SetBaseDirectory", 1), "SetBaseDirectory", path);
}

int RecordingPlaneReader::SetLanguageKey(const wchar_t* key) {
  return m_Calls.Answered(m_Calls.Answer("SetLanguageKey", 1), "SetLanguageKey", key);
}

int RecordingPlaneReader::Open(const wchar_t* path) {
  return m_Calls.Answered(m_Calls.Answer("Open", 1), "Open", path);
}

int RecordingPlaneReader::GetDimensions(std::int32_t& width, std::int32_t& height) {
  const int answer = m_Calls.Answer("GetDimensions", 1);
  if (answer == 0) return m_Calls.Answered(answer, "GetDimensions");
  width = m_Width;
  height = m_Height;
  return m_Calls.Answered(answer, "GetDimensions", width, height);
}

int RecordingPlaneReader::GetPixels(const BITMAPINFOHEADER*& header,
                                    std::span<const std::byte>& pixels) {
  const int answer = m_Calls.Answered(m_Calls.Answer("GetPixels", 1), "GetPixels");
  if (answer == 0) return 0;
  header = &m_Header;
  pixels = m_Pixels;
  ++m_PixelBlocks;
  return answer;
}

void RecordingPlaneReader::ReleasePixels(const BITMAPINFOHEADER* header,
                                         std::span<const std::byte> pixels) {
  const bool own = header == &m_Header && pixels.data() == m_Pixels.data();
  m_Calls.Told("ReleasePixels", NameText{own ? "header, pixels" : "others"});
  --m_PixelBlocks;
}

}  // namespace rastrel::test
