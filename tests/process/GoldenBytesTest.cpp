// The agent, asked with yesterday's bytes, answers with yesterday's bytes.

#include "tests/platform/ipc/RawPeer.h"
#include "tests/process/ProcessTest.h"
#include "tests/support/GoldenExchanges.h"

namespace quenlet {
namespace {

class GoldenBytesTest : public ProcessTest {
 protected:
  void hold(const std::vector<GoldenExchange>& exchanges) {
    RawPeer peer(temporary / "quenlet/ovaro.quenlet.agent");
    for (const auto& [name, request, answer] : exchanges) {
      ASSERT_TRUE(peer.send(request)) << name;
      EXPECT_EQ(peer.receiveMessage(), answer) << name;
    }
  }
};

TEST_F(GoldenBytesTest, AreAnsweredByTheAgent) {
  startAgent();
  hold(goldenExchanges(goldenFolder + "agent.txt"));
  disableDonations();
  hold(goldenExchanges(goldenFolder + "disabled.txt"));
}

TEST_F(GoldenBytesTest, AreAnsweredAsTheDocumentSays) {
  startAgent();
  hold(goldenExchanges("docs/wire-format.md", "  "));
}

}  // namespace
}  // namespace quenlet
