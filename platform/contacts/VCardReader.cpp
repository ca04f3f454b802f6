#include <optional>
#include <utility>

#include "platform/contacts/VCard.h"
#include "platform/contacts/VCardBuilder.h"
#include "platform/contacts/VCardErrors.h"
#include "platform/contacts/VCardLineReader.h"
#include "platform/contacts/VCardProperty.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

// Keeps what stands between BEGIN and END together. Lives for one text.
class VCardReader final {
 public:
  explicit VCardReader(std::string_view text) : lines(text) {}

  Result<std::vector<VCard>> read() && {
    while (const auto line = lines.next()) {
      auto property = parseVCardProperty(line->text, line->number);
      const ErrorPtr failure = property.isLeft() ? take(property.left()) : property.right();
      if (failure) return Result<std::vector<VCard>>::right(failure);
    }
    if (builder) return fail("the last line, in a card without END");
    if (cards.empty()) return fail("the last line, and no card");
    return Result<std::vector<VCard>>::left(std::move(cards));
  }

 private:
  Result<std::vector<VCard>> fail(const char* offence) const {
    return Result<std::vector<VCard>>::right(makeInvalidVCardError(lines.lineNumber(), offence));
  }

  ErrorPtr take(const VCardProperty& property) {
    if (property.name == "BEGIN") return begin(property);
    if (!builder) return makeInvalidVCardError(property.lineNumber, "a property outside a card");
    if (property.name == "END") return end(property);
    return builder->add(property);
  }

  ErrorPtr begin(const VCardProperty& property) {
    if (lowercased(trimmed(property.value)) != "vcard") {
      return makeInvalidVCardError(property.lineNumber,
                                   "the beginning of something else than a card");
    }
    if (builder) return makeInvalidVCardError(property.lineNumber, "a card within a card");
    builder.emplace();
    return nullptr;
  }

  ErrorPtr end(const VCardProperty& property) {
    if (lowercased(trimmed(property.value)) != "vcard") {
      return makeInvalidVCardError(property.lineNumber, "the end of something else than a card");
    }
    auto card = std::move(*builder).build(property.lineNumber);
    builder.reset();
    if (!card.isLeft()) return card.right();
    cards.push_back(std::move(card).takeLeft());
    return nullptr;
  }

  VCardLineReader lines;
  std::optional<VCardBuilder> builder;
  std::vector<VCard> cards;
};

}  // namespace

Result<std::vector<VCard>> parseVCards(std::string_view text) {
  if (text.size() > maximumVCardSizeInBytes) {
    return Result<std::vector<VCard>>::right(makeError(
        ContactErrorDomain, static_cast<int>(ContactErrorCode::invalidCard),
        "the text is larger than " + std::to_string(maximumVCardSizeInBytes >> 20) + " MiB"));
  }
  return VCardReader(text).read();
}

}  // namespace quenlet
