#include "model/DonationDigest.h"

#include "model/ComparisonKeys.h"
#include "platform/contacts/PostalAddressFormatter.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

// Marks the offset of a further key until place() knows where the further keys begin.
constexpr std::uint32_t furtherMark = std::uint32_t{1} << 31;
constexpr std::size_t mostFurtherBytes = std::size_t{1} << 30;

enum class LetterCase { kept, folded };

// Whether a field of the text is its own key: ASCII without a reference, and without capitals where
// case does not count. Then the key costs no bytes.
bool isOwnKey(std::string_view field, LetterCase letterCase) {
  bool differs = false;
  for (const char c : field) {
    differs |= static_cast<signed char>(c) < 0 || c == '&';
    differs |= letterCase == LetterCase::folded && c >= 'A' && c <= 'Z';
  }
  return !differs;
}

std::uint32_t narrowed(std::size_t size) { return static_cast<std::uint32_t>(size); }

std::string_view viewOf(const std::optional<std::string>& text) {
  return text ? std::string_view(*text) : std::string_view();
}

}  // namespace

TextSlice DigestMaker::furtherKey(const std::string& key) {
  // Only the owner's own file could hold keys beyond all bounds; just their beginning is compared.
  const std::string_view kept = std::string_view(key).substr(0, mostFurtherBytes - further.size());
  const TextSlice slice{narrowed(further.size()) | furtherMark, narrowed(kept.size())};
  further += kept;
  return slice;
}

TextSlice DigestMaker::keyOf(std::string_view field) {
  if (!textOfRecord) return furtherKey(canonicalKey(field));
  if (isOwnKey(field, LetterCase::kept)) {
    return {narrowed(static_cast<std::size_t>(field.data() - textOfRecord)),
            narrowed(field.size())};
  }
  return furtherKey(canonicalKey(unescapedField(field)));
}

TextSlice DigestMaker::foldedKeyOf(std::string_view field) {
  if (!textOfRecord) return furtherKey(canonicalKey(lowercased(field)));
  if (isOwnKey(field, LetterCase::folded)) return keyOf(field);
  return furtherKey(canonicalKey(lowercased(unescapedField(field))));
}

std::uint32_t DigestMaker::hashOf(const TextSlice& slice) const {
  const char* key = slice.offset & furtherMark ? further.data() + (slice.offset & ~furtherMark)
                                               : textOfRecord + slice.offset;
  return ComparisonKey::hashOf({key, slice.length});
}

void DigestMaker::addIdentifiers(DonationDigest& digest, std::string_view bundleIdentifier,
                                 std::string_view donationIdentifier,
                                 std::string_view clusterIdentifier) {
  digest.bundle = keyOf(bundleIdentifier);
  digest.bundleHash = hashOf(digest.bundle);
  digest.donation = keyOf(donationIdentifier);
  digest.donationHash = hashOf(digest.donation);
  if (clusterIdentifier.empty()) return;
  digest.cluster = keyOf(clusterIdentifier);
  digest.clusterHash = hashOf(digest.cluster);
}

void DigestMaker::addNameKey(DonationDigest& digest, const PersonNameComponents& name) {
  digest.hasEntry = true;
  // Made of two fields, and so never a slice of the text.
  digest.entry = furtherKey(NameKey::keyForName(name).text);
}

void DigestMaker::addPostalKey(DonationDigest& digest, const PostalAddress& address) {
  // Made of several fields, and so never a slice of the text.
  const std::optional<std::string> line =
      PostalAddressFormatter::singleLineStringFromPostalAddress(address, CountryName::leftOut);
  digest.hasEntry = line.has_value();
  if (line) digest.entry = furtherKey(canonicalKey(lowercased(*line)));
}

DonationDigest DigestMaker::digestOfText(const DonationFields& fields, std::string_view text) {
  textOfRecord = text.data();
  DonationDigest digest;
  digest.kind = fields.kind;
  digest.expirationDate = fields.expirationDate;
  digest.textSize = narrowed(text.size());
  addIdentifiers(digest, fields.bundleIdentifier, fields.donationIdentifier,
                 fields.clusterIdentifier);
  switch (fields.kind) {
    case DonationKind::name:
      addNameKey(digest, fields.nameComponents());
      break;
    case DonationKind::emailAddress:
      digest.hasEntry = true;
      digest.entry = foldedKeyOf(fields.content[0]);
      break;
    case DonationKind::phoneNumber:
      digest.hasEntry = true;
      digest.entry = keyOf(fields.content[0]);
      break;
    case DonationKind::postalAddress:
      addPostalKey(digest, fields.postalAddress());
      break;
    case DonationKind::imageData:
      break;
  }
  if (digest.hasEntry) digest.entryHash = hashOf(digest.entry);
  return digest;
}

DonationDigest DigestMaker::digestOfDonation(const DecodedDonation& donation) {
  textOfRecord = nullptr;
  DonationDigest digest;
  digest.kind = static_cast<DonationKind>(donation.content.index());
  digest.expirationDate = donation.origin.expirationDate;
  addIdentifiers(digest, donation.origin.bundleIdentifier, donation.origin.donationIdentifier,
                 viewOf(donation.origin.clusterIdentifier));
  if (const auto* name = std::get_if<PersonNameComponents>(&donation.content)) {
    addNameKey(digest, *name);
  } else if (const auto* email = std::get_if<Value::EmailAddress>(&donation.content)) {
    digest.hasEntry = true;
    digest.entry = foldedKeyOf(email->address);
  } else if (const auto* phone = std::get_if<Value::PhoneNumber>(&donation.content)) {
    digest.hasEntry = true;
    digest.entry = keyOf(phone->number);
  } else if (const auto* postal = std::get_if<Value::PostalAddress>(&donation.content)) {
    addPostalKey(digest, postal->address);
  }
  if (digest.hasEntry) digest.entryHash = hashOf(digest.entry);
  return digest;
}

void DigestMaker::place(DonationDigest& digest, std::uint32_t offsetOfFurtherKeys) {
  for (TextSlice* slice : {&digest.donation, &digest.bundle, &digest.cluster, &digest.entry}) {
    if (slice->offset & furtherMark) {
      slice->offset = (slice->offset & ~furtherMark) + offsetOfFurtherKeys;
    }
  }
}

}  // namespace quenlet
