#pragma once

#include <memory>
#include <string>
#include <vector>

#include "rastrel/job/format_string.h"
#include "rastrel/platform/mfc/sync.h"
#include "rastrel/platform/os/handle.h"

namespace rastrel::os {
class Thread;
}

/// Drains one pipe of a child on a thread of its own, until the pipe ends, and hands each piece to
/// OnData. The owner makes it after the child has started and after it has closed its own copy of
/// the child's end, else the pipe never ends; it calls Start, ends the child, calls Wait, deletes
/// the reader and only then closes the read end.
class CPipeReader {
 public:
  /// `pipe` is the owner's variable, read again before each read; it must outlive the thread.
  explicit CPipeReader(HANDLE* pipe);
  CPipeReader(const CPipeReader&) = delete;
  CPipeReader& operator=(const CPipeReader&) = delete;
  /// REQUIRES: Wait was called, or Start never.
  virtual ~CPipeReader();
  /// One piece of the stream, at most BufferSize bytes, never empty. On the reader's thread.
  virtual void OnData(const char* bytes, unsigned count) = 0;

  /// Lets the stream count as ended as soon as `stop` is signalled (a semaphore, which keeps its
  /// count), whoever still holds the write end. May be called several times, before Start; the
  /// handle must outlive the thread.
  void EndWith(HANDLE stop) { m_Stops.push_back(stop); }
  /// Starts the thread. False if the system has none to give, or no semaphore (said in the
  /// application log).
  [[nodiscard]] bool Start();
  /// Waits for the end of the stream without a limit. Returns at once if no thread runs.
  void Wait();

  static constexpr unsigned BufferSize = 1024;

 private:
  void ReadAll();

  std::unique_ptr<rastrel::os::Thread> m_hThread;
  HANDLE* m_pPipe;
  std::vector<HANDLE> m_Stops;
  std::unique_ptr<char[]> m_pBuffer;
  unsigned m_BufferSize = BufferSize;
  std::unique_ptr<CSemaphore> m_pSemaphore;
  std::unique_ptr<CSingleLock> m_pLock;
};

/// Collects the RIP's standard output, its CFM2 text. Each piece is decoded from UTF-8 alone: a
/// character that a piece's end cuts comes out as replacement text, and what stands behind a zero
/// byte in a piece is lost.
class CRipOutReader : public CPipeReader {
 public:
  using CPipeReader::CPipeReader;
  ~CRipOutReader() override;
  void OnData(const char* bytes, unsigned count) override;

  formatstringT<wchar_t> m_Text;  ///< the owner's after Wait
};

namespace rastrel::printing {

/// The bytes of a piece up to its first zero, decoded from UTF-8 and appended.
void AppendPiece(std::wstring& text, const char* bytes, unsigned count);

}  // namespace rastrel::printing
