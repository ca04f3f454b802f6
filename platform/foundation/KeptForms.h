#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "platform/foundation/Mutex.h"

namespace quenlet {

// Encoded forms of an immutable object that others ask for again and again. They are made when they
// are first asked for and go with the object, of which this is a member; a copy of the object makes
// its own. Thread-safe. A form of more than 1 MiB is made anew each time.
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

  // What `make` gives for `form`, or gave before. Several threads may make it at the same time.
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

  // What is kept is no part of the object's value.
  friend bool operator==(const KeptForms&, const KeptForms&) { return true; }

 private:
  mutable Mutex mutex;
  mutable std::array<std::string, 2> forms GUARDED_BY(mutex);
};

}  // namespace quenlet
