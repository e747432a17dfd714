#pragma once

#include <memory>
#include <string>
#include <vector>

#include "rastrel/job/format_string.h"
#include "rastrel/platform/mfc/sync.h"
#include "rastrel/platform/os/handle.h"
#include "rastrel/platform/os/shared_word.h"

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

  /// Whether memory ran out for the stream: a part of it is lost, and the rest is not read. The
  /// child may be held up by its full pipe: the owner ends it and reports a failed job. Any thread.
  [[nodiscard]] bool HasLost() const { return m_bLost; }
  /// The owner's wait can include it: a semaphore that has a count once HasLost is true. Owned by
  /// the reader. REQUIRES: Start succeeded.
  [[nodiscard]] HANDLE& GetLossHandle() { return m_pSemaphore->m_hObject; }

  static constexpr unsigned BufferSize = 1024;

 protected:
  /// For OnData: memory ran out. Ends the reading. The reader's thread.
  void Lose() noexcept;

 private:
  void ReadAll();

  std::unique_ptr<rastrel::os::Thread> m_hThread;
  HANDLE* m_pPipe;
  std::vector<HANDLE> m_Stops;
  std::unique_ptr<char[]> m_pBuffer;
  unsigned m_BufferSize = BufferSize;
  rastrel::os::SharedWord<bool> m_bLost = false;
  std::unique_ptr<CSemaphore> m_pSemaphore;
  std::unique_ptr<CSingleLock> m_pLock;  // held until memory runs out
};

/// Collects the RIP's standard output, its CFM2 text. Each piece is decoded from UTF-8 by itself: a
/// character that is split between two pieces becomes replacement characters, and the bytes of a
/// piece after a zero byte are lost. There is no limit but memory: a text that does not fit is lost
/// (HasLost), and m_Text is empty then.
class CRipOutReader : public CPipeReader {
 public:
  using CPipeReader::CPipeReader;
  ~CRipOutReader() override;
  void OnData(const char* bytes, unsigned count) override;

  formatstringT<wchar_t> m_Text;  ///< the owner's after Wait
};

/// Reads a child's standard output for a supervisor that has no use for it, so that the child does
/// not block: the bytes are dropped.
class CDroppingReader : public CRipOutReader {
 public:
  using CRipOutReader::CRipOutReader;
  ~CDroppingReader() override;
  void OnData(const char* bytes, unsigned count) override;
};

namespace rastrel::printing {

/// The bytes of a piece up to its first zero, decoded from UTF-8 and appended.
void AppendPiece(std::wstring& text, const char* bytes, unsigned count);

}  // namespace rastrel::printing
