#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>

#include "platform/files/DataProxy.h"
#include "platform/scheduling/EventLoop.h"
#include "platform/telephony/PhoneNumberMonitor.h"

namespace quenlet {

// The SIM cards' phone numbers from a property-list file, which is watched: an array of
// dictionaries with "identifier" and "value". Thread-safe. Handlers run on the event loop's thread,
// and only when the numbers differ from those that they were told last.
//
// No file is no numbers. A file that cannot be read, or is not such an array, changes nothing for
// the handlers, and is said once on standard error while it lasts, however many handlers there are:
// one monitor does for a whole process. More than `maximumItems` numbers are no such array either.
// The loop outlives the registrations.
class PropertyListPhoneNumberMonitor final : public PhoneNumberMonitor {
 public:
  static constexpr std::size_t maximumItems = 1000;

  PropertyListPhoneNumberMonitor(std::filesystem::path file, std::shared_ptr<DataProxy> dataProxy,
                                 EventLoop& eventLoop);

  // Outlives the monitor. Cancelled on the loop's thread, `handler` is not called any more; on
  // another thread, a call may be under way.
  [[nodiscard]] std::shared_ptr<Cancelable> addInfoChangeHandler(
      InfoChangeHandler handler) override;
  // Reads the file and completes within this call.
  void infoWithCompletion(InfoCompletion completion) override;

 private:
  struct CardFile;
  struct Registration;

  const std::shared_ptr<CardFile> cardFile;
  EventLoop& eventLoop;
};

}  // namespace quenlet
