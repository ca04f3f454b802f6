#include <poll.h>

#include "tests/platform/ipc/RawPeer.h"
#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

using testing::HasSubstr;

// The agent with sockets that this test, in the place of a service manager, has opened for it.
class HandedSocketTest : public ProcessTest {
 protected:
  HandedSocketTest() {
    std::filesystem::create_directory(socketPath.parent_path());
    ::chmod(socketPath.parent_path().c_str(), 0700);
  }

  static FileDescriptor listening(FileDescriptor socket) {
    EXPECT_EQ(::listen(socket.get(), 5), 0);
    return socket;
  }
  std::unique_ptr<ChildProcess> startWith(const std::vector<int>& handed) {
    return start({bin / "quenlet-agent"}, handed);
  }
  [[nodiscard]] ino_t fileOfSocket() const {
    struct stat status {};
    return ::lstat(socketPath.c_str(), &status) == 0 ? status.st_ino : 0;
  }

  const std::filesystem::path socketPath = temporary / "quenlet" / "ovaro.quenlet.agent";
};

TEST_F(HandedSocketTest, AnswersWhoConnectedBeforeItsStartAndLeavesTheSocketForTheNext) {
  const FileDescriptor socket = listening(boundSocket(socketPath));
  const ino_t file = fileOfSocket();
  for (const char* donor : {"com.example.first", "com.example.second"}) {
    SCOPED_TRACE(donor);
    const auto client = start({bin / "quenlet", "list", "--json"});
    pollfd queue{socket.get(), POLLIN, 0};
    ASSERT_EQ(::poll(&queue, 1, 60'000), 1);
    agent = startWith({socket.get()});
    EXPECT_EQ(client->wait(), 0) << client->err();
    donate(donor, "Anna Berg", {});

    const auto another = startWith({socket.get()});
    EXPECT_EQ(another->wait(), 1);
    EXPECT_THAT(another->err(), HasSubstr("another process serves"));
    EXPECT_EQ(stopAgent(), 0);
    EXPECT_EQ(fileOfSocket(), file);
  }
  const Ran byHand = run({bin / "quenlet-agent"});
  EXPECT_EQ(byHand.code, 1) << "or clients would not reach the manager's agents any more";
  EXPECT_THAT(byHand.err, HasSubstr("service-error 10: a service manager listens"));
  EXPECT_EQ(fileOfSocket(), file);
  agent = startWith({socket.get()});
  EXPECT_EQ(countDonations(), 2);
}

TEST_F(HandedSocketTest, EndsConnectionsThatBroughtDescriptorsBeforeItsStart) {
  const FileDescriptor socket = listening(boundSocket(socketPath));
  RawPeer peer(socketPath);
  EXPECT_TRUE(peer.pass(socket.get()));
  EXPECT_TRUE(peer.send(std::string(20, '\0')));
  agent = startWith({socket.get()});
  EXPECT_EQ(peer.receive(), "end") << "no answer to what came with it";
  EXPECT_EQ(countDonations(), 0);
}

TEST_F(HandedSocketTest, WatchersLookAtTheCardOfTheNextAgent) {
  const FileDescriptor socket = listening(boundSocket(socketPath));
  agent = startWith({socket.get()});
  donate("com.example.mail", "Anna Berg", {"EMAIL:anna@example.org"});
  const auto watcher = start({bin / "quenlet", "watch"});
  ASSERT_TRUE(eventually([&] { return watcher->says("watching"); }));
  std::this_thread::sleep_for(std::chrono::seconds(1));  // from then on it was not just refused
  EXPECT_EQ(stopAgent(), 0);
  rewriteDonations("entry['origin']['expirationDate'] = time.time() - 3600");
  agent = startWith({socket.get()});
  EXPECT_TRUE(eventually([&] { return watcher->says("  removed  e-mail  anna@example.org"); }));
  EXPECT_TRUE(watcher->says("Z  An agent is there.\n"));
}

TEST_F(HandedSocketTest, ListensByItselfWhenTheDescriptorIsNotItsSocket) {
  const FileDescriptor file(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  FileDescriptor internet(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const FileDescriptor elsewhere = listening(boundSocket(temporary / "elsewhere"));
  const FileDescriptor packets = listening(boundSocket(temporary / "packets", SOCK_SEQPACKET));
  const FileDescriptor deaf = boundSocket(socketPath);
  FileDescriptor moved = listening(boundSocket(temporary / "moved"));
  std::filesystem::rename(temporary / "moved", temporary / "has moved");
  const FileDescriptor internetListening = listening(std::move(internet));
  constexpr char otherKind[] = "it is not a Unix stream socket\n";
  constexpr char otherPath[] = "it is not bound to the path of the service\n";
  const std::vector<std::pair<int, std::string>> rows = {
      {file.get(), otherKind},    {internetListening.get(), otherKind},
      {packets.get(), otherKind}, {elsewhere.get(), otherPath},
      {moved.get(), otherPath},   {deaf.get(), "it does not listen\n"},
  };
  std::vector<int> handed;
  std::string remarks;
  for (const auto& [descriptor, fault] : rows) {
    remarks += "quenlet: descriptor " + std::to_string(3 + handed.size()) +
               " was handed over, but is useless: " + fault;
    handed.push_back(descriptor);
  }
  mayRemark = true;
  agent = startWith(handed);
  ASSERT_TRUE(eventually([this] { return !agent->isRunning() || countDonations() == 0; }));
  EXPECT_THAT(agent->err(), testing::StartsWith(remarks));
  EXPECT_EQ(stopAgent(), 0);
  EXPECT_FALSE(std::filesystem::exists(socketPath)) << "what it bound itself, it removes";
}

TEST_F(HandedSocketTest, TakesOnlyWhatIsForItAndKeepsItFromExtensions) {
  const FileDescriptor socket = listening(boundSocket(socketPath));
  const std::filesystem::path seen = temporary / "seen";
  const std::string bundle = "com.example.donor";
  writeFile(extensions / bundle,
            donorScript("open('" + seen.string() +
                        "', 'w').write(' '.join([*os.environ, 'ends']))\nserve()\n"),
            0700);
  installManifest(bundle);
  agent = startWith({socket.get()});
  donate(bundle, "Anna Berg", {});
  agent->signal(SIGHUP);
  ASSERT_TRUE(eventually([&] { return readFile(seen).ends_with(" ends"); })) << agent->err();
  EXPECT_THAT(readFile(seen), testing::Not(HasSubstr("LISTEN_")));
  EXPECT_EQ(stopAgent(), 0);

  // Variables that a parent left behind, when it started another program than was meant.
  const Ran notForIt =
      run({"env", "LISTEN_PID=1", "LISTEN_FDS=1", "LISTEN_FDNAMES=a", bin / "quenlet-agent"});
  EXPECT_EQ(notForIt.code, 1);
  EXPECT_THAT(notForIt.err, testing::Not(HasSubstr("descriptor")));
}

}  // namespace
}  // namespace quenlet
