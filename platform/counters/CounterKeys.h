#pragma once

// The counters that the daily report keeps.
namespace quenlet::CounterKeys {

// Scalars; the has-… ones are 1 or 0.
inline constexpr char meCardCount[] = "ovaro.quenlet.me-card.count";
inline constexpr char hasName[] = "ovaro.quenlet.me-card.has-name";
inline constexpr char hasEmailAddress[] = "ovaro.quenlet.me-card.has-email-address";
inline constexpr char hasPhoneNumber[] = "ovaro.quenlet.me-card.has-phone-number";
inline constexpr char hasPostalAddress[] = "ovaro.quenlet.me-card.has-postal-address";

// Distributions, with one sample per report.
inline constexpr char matchedEmailAddresses[] =
    "ovaro.quenlet.augmentation.email-address.matched-count";
inline constexpr char unmatchedEmailAddresses[] =
    "ovaro.quenlet.augmentation.email-address.unmatched-count";
inline constexpr char matchedPhoneNumbers[] =
    "ovaro.quenlet.augmentation.phone-number.matched-count";
inline constexpr char unmatchedPhoneNumbers[] =
    "ovaro.quenlet.augmentation.phone-number.unmatched-count";
inline constexpr char matchedPostalAddresses[] =
    "ovaro.quenlet.augmentation.postal-address.matched-count";
inline constexpr char unmatchedPostalAddresses[] =
    "ovaro.quenlet.augmentation.postal-address.unmatched-count";

}  // namespace quenlet::CounterKeys
