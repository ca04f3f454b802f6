#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "platform/foundation/Either.h"
#include "platform/scheduling/FileDescriptor.h"

namespace quenlet {

// The directory that holds one datagram socket for each observing process of the user. That it is
// the user's own and closed to everybody else is what tells a notification's sender: it is checked
// when the directory is opened, and everything then goes by the open descriptor, which also frees
// paths from the length that socket addresses have. Immutable, movable.
class NotificationDirectory final {
 public:
  // Creates the directory and its parent (0700) when missing. An error when either is not private
  // to the user.
  [[nodiscard]] static Result<NotificationDirectory> open(const std::filesystem::path& path);

  // Whether the directory is still what `path` leads to, and the user's own.
  [[nodiscard]] bool isPrivateAt(const std::filesystem::path& path) const;
  // The names of the sockets there, living or stale.
  [[nodiscard]] std::vector<std::string> socketNames() const;
  // A non-blocking socket that receives under a new name.
  [[nodiscard]] Result<FileDescriptor> bindSocket(const std::string& name) const;
  // A non-blocking socket that sends to that name. An error with code ECONNREFUSED when nobody
  // receives there any more.
  [[nodiscard]] Result<FileDescriptor> connectSocket(const std::string& name) const;
  // Without effect when it is gone already.
  void removeSocket(const std::string& name) const;

 private:
  explicit NotificationDirectory(FileDescriptor opened) : directory(std::move(opened)) {}

  FileDescriptor directory;
};

}  // namespace quenlet
