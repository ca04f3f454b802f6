#pragma once

#include <sys/un.h>

#include <filesystem>
#include <string>

#include "platform/foundation/FileDescriptor.h"
#include "platform/ipc/TimeLimit.h"
#include "quenlet/Result.h"

namespace quenlet {

// The location of a user's named service: a socket in a directory that nobody else can enter, and
// beside it the lock file that makes the name exclusive. Movable. One thread at a time.
class ServiceAddress final {
 public:
  // Creates the directory if needed; an error when it cannot be trusted.
  [[nodiscard]] static Result<ServiceAddress> forService(const std::string& serviceName);

  [[nodiscard]] std::filesystem::path socketPath() const { return directory / name; }
  [[nodiscard]] std::filesystem::path lockPath() const { return directory / (name + ".lock"); }

  // Like the system calls, but for paths of any length. Returns 0 or errno.
  [[nodiscard]] int bind(int socket) const;
  // `socket` must block. EAGAIN when the service has no room for the connection until `deadline`.
  [[nodiscard]] int connect(int socket, TimeLimit::Instant deadline) const;
  // Whether the file to which somebody bound the Unix socket is the one at socketPath().
  [[nodiscard]] bool isWhereBound(int socket) const;
  // Whether somebody listens. Asks with a connection that is closed again.
  [[nodiscard]] bool hasListener() const;

 private:
  ServiceAddress(std::filesystem::path privateDirectory, std::string serviceName)
      : directory(std::move(privateDirectory)), name(std::move(serviceName)) {}
  // Fills `address`. Too long a path goes through `opened`, which must live until the system call.
  [[nodiscard]] int resolve(sockaddr_un& address, FileDescriptor& opened) const;

  std::filesystem::path directory;
  std::string name;
};

}  // namespace quenlet
