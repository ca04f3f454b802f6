#include <CLI/CLI.hpp>
#include <string>
#include <tuple>

#include "client/waitForReply.h"
#include "tools/commands/Command.h"

namespace quenlet {
namespace {

// "reject", "reject-cluster" and "clear-rejections".
class RejectionWords final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  // Adds a word that passes its identifier to `operation`.
  using Operation = void (CorvelProtocol::*)(std::string identifier, ErrorReply completionHandler);
  void addRejection(CLI::App& app, ChosenAction& chosen, const char* name, const char* effect,
                    Operation operation);

  std::string identifier;
};

void RejectionWords::addTo(CLI::App& app, ChosenAction& chosen) {
  addRejection(app, chosen, "reject", "Keep a value away, also when it is donated again",
               &CorvelProtocol::rejectValueWithDonationIdentifier);
  addRejection(app, chosen, "reject-cluster", "Keep all values of a cluster away",
               &CorvelProtocol::rejectValuesWithClusterIdentifier);
  app.add_subcommand(
         "clear-rejections",
         "Ask the agent to forget rejections (it keeps none of its own: the feedback file decides)")
      ->callback([&chosen] {
        chosen = [](Session& session) {
          const auto [error] = waitForReply<ErrorPtr>([&](ErrorReply reply) {
            session.agent.removeAllRejectionsWithCompletionHandler(std::move(reply));
          });
          return session.finishWith(error);
        };
      });
}

void RejectionWords::addRejection(CLI::App& app, ChosenAction& chosen, const char* name,
                                  const char* effect, Operation operation) {
  CLI::App* word = app.add_subcommand(name, effect);
  word->add_option("ID", identifier, "The identifier, as shown by list")->type_name("")->required();
  word->callback([this, &chosen, operation] {
    chosen = [this, operation](Session& session) {
      const auto [error] = waitForReply<ErrorPtr>(
          [&](ErrorReply reply) { (session.agent.*operation)(identifier, std::move(reply)); });
      return session.finishWith(error);
    };
  });
}

}  // namespace

CommandPtr makeRejectionWords() { return std::make_unique<RejectionWords>(); }

}  // namespace quenlet
