#include "cli/server/device_delivery.h"

#include <atomic>
#include <chrono>
#include <thread>

#include "cli/console/exit_status.h"
#include "cli/input/input_file.h"
#include "cli/server/worker.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/wait.h"
#include "server/delivery/delivery.h"

namespace rastrel::cli {
namespace {

using namespace std::chrono_literals;

constexpr auto LookInterval = 200ms;
constexpr auto ProgressInterval = 1s;

server::DeviceKind KindOf(server::DeviceWay way) {
  switch (way) {
    case server::DeviceWay::Program: return server::DeviceKind::Program;
    case server::DeviceWay::Socket: return server::DeviceKind::Socket;
    case server::DeviceWay::PrintQueue: return server::DeviceKind::Queue;
    default: return server::DeviceKind::Folder;
  }
}

Expected<server::DeliveryDevice> DeviceOf(const server::DeviceSettings& settings) {
  auto device = server::DeviceWithAddress(settings.name, KindOf(settings.way), settings.address);
  if (!device) return device;
  device->timeoutSeconds = settings.timeoutSeconds;
  device->retries = settings.retries;
  device->pauseSeconds = settings.pauseSeconds;
  device->againAfterCutOff = settings.againAfterCutOff;
  return device;
}

class QueueProgress : public server::DeliveryProgress {
 public:
  QueueProgress(server::JobQueue& queue, server::JobId id) : m_Queue(queue), m_Id(id) {}

  Expected<void> OnSending(std::int64_t totalBytes) override {
    return m_Queue.SetSending(m_Id, totalBytes);
  }
  void OnSent(std::int64_t bytes) override {
    const auto now = std::chrono::steady_clock::now();
    if (now < m_Next) return;
    m_Next = now + ProgressInterval;
    static_cast<void>(m_Queue.SetSent(m_Id, bytes));
  }
  void OnMessage(const std::string& line) override {
    static_cast<void>(m_Queue.AddMessage(m_Id, line));
  }

 private:
  server::JobQueue& m_Queue;
  server::JobId m_Id;
  std::chrono::steady_clock::time_point m_Next{};
};

// Becomes readable when a person cancels the job, or the worker is to stop.
class CancelWatch {
 public:
  CancelWatch(server::JobQueue& queue, server::JobId id, HANDLE semaphore)
      : m_Semaphore(semaphore), m_Thread([this, &queue, id] {
          while (!m_Ended) {
            if (IsStopAsked() || queue.IsCancelAsked(id).ValueOr(false)) {
              static_cast<void>(os::ReleaseSemaphoreHandle(m_Semaphore));
              return;
            }
            std::this_thread::sleep_for(LookInterval);
          }
        }) {}
  ~CancelWatch() {
    m_Ended = true;
    m_Thread.join();
  }
  CancelWatch(const CancelWatch&) = delete;
  CancelWatch& operator=(const CancelWatch&) = delete;

 private:
  HANDLE m_Semaphore;
  std::atomic<bool> m_Ended = false;
  std::thread m_Thread;  // last: it uses the others
};

Expected<void> Report(server::JobQueue& queue, const server::Job& job,
                      const server::DeliveryEnd& end) {
  switch (end.fate) {
    case server::DeliveryFate::Delivered:
      for (const std::string& path : end.paths)
        static_cast<void>(queue.AddMessage(job.id, "delivered " + path));
      return queue.SetDone(job.id);
    case server::DeliveryFate::Canceled:
      if (queue.IsCancelAsked(job.id).ValueOr(false)) return queue.SetCanceled(job.id);
      // A worker that stops leaves the job to the next, which may begin it again.
      return queue.SetSent(job.id, 0);
    case server::DeliveryFate::Failed:
      return queue.SetFailed(job.id, static_cast<int>(ExitStatus::JobFailed), end.message);
    case server::DeliveryFate::Uncertain: break;
  }
  return queue.SetUncertain(job.id, end.sentBytes, end.message);
}

}  // namespace

Expected<void> DeliverToDevice(server::JobQueue& queue, const server::Job& job,
                               const server::DeviceSettings& settings,
                               const std::vector<std::string>& files) {
  const auto device = OrEnd(ExitStatus::WrongUse, DeviceOf(settings));
  os::FileDescriptor cancel(OrEnd(ExitStatus::JobFailed, os::CreateSemaphoreHandle(0)));
  server::Delivery delivery;
  delivery.name = std::to_string(job.id) + "-" + SafeJobName(job.title);
  delivery.title = job.title;
  delivery.user = job.owner;
  delivery.files = files;
  QueueProgress progress(queue, job.id);
  server::DeliveryEnd end;
  {
    const CancelWatch watch(queue, job.id, cancel.Get());
    end = OrEnd(ExitStatus::JobFailed,
                server::Deliver(os::DataRoot(), device, delivery, progress, cancel.Get()));
  }
  return Report(queue, job, end);
}

}  // namespace rastrel::cli
