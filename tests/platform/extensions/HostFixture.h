#pragma once

#include "platform/extensions/ExtensionError.h"
#include "platform/extensions/ExtensionHost.h"
#include "platform/scheduling/EventLoopScheduler.h"
#include "platform/scheduling/ImmediateScheduler.h"
#include "tests/platform/extensions/DonorScript.h"
#include "tests/support/RecordingAgent.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {

// A host with manifests and programs of the test's own, whose loop turns on the test's thread.
class HostFixture : public testing::Test {
 protected:
  using DonorPtr = std::shared_ptr<DonorExtension>;

  void makeHost(ExtensionLimits limits = {}) {
    host = std::make_unique<ExtensionHost>(
        std::vector<ManifestDirectory>{{root, "system"}, {root, "home/extensions"}},
        ExtensionSchedulers{loop, onLoop, background}, limits);
    descriptorsBefore = countDescriptors();
  }
  void write(const std::filesystem::path& file, const std::string& content, mode_t mode = 0644) {
    directory.write(file, content, mode);
  }
  void install(const std::string& bundle, const std::string& executable) {
    write("system/" + bundle + ".plist", donorManifest(bundle, executable));
  }

  // Turns the loop until the condition holds, for twenty seconds at most.
  template <typename Condition>
  void runUntil(Condition condition) {
    bool late = false;
    const auto deadline = scheduler->afterDelay(20, [&] { late = true; });
    while (!condition() && !late) {
      const auto turn = scheduler->afterDelay(0.005, [this] { loop.stop(); });
      loop.run();
    }
    deadline->cancel();
    EXPECT_FALSE(late);
  }
  // Waits until no child is left, and checks that all of its descriptors have gone with it.
  void expectNothingLeft() {
    runUntil([info = siginfo_t()]() mutable {
      return ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) < 0 && errno == ECHILD;
    });
    EXPECT_EQ(countDescriptors(), descriptorsBefore);
  }
  static std::ptrdiff_t countDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  }

  // The code of an error of the host's own, else "<domain>:<code>".
  static std::string nameOf(const Error& error) {
    const std::string code = std::to_string(error.code());
    return error.domain() == ExtensionErrorDomain ? "!" + code : error.domain() + ":" + code;
  }
  DonorPtr load(const std::string& bundle) {
    std::optional<Result<DonorObjectPtr>> loaded;
    host->makeLoader(agent)->donorWithIdentifier(bundle).onCompletion(
        [&](const Result<DonorObjectPtr>& outcome) { loaded = outcome; });
    runUntil([&] { return loaded.has_value(); });
    if (loaded && loaded->ok()) return std::dynamic_pointer_cast<DonorExtension>(loaded->value());
    if (loaded) notes.push_back(nameOf(*(lastError = loaded->error())));
    return nullptr;
  }
  std::vector<DonorPtr> discover() {
    std::vector<DonorPtr> found;
    static_cast<void>(host->currentExtensionsObservable(agent)->subscribe(
        Observer<DonorObjectPtr>::observerWithResultBlock([&](const DonorObjectPtr& donor) {
          found.push_back(std::dynamic_pointer_cast<DonorExtension>(donor));
        })));
    return found;
  }
  // Notes each answer in its request's place: the date's seconds, the error, or "twice".
  void renew(const DonorPtr& donor, const DonationValuePtr& value = email("ann@example.org")) {
    notes.emplace_back();
    donor->renewExpirationDateForDonatedValue(
        value, [this, place = notes.size() - 1](std::optional<Date> date, ErrorPtr error) {
          std::string& note = notes[place];
          if (!note.empty()) note = "twice";
          note = date ? std::to_string(static_cast<long>(date->secondsSince1970())) : "";
          if (error) note += nameOf(*(lastError = error));
          if (!date && !error) note = "nothing";
        });
  }
  std::string takeNotes() {
    runUntil([this] { return std::count(notes.begin(), notes.end(), "") == 0; });
    std::string all;
    for (const std::string& note : std::exchange(notes, {})) all += (all.empty() ? "" : " ") + note;
    return all;
  }

  TemporaryDirectory directory;
  const std::filesystem::path root = std::filesystem::canonical(directory.path());
  EventLoop loop;
  const std::shared_ptr<EventLoopScheduler> scheduler = std::make_shared<EventLoopScheduler>(loop);
  std::shared_ptr<Scheduler> onLoop = scheduler;
  std::shared_ptr<Scheduler> background = std::make_shared<ImmediateScheduler>(scheduler);
  const std::shared_ptr<RecordingAgent> agent = std::make_shared<RecordingAgent>();
  std::vector<std::string> notes;
  ErrorPtr lastError;
  std::ptrdiff_t descriptorsBefore = 0;
  std::unique_ptr<ExtensionHost> host;
};

}  // namespace quenlet
