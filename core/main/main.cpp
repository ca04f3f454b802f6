#include <cstdio>

#include "core/AgentProcess.h"
#include "platform/LinuxPlatform.h"

namespace {

int complain(const std::string& problem) {
  std::fprintf(stderr, "quenlet-agent: %s\n", problem.c_str());
  return 1;
}

}  // namespace

int main(int argc, char*[]) {
  if (argc > 1) {
    complain("takes no arguments");
    return 2;
  }
  const auto platform = quenlet::LinuxPlatform::open();
  if (!platform.isLeft()) return complain(platform.right()->description());

  // Kept until the process exits: the agent's parts hold each other for good.
  static auto& process = *new quenlet::AgentProcess(platform.left()->mainRunLoop());
  if (const quenlet::ErrorPtr error = process.start()) return complain(error->description());
  process.run();
  return 0;
}
