#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <utility>

#include "platform/foundation/Mutex.h"

namespace quenlet {

// Counts the bytes that the connections of one service hold together. Thread-safe. The two handlers
// decide what to do about it. They run on the thread that made the change, which may hold a
// connection's lock: they must not block.
class HeldBytes final {
 public:
  // One connection's share of the total; with a null whole, just a number. One thread at a time.
  class Part final {
   public:
    explicit Part(std::shared_ptr<HeldBytes> ofWhole) : whole(std::move(ofWhole)) {}
    ~Part() { set(0); }
    Part(const Part&) = delete;
    Part& operator=(const Part&) = delete;

    [[nodiscard]] std::size_t get() const { return bytes; }
    void set(std::size_t now) {
      const std::size_t before = std::exchange(bytes, now);
      if (whole && now != before) whole->change(before, now);
    }

   private:
    const std::shared_ptr<HeldBytes> whole;
    std::size_t bytes = 0;
  };

  // Calls `whenExceeded` at each addition beyond `maximumBytes`, and `whenFallen` when the total
  // falls to half of a peak of 4 MiB or more.
  HeldBytes(std::size_t maximumBytes, std::function<void()> whenExceeded,
            std::function<void()> whenFallen)
      : maximum(maximumBytes), exceeded(std::move(whenExceeded)), fallen(std::move(whenFallen)) {}

  [[nodiscard]] bool isExceeded() EXCLUDES(mutex) {
    MutexLock lock(mutex);
    return total > maximum;
  }

 private:
  void change(std::size_t before, std::size_t now) EXCLUDES(mutex) {
    constexpr std::size_t worthNoticing = std::size_t{4} << 20;
    bool isTooMuch = false;
    bool hasFallen = false;
    {
      MutexLock lock(mutex);
      total += now - before;
      peak = std::max(peak, total);
      isTooMuch = now > before && total > maximum;
      hasFallen = peak >= worthNoticing && total <= peak / 2;
      if (hasFallen) peak = total;
    }
    if (isTooMuch) exceeded();
    if (hasFallen) fallen();
  }

  const std::size_t maximum;
  const std::function<void()> exceeded;
  const std::function<void()> fallen;
  Mutex mutex;
  std::size_t total GUARDED_BY(mutex) = 0;
  // The largest total since the last fall.
  std::size_t peak GUARDED_BY(mutex) = 0;
};

}  // namespace quenlet
