#pragma once

#include <atomic>
#include <mutex>

namespace rastrel::job {

/// Where the two process-wide objects live. An object is made at first use; its constructor
/// announces itself before anything else, so that code which the constructor calls on the same
/// thread finds the object while it is still being made. Another thread that comes meanwhile waits
/// until the object is whole.
template <typename Object>
class Singleton {
 public:
  /// The object. `make` constructs one, whose constructor calls Announce.
  template <typename Make>
  Object& Get(Make make) {
    if (Object* whole = m_Whole.load(std::memory_order_acquire)) return *whole;
    const std::lock_guard<std::recursive_mutex> guard(m_Mutex);
    if (m_Announced == nullptr) {
      make();
      m_Whole.store(m_Announced, std::memory_order_release);
    }
    return *m_Announced;
  }

  /// The object if it is there and whole, or null. Makes none.
  [[nodiscard]] Object* Peek() const { return m_Whole.load(std::memory_order_acquire); }

  /// Called first by the object's constructor.
  void Announce(Object* object) { m_Announced = object; }

  /// Called by the object's destructor.
  void Retract() {
    m_Whole.store(nullptr, std::memory_order_release);
    m_Announced = nullptr;
  }

  /// Deletes the object, if there is one. REQUIRES: no other thread uses it.
  void Delete() {
    const std::lock_guard<std::recursive_mutex> guard(m_Mutex);
    delete m_Announced;
  }

 private:
  std::recursive_mutex m_Mutex;
  std::atomic<Object*> m_Whole{nullptr};
  Object* m_Announced = nullptr;
};

}  // namespace rastrel::job
