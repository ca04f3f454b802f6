#include <fcntl.h>
#include <sys/resource.h>
#include <sysexits.h>

#include <cstdio>
#include <cstdlib>

#include "main/AgentProcess.h"
#include "platform/LinuxPlatform.h"
#include "platform/foundation/FreedMemory.h"

namespace {

// An error of the system, such as a shortage or an unreadable file, may pass or be repaired: the
// service manager tries again. It does not restart an agent that is one too many.
int complain(const quenlet::Error& error) {
  std::fprintf(stderr, "quenlet-agent: %s\n", error.description().c_str());
  return error.domain() == quenlet::PosixErrorDomain ? EX_TEMPFAIL : EXIT_FAILURE;
}

// A core file would keep donated values that deletion cannot reach.
void forbidCoreFiles() {
  rlimit limit{};
  ::getrlimit(RLIMIT_CORE, &limit);
  limit.rlim_cur = 0;
  ::setrlimit(RLIMIT_CORE, &limit);
}

// A file that was opened under one of these numbers would be overwritten with log lines.
void openStandardDescriptors() {
  for (int descriptor = 0; descriptor <= 2; ++descriptor) {
    // open() takes the lowest free number.
    if (::fcntl(descriptor, F_GETFD) < 0) static_cast<void>(::open("/dev/null", O_RDWR));
  }
}

quenlet::ErrorPtr start(quenlet::LinuxPlatform& platform, quenlet::AgentProcess& process) {
  // The name comes first, so that an agent that has to give way leaves nothing in its home.
  if (quenlet::ErrorPtr error = process.claimName()) return error;
  if (quenlet::ErrorPtr error = platform.examineFiles()) return error;
  if (quenlet::ErrorPtr error = platform.claimDonations()) return error;
  return process.start();
}

int runAgent() {
  openStandardDescriptors();
  forbidCoreFiles();
  quenlet::returnLargeAllocationsAtOnce();
  auto opened = quenlet::LinuxPlatform::open(quenlet::HandedSockets::fromEnvironment());
  if (!opened.ok()) return complain(*opened.error());
  // Never destroyed: the agent's parts hold each other for good, and blocks that are still queued
  // when the run loop ends use the platform.
  quenlet::LinuxPlatform& platform = *std::move(opened).takeValue().release();
  auto& process = *new quenlet::AgentProcess(platform.mainRunLoop());
  const quenlet::ErrorPtr error = start(platform, process);
  if (!error) process.run();
  platform.finish();
  return error ? complain(*error) : EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char*[]) {
  if (argc > 1) {
    std::fputs("quenlet-agent: takes no arguments\n", stderr);
    return 2;
  }
  // All that was acknowledged is on the disk. Other threads may still run, so nothing is torn down
  // under them.
  std::_Exit(runAgent());
}
