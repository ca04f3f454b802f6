#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "model/DonationFields.h"

namespace quenlet {

// A piece of the bytes that begin with a record's text.
struct TextSlice final {
  std::uint32_t offset = 0;
  std::uint32_t length = 0;
};

// What is found out about a record once, when it is made, so that a search among many does not read
// their texts. Keys are slices of the record's bytes. A value type.
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

// Makes the digests of records whose texts stand one behind the other. Keys that are no part of
// their record's text go into one further text, which has to be put behind all of these. One thread
// at a time.
class DigestMaker final {
 public:
  // `fieldsOfText` are views into the record's text. Slices of further keys are good only after
  // place().
  [[nodiscard]] DonationDigest digestOfText(const DonationFields& fieldsOfText,
                                            std::string_view text);
  // The digest of a record without a text: all its keys are further ones.
  [[nodiscard]] DonationDigest digestOfDonation(const DecodedDonation& donation);

  [[nodiscard]] const std::string& furtherKeys() const { return further; }
  // Says where the further keys stand, counted from the start of the digest's text.
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

  // Null while the record at hand has none.
  const char* textOfRecord = nullptr;
  std::string further;
};

}  // namespace quenlet
