#pragma once

#include <filesystem>
#include <memory>

#include "platform/files/DataProxy.h"
#include "platform/scheduling/EventLoop.h"
#include "platform/telephony/SIMCardFile.h"
#include "platform/telephony/Telephony.h"

namespace quenlet {

// The SIM cards' phone numbers from a watched file (see SIMCardFile). Thread-safe. Handlers run on
// the event loop's thread, and only when the numbers differ from those of their last call.
//
// A missing file means no numbers. A file that cannot be read or is malformed is ignored, and
// reported on standard error once while that lasts, for all handlers together; use one monitor for
// the whole process. The loop must outlive the registrations.
class PropertyListPhoneNumberMonitor final : public PhoneNumberMonitor {
 public:
  PropertyListPhoneNumberMonitor(std::filesystem::path file, std::shared_ptr<DataProxy> dataProxy,
                                 EventLoop& eventLoop);

  // The registration may outlive the monitor. After a cancel on the loop's thread, `handler` is not
  // called any more; after one on another thread, a call may still be under way.
  [[nodiscard]] std::shared_ptr<Cancelable> addInfoChangeHandler(
      InfoChangeHandler handler) override;
  // Reads the file and completes within this call.
  void infoWithCompletion(InfoCompletion completion) override;

 private:
  struct Registration;

  const std::shared_ptr<SIMCardFile> cardFile;
  EventLoop& eventLoop;
};

}  // namespace quenlet
