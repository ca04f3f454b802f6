#pragma once

#include <pthread.h>

#include <cstddef>

namespace quenlet {

// While it exists, the system refuses new threads: none gets so large a stack.
class ThreadsRefused final {
 public:
  ThreadsRefused() {
    ::pthread_getattr_default_np(&before);
    pthread_attr_t huge = before;
    ::pthread_attr_setstacksize(&huge, std::size_t{1} << (8 * sizeof(std::size_t) - 18));
    ::pthread_setattr_default_np(&huge);
  }
  ~ThreadsRefused() { ::pthread_setattr_default_np(&before); }
  ThreadsRefused(const ThreadsRefused&) = delete;
  ThreadsRefused& operator=(const ThreadsRefused&) = delete;

 private:
  pthread_attr_t before{};
};

}  // namespace quenlet
