#pragma once

#include <exception>
#include <new>

#include "quenlet/Error.h"
#include "quenlet/quenlet.h"

namespace quenlet {

// The errors of the C interface. Stateless.
class ErrorByValue final {
 public:
  ErrorByValue() = delete;

  // QUENLET_OK for null. Texts that are too long end at the last whole character.
  [[nodiscard]] static quenlet_error of(const ErrorPtr& error);
  [[nodiscard]] static quenlet_error invalidArgument(const char* sentence);

  // Fills `place`, which may be null, and returns the status.
  static quenlet_status put(quenlet_error* place, const quenlet_error& error) noexcept;

  // Runs a function that returns an error. What it throws becomes one, too.
  template <typename Function>
  static quenlet_status guarded(quenlet_error* place, const Function& function) noexcept try {
    return put(place, function());
  } catch (...) {
    return put(place, ofCurrentException());
  }

 private:
  [[nodiscard]] static quenlet_error ofCurrentException() noexcept;
};

}  // namespace quenlet
