#pragma once

#include <condition_variable>
#include <mutex>

// Clang's thread-safety attributes; empty under other compilers.
#if defined(__clang__)
#define QUENLET_ATTRIBUTE(x) __attribute__((x))
#else
#define QUENLET_ATTRIBUTE(x)
#endif
#define CAPABILITY(x) QUENLET_ATTRIBUTE(capability(x))
#define SCOPED_CAPABILITY QUENLET_ATTRIBUTE(scoped_lockable)
#define GUARDED_BY(x) QUENLET_ATTRIBUTE(guarded_by(x))
#define REQUIRES(...) QUENLET_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define EXCLUDES(...) QUENLET_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define ACQUIRE(...) QUENLET_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define RELEASE(...) QUENLET_ATTRIBUTE(release_capability(__VA_ARGS__))

namespace quenlet {

// A mutual-exclusion lock that the compiler's thread-safety analysis understands. Not recursive.
class CAPABILITY("mutex") Mutex final {
 public:
  Mutex() = default;
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  void lock() ACQUIRE() { mutex.lock(); }
  void unlock() RELEASE() { mutex.unlock(); }

 private:
  friend class ConditionVariable;
  std::mutex mutex;
};

// Holds a Mutex from construction to destruction.
class SCOPED_CAPABILITY MutexLock final {
 public:
  explicit MutexLock(Mutex& held) ACQUIRE(held) : mutex(held) { mutex.lock(); }
  ~MutexLock() RELEASE() { mutex.unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  Mutex& mutex;
};

// A condition variable for Mutex. Wakes can be spurious: test the condition in a loop.
class ConditionVariable final {
 public:
  ConditionVariable() = default;
  ConditionVariable(const ConditionVariable&) = delete;
  ConditionVariable& operator=(const ConditionVariable&) = delete;

  void wait(Mutex& mutex) REQUIRES(mutex) {
    std::unique_lock<std::mutex> lock(mutex.mutex, std::adopt_lock);
    variable.wait(lock);
    lock.release();
  }

  // Waits until woken or until `deadline`, whichever comes first; false at the deadline.
  template <typename TimePoint>
  [[nodiscard]] bool waitUntil(Mutex& mutex, const TimePoint& deadline) REQUIRES(mutex) {
    std::unique_lock<std::mutex> lock(mutex.mutex, std::adopt_lock);
    const bool inTime = variable.wait_until(lock, deadline) == std::cv_status::no_timeout;
    lock.release();
    return inTime;
  }

  void notifyOne() { variable.notify_one(); }
  void notifyAll() { variable.notify_all(); }

 private:
  std::condition_variable variable;
};

}  // namespace quenlet
