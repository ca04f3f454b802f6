#include "facade/DonationForm.h"

#include <set>
#include <utility>

#include "apps/CardKind.h"
#include "facade/FacadeError.h"
#include "facade/ValueForm.h"
#include "platform/contacts/ValueBounds.h"

namespace quenlet {
namespace {

ErrorPtr invalid(const std::string& sentence) {
  return makeFacadeError(InvalidArgsError, sentence);
}

ErrorPtr tooLarge(const std::string& sentence) { return makeFacadeError(TooLargeError, sentence); }

// Reads one dictionary, key by key; remembers the first thing that is wrong.
class FieldReader final {
 public:
  FieldReader(const BusDictionary& read, std::string called)
      : entries(read), name(std::move(called)) {}

  [[nodiscard]] std::optional<std::string> text(const char* key, std::size_t mostBytes) {
    const BusValue* found = take(key);
    if (found == nullptr) return std::nullopt;
    if (found->text() == nullptr) return wrong(key, "is not a text");
    if (found->text()->size() > mostBytes) {
      note(tooLarge(name + ": " + key + " is too long"));
      return std::nullopt;
    }
    return *found->text();
  }
  [[nodiscard]] std::string requiredText(const char* key, std::size_t mostBytes) {
    const auto found = text(key, mostBytes);
    if (!found || found->empty()) wrong(key, "is missing");
    return found.value_or("");
  }
  [[nodiscard]] std::optional<Date> date(const char* key) {
    const auto found = text(key, mostBytesInIdentifier);
    if (!found) return std::nullopt;
    const auto read = Date::fromISO8601(*found);
    if (!read) wrong(key, "is not a date as in 2026-05-01T12:00:00Z");
    return read;
  }
  [[nodiscard]] const BusValue* take(const char* key) {
    taken.insert(key);
    return findEntry(entries, key);
  }
  std::nullopt_t wrong(const std::string& key, const std::string& how) {
    note(invalid(name + ": " + key + " " + how));
    return std::nullopt;
  }
  void note(const ErrorPtr& error) {
    if (!first) first = error;
  }
  // An error that does not say where it is.
  void noteInside(const ErrorPtr& error) {
    if (error)
      note(makeFacadeError(facadeErrorName(*error), name + ": " + error->debugDescription()));
  }
  // The first error; one, too, for a key that nobody asked for.
  [[nodiscard]] ErrorPtr error() {
    for (const auto& [key, value] : entries) {
      if (!taken.contains(key)) wrong("a key", "is unknown");
    }
    return first;
  }

