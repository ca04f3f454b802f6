#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <vector>

#include "browser/host/CallingExtension.h"
#include "browser/host/HostProgram.h"

namespace {

// A core file would keep the card.
void forbidCoreFiles() {
  const rlimit none{0, 0};
  ::setrlimit(RLIMIT_CORE, &none);
}

int complain(const char* sentence, int status) {
  std::fprintf(stderr, "quenlet-browser: %s\n", sentence);
  return status;
}

}  // namespace

int main(int argc, char* argv[]) {
  const std::vector<std::string_view> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  if (!quenlet::CallingExtension::isOurs(arguments)) {
    return complain("only a browser starts it, and only for quenlet's own extension", 2);
  }
  forbidCoreFiles();
  std::signal(SIGPIPE, SIG_IGN);
  try {
    const auto error = quenlet::HostProgram(STDIN_FILENO, STDOUT_FILENO).run();
    return error ? complain(error->description().c_str(), EXIT_FAILURE) : EXIT_SUCCESS;
  } catch (const std::system_error& failure) {
    return complain(failure.what(), EXIT_FAILURE);
  }
}
