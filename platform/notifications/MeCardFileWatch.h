#pragma once

#include <filesystem>
#include <memory>

#include "platform/notifications/DistributedNotificationCenter.h"
#include "platform/scheduling/EventLoop.h"

namespace quenlet {

// While it exists, posts MeCardChangeDistributedNotification on the event loop's thread whenever
// the file of the owner's own card is written, replaced, moved or deleted. Immutable. Does not read
// the file: observers find out whether the card differs.
class MeCardFileWatch final {
 public:
  MeCardFileWatch(EventLoop& eventLoop, const std::filesystem::path& cardFile,
                  std::shared_ptr<DistributedNotificationCenter> notificationCenter);
  ~MeCardFileWatch();
  MeCardFileWatch(const MeCardFileWatch&) = delete;
  MeCardFileWatch& operator=(const MeCardFileWatch&) = delete;

 private:
  const std::shared_ptr<Cancelable> watch;
};

}  // namespace quenlet
