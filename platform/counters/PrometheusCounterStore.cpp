#include "platform/counters/PrometheusCounterStore.h"

#include <cerrno>
#include <cmath>
#include <utility>

#include "platform/counters/PrometheusText.h"

namespace quenlet {
namespace {

bool isMissingFile(const ErrorPtr& error) {
  return error->domain() == PosixErrorDomain && error->code() == ENOENT;
}

}  // namespace

PrometheusCounterStore::PrometheusCounterStore(std::filesystem::path file,
                                               std::shared_ptr<DataProxy> fileAccess)
    : path(std::move(file)),
      dataProxy(std::move(fileAccess)),
      problems(std::make_shared<ProblemReporter>(path.filename().string())) {}

void PrometheusCounterStore::setScalar(const std::string& key, std::int64_t value) {
  std::call_once(loaded, [this] { load(); });
  MutexLock lock(mutex);
  values.insert_or_assign(key, value);
  write();
}

void PrometheusCounterStore::addSample(const std::string& key, double sample) {
  std::call_once(loaded, [this] { load(); });
  MutexLock lock(mutex);
  auto& value = values.try_emplace(key, CounterDistribution()).first->second;
  if (!std::holds_alternative<CounterDistribution>(value)) value = CounterDistribution();
  auto& samples = std::get<CounterDistribution>(value);
  if (!std::isfinite(samples.sum + sample)) return;
  ++samples.count;
  samples.sum += sample;
  write();
}

void PrometheusCounterStore::load() {
  const Future<std::string> reading = dataProxy->dataWithContentsOfURL(path);
  const Result<std::string>& bytes = reading.result();
  if (!bytes.isLeft() && isMissingFile(bytes.right())) return;
  Result<CounterValues> kept = bytes.isLeft() ? PrometheusText::read(bytes.left())
                                              : Result<CounterValues>::right(bytes.right());
  if (!kept.isLeft()) {
    problems->setProblem(kept.right());
    dataProxy->keepDamagedFile(path);
    return;
  }
  MutexLock lock(mutex);
  values = std::move(kept).takeLeft();
}

// The lock keeps the writes in the order of the counts; the file layer only queues them.
void PrometheusCounterStore::write() {
  dataProxy->writeData(PrometheusText::write(values), path, WritingOptions::atomic)
      .onCompletion([reporter = problems](const Result<bool>& outcome) {
        reporter->setProblem(outcome.isLeft() ? nullptr : outcome.right());
      });
}

}  // namespace quenlet
