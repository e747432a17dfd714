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

/// Reads one pipe of a child on a thread of its own, until the pipe ends, and passes each piece to
/// OnData. The owner must keep this order: start the child; close its own copy of the child's end,
/// or the pipe never ends; make the reader; Start; end the child; Wait; delete the reader; close
/// the read end.
class CPipeReader {
 public:
  /// `pipe` is the owner's variable with the read end. It is read before each read of the pipe, and
  /// must outlive the thread.
  explicit CPipeReader(HANDLE* pipe);
  CPipeReader(const CPipeReader&) = delete;
  CPipeReader& operator=(const CPipeReader&) = delete;
  /// REQUIRES: Wait was called, or Start never.
  virtual ~CPipeReader();
  /// One piece of the stream, at most BufferSize bytes, never empty. On the reader's thread.
  virtual void OnData(const char* bytes, unsigned count) = 0;

  /// Ends the stream as soon as `stop` is signalled (a semaphore, which keeps its count), even if
  /// the write end is still open. May be called several times, before Start; the handle must
  /// outlive the thread.
  void EndWith(HANDLE stop) { m_Stops.push_back(stop); }
  /// Starts the thread. False if the system has no thread to give, or no semaphore (logged).
  [[nodiscard]] bool Start();
  /// Waits for the end of the stream, without a time limit. Returns at once if no thread runs.
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

/// Collects the RIP's standard output, its CFM2 text. Each piece is decoded from UTF-8 by itself: a
/// character that is split between two pieces becomes replacement characters, and the bytes of a
/// piece after a zero byte are lost.
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
