#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>

#include "platform/files/DataProxy.h"
#include "platform/scheduling/EventLoop.h"
#include "platform/telephony/Telephony.h"

namespace quenlet {

// Below the home directory.
inline constexpr char SIMCardsPath[] = "Library/Telephony/sim.plist";

// The SIM cards' phone numbers from a watched property-list file: an array of up to `maximumItems`
// dictionaries with "identifier" and "value". Thread-safe. Handlers run on the event loop's thread,
// and only when the numbers differ from those of their last call.
//
// A missing file means no numbers. A file that cannot be read or is malformed is ignored, and
// reported on standard error once while that lasts, for all handlers together; use one monitor for
// the whole process. The loop must outlive the registrations.
class PropertyListPhoneNumberMonitor final : public PhoneNumberMonitor {
 public:
  static constexpr std::size_t maximumItems = 1000;

  PropertyListPhoneNumberMonitor(std::filesystem::path file, std::shared_ptr<DataProxy> dataProxy,
                                 EventLoop& eventLoop);

  // The registration may outlive the monitor. After a cancel on the loop's thread, `handler` is not
  // called any more; after one on another thread, a call may still be under way.
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
