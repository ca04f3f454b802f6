#pragma once

#include <sys/un.h>

#include <filesystem>
#include <string>

#include "platform/foundation/Either.h"
#include "platform/ipc/TimeLimit.h"
#include "platform/scheduling/FileDescriptor.h"

namespace quenlet {

// Where a named service of the user's is found: a socket in a directory that nobody else can enter,
// and beside it the lock file that makes the name exclusive. Movable. One thread at a time.
class ServiceAddress final {
 public:
  // Creates the directory when it is missing; an error when it cannot be trusted.
  [[nodiscard]] static Result<ServiceAddress> forService(const std::string& serviceName);

  [[nodiscard]] std::filesystem::path socketPath() const { return directory / name; }
  [[nodiscard]] std::filesystem::path lockPath() const { return directory / (name + ".lock"); }

  // As the system calls, for paths of any length: 0 or errno.
  [[nodiscard]] int bind(int socket) const;
  // Of a blocking socket; EAGAIN when the service has not had room for a connection by `deadline`.
  [[nodiscard]] int connect(int socket, TimeLimit::Instant deadline) const;

 private:
  ServiceAddress(std::filesystem::path privateDirectory, std::string serviceName)
      : directory(std::move(privateDirectory)), name(std::move(serviceName)) {}
  // Fills `address`; through `opened` when the path does not fit into it.
  [[nodiscard]] int resolve(sockaddr_un& address, FileDescriptor& opened) const;

  std::filesystem::path directory;
  std::string name;
};

}  // namespace quenlet
