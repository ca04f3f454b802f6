#include "platform/contacts/VCardReader.h"

#include <algorithm>
#include <string>
#include <utility>

#include "platform/contacts/VCardEncoding.h"
#include "platform/contacts/VCardErrors.h"
#include "platform/contacts/VCardProperty.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

std::string valueOf(std::string_view line) {
  const std::size_t colon = std::min(line.find(':'), line.size() - 1);
  return lowercased(trimmed(line.substr(colon + 1)));
}

const std::vector<KeyDescriptor>& allLists() {
  static const std::vector<KeyDescriptor> keys = {
      KeyDescriptor::emailAddresses, KeyDescriptor::phoneNumbers, KeyDescriptor::postalAddresses,
      KeyDescriptor::imageData};
  return keys;
}

ErrorPtr sizeError(std::string_view text) {
  if (text.size() <= maximumVCardSizeInBytes) return nullptr;
  return makeError(
      ContactErrorDomain, static_cast<int>(ContactErrorCode::invalidCard),
      "the text is larger than " + std::to_string(maximumVCardSizeInBytes >> 20) + " MiB");
}

}  // namespace

std::optional<Result<VCard>> VCardReader::next() {
  while (const auto line = lines.next()) {
    Outcome outcome = take(line->text);
    if (!outcome) continue;
    hasGivenOut = true;
    return outcome;
  }
  return atEnd();
}

VCardReader::Outcome VCardReader::take(std::string_view line) {
  const std::string name = nameOfVCardLine(line);
  const bool followsAgent = std::exchange(agentOpens, name == "AGENT" && valueOf(line).empty());
  const bool isBoundary = (name == "BEGIN" || name == "END") && valueOf(line) == "vcard";
  if (isBoundary && name == "END") return end();
  if (isBoundary && builder && followsAgent) {
    ++agentDepth;
  } else if (isBoundary) {
    return begin();
  } else if (builder && agentDepth == 0) {
    builder->add(line, lines.lineNumber());
    // The line may have been the VERSION, which decides how the following ones are unfolded.
    lines.setBlanksOfFoldsCount(builder->syntax() == VCardSyntax::old);
  }
  return std::nullopt;
}

VCardReader::Outcome VCardReader::begin() {
  Outcome formerCard = builder ? cardWithoutEnd() : std::nullopt;
  agentDepth = 0;
  builder.emplace(wantedKeys, lines.lineNumber(), ++places);
  lines.setBlanksOfFoldsCount(false);
  return formerCard;
}

VCardReader::Outcome VCardReader::end() {
  if (!builder) return fail(lines.lineNumber(), "the end of a card that has no BEGIN");
  if (agentDepth > 0) {
    --agentDepth;
    return std::nullopt;
  }
  Outcome card = std::move(*builder).build();
  builder.reset();
  return card;
}

VCardReader::Outcome VCardReader::cardWithoutEnd() {
  return fail(builder->beginsOnLine(), "a card without END");
}

VCardReader::Outcome VCardReader::atEnd() {
  if (builder) {
    Outcome failure = cardWithoutEnd();
    builder.reset();
    hasGivenOut = true;
    return failure;
  }
  // Silence would hide that the text is not a vCard at all.
  if (std::exchange(hasGivenOut, true)) return std::nullopt;
  return fail(lines.lineNumber(), "the last line, and no card");
}

VCardReader::Outcome VCardReader::fail(std::size_t lineNumber, const char* offence) {
  return Result<VCard>::failure(makeInvalidVCardError(lineNumber, offence));
}

VCards parseVCards(std::string_view text) {
  VCards result;
  if (ErrorPtr error = sizeError(text)) {
    result.failures.push_back(std::move(error));
    return result;
  }
  const std::optional<std::string> converted = vCardsFromUTF16(text);
  VCardReader reader(converted ? *converted : text, allLists());
  while (auto card = reader.next()) {
    if (card->ok()) {
      result.cards.push_back(std::move(*card).takeValue());
    } else {
      result.failures.push_back(card->error());
    }
  }
  return result;
}

Result<VCard> parseFirstVCard(std::string_view text, const std::vector<KeyDescriptor>& keys) {
  if (ErrorPtr error = sizeError(text)) return Result<VCard>::failure(std::move(error));
  const std::optional<std::string> converted = vCardsFromUTF16(text);
  return *VCardReader(converted ? *converted : text, keys).next();
}

}  // namespace quenlet
