#pragma once

#include "core/DonationListenerDelegate.h"
#include "platform/ipc/UnixServiceListener.h"
#include "protocol/CorvelInterface.h"
#include "tests/support/RecordingAgent.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestEnvironment.h"

namespace quenlet {

// Exports one object to everybody, under the agent's name.
struct Exporter final : ServiceListenerDelegate {
  std::shared_ptr<ExportedObject> exported;
  std::atomic<int> connections = 0;
  bool shouldAcceptNewConnection(ServiceListener&,
                                 const std::shared_ptr<ServiceConnection>& connection) override {
    ++connections;
    connection->setExportedInterface(DonationListenerDelegate::makeConfiguredInterface());
    connection->setExportedObject(exported);
    connection->resume();
    return true;
  }
};

// Replies with the same bytes to everything; with none it keeps the reply handlers.
struct FixedReply final : ExportedObject {
  std::string bytes;
  std::vector<WireReply> held;
  void perform(const std::string&, WireReader, WireReply reply) override {
    bytes.empty() ? held.push_back(std::move(reply)) : reply(bytes);
  }
};

// An agent for clients of the same process, in a runtime directory of the test's.
class ServedAgent : public EnvironmentTest {
 protected:
  void serve(std::shared_ptr<ExportedObject> object) {
    listener.reset();
    exporter->exported = std::move(object);
    listener = std::make_unique<UnixServiceListener>(CorvelServiceName, nullptr);
    listener->setDelegate(exporter);
    ASSERT_EQ(listener->resume(), nullptr);
  }
  void serveAgent() {
    serve(std::make_shared<CorvelDispatcher>(
        agent, [] { return true; }, std::make_shared<DonationListReplies>()));
  }
  static std::string described(const ErrorPtr& error) {
    return error ? error->domain() + " " + std::to_string(error->code()) : "";
  }

  TemporaryHome runtime;
  const std::shared_ptr<RecordingAgent> agent = std::make_shared<RecordingAgent>();
  const std::shared_ptr<Exporter> exporter = std::make_shared<Exporter>();
  std::unique_ptr<UnixServiceListener> listener;
};

}  // namespace quenlet
