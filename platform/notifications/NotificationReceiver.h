#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/Mutex.h"
#include "platform/notifications/NotificationDirectory.h"
#include "platform/scheduling/EventLoop.h"
#include "platform/scheduling/PatientThread.h"

namespace quenlet {

// A socket of this process's own in the directory of notifications, as long as it is open.
// Thread-safe. Starts a thread only for descriptors that somebody has attached to a notification,
// on kernels that cannot refuse them.
class NotificationReceiver final : public std::enable_shared_from_this<NotificationReceiver> {
 public:
  // Datagrams that are longer, empty or not UTF-8 are ignored.
  static constexpr std::size_t maximumNameSizeInBytes = 255;

  // Calls `onName` on the loop's thread for every notification.
  [[nodiscard]] static Result<std::shared_ptr<NotificationReceiver>> open(
      EventLoop& eventLoop, const std::filesystem::path& directoryPath,
      std::function<void(const std::string& name)> onName);
  // As close().
  ~NotificationReceiver();
  NotificationReceiver(const NotificationReceiver&) = delete;
  NotificationReceiver& operator=(const NotificationReceiver&) = delete;

  // Removes the socket. The loop must still be there.
  void close() EXCLUDES(mutex);

  [[nodiscard]] const std::shared_ptr<const NotificationDirectory>& directory() const {
    return parent;
  }
  [[nodiscard]] const std::string& socketName() const { return name; }

  [[nodiscard]] static bool isNotificationName(std::string_view text);

 private:
  NotificationReceiver(NotificationDirectory directory, std::string socketName,
                       FileDescriptor bound, std::function<void(const std::string& name)> onName);
  void watchSocket(EventLoop& eventLoop) EXCLUDES(mutex);
  void receive();
  [[nodiscard]] std::optional<std::string> receiveDatagram() EXCLUDES(mutex);
  void dropPatiently() REQUIRES(mutex);

  const std::shared_ptr<const NotificationDirectory> parent;
  const std::string name;
  const std::function<void(const std::string& name)> take;
  Mutex mutex;
  std::shared_ptr<const FileDescriptor> socket GUARDED_BY(mutex);  // null once closed
  std::shared_ptr<EventLoop::Watch> watch GUARDED_BY(mutex);
  // Whether the kernel keeps senders from attaching descriptors; see refuseDescriptors.
  bool refusesDescriptors GUARDED_BY(mutex) = false;
  // Takes messages with descriptors attached.
  PatientThread patient{PatientThread::Start::whenNeeded};
};

}  // namespace quenlet
