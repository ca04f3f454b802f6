#include "platform/counters/PrometheusCounterStore.h"

#include <cmath>
#include <utility>

#include "platform/counters/PrometheusText.h"
#include "platform/files/FileReading.h"

namespace quenlet {
namespace {

// Adds samples to those of a key. False, and no change, if the result would not be finite.
bool add(CounterDistribution samples, const std::string& key, CounterValues& values) {
  const auto found = values.find(key);
  if (found != values.end()) {
    if (const auto* present = std::get_if<CounterDistribution>(&found->second)) {
      samples.count += present->count;
      samples.sum += present->sum;
    }
  }
  if (!std::isfinite(samples.sum) || samples.count > CounterDistribution::largestCount) {
    return false;
  }
  values.insert_or_assign(key, samples);
  return true;
}

}  // namespace

PrometheusCounterStore::PrometheusCounterStore(std::filesystem::path file,
                                               std::shared_ptr<DataProxy> fileAccess)
    : path(std::move(file)),
      dataProxy(std::move(fileAccess)),
      problems(std::make_shared<ProblemReporter>(path.filename().string())) {}

void PrometheusCounterStore::setScalar(const std::string& key, std::int64_t value) {
  Saving saving;
  {
    MutexLock lock(mutex);
    values.insert_or_assign(key, value);
    saving = save();
  }
  report(saving);
}

void PrometheusCounterStore::addSample(const std::string& key, double sample) {
  Saving saving;
  {
    MutexLock lock(mutex);
    if (!add({1, sample}, key, values)) return;
    saving = save();
  }
  report(saving);
}

// Queues the write under the lock, so that writes are in the order of the counts. That does not
// block: the file layer writes on a thread of its own.
PrometheusCounterStore::Saving PrometheusCounterStore::save() {
  Saving saving;
  if (!loaded) saving.problemOfReading = load();
  if (loaded) {
    saving.writing =
        dataProxy->writeData(PrometheusText::write(values), path, WritingOptions::atomic);
  }
  return saving;
}

void PrometheusCounterStore::report(const Saving& saving) {
  if (saving.problemOfReading) problems->setProblem(saving.problemOfReading);
  if (!saving.writing) return;
  saving.writing->onCompletion([reporter = problems](const Result<bool>& outcome) {
    reporter->setProblem(outcome.ok() ? nullptr : outcome.error());
  });
}

// Adds the counts made so far to those in the file. Returns the problem with the file, if any;
// `loaded` then stays false if the file may not be replaced.
ErrorPtr PrometheusCounterStore::load() {
  const Future<std::string> reading = dataProxy->dataWithContentsOfURL(path);
  const Result<std::string>& bytes = reading.result();
  if (!bytes.ok()) {
    loaded = isMissingFile(*bytes.error());
    return loaded ? nullptr : bytes.error();
  }
  Result<CounterValues> kept = PrometheusText::read(bytes.value());
  if (!kept.ok()) {
    loaded = dataProxy->keepDamagedFile(path);
    return kept.error();
  }
  const CounterValues counted = std::exchange(values, std::move(kept).takeValue());
  for (const auto& [key, value] : counted) {
    if (const auto* samples = std::get_if<CounterDistribution>(&value)) {
      add(*samples, key, values);
    } else {
      values.insert_or_assign(key, value);
    }
  }
  loaded = true;
  return nullptr;
}

}  // namespace quenlet
