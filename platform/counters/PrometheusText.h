#pragma once

#include <string>
#include <string_view>

#include "platform/counters/CounterStore.h"
#include "quenlet/Result.h"

namespace quenlet {

inline constexpr char CounterErrorDomain[] = "ovaro.quenlet.counter-error";

// Counters in the Prometheus text format: scalars as gauges, distributions as summaries without
// quantiles. A name is the key with "_" for dots and dashes; "_value" is appended to the name of a
// gauge that ends like a part of a summary. The help text contains the key, so that reading returns
// exactly the counters written. Stateless.
//
//   # HELP ovaro_quenlet_me_card_count_value The counter ovaro.quenlet.me-card.count
//   # TYPE ovaro_quenlet_me_card_count_value gauge
//   ovaro_quenlet_me_card_count_value 1
class PrometheusText final {
 public:
  PrometheusText() = delete;

  [[nodiscard]] static std::string write(const CounterValues& values);
  // Accepts exactly the form that write() makes; else an error in CounterErrorDomain, whose code is
  // the number of the first wrong line.
  [[nodiscard]] static Result<CounterValues> read(std::string_view text);
};

}  // namespace quenlet
