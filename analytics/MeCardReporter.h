#pragma once

#include "analytics/MeCardFields.h"

namespace quenlet {

// Tells the standard reporter what a card that is there carries. Stateless, thread-safe.
class MeCardReporter final {
 public:
  void report(MeCardFields fields) const;
};

}  // namespace quenlet
