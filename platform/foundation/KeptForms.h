#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "platform/foundation/Mutex.h"

namespace quenlet {

// A cache of encoded forms, as a member of the immutable object that they encode. Each form is made
// on first use and kept as long as the object; a copy of the object starts with an empty cache.
// Thread-safe. A form of more than 1 MiB is not kept but made again each time.
class KeptForms final {
 public:
  enum Form : std::size_t { fetchReply, synchronousFetchReply };

  KeptForms() = default;
  KeptForms(const KeptForms&) {}
  KeptForms& operator=(const KeptForms&) {
    MutexLock lock(mutex);
    forms = {};
    return *this;
  }

  // The kept form, else the result of make(), which is then kept. Runs make() without the lock, so
  // several threads may make the same form at the same time.
  template <typename Make>
  [[nodiscard]] std::string get(Form form, Make make) const EXCLUDES(mutex) {
    constexpr std::size_t mostKeptBytes = std::size_t{1} << 20;
    {
      MutexLock lock(mutex);
      if (!forms.at(form).empty()) return forms.at(form);
    }
    std::string made = make();
    MutexLock lock(mutex);
    if (made.size() <= mostKeptBytes) forms.at(form) = made;
    return made;
  }

  // The cache is not part of the object's value.
  friend bool operator==(const KeptForms&, const KeptForms&) { return true; }

 private:
  mutable Mutex mutex;
  mutable std::array<std::string, 2> forms GUARDED_BY(mutex);
};

}  // namespace quenlet
