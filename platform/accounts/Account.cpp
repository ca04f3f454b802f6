#include "platform/accounts/Account.h"

#include <tuple>

namespace quenlet {
namespace {

constexpr char identifierKey[] = "identifier";
constexpr char typeKey[] = "type";
constexpr char usernameKey[] = "username";
constexpr char activeKey[] = "active";
constexpr char dataClassesKey[] = "dataClasses";
constexpr char propertiesKey[] = "properties";

// Reads the known keys of a record. An entry of the wrong type spoils the whole record.
class RecordReader final {
 public:
  explicit RecordReader(const PropertyListDictionary& record) : entries(record) {}

  [[nodiscard]] bool isSpoiled() const { return spoiled; }

  [[nodiscard]] std::optional<std::string> text(const char* key) {
    const std::string* value = typed(key, &PropertyList::string);
    if (!value) return std::nullopt;
    return *value;
  }
  [[nodiscard]] bool flag(const char* key) {
    const bool* value = typed(key, &PropertyList::boolean);
    return value && *value;
  }
  [[nodiscard]] std::set<std::string> textSet(const char* key) {
    std::set<std::string> texts;
    const PropertyListArray* values = typed(key, &PropertyList::array);
    if (!values) return texts;
    for (const PropertyList& value : *values) {
      if (const std::string* member = value.string()) {
        texts.insert(*member);
      } else {
        spoiled = true;
      }
    }
    return texts;
  }
  [[nodiscard]] PropertyListDictionary dictionary(const char* key) {
    const PropertyListDictionary* value = typed(key, &PropertyList::dictionary);
    return value ? *value : PropertyListDictionary();
  }

 private:
  template <typename T>
  const T* typed(const char* key, const T* (PropertyList::*accessor)() const) {
    const PropertyList* entry = findEntry(entries, key);
    const T* value = entry ? (entry->*accessor)() : nullptr;
    if (entry && !value) spoiled = true;
    return value;
  }

  const PropertyListDictionary& entries;
  bool spoiled = false;
};

}  // namespace

std::string Account::description() const {
  const std::string type = accountType ? accountType->identifier.value_or("") : "";
  return "account " + identifier + (type.empty() ? "" : " of type " + type);
}

bool operator==(const Account& left, const Account& right) {
  const auto facts = [](const Account& account) {
    return std::tie(account.identifier, account.accountType, account.username, account.isActive,
                    account.enabledDataclasses, account.properties);
  };
  return facts(left) == facts(right);
}

PropertyListDictionary Account::propertyListRepresentation() const {
  PropertyListDictionary entries;
  entries.emplace(identifierKey, identifier);
  if (accountType && accountType->identifier) entries.emplace(typeKey, *accountType->identifier);
  if (username) entries.emplace(usernameKey, *username);
  entries.emplace(activeKey, isActive);
  entries.emplace(dataClassesKey,
                  PropertyListArray(enabledDataclasses.begin(), enabledDataclasses.end()));
  entries.emplace(propertiesKey, properties);
  return entries;
}

std::optional<Account> Account::initWithPropertyListRepresentation(
    const PropertyListDictionary& entries) {
  RecordReader reader(entries);
  Account account;
  account.identifier = reader.text(identifierKey).value_or(std::string());
  if (auto type = reader.text(typeKey)) account.accountType = AccountType{std::move(type)};
  account.username = reader.text(usernameKey);
  account.isActive = reader.flag(activeKey);
  account.enabledDataclasses = reader.textSet(dataClassesKey);
  account.properties = reader.dictionary(propertiesKey);
  if (reader.isSpoiled() || account.identifier.empty()) return std::nullopt;
  return account;
}

}  // namespace quenlet
