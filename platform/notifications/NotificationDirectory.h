#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "platform/foundation/FileDescriptor.h"
#include "quenlet/Result.h"

namespace quenlet {

// The directory with one datagram socket for each observing process of the user. It belongs to the
// user and is closed to everybody else, which is the only proof that a notification comes from the
// user's processes. This is checked when the directory is opened; everything then goes through the
// open descriptor, which also avoids the length limit of socket addresses. Immutable, movable.
class NotificationDirectory final {
 public:
  // Where it is in the user's runtime directory.
  [[nodiscard]] static std::filesystem::path below(const std::filesystem::path& runtimeDirectory) {
    return runtimeDirectory / "quenlet" / "notifications";
  }
  // Creates the directory and its parent (0700) when missing. An error when either is not private
  // to the user.
  [[nodiscard]] static Result<NotificationDirectory> open(const std::filesystem::path& path);

  // Whether `path` still leads to this directory, and it is still private to the user.
  [[nodiscard]] bool isPrivateAt(const std::filesystem::path& path) const;
  // The names of the sockets in it, live or stale.
  [[nodiscard]] std::vector<std::string> socketNames() const;
  // A non-blocking socket that receives under `name`, which must be new.
  [[nodiscard]] Result<FileDescriptor> bindSocket(const std::string& name) const;
  // A non-blocking socket that sends to `name`. An error with code ECONNREFUSED when its receiver
  // is gone.
  [[nodiscard]] Result<FileDescriptor> connectSocket(const std::string& name) const;
  // No effect when it is already gone.
  void removeSocket(const std::string& name) const;

 private:
  explicit NotificationDirectory(FileDescriptor opened) : directory(std::move(opened)) {}

  FileDescriptor directory;
};

}  // namespace quenlet
