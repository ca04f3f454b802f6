#include "analytics/AnalyticsReporting.h"

#include "analytics/AggregateAnalyticsReporter.h"
#include "analytics/CounterAnalyticsReporter.h"
#include "analytics/LogAnalyticsReporter.h"

namespace quenlet {

std::shared_ptr<AnalyticsReporting> AnalyticsReporting::makeStandardReporter() {
  return std::make_shared<AggregateAnalyticsReporter>(AggregateAnalyticsReporter::Reporters{
      std::make_shared<LogAnalyticsReporter>(), std::make_shared<CounterAnalyticsReporter>()});
}

const std::shared_ptr<AnalyticsReporting>& AnalyticsReporting::standardReporter() {
  // Kept to the end of the process: some thread may report until then.
  static const auto& reporter = *new std::shared_ptr<AnalyticsReporting>(makeStandardReporter());
  return reporter;
}

}  // namespace quenlet
