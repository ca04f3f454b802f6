#include "tools/commands/AccountEdit.h"

#include <CLI/CLI.hpp>

#include "platform/files/PosixDataProxy.h"
#include "platform/foundation/PropertyListSerializer.h"

namespace quenlet {
namespace {

std::string validateProperty(const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals != std::string::npos && equals > 0) return {};
  return "takes a key, an equals sign and a value";
}

std::optional<std::string> presentUnlessEmpty(const std::string& text) {
  return text.empty() ? std::nullopt : std::optional(text);
}

CLI::Option* addRepeatable(CLI::App& word, const char* name, std::vector<std::string>& texts,
                           const char* help) {
  return word.add_option(name, texts, help)->allow_extra_args(false);
}

Result<PropertyListDictionary> readDictionary(const std::string& file) {
  using Entries = Result<PropertyListDictionary>;
  const Result<std::string> bytes = PosixDataProxy().dataWithContentsOfURL(file).result();
  if (!bytes.ok()) return Entries::failure(bytes.error());
  const Result<PropertyList> object = PropertyListSerializer::objectWithData(bytes.value());
  if (object.ok() && object.value().dictionary()) {
    return Entries::success(*object.value().dictionary());
  }
  const std::string fault =
      object.ok() ? "its top level is not a dictionary" : object.error()->debugDescription();
  return Entries::failure(makeError(PropertyListErrorDomain,
                                    object.ok() ? 0 : object.error()->code(), file + ": " + fault));
}

}  // namespace

void AccountEdit::addTo(CLI::App& word, Options options) {
  const bool isNew = options == Options::ofNewAccount;
  word.add_option("--id", identifier, "The account's identifier, which names its file too")
      ->type_name(isNew ? "ID" : "ACCOUNT")
      ->required();
  word.add_option_function<std::string>(
          "--type", [this](const std::string& text) { type = text; },
          "The kind of account, such as ovaro.account.jabber")
      ->type_name("TYPE");
  word.add_option_function<std::string>(
          "--username", [this](const std::string& text) { username = text; },
          "The user name, which may be an e-mail address")
      ->type_name("NAME");
  CLI::Option* inactive = word.add_flag_callback(
      "--inactive", [this] { isActive = false; }, "The account is switched off");
  if (!isNew) {
    word.add_flag_callback(
            "--active", [this] { isActive = true; }, "The account is switched on")
        ->excludes(inactive);
  }
  CLI::Option* none = word.add_flag("--no-data-class", dropsDataClasses,
                                    "It is used for nothing, so that nothing of it is donated");
  addRepeatable(word, "--data-class", dataClasses,
                isNew ? "What the account is used for [mail]; may be repeated"
                      : "What it is used for, in place of what was; may be repeated")
      ->type_name("NAME")
      ->excludes(none);
  addPropertiesTo(word, options);
}

void AccountEdit::addPropertiesTo(CLI::App& word, Options options) {
  word.add_option("--properties", propertiesFile,
                  "A property list with a dictionary of properties, of any type")
      ->type_name("FILE");
  addRepeatable(word, "--property", properties, "A property that is a text; may be repeated")
      ->type_name("KEY=VALUE")
      ->check(validateProperty);
  if (options == Options::ofNewAccount) return;
  addRepeatable(word, "--drop-property", droppedProperties,
                "A property that goes away; may be repeated")
      ->type_name("KEY");
}

ErrorPtr AccountEdit::applyTo(Account& account) const {
  if (type) {
    account.accountType.reset();
    if (!type->empty()) account.accountType = AccountType{*type};
  }
  if (username) account.username = presentUnlessEmpty(*username);
  if (isActive) account.isActive = *isActive;
  if (dropsDataClasses || !dataClasses.empty()) {
    account.enabledDataclasses = {dataClasses.begin(), dataClasses.end()};
  }
  return applyPropertiesTo(account);
}

ErrorPtr AccountEdit::applyPropertiesTo(Account& account) const {
  if (!propertiesFile.empty()) {
    const Result<PropertyListDictionary> given = readDictionary(propertiesFile);
    if (!given.ok()) return given.error();
    for (const auto& [key, value] : given.value()) account.properties.insert_or_assign(key, value);
  }
  for (const std::string& property : properties) {
    const std::size_t equals = property.find('=');
    account.properties.insert_or_assign(property.substr(0, equals), property.substr(equals + 1));
  }
  for (const std::string& key : droppedProperties) account.properties.erase(key);
  return nullptr;
}

}  // namespace quenlet