 private:
  const BusDictionary& entries;
  const std::string name;
  std::set<std::string, std::less<>> taken;
  ErrorPtr first;
};

using Content = decltype(Donation::content);

Content contentIn(FieldReader& fields, CardKind kind) {
  const std::string label = fields.text("label", mostBytesInText).value_or("");
  const BusValue* value = fields.take("value");
  const auto wrongValue = [&fields] {
    fields.wrong("value", "is not one of its kind");
    return Content();
  };
  if (value == nullptr) return wrongValue();
  if (kind == CardKind::name || kind == CardKind::postalAddress) {
    Name name;
    Postal postal{.label = label};
    if (value->dictionary() == nullptr) return wrongValue();
    fields.noteInside(kind == CardKind::name ? readName(*value->dictionary(), name)
                                             : readAddress(*value->dictionary(), postal.address));
    return kind == CardKind::name ? Content(name) : Content(postal);
  }
  if (kind == CardKind::imageData) {
    if (value->bytes() == nullptr || value->bytes()->empty()) return wrongValue();
    if (value->bytes()->size() > mostBytesInImage) fields.note(tooLarge("an image is too large"));
    return Image{*value->bytes()};
  }
  const std::string text = fields.requiredText("value", mostBytesInText);
  return kind == CardKind::emailAddress ? Content(Email{text, label}) : Content(Phone{text, label});
}

ErrorPtr readOrigin(const BusDictionary& entries, const std::string& name, Donation& donation) {
  FieldReader origin(entries, name);
  donation.donationIdentifier = origin.requiredText("donationIdentifier", mostBytesInIdentifier);
  donation.bundleIdentifier = origin.text("bundleIdentifier", mostBytesInIdentifier).value_or("");
  donation.clusterIdentifier = origin.text("clusterIdentifier", mostBytesInIdentifier);
  if (const auto date = origin.date("donationDate")) donation.donationDate = *date;
  if (const auto date = origin.date("expirationDate")) donation.expirationDate = *date;
  return origin.error();
}

Result<Donation> donationIn(const BusDictionary& entries, const std::string& name) {
  FieldReader fields(entries, name);
  const auto kind = cardKindFor(fields.requiredText("kind", mostBytesInIdentifier));
  if (!kind) return Result<Donation>::failure(invalid(name + ": kind is unknown"));
  Donation donation;
  donation.content = contentIn(fields, *kind);
  const BusValue* origin = fields.take("origin");
  if (origin == nullptr || origin->dictionary() == nullptr) {
    fields.wrong("origin", "is missing");
  } else {
    fields.note(readOrigin(*origin->dictionary(), name, donation));
  }
  if (const ErrorPtr error = fields.error()) return Result<Donation>::failure(error);
  return Result<Donation>::success(std::move(donation));
}

// "kind" and "value", and "label" of what can have one.
struct ContentWriter final {
  BusDictionary& entries;

