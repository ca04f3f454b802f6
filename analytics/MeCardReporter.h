#pragma once

#include "analytics/MeCardFields.h"

namespace quenlet {

// Reports the fields of an existing card to the standard reporter. Stateless, thread-safe.
class MeCardReporter final {
 public:
  void report(MeCardFields fields) const;
};

}  // namespace quenlet
