#include "tools/owner/OwnCard.h"

#include <utility>

#include "mecard/ProductionInfoProvider.h"
#include "platform/contacts/VCardContactStore.h"
#include "platform/files/UserDirectories.h"

namespace quenlet {
namespace {

bool isMissing(const Error& error) {
  return error.domain() == ContactErrorDomain &&
         error.code() == static_cast<int>(ContactErrorCode::noMeContact);
}

const std::vector<KeyDescriptor>& allKeys() {
  static const std::vector<KeyDescriptor> keys = {
      KeyDescriptor::namePrefix,     KeyDescriptor::givenName,    KeyDescriptor::middleName,
      KeyDescriptor::familyName,     KeyDescriptor::nameSuffix,   KeyDescriptor::nickname,
      KeyDescriptor::emailAddresses, KeyDescriptor::phoneNumbers, KeyDescriptor::postalAddresses,
      KeyDescriptor::imageData};
  return keys;
}

}  // namespace

Result<OwnCard> OwnCard::read() {
  const auto home = UserDirectories::homeDirectory();
  if (!home.ok()) return Result<OwnCard>::failure(home.error());
  return Result<OwnCard>::success(readFrom(home.value() / MeCardPath));
}

OwnCard OwnCard::readFrom(const std::filesystem::path& path) {
  const VCardContactStore store(path);
  const auto asAgent = store.readCard(ProductionInfoProvider::keysToFetch());
  const auto whole = store.readCard(allKeys());
  OwnCard card;
  for (const auto* reading : {&asAgent, &whole}) {
    if (reading->ok()) continue;
    if (!isMissing(*reading->error())) card.fault = reading->error();
    return card;
  }
  ProductionInfoProvider facts;
  const auto agentsView = std::make_shared<const Contact>(asAgent.value().contact);
  facts.updateCuratedName(agentsView);
  facts.updateCuratedEmailAddresses(agentsView);
  card.contact = std::make_shared<const Contact>(whole.value().contact);
  card.name = facts.curatedName();
  card.emailAddresses = facts.curatedEmailAddresses();
  card.skipped = whole.value().skipped;
  return card;
}

}  // namespace quenlet
