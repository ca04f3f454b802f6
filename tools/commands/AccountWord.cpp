#include <CLI/CLI.hpp>
#include <string>

#include "platform/foundation/JSONWriter.h"
#include "tools/commands/AccountEdit.h"
#include "tools/commands/AccountNews.h"
#include "tools/commands/Command.h"
#include "tools/commands/OnlineAccountsSync.h"
#include "tools/presentation/TerminalText.h"
#include "tools/presentation/TextTable.h"

namespace quenlet {
namespace {

constexpr char defaultDataClass[] = "mail";

constexpr char accountFooter[] =
    "Accounts lie in ~/Library/Accounts, a property list each. The agent donates the owner's name\n"
    "and one e-mail address of each account in use. It is told of a change after the store is\n"
    "written; without an agent, the next one reads all accounts when it starts.\n"
    "\n"
    "Example:\n"
    "  quenlet account add --id work --username ann@example.org \\\n"
    "    --property FullUserName='Ann Berg'";

constexpr char syncFooter[] =
    "Reads ~/.config/goa-1.0/accounts.conf, and nothing else of GNOME's. Accounts with mail and "
    "an\n"
    "address become accounts gnome-...; those that are gone there are removed, and others are not\n"
    "touched. A file that cannot be read, is cut short or damaged changes nothing.";

// Tells the agent, or makes the next one catch up.
ExitCode tellAgent(const Session& session, const AccountNews& news,
                   const AccountNews::Changes& changes) {
  const AccountNews::Notice notice = news.tell(changes);
  if (notice.outcome == AccountNews::Notice::Outcome::failed) {
    session.warn("the agent does not follow the account store");
    return session.failWith(notice.error);
  }
  if (notice.outcome == AccountNews::Notice::Outcome::left) {
    session.warn("no agent runs; the next one reads all accounts when it starts");
  }
  return ExitCode::done;
}

// Writes the store, then tells the agent that `account` replaces `oldAccount`.
ExitCode saveAndTell(Session& session, UserAccounts& accounts, const AccountPtr& oldAccount,
                     Account account) {
  AccountNews news(session, accounts);
  const auto saved = std::make_shared<const Account>(std::move(account));
  const auto changes = news.markBesideLeft({oldAccount, saved});
  if (!changes.ok()) return session.failWith(changes.error());
  if (const ErrorPtr error = accounts.store().save(*saved)) return session.failWith(error);
  session.say((oldAccount ? "Changed account " : "Added account ") + saved->identifier + ".");
  return tellAgent(session, news, changes.value());
}

std::string typeOf(const Account& account) {
  return account.accountType ? account.accountType->identifier.value_or("") : "";
}

void writeJSON(std::ostream& out, const std::vector<AccountPtr>& accounts) {
  JSONWriter json;
  json.beginArray();
  for (const AccountPtr& account : accounts) {
    json.beginObject().key("identifier").value(account->identifier);
    if (const std::string type = typeOf(*account); !type.empty()) json.key("type").value(type);
    json.key("active").value(account->isActive);
    if (account->username) json.key("username").value(*account->username);
    json.endObject();
  }
  out << json.endArray().text() << "\n";
}

void writeTable(std::ostream& out, const Screen& screen, const std::vector<AccountPtr>& accounts) {
  TextTable table({"IDENTIFIER", "TYPE", "ACTIVE", "USER NAME"});
  for (const AccountPtr& account : accounts) {
    table.addRow({account->identifier, typeOf(*account), account->isActive ? "yes" : "no",
                  account->username.value_or("")});
  }
  table.write(out, screen);
}

// "account add", "change", "remove", "sync" and "list": write the account store and tell the agent
// about the change, as a program that keeps accounts would.
//
// The store is written first, and stays so even if the agent refuses; the next word tells it again.
// Concurrent programs wait for each other until the agent is told: it hears of changes in the order
// of the store.
class AccountWord final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  using Operation = ExitCode (AccountWord::*)(Session&, UserAccounts&) const;

  [[nodiscard]] ExitCode add(Session& session, UserAccounts& accounts) const;
  [[nodiscard]] ExitCode change(Session& session, UserAccounts& accounts) const;
  [[nodiscard]] ExitCode remove(Session& session, UserAccounts& accounts) const;
  [[nodiscard]] ExitCode sync(Session& session, UserAccounts& accounts) const;
  [[nodiscard]] ExitCode list(Session& session, UserAccounts& accounts) const;

