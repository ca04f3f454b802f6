#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <chrono>
#include <future>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "tools/commands/Command.h"
#include "tools/owner/OwnersDecisions.h"
#include "tools/owner/UserAccounts.h"
#include "tools/presentation/TerminalText.h"
#include "tools/presentation/ValueText.h"

namespace quenlet {
namespace {

// Somebody has pressed a key and waits.
constexpr std::chrono::seconds longestWait(1);

// What a completion offers, and what it says of it.
using Offers = std::vector<std::pair<std::string, std::string>>;

// Empty when no agent answers in time, or none with a list.
DonationValues donationsIfAny(CorvelProtocol& agent) {
  // Shared with the handler, which may be called after the wait.
  const auto reply = std::make_shared<std::promise<std::shared_ptr<const DonationValues>>>();
  auto list = reply->get_future();
  agent.meCardDonations([reply](std::shared_ptr<const DonationValues> values, const ErrorPtr&) {
    reply->set_value(std::move(values));
  });
  if (list.wait_for(longestWait) != std::future_status::ready) return {};
  const auto values = list.get();
  return values ? *values : DonationValues();
}

Offers donations(CorvelProtocol& agent) {
  Offers offers;
  for (const DonationValuePtr& donation : donationsIfAny(agent)) {
    const Value value = donation->value();
    offers.emplace_back(donation->decoded().origin.donationIdentifier,
                        std::string(titleOfKind(value)) + " " + textOf(value));
  }
  return offers;
}

Offers bundles(CorvelProtocol& agent) {
  Offers offers;
  for (const DonationValuePtr& donation : donationsIfAny(agent)) {
    offers.emplace_back(donation->decoded().origin.bundleIdentifier, "");
  }
  return offers;
}

Offers clusters(CorvelProtocol& agent) {
  Offers offers;
  for (const DonationValuePtr& donation : donationsIfAny(agent)) {
    const DonationOrigin origin = donation->decoded().origin;
    if (origin.clusterIdentifier) {
      offers.emplace_back(*origin.clusterIdentifier, "of " + origin.bundleIdentifier);
    }
  }
  return offers;
}

Offers rejections(CorvelProtocol&) {
  Offers offers;
  const auto file = OwnersDecisions::open();
  if (!file.ok()) return offers;
  const auto decisions = file.value().all();
  if (!decisions.ok()) return offers;
  for (const FeedbackDecision& decision : decisions.value()) {
    // An image has no text to name it by.
    if (std::holds_alternative<Value::ImageData>(decision.value.cases())) continue;
    offers.emplace_back(textOf(decision.value), titleOfKind(decision.value));
  }
  return offers;
}

Offers accounts(CorvelProtocol&) {
  Offers offers;
  const auto user = UserAccounts::open();
  if (!user.ok()) return offers;
  const auto known = user.value()->store().accounts();
  if (!known.ok()) return offers;
  for (const AccountPtr& account : known.value()) {
    offers.emplace_back(account->identifier, account->username.value_or(""));
  }
  return offers;
}

using Source = Offers (*)(CorvelProtocol&);

constexpr std::array<std::pair<const char*, Source>, 5> sources = {{
    {"donations", donations},
    {"bundles", bundles},
    {"clusters", clusters},
    {"rejections", rejections},
    {"accounts", accounts},
}};

// "complete", hidden: what the shells' completion scripts ask. Says nothing when it has nothing to
// offer, for any reason. Keeps its argument only.
class CompleteWord final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  static void write(std::ostream& out, Offers offers);

  std::string kind;
};

void CompleteWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("complete", "Print what an argument may be, for shells");
  word->group("");
  word->add_option("KIND", kind, "What kind of argument")->required();
  word->callback([this, &chosen] {
    chosen = [this](Session& session) {
      for (const auto& [name, source] : sources) {
        if (kind == name) write(session.out, source(session.agent));
      }
      return ExitCode::done;
    };
  });
}

void CompleteWord::write(std::ostream& out, Offers offers) {
  std::sort(offers.begin(), offers.end());
  offers.erase(std::unique(offers.begin(), offers.end()), offers.end());
  for (const auto& [offer, remark] : offers) {
    // What cannot be shown as it is would not be typed back as it is.
    if (offer.empty() || printable(offer) != offer) continue;
    out << offer;
    if (!remark.empty()) out << "\t" << printable(remark);
    out << "\n";
  }
}

}  // namespace

CommandPtr makeCompleteWord() { return std::make_unique<CompleteWord>(); }

}  // namespace quenlet
