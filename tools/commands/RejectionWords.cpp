#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <tuple>

#include "client/waitForReply.h"
#include "platform/feedback/FeedbackContent.h"
#include "platform/foundation/Text.h"
#include "tools/commands/Command.h"
#include "tools/commands/DonationChoice.h"
#include "tools/owner/AgentDonations.h"
#include "tools/owner/ShellWord.h"
#include "tools/presentation/Wording.h"

namespace quenlet {
namespace {

// "reject" and "reject-cluster": keep values away, and say which. The agent answers alike whether
// it rejected anything or not, so its list is looked at before and after.
class RejectionWords final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  using Operation = void (CorvelProtocol::*)(std::string identifier, ErrorReply completionHandler);

  [[nodiscard]] ExitCode reject(Session& session) const;
  [[nodiscard]] ExitCode rejectCluster(Session& session) const;
  // Rejects each of `identifiers` until the agent refuses one, then tells which of `wanted` are
  // gone.
  [[nodiscard]] static ExitCode perform(Session& session, Operation operation,
                                        const std::vector<std::string>& identifiers,
                                        const DonationValues& wanted);

  std::string value;
  std::string cluster;
};

void RejectionWords::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* byValue =
      app.add_subcommand("reject", "Keep a value away, also when it is donated again");
  byValue->add_option("VALUE", value, "The value itself, or its number or identifier from list")
      ->type_name("")
      ->required();
  byValue->footer(
      "All donations of the value go, from any donor and under any label. \"quenlet\n"
      "unreject VALUE\" takes it back. An image cannot be rejected.");
  byValue->callback(
      [this, &chosen] { chosen = [this](Session& session) { return reject(session); }; });

  CLI::App* byCluster = app.add_subcommand("reject-cluster", "Keep all values of a cluster away");
  byCluster->add_option("CLUSTER", cluster, "The cluster's identifier, as shown by list")
      ->type_name("")
      ->required();
  byCluster->callback(
      [this, &chosen] { chosen = [this](Session& session) { return rejectCluster(session); }; });
}

std::string keyOf(const DonationValuePtr& donation) {
  return FeedbackContent::contentOfValue(*donation).key;
}

// The donations in `list` with the same content as one of `chosen`. The agent removes those that
// are equal in content and label; the owner means the content.
DonationValues withSameContent(const DonationValues& list, const DonationValues& chosen) {
  std::set<std::string> keys;
  for (const DonationValuePtr& donation : chosen) keys.insert(keyOf(donation));
  DonationValues same;
  std::copy_if(list.begin(), list.end(), std::back_inserter(same),
               [&](const DonationValuePtr& donation) { return keys.contains(keyOf(donation)); });
  return same;
}

// One identifier for each value among `donations`.
std::vector<std::string> identifiersToReject(const DonationValues& donations) {
  std::vector<Value> values;
  std::vector<std::string> identifiers;
  for (const DonationValuePtr& donation : donations) {
    const Value value = donation->value();
    if (std::find(values.begin(), values.end(), value) != values.end()) continue;
    values.push_back(value);
    identifiers.push_back(donation->decoded().origin.donationIdentifier);
  }
  return identifiers;
}

ExitCode refuseImage(const Session& session, const DonationOrigin& origin) {
  const ExitCode code =
      session.refuse("not-possible", "an image cannot be rejected, only taken back",
                     Advice::command("quenlet remove " + shellOperand(origin.donationIdentifier)));
  session.hint(Advice::command("or all that this donor gave: quenlet forget " +
                               shellOperand(origin.bundleIdentifier)));
  return code;
}

// A line for each content among the donations that are gone.
void tellGone(const Session& session, const DonationValues& gone) {
  std::map<std::string, DonationValues> byContent;
  for (const DonationValuePtr& donation : gone) byContent[keyOf(donation)].push_back(donation);
  for (const DonationValuePtr& donation : gone) {
    const auto found = byContent.find(keyOf(donation));
    if (found == byContent.end()) continue;
    session.say("Rejected " + phraseFor(donation->value()) + ": " +
                counted(found->second.size(), "donation") + ", from " +
                enumerated(donorsOf(found->second)) + ".");
    byContent.erase(found);
  }
  session.say("quenlet rejections shows what is rejected; quenlet unreject takes it back.");
}