  AccountEdit addition;
  AccountEdit alteration;
  std::string removedIdentifier;
  bool asJSON = false;
};

void AccountWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("account", "Keep the accounts that the agent reads");
  word->footer(accountFooter);
  word->require_subcommand(1);
  const auto onWord = [this, &chosen](CLI::App* subword, Operation operation) {
    subword->callback([this, &chosen, operation] {
      chosen = [this, operation](Session& session) {
        const auto accounts = UserAccounts::open();
        if (!accounts.ok()) return session.failWith(accounts.error());
        return (this->*operation)(session, *accounts.value());
      };
    });
  };
  CLI::App* adding = word->add_subcommand("add", "Add an account");
  addition.addTo(*adding, AccountEdit::Options::ofNewAccount);
  onWord(adding, &AccountWord::add);
  CLI::App* changing = word->add_subcommand("change", "Alter what is given of an account");
  alteration.addTo(*changing, AccountEdit::Options::ofPresentAccount);
  onWord(changing, &AccountWord::change);
  CLI::App* removing = word->add_subcommand("remove", "Remove an account");
  removing->add_option("--id", removedIdentifier, "The account's identifier")
      ->type_name("ACCOUNT")
      ->required();
  onWord(removing, &AccountWord::remove);
  CLI::App* syncing = word->add_subcommand("sync", "Take over the accounts of GNOME's settings");
  syncing->footer(syncFooter);
  onWord(syncing, &AccountWord::sync);
  CLI::App* listing = word->add_subcommand("list", "Show all accounts; asks no agent");
  listing->add_flag("--json", asJSON, "As JSON, for programs");
  onWord(listing, &AccountWord::list);
}

ExitCode AccountWord::add(Session& session, UserAccounts& accounts) const {
  const auto lock = accounts.store().lock();
  if (!lock.ok()) return session.failWith(lock.error());
  const Result<AccountPtr> present = accounts.store().accountWithIdentifier(addition.identifier);
  if (present.ok()) {
    return session.failWith(
        makeAccountError(AccountErrorCode::accountExists,
                         "there is an account with this identifier; \"account change\" alters it"));
  }
  if (!PropertyListAccountStore::isUnknown(*present.error())) {
    return session.failWith(present.error());
  }
  Account account{.identifier = addition.identifier, .isActive = true};
  account.enabledDataclasses = {defaultDataClass};
  if (const ErrorPtr error = addition.applyTo(account)) return session.failWith(error);
  return saveAndTell(session, accounts, nullptr, std::move(account));
}

ExitCode AccountWord::change(Session& session, UserAccounts& accounts) const {
  const auto lock = accounts.store().lock();
  if (!lock.ok()) return session.failWith(lock.error());
  const Result<AccountPtr> present = accounts.store().accountWithIdentifier(alteration.identifier);
  if (!present.ok()) return session.failWith(present.error());
  Account account = *present.value();
  if (const ErrorPtr error = alteration.applyTo(account)) return session.failWith(error);
  return saveAndTell(session, accounts, present.value(), std::move(account));
}

ExitCode AccountWord::remove(Session& session, UserAccounts& accounts) const {
  const auto lock = accounts.store().lock();
  if (!lock.ok()) return session.failWith(lock.error());
  if (const ErrorPtr problem = PropertyListAccountStore::problemOfIdentifier(removedIdentifier)) {
    return session.failWith(problem);
  }
  const Result<AccountPtr> present = accounts.store().accountWithIdentifier(removedIdentifier);
  // The identifier alone is enough to remove an account's donations, if it cannot be read or its
  // file is already gone.
  const AccountPtr oldAccount =
      present.ok() ? present.value()
                   : std::make_shared<const Account>(Account{.identifier = removedIdentifier});
  AccountNews news(session, accounts);
  const auto changes = news.markBesideLeft({oldAccount, nullptr});
  if (!changes.ok()) return session.failWith(changes.error());
  const ErrorPtr error = accounts.store().remove(removedIdentifier);
  if (error && !PropertyListAccountStore::isUnknown(*error)) return session.failWith(error);
  if (!error) session.say("Removed account " + removedIdentifier + ".");
  const ExitCode told = tellAgent(session, news, changes.value());
  return error ? session.failWith(error) : told;
}

ExitCode AccountWord::sync(Session& session, UserAccounts& accounts) const {
  return OnlineAccountsSync(session, accounts).run();
}

ExitCode AccountWord::list(Session& session, UserAccounts& accounts) const {
  const Result<std::vector<AccountPtr>> known = accounts.store().accounts();
  if (!known.ok()) return session.failWith(known.error());
  const std::vector<AccountPtr>& all = known.value();
  if (asJSON) {
    writeJSON(session.out, all);
  } else if (all.empty()) {
    session.out << "There are no accounts.\n";
  } else {
    writeTable(session.out, session.screen, all);
  }
  return ExitCode::done;
}

}  // namespace

CommandPtr makeAccountWord() { return std::make_unique<AccountWord>(); }

}  // namespace quenlet
