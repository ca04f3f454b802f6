#include "platform/ipc/PeerIdentity.h"

#include <sys/mount.h>
#include <sys/syscall.h>

#include "tests/platform/ipc/RawPeer.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

class PeerIdentityTest : public testing::Test {
 protected:
  PeerIdentityTest() {
    for (const auto& copy : {program, other}) std::filesystem::copy_file("/bin/sleep", copy);
    EXPECT_EQ(::listen(listening.get(), 1), 0);
  }
  // The path that is known of a child which prepares itself, connects and runs `program`; "refused"
  // when the system does not let it prepare itself.
  std::string executableAfter(const std::function<bool()>& prepare) {
    auto [ours, theirs] = connectedPair();
    const pid_t child = ::fork();
    if (child == 0) {
      const int socket = ::dup(RawPeer(socketPath).release());
      if (socket >= 0 && prepare()) ::execl(program.c_str(), program.c_str(), "60", nullptr);
      ::_exit(::write(theirs.get(), "!", 1) == 1 ? 1 : 2);
    }
    theirs.reset();
    char refusal = 0;
    const bool isRefused = ::read(ours.get(), &refusal, 1) == 1;  // closed by the program's start
    const FileDescriptor accepted(::accept(listening.get(), nullptr, nullptr));
    const Result<PeerIdentity> peer = PeerIdentity::ofSocket(accepted.get());
    ::kill(child, SIGKILL);
    EXPECT_EQ(::waitpid(child, nullptr, 0), child);
    return isRefused ? "refused" : peer.value().executable.value_or("nothing").string();
  }

  TemporaryDirectory directory;
  const std::filesystem::path base = std::filesystem::canonical(directory.path());
  const std::filesystem::path program = base / "program";
  const std::filesystem::path other = base / "other";
  const std::filesystem::path socketPath = base / "socket";
  const FileDescriptor listening = boundSocket(socketPath);
};

TEST_F(PeerIdentityTest, IsNotFooledByAFileMountedOverAProgram) {
  EXPECT_EQ(executableAfter([] { return true; }), program);
  const std::string found = executableAfter([this] {
    return ::unshare(CLONE_NEWNS) == 0 &&
           ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount(other.c_str(), program.c_str(), nullptr, MS_BIND, nullptr) == 0;
  });
  if (found == "refused") GTEST_SKIP() << "nothing may be mounted here";
  EXPECT_EQ(found, "nothing");
}

// Whoever vouched for the number may have done so before the process ended.
TEST_F(PeerIdentityTest, KnowsNoProgramOfAProcessThatHasEnded) {
  const pid_t child = ::fork();
  if (child == 0) ::pause();
  const FileDescriptor pinned(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
  ASSERT_TRUE(pinned.isOpen());
  const auto own = std::filesystem::read_symlink("/proc/self/exe");
  EXPECT_EQ(PeerIdentity::ofProcess(7, child, pinned.get()).executable, own);
  ::kill(child, SIGKILL);
  EXPECT_EQ(::waitpid(child, nullptr, 0), child);
  EXPECT_EQ(PeerIdentity::ofProcess(7, ::getpid(), pinned.get()).executable, std::nullopt);
  EXPECT_EQ(PeerIdentity::ofProcess(7, ::getpid(), -1).executable, std::nullopt);
}

}  // namespace
}  // namespace quenlet
