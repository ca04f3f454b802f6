#pragma once

#include <string>

#include "platform/contacts/PhoneNumber.h"
#include "platform/contacts/PostalAddress.h"

// Decides when two values of one kind are the same. Values that match share a key, so that not all
// have to be compared with all. Pure functions.
namespace quenlet {

// A value made ready for matching, once.
template <typename Candidate>
struct Matching final {
  std::string key;
  // Compared with the candidates of other values with this key.
  Candidate candidate;
};

// For kinds where values with the same key always match.
struct AnyCandidate final {
  [[nodiscard]] bool isLike(AnyCandidate) const { return true; }
};

// E-mail addresses and postal addresses match when they are canonically equivalent, letter case and
// all.
[[nodiscard]] Matching<AnyCandidate> matchingOf(const std::string& emailAddress);
[[nodiscard]] Matching<AnyCandidate> matchingOf(const PostalAddress& address);
// Phone numbers match when they are like each other.
[[nodiscard]] Matching<ComparableNumber> matchingOf(const PhoneNumber& number);

// A value as a description shows it.
[[nodiscard]] std::string describedValue(const std::string& emailAddress);
[[nodiscard]] std::string describedValue(const PhoneNumber& number);
[[nodiscard]] std::string describedValue(const PostalAddress& address);

}  // namespace quenlet