// Tells what is gone although not all could be rejected. The donation that failed may have been
// removed all the same, but is noted nowhere.
ExitCode tellFailure(const Session& session, const ErrorPtr& error,
                     const std::vector<std::string>& rejectedIdentifiers,
                     const DonationValues& gone) {
  const auto isRejected = [&](const DonationValuePtr& donation) {
    return std::any_of(gone.begin(), gone.end(), [&](const DonationValuePtr& other) {
      const auto& identifier = other->decoded().origin.donationIdentifier;
      return other->value() == donation->value() &&
             std::find(rejectedIdentifiers.begin(), rejectedIdentifiers.end(), identifier) !=
                 rejectedIdentifiers.end();
    });
  };
  DonationValues rejected;
  std::copy_if(gone.begin(), gone.end(), std::back_inserter(rejected), isRejected);
  if (!rejected.empty()) tellGone(session, rejected);
  session.out << std::flush;
  const ExitCode code = session.failWith(error);
  if (const std::size_t others = gone.size() - rejected.size(); others > 0) {
    session.hint(counted(others, "donation is", "donations are") +
                 " gone, but not noted as rejected, and may come back");
  }
  return code;
}

ExitCode RejectionWords::reject(Session& session) const {
  const auto list = donationsOf(session.agent);
  if (!list.ok()) return session.failWith(list.error());
  const DonationValues& before = *list.value();
  const auto chosen = DonationChoice::choose(session, before, {value});
  if (!chosen) return ExitCode::refused;
  const DonationValuePtr& first = chosen->front();
  if (first->kind() == DonationKind::imageData) {
    return refuseImage(session, first->decoded().origin);
  }
  const DonationValues wanted = withSameContent(before, *chosen);
  return perform(session, &CorvelProtocol::rejectValueWithDonationIdentifier,
                 identifiersToReject(wanted), wanted);
}

ExitCode RejectionWords::rejectCluster(Session& session) const {
  const auto list = donationsOf(session.agent);
  if (!list.ok()) return session.failWith(list.error());
  DonationValues wanted;
  std::copy_if(list.value()->begin(), list.value()->end(), std::back_inserter(wanted),
               [this](const DonationValuePtr& donation) {
                 const auto& identifier = donation->decoded().origin.clusterIdentifier;
                 return !cluster.empty() && identifier && canonicallyEqual(*identifier, cluster);
               });
  if (wanted.empty()) {
    return session.refuse("no-match", "no donation is of the cluster \"" + cluster + "\"",
                          "quenlet list shows the clusters");
  }
  return perform(session, &CorvelProtocol::rejectValuesWithClusterIdentifier, {cluster}, wanted);
}

ExitCode RejectionWords::perform(Session& session, Operation operation,
                                 const std::vector<std::string>& identifiers,
                                 const DonationValues& wanted) {
  ErrorPtr error;
  std::ptrdiff_t done = 0;
  while (done < std::ssize(identifiers) && !error) {
    std::tie(error) = waitForReply<ErrorPtr>([&](ErrorReply reply) {
      (session.agent.*operation)(identifiers[static_cast<std::size_t>(done)], std::move(reply));
    });
    if (!error) ++done;
  }
  const auto after = donationsOf(session.agent);
  if (!after.ok()) return session.failWith(error ? error : after.error());
  const DonationValues gone = missingFrom(*after.value(), wanted);
  if (error) {
    return tellFailure(session, error, {identifiers.begin(), identifiers.begin() + done}, gone);
  }
  if (gone.empty()) {
    return session.refuse("not-done", "the agent still holds what it was asked to reject",
                          "quenlet list shows what there is");
  }
  tellGone(session, gone);
  return ExitCode::done;
}

}  // namespace

CommandPtr makeRejectionWords() { return std::make_unique<RejectionWords>(); }

}  // namespace quenlet
