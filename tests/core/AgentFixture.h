#pragma once

#include "core/Corvel.h"
#include "protocol/CorvelInterface.h"
#include "tests/support/TestEnvironment.h"

namespace quenlet {

// An agent over fakes; what it does and replies is in the trace.
class AgentFixture : public EnvironmentTest {
 protected:
  ~AgentFixture() override { agent->stop(); }

  void run() { environment->schedulers.runUntilIdle(); }
  Events eventsSoFar() {
    run();
    return takeTrace();
  }
  Events setEnabled(bool enabled) {
    agent->lock()->performWriterBlock([this, enabled] { agent->setFeatureEnabled(enabled); });
    return eventsSoFar();
  }
  Events eventsOfReenabling() {
    agent->lock()->performWriterBlock([this] { agent->reenableDonations(); });
    return eventsSoFar();
  }
  // Until what was handed off for renewal has reached the donors.
  void runRenewals() { environment->schedulers.advance(2.0); }
  // An enabled agent that holds these donations, with nothing in the trace.
  void hold(const DonationValues& values) {
    setEnabled(true);
    agent->donateMeCardValues(values, [](const ErrorPtr&) {});
    runRenewals();
    takeTrace();
  }

  [[nodiscard]] std::string outcome(const ErrorPtr& error) const {
    if (!error) return "no error";
    const bool isOurs = error->domain() == DonationErrorDomain;
    return "error " + (isOurs ? "" : error->domain() + " ") + std::to_string(error->code());
  }
  void noteReply(const std::string& what) {
    environment->trace.note("reply " + what);
    openAtReply = *environment->openTransactions;
  }
  [[nodiscard]] ErrorReply errorReply() {
    return [this](const ErrorPtr& error) { noteReply(outcome(error)); };
  }
  [[nodiscard]] SuccessReply successReply() {
    return [this](bool success, const ErrorPtr& error) {
      noteReply((success ? "true " : "false ") + outcome(error));
    };
  }

  void noteCard(const ContactPtr& card, const ErrorPtr& error) {
    if (!card) return noteReply(outcome(error));
    std::string text = "card";
    for (const auto& entry : card->emailAddresses()) text += " " + entry->value;
    noteReply(text);
  }

  // Sends a request by its name, with `values`, or their identifiers or bundle, as the argument.
  // It goes through the `gate`, if there is one.
  void send(const std::string& request, const DonationValues& values = {}) {
    CorvelProtocol& asked = gate ? *gate : *agent;
    std::vector<std::string> ids;
    for (const auto& value : values) ids.push_back(value->decoded().origin.donationIdentifier);
    using namespace CorvelSelector;
    const std::string bundle = values.empty() ? "" : values[0]->decoded().origin.bundleIdentifier;
    if (request == donate) return asked.donateMeCardValues(values, errorReply());
    if (request == fetch)
      return asked.fetchDonatedMeCard(std::bind_front(&AgentFixture::noteCard, this));
    if (request == removeIdentifiers)
      return asked.removeDonatedMeCardValuesForIdentifiers(ids, successReply());
    if (request == removeBundle)
      return asked.removeDonatedMeCardValuesWithBundleIdentifier(bundle, successReply());
    if (request == synchronousFetch) {
      return asked.synchronousDonatedMeCard([this](const Result<ContactPtr>& card) {
        card.ok() ? noteCard(card.value(), nullptr) : noteCard(nullptr, card.error());
      });
    }
    asked.meCardDonations([this](const auto& list, const ErrorPtr& error) {
      noteReply(list ? "list " + identifiersOf(*list) : outcome(error));
    });
  }

  Events eventsOf(const std::string& request, const DonationValues& values = {}) {
    send(request, values);
    return eventsSoFar();
  }
  std::string replyTo(const std::string& request, const DonationValues& values = {}) {
    for (const std::string& event : eventsOf(request, values)) {
      if (const auto found = event.find(": reply "); found != std::string::npos) {
        return event.substr(found + 8);
      }
    }
    return "no reply";
  }

  const std::string posted = std::string("writer: post ") + MeCardValuesDidChangeNotification;
  const std::shared_ptr<FakePersistence> persistence =
      std::make_shared<FakePersistence>(environment->trace);
  const std::shared_ptr<FakeCuratedInfoProvider> curated =
      std::make_shared<FakeCuratedInfoProvider>();
  std::shared_ptr<Corvel> agent = std::make_shared<Corvel>(environment, persistence, curated);
  std::shared_ptr<CorvelProtocol> gate;
  int openAtReply = 0;
};

}  // namespace quenlet
