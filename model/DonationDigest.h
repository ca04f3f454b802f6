#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "model/DonationFields.h"

namespace quenlet {

// A range of a record's bytes, counted from the start of its text.
struct TextSlice final {
  std::uint32_t offset = 0;
  std::uint32_t length = 0;
};

// The facts that searches need of a record, found once when it is made, so that a search among many
// records reads no texts. Keys are slices of the record's bytes; DonationValue.h draws them. A
// value type.
struct DonationDigest final {
  DonationKind kind = DonationKind::name;
  bool hasEntry = false;
  std::uint32_t entryHash = 0;
  TextSlice entry;  // of a name: its NameKey
  std::uint32_t donationHash = 0;
  std::uint32_t bundleHash = 0;
  std::uint32_t clusterHash = 0;
  std::uint32_t textSize = 0;  // 0 for a record that has no text
  TextSlice cluster;
  TextSlice bundle;
  TextSlice donation;
  Date expirationDate;
};

// Makes the digests of the records of one block. Keys that do not occur in their record's text are
// collected in furtherKeys(), which goes behind the last text. One thread at a time.
class DigestMaker final {
 public:
  // `fieldsOfText` are views into the record's text. Slices of further keys become valid with
  // place().
  [[nodiscard]] DonationDigest digestOfText(const DonationFields& fieldsOfText,
                                            std::string_view text);
  // The digest of a record without text: all its keys are further ones.
  [[nodiscard]] DonationDigest digestOfDonation(const DecodedDonation& donation);

  [[nodiscard]] const std::string& furtherKeys() const { return further; }
  // Tells the digest where the further keys stand, counted from the start of its record's text.
  static void place(DonationDigest& digest, std::uint32_t offsetOfFurtherKeys);

 private:
  void addIdentifiers(DonationDigest& digest, std::string_view bundleIdentifier,
                      std::string_view donationIdentifier, std::string_view clusterIdentifier);
  [[nodiscard]] TextSlice keyOf(std::string_view field);
  [[nodiscard]] TextSlice foldedKeyOf(std::string_view field);
  [[nodiscard]] TextSlice furtherKey(const std::string& key);
  [[nodiscard]] std::uint32_t hashOf(const TextSlice& slice) const;
  void addNameKey(DonationDigest& digest, const PersonNameComponents& name);
  void addPostalKey(DonationDigest& digest, const PostalAddress& address);

  // Null for a record without text.
  const char* textOfRecord = nullptr;
  std::string further;
};

}  // namespace quenlet
