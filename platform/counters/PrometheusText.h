#pragma once

#include <string>
#include <string_view>

#include "platform/counters/CounterValues.h"
#include "platform/foundation/Either.h"

namespace quenlet {

inline constexpr char CounterErrorDomain[] = "ovaro.quenlet.counter-error";

// Counters in the Prometheus text format: scalars as gauges, distributions as summaries with no
// quantiles. A name is the key with every character but letters and digits as "_"; a gauge whose
// name would end as a part of a summary does gets "_value" behind it. The help text holds the key,
// so that reading gives back what was written. Stateless.
class PrometheusText final {
 public:
  PrometheusText() = delete;

  [[nodiscard]] static std::string write(const CounterValues& values);
  // Reads what write() makes and nothing else; an error from CounterErrorDomain, whose code is the
  // number of the first line that is wrong.
  [[nodiscard]] static Result<CounterValues> read(std::string_view text);
};

}  // namespace quenlet
