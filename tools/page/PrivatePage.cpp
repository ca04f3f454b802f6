#include "tools/page/PrivatePage.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "platform/files/DurableFileWriter.h"
#include "platform/files/PosixFileOperations.h"
#include "platform/files/UserDirectories.h"
#include "tools/owner/UserFiles.h"

namespace quenlet {
namespace {

constexpr char opener[] = "xdg-open";

bool isSet(const char* variable) {
  const char* text = std::getenv(variable);
  return text != nullptr && *text != '\0';
}

// Starts a program in a session of its own, so that a browser does not end with the terminal, and
// without streams. 0 or an errno value.
int start(const char* program, const char* argument, pid_t& child) {
  posix_spawn_file_actions_t streams;
  posix_spawnattr_t attributes;
  ::posix_spawn_file_actions_init(&streams);
  ::posix_spawnattr_init(&attributes);
  ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    ::posix_spawn_file_actions_addopen(&streams, stream, "/dev/null", O_RDWR, 0);
  }
  std::string words[] = {program, argument};
  char* arguments[] = {words[0].data(), words[1].data(), nullptr};
  const int failure = ::posix_spawnp(&child, program, &streams, &attributes, arguments, ::environ);
  ::posix_spawnattr_destroy(&attributes);
  ::posix_spawn_file_actions_destroy(&streams);
  return failure;
}

// The exit status; nothing while it runs on, as it does when it has become the browser itself.
std::optional<int> waitShortly(pid_t child) {
  constexpr auto patience = std::chrono::seconds(2);
  const auto deadline = std::chrono::steady_clock::now() + patience;
  do {
    int status = 0;
    if (::waitpid(child, &status, WNOHANG) == child) return status;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  } while (std::chrono::steady_clock::now() < deadline);
  return std::nullopt;
}

}  // namespace

Result<std::filesystem::path> PrivatePage::write(std::string_view page) {
  using Written = Result<std::filesystem::path>;
  Written runtime = UserDirectories::runtimeDirectory();
  if (!runtime.ok()) return runtime;
  std::filesystem::path place = runtime.value() / PagePath;
  for (const auto& directory : {place.parent_path().parent_path(), place.parent_path()}) {
    if (ErrorPtr error =
            UserDirectories::ensurePrivateDirectory(directory, "the directory of the page")) {
      return Written::failure(std::move(error));
    }
  }
  PosixFileOperations operations;
  if (ErrorPtr error = DurableFileWriter(operations).replace(place, page)) {
    return Written::failure(std::move(error));
  }
  return Written::success(std::move(place));
}

std::optional<std::string> PrivatePage::open(const std::filesystem::path& file) {
  if (!isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY")) return "there is no display";
  pid_t child = 0;
  if (start(opener, file.c_str(), child) != 0) {
    return std::string(opener) + " cannot be started";
  }
  const std::optional<int> status = waitShortly(child);
  if (!status || *status == 0) return std::nullopt;
  return std::string(opener) + " failed";
}

}  // namespace quenlet
