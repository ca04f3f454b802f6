#include "tools/owner/DonationStates.h"

#include <unordered_map>
#include <utility>
#include <variant>

#include "mecard/CardReasons.h"

namespace quenlet {
namespace {

using Names = PersonNameComponents;

struct Judgement final {
  DonationState state;
  std::string because;
};

std::string bundleOf(const DonationValue& donation) {
  return donation.decoded().origin.bundleIdentifier;
}

// The parts of a name that decide whether it is the owner's.
std::string decidingText(const Names& name) {
  std::string text = name.givenName.value_or("");
  const std::string family = name.familyName.value_or("");
  if (!text.empty() && !family.empty()) text += ' ';
  return text + family;
}

std::string nameOf(const DonationValue& donation) {
  return decidingText(std::get<Names>(donation.value().cases()));
}

// "org.example.shop calls you Ann Berg".
std::string callsYou(const DonationValue& name) {
  const std::string text = nameOf(name);
  if (text.empty()) return bundleOf(name) + " gives you neither a first nor a last name";
  return bundleOf(name) + " calls you " + text;
}

std::string becauseSilenced(const DonationValue& name, bool byCluster, const OwnCard& ownCard) {
  const DonationOrigin origin = name.decoded().origin;
  const std::string own = ownCard.name ? decidingText(*ownCard.name) : std::string();
  std::string sentence = callsYou(name);
  if (byCluster) sentence += " in the cluster " + origin.clusterIdentifier.value_or("");
  if (own.empty()) return sentence + "; your own card has no name";
  // Equal texts: only the border between first and last name differs.
  if (own == nameOf(name)) return sentence + ", divided otherwise than on your own card";
  return sentence + "; your own card says " + own;
}

std::string becauseOwnName(const std::string& own) {
  return own.empty() ? "Your own card has no name either" : "Your own card already says " + own;
}

std::string becauseOwnAddress(const DonationValue& donation, const std::string& own) {
  const auto address = std::get<Value::EmailAddress>(donation.value().cases()).address;
  if (address == own) return "Your own card already has it";
  return "Your own card already has it as " + own + ", which is the same mailbox";
}

std::string becauseGivenAgain(const DonationValue& donation, const DonationValue& later) {
  const bool isName = donation.kind() == DonationKind::name;
  return bundleOf(later) + " gave " + (isName ? "your name" : "an image") +
         " later, and the card shows the last one";
}

Judgement judge(const DonationValue& donation, const CardReason& reason, const OwnCard& ownCard) {
  switch (reason.decision) {
    case CardDecision::shown:
      break;
    case CardDecision::appSilenced:
      return {DonationState::silenced, becauseSilenced(*reason.other, false, ownCard)};
    case CardDecision::clusterSilenced:
      return {DonationState::silenced, becauseSilenced(*reason.other, true, ownCard)};
    case CardDecision::namesDisagree:
      return {DonationState::namesDisagree,
              callsYou(donation) + ", " + callsYou(*reason.other) +
                  (ownCard.fault ? ", and your own card cannot be read"
                                 : ", and no card of your own decides")};
    case CardDecision::ownName:
      return {DonationState::ownCardHasIt, becauseOwnName(decidingText(*ownCard.name))};
    case CardDecision::ownEmailAddress:
      return {DonationState::ownCardHasIt, becauseOwnAddress(donation, reason.ownAddress)};
    case CardDecision::givenBefore:
      return {DonationState::givenBefore, bundleOf(*reason.other) + " gave it first"};
    case CardDecision::givenAgain:
      return {DonationState::replacedOnCard, becauseGivenAgain(donation, *reason.other)};
    case CardDecision::hasNothing:
      return {DonationState::hasNothing, "The name has no part that could be shown"};
  }
  return {DonationState::shown, {}};
}

}  // namespace

DonationValues donationsOf(const StatedDonations& stated) {
  DonationValues donations;
  donations.reserve(stated.size());
  for (const StatedDonation& each : stated) donations.push_back(each.donation);
  return donations;
}

StatedDonations statesOf(const std::shared_ptr<const DonationValues>& donations,
                         const OwnCard& ownCard) {
  const CardReasons reasons = CardReasons::of(donations, ownCard.name, ownCard.emailAddresses);
  std::unordered_map<const DonationValue*, std::size_t> numbers;
  for (const DonationValuePtr& donation : *donations) {
    numbers.emplace(donation.get(), numbers.size() + 1);
  }
  StatedDonations stated;
  stated.reserve(donations->size());
  for (const DonationValuePtr& donation : *donations) {
    const CardReason& reason = reasons.reasonOf(*donation);
    Judgement judgement = judge(*donation, reason, ownCard);
    const std::size_t other = reason.other ? numbers.at(reason.other) : 0;
    stated.push_back({donation, stated.size() + 1, judgement.state, std::move(judgement.because),
                      other > 0 ? (*donations)[other - 1] : nullptr, other});
  }
  return stated;
}

}  // namespace quenlet
