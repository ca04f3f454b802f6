#include "browser/host/CardReading.h"

#include <array>
#include <cstddef>
#include <utility>

#include "platform/ipc/ServiceInterface.h"
#include "protocol/ClientEntitlements.h"
#include "quenlet/ErrorCodes.h"
#include "tools/owner/Hints.h"

namespace quenlet {
namespace {

struct StateTexts final {
  const char* word;
  const char* sentence;
};

// In the order of the states.
constexpr std::array<StateTexts, 6> stateTexts = {{
    {"ready", ""},
    {"empty",
     "Nothing is known of you yet: you keep no card of your own, and nothing was donated. "
     "quenlet donate FILE makes a start."},
    {"donationsOff", "Donations are off, so only your own card can be used."},
    {"noAgent", "No agent answers, so only your own card can be used."},
    {"notEntitled", "The agent does not serve this program, so only your own card can be used."},
    {"failed", "The donated card could not be read, so only your own card can be used."},
}};

const StateTexts& textsFor(ReadingState state) {
  return stateTexts.at(static_cast<std::size_t>(state));
}

ReadingState stateAfter(const Error& error) {
  if (isNotEnabled(error)) return ReadingState::donationsOff;
  if (error.domain() == GeneralErrorDomain && error.code() == MissingEntitlementCode) {
    return ReadingState::notEntitled;
  }
  if (error.domain() != ServiceErrorDomain) return ReadingState::failed;
  switch (static_cast<ServiceErrorCode>(error.code())) {
    case ServiceErrorCode::noService:
    case ServiceErrorCode::connectionBroken:
    case ServiceErrorCode::timedOut:
      return ReadingState::noAgent;
    default:
      return ReadingState::failed;
  }
}

ReadingState stateOf(const OwnersValues& values) {
  if (!values.donationsEnabled) return ReadingState::donationsOff;
  const bool isEmpty = values.listed.empty() && !values.own.contact && values.missing().empty();
  return isEmpty ? ReadingState::empty : ReadingState::ready;
}

std::vector<std::string> notesOn(const OwnersValues& values) {
  std::vector<std::string> notes;
  if (!values.donationsEnabled) notes.emplace_back("quenlet enable turns them on");
  if (values.own.fault) {
    notes.push_back("Your own card cannot be read: " + values.own.fault->debugDescription());
  }
  for (const ErrorPtr& problem : values.problems) notes.push_back(problem->debugDescription());
  return notes;
}

}  // namespace

const char* wordFor(ReadingState state) { return textsFor(state).word; }
const char* sentenceFor(ReadingState state) { return textsFor(state).sentence; }

CardReading CardReading::of(CorvelProtocol& agent, Date now) {
  Result<OwnersValues> read = OwnersValues::read(agent, now);
  if (read.ok()) {
    const ReadingState state = stateOf(read.value());
    return {state, notesOn(read.value()), {now, std::move(read).takeValue()}};
  }
  const ReadingState state = stateAfter(*read.error());
  Result<OwnCard> own = OwnCard::read();
  OwnersValues alone{.own = own.ok() ? std::move(own).takeValue() : OwnCard()};
  std::vector<std::string> notes = notesOn(alone);
  for (Advice& hint : hintsFor(*read.error())) notes.push_back(std::move(hint.text));
  if (state == ReadingState::failed) notes.push_back(read.error()->description());
  return {state, std::move(notes), {now, std::move(alone)}};
}

}  // namespace quenlet
