#pragma once

#include <memory>
#include <string>

#include "tests/support/ManualSchedulers.h"
#include "tests/support/Trace.h"

namespace quenlet {

// Schedulers that tell a trace which of them runs.
class TracingScheduler final : public Scheduler {
 public:
  TracingScheduler(std::shared_ptr<Scheduler> scheduler, std::string schedulerName, Trace& shared)
      : real(std::move(scheduler)), name(std::move(schedulerName)), trace(shared) {}
  void performBlock(Block block) override {
    real->performBlock(trace.within(name, std::move(block)));
  }
  std::shared_ptr<Cancelable> afterDelay(double delaySeconds, Block block) override {
    return real->afterDelay(delaySeconds, trace.within(name, std::move(block)));
  }

 private:
  const std::shared_ptr<Scheduler> real;
  const std::string name;
  Trace& trace;
};

class TracingReaderWriterScheduler final : public ReaderWriterScheduler {
 public:
  TracingReaderWriterScheduler(std::shared_ptr<ReaderWriterScheduler> scheduler, Trace& shared)
      : real(std::move(scheduler)), trace(shared) {}
  std::shared_ptr<Cancelable> performWriterBlock(Block block) override {
    return real->performWriterBlock(trace.within("writer", std::move(block)));
  }
  std::shared_ptr<Cancelable> performReaderBlock(Block block) override {
    return real->performReaderBlock(trace.within("reader", std::move(block)));
  }
  void performSynchronousReaderBlock(const Block& block) override {
    real->performSynchronousReaderBlock(trace.within("reader", block));
  }

 private:
  const std::shared_ptr<ReaderWriterScheduler> real;
  Trace& trace;
};

// A serial scheduler goes by the last part of its name ("io").
class TracingSchedulerProvider final : public SchedulerProvider {
 public:
  TracingSchedulerProvider(ManualSchedulerProvider& provider, Trace& shared)
      : real(provider), trace(shared) {}
  std::shared_ptr<Scheduler> backgroundScheduler() override {
    return traced(real.backgroundScheduler(), "background");
  }
  std::shared_ptr<Scheduler> mainThreadScheduler() override {
    return traced(real.mainThreadScheduler(), "main");
  }
  std::shared_ptr<Scheduler> immediateScheduler() override {
    return traced(real.immediateScheduler(), "immediate");
  }
  std::shared_ptr<Scheduler> newSerialSchedulerWithName(const std::string& name) override {
    return traced(real.newSerialSchedulerWithName(name), name.substr(name.rfind('.') + 1));
  }
  std::shared_ptr<ReaderWriterScheduler> newReaderWriterSchedulerWithName(
      const std::string& name) override {
    return std::make_shared<TracingReaderWriterScheduler>(
        real.newReaderWriterSchedulerWithName(name), trace);
  }

 private:
  std::shared_ptr<Scheduler> traced(std::shared_ptr<Scheduler> scheduler, std::string name) {
    return std::make_shared<TracingScheduler>(std::move(scheduler), std::move(name), trace);
  }

  ManualSchedulerProvider& real;
  Trace& trace;
};

}  // namespace quenlet
