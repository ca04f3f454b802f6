#pragma once

#include <string>

#include "platform/contacts/PhoneNumber.h"
#include "platform/contacts/PostalAddress.h"

// When two values of one kind are the same one. What matches shares a key, by which the candidates
// are found without comparing all with all. Pure functions.
namespace quenlet {

// What decides whether a value matches others, made once for each.
template <typename Candidate>
struct Matching final {
  std::string key;
  // Compared with those of other values that have the key.
  Candidate candidate;
};

// Values of which all that share a key match.
struct AnyCandidate final {
  [[nodiscard]] bool isLike(AnyCandidate) const { return true; }
};

// E-mail addresses and postal addresses match when they are equal, text by canonical equivalence,
// letter case and all.
[[nodiscard]] Matching<AnyCandidate> matchingOf(const std::string& emailAddress);
[[nodiscard]] Matching<AnyCandidate> matchingOf(const PostalAddress& address);
// Phone numbers match when they are like each other.
[[nodiscard]] Matching<ComparableNumber> matchingOf(const PhoneNumber& number);

// A value as a description shows it.
[[nodiscard]] std::string describedValue(const std::string& emailAddress);
[[nodiscard]] std::string describedValue(const PhoneNumber& number);
[[nodiscard]] std::string describedValue(const PostalAddress& address);

}  // namespace quenlet