  void operator()(const Name& name) const { add(CardKind::name, nameDictionary(name), {}); }
  void operator()(const Email& email) const {
    add(CardKind::emailAddress, busText(email.address), email.label);
  }
  void operator()(const Phone& phone) const {
    add(CardKind::phoneNumber, busText(phone.number), phone.label);
  }
  void operator()(const Postal& postal) const {
    add(CardKind::postalAddress, addressDictionary(postal.address), postal.label);
  }
  void operator()(const Image& image) const {
    add(CardKind::imageData, static_cast<std::int64_t>(image.bytes.size()), {});
  }
  void add(CardKind kind, BusValue value, const std::string& label) const {
    entries.emplace("kind", std::string(wordFor(kind)));
    entries.emplace("value", std::move(value));
    if (!label.empty()) entries.emplace("label", busText(label));
  }
};

ErrorPtr readProperties(const BusValue* properties, AccountRecord& record) {
  if (properties == nullptr) return nullptr;
  if (properties->dictionary() == nullptr) return invalid("properties are not a dictionary");
  for (const auto& [key, value] : *properties->dictionary()) {
    if (value.text() == nullptr) return invalid("a property is not a text");
    if (key.size() > mostBytesInIdentifier || value.text()->size() > mostBytesInText) {
      return tooLarge("a property is too long");
    }
    record.textProperties.emplace(key, *value.text());
  }
  return nullptr;
}

std::string prefixOf(const std::string& app) { return app + ":"; }

// The identifier as the app gave it; nothing for what is not its own.
std::optional<std::string> withoutPrefix(const std::string& app, const std::string& identifier) {
  const std::string prefix = prefixOf(app);
  if (!identifier.starts_with(prefix)) return std::nullopt;
  return identifier.substr(prefix.size());
}

}  // namespace

Result<std::vector<Donation>> donationsIn(const BusValue& list) {
  using Read = Result<std::vector<Donation>>;
  if (list.elements() == nullptr) return Read::failure(invalid("there is no list of donations"));
  if (list.elements()->size() > mostDonationsInCall) {
    return Read::failure(tooLarge("there are more than 1000 donations in a call"));
  }
  std::vector<Donation> donations;
  for (const BusValue& element : *list.elements()) {
    const std::string name = "donation " + std::to_string(donations.size() + 1);
    if (element.dictionary() == nullptr)
      return Read::failure(invalid(name + " is not a dictionary"));
    auto donation = donationIn(*element.dictionary(), name);
    if (!donation.ok()) return Read::failure(donation.error());
    donations.push_back(std::move(donation).takeValue());
  }
  return Read::success(std::move(donations));
}

BusDictionary donationDictionary(const Donation& donation) {
  BusDictionary entries;
  std::visit(ContentWriter{entries}, donation.content);
  const auto& cluster = donation.clusterIdentifier;
  entries.emplace("origin",
                  sourceDictionary({donation.bundleIdentifier, donation.donationIdentifier,
                                    cluster ? &*cluster : nullptr, donation.donationDate,
                                    donation.expirationDate}));
  return entries;
}

Result<std::vector<std::string>> identifiersIn(const BusValue& list) {
  using Read = Result<std::vector<std::string>>;
  const auto texts = list.texts();
  if (!texts) return Read::failure(invalid("there is no list of identifiers"));
  if (texts->size() > mostDonationsInCall) {
    return Read::failure(tooLarge("there are more than 1000 identifiers in a call"));
  }
  for (const std::string& text : *texts) {
    if (text.size() > mostBytesInIdentifier) {
      return Read::failure(tooLarge("an identifier is too long"));
    }
  }
  return Read::success(*texts);
}

Result<std::optional<AccountRecord>> accountIn(const BusValue& account) {
  using Read = Result<std::optional<AccountRecord>>;
  if (account.dictionary() == nullptr)
    return Read::failure(invalid("an account is not a dictionary"));
  if (account.dictionary()->empty()) return Read::success(std::nullopt);
  FieldReader fields(*account.dictionary(), "account");
  AccountRecord record;
  record.identifier = fields.requiredText("identifier", mostBytesInIdentifier);
  record.type = fields.text("type", mostBytesInIdentifier);
  record.username = fields.text("username", mostBytesInText);
  if (const BusValue* active = fields.take("active")) {
    if (active->boolean() == nullptr) fields.wrong("active", "is not a boolean");
    record.isActive = active->boolean() == nullptr || *active->boolean();
  }
  if (const BusValue* classes = fields.take("dataClasses")) {
    const auto read = identifiersIn(*classes);
    fields.note(read.ok() ? nullptr : read.error());
    if (read.ok()) record.dataClasses = {read.value().begin(), read.value().end()};
  }
  fields.note(readProperties(fields.take("properties"), record));
  if (const ErrorPtr error = fields.error()) return Read::failure(error);
  return Read::success(std::move(record));
}

std::string identifierOfApp(const std::string& app, const std::string& identifier) {
  return prefixOf(app) + identifier;
}

ErrorPtr claimForApp(const std::string& app, std::vector<Donation>& donations) {
  for (Donation& donation : donations) {
    if (!donation.bundleIdentifier.empty() && donation.bundleIdentifier != app) {
      return makeFacadeError(NotPermittedError, "an app donates under its own identifier");
    }
    donation.bundleIdentifier = app;
    donation.donationIdentifier = identifierOfApp(app, donation.donationIdentifier);
    if (donation.clusterIdentifier) {
      donation.clusterIdentifier = identifierOfApp(app, *donation.clusterIdentifier);
    }
  }
  return nullptr;
}

std::vector<Donation> donationsOfApp(const std::string& app, std::vector<Donation> all) {
  std::vector<Donation> own;
  for (Donation& donation : all) {
    auto identifier = withoutPrefix(app, donation.donationIdentifier);
    if (donation.bundleIdentifier != app || !identifier) continue;
    donation.donationIdentifier = *std::move(identifier);
    if (donation.clusterIdentifier) {
      auto cluster = withoutPrefix(app, *donation.clusterIdentifier);
      donation.clusterIdentifier = cluster ? *cluster : *donation.clusterIdentifier;
    }
    own.push_back(std::move(donation));
  }
  return own;
}

}  // namespace quenlet
