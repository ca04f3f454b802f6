#include "platform/notifications/MeCardFileWatch.h"

#include <string>
#include <utility>

#include "platform/files/DirectoryWatch.h"

namespace quenlet {

MeCardFileWatch::MeCardFileWatch(EventLoop& eventLoop, const std::filesystem::path& cardFile,
                                 std::shared_ptr<DistributedNotificationCenter> notificationCenter)
    : watch(DirectoryWatch::watchDirectory(
          eventLoop, cardFile.parent_path(),
          [name = cardFile.filename().string(),
           center = std::move(notificationCenter)](const std::string& changed) {
            if (changed.empty() || changed == name) {
              center->post(MeCardChangeDistributedNotification);
            }
          })) {}

MeCardFileWatch::~MeCardFileWatch() { watch->cancel(); }

}  // namespace quenlet
