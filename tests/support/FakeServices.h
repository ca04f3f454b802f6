#pragma once

#include <list>

#include "mecard/CuratedInfoProviderProtocol.h"
#include "platform/accounts/Account.h"
#include "platform/contacts/ContactStore.h"
#include "platform/telephony/Telephony.h"
#include "storage/DonationPersistenceProtocol.h"
#include "tests/support/DonationFactory.h"
#include "tests/support/Trace.h"

// Platform services that keep their state in memory. One thread only.
namespace quenlet {

class FakePreferences final : public DonationPreferences, public Observable<bool> {
 public:
  bool enabled = true;
  bool isDonationsEnabled() override { return enabled; }
  ErrorPtr setDonationsEnabled(bool value) override {
    enabled = value;
    for (const Observer<bool>& observer : std::list(observers)) observer.resultBlock(value);
    return nullptr;
  }
  std::shared_ptr<Observable<bool>> observableWithPreferences(
      std::shared_ptr<DistributedNotificationCenter>, std::shared_ptr<SchedulerProvider>) override {
    return {shared_from_this(), this};
  }
  std::shared_ptr<Cancelable> subscribe(Observer<bool> subscribed) override {
    const auto place = observers.insert(observers.end(), std::move(subscribed));
    return std::make_shared<CancelBlock>([this, place] { observers.erase(place); });
  }

 private:
  std::list<Observer<bool>> observers;
};

// Notes posts as "post <name>" and delivers them at once, if asked for to a new observer, too.
class FakeNotificationCenter final : public DistributedNotificationCenter {
 public:
  explicit FakeNotificationCenter(Trace& shared) : trace(shared) {}
  bool notifiesNewObservers = false;

  std::shared_ptr<Cancelable> addObserver(const std::string& name,
                                          std::function<void()> callback) override {
    const auto place = observers.insert(observers.end(), {name, std::move(callback)});
    if (notifiesNewObservers) place->second();
    return std::make_shared<CancelBlock>([this, place] { observers.erase(place); });
  }
  void post(const std::string& name) override {
    trace.note("post " + name);
    for (const auto& [observed, callback] : std::list(observers)) {
      if (observed == name) callback();
    }
  }

 private:
  Trace& trace;
  std::list<std::pair<std::string, std::function<void()>>> observers;
};

// Takes the values of these donations for rejected, for the me card alone. Rejecting is noted as
// "reject <identifiers> for <contact>" and fails with `failure` when there is one.
class FakeFeedbackStore final : public DonationFeedbackStore {
 public:
  explicit FakeFeedbackStore(Trace& shared) : trace(shared) {}
  std::set<std::string> rejected;
  std::function<void()> changeHandler;
  ErrorPtr failure;

  bool donatedValueHasBeenConfirmedOrRejected(const DonationValue& value,
                                              const std::string& contactIdentifier) override {
    return contactIdentifier == MeCardContactIdentifier &&
           rejected.contains(value.decoded().origin.donationIdentifier);
  }
  void rejectDonatedValues(const DonationValues& values, const std::string& contactIdentifier,
                           std::function<void(ErrorPtr)> completionHandler) override {
    trace.note("reject " + identifiersOf(values) + " for " + contactIdentifier);
    for (const auto& value : values) rejected.insert(value->decoded().origin.donationIdentifier);
    completionHandler(failure);
  }
  void setChangeHandler(std::function<void()> call) override { changeHandler = std::move(call); }

 private:
  Trace& trace;
};

// Notes "store <identifiers>" and "store versions <bundle>=<version>"; fails with a `failure`.
class FakePersistence final : public DonationPersistenceProtocol {
 public:
  explicit FakePersistence(Trace& shared) : trace(shared) {}
  DonationValues kept;
  ExtensionVersions versions;
  ErrorPtr failure;
  std::size_t capacity = 1 << 20;

  Future<DonationValues> loadDonations() override { return outcome(kept); }
  Future<bool> storeWithAllValues(const std::shared_ptr<const DonationValues>& values) override {
    trace.note("store " + identifiersOf(*values));
    if (!failure) kept = *values;
    return outcome(true);
  }

  Future<ExtensionVersions> loadExtensionVersions() override { return outcome(versions); }
  Future<bool> storeWithExtensionVersions(const ExtensionVersions& table) override {
    std::string text = "store versions";
    for (const auto& [name, version] : table) text += " " + name + "=" + std::to_string(version);
    trace.note(text);
    versions = table;
    return Future<bool>::futureWithResult(true);
  }
  std::size_t capacityInBytes() const override { return capacity; }
  void keepStoredDonations() override { trace.note("keep " + identifiersOf(kept)); }

 private:
  template <typename T>
  Future<T> outcome(const T& value) const {
    return failure ? Future<T>::futureWithError(failure) : Future<T>::futureWithResult(value);
  }

  Trace& trace;
};

class FakeCuratedInfoProvider final : public CuratedInfoProviderProtocol {
 public:
  std::vector<std::string> emailAddresses;
  std::function<void()> changeHandler;
  // As when memory is short: so many times.
  mutable int failures = 0;

  std::optional<PersonNameComponents> curatedName() const override {
    if (failures > 0 && failures-- > 0) throw std::bad_alloc();
    return {};
  }
  std::vector<std::string> curatedEmailAddresses() const override { return emailAddresses; }
  void startMonitoring(std::shared_ptr<AgentEnvironmentProtocol>,
                       std::function<void()> handler) override {
    changeHandler = std::move(handler);
  }
};

// Reads what it holds, or an `error`, as accounts of its own; then calls `whenRead`.
class FakeAccountStore final : public AccountStore,
                               public std::enable_shared_from_this<FakeAccountStore> {
 public:
  std::vector<AccountPtr> held;
  ErrorPtr error;
  std::function<void()> whenRead;

  Result<std::vector<AccountPtr>> accounts() override {
    using Accounts = Result<std::vector<AccountPtr>>;
    std::vector<AccountPtr> read;
    for (const AccountPtr& account : held) {
      Account copy = *account;
      copy.accountStore = weak_from_this();
      read.push_back(std::make_shared<const Account>(std::move(copy)));
    }
    if (const std::function<void()> call = whenRead) call();
    return error ? Accounts::failure(error) : Accounts::success(std::move(read));
  }
};

class FakeDeviceInfo final : public DeviceInfo {
 public:
  std::map<std::string, std::int64_t> answers;

  std::int64_t integerAnswer(const std::string& key, std::int64_t defaultAnswer) override {
    const auto found = answers.find(key);
    return found == answers.end() ? defaultAnswer : found->second;
  }
};

// Calls `whenAsked`, if set, with the keys of each fetch.
class FakeContactStore final : public ContactStore {
 public:
  std::shared_ptr<const Contact> card;
  std::function<void(const std::vector<KeyDescriptor>&)> whenAsked;

  Result<std::shared_ptr<const Contact>> _crossPlatformUnifiedMeContactWithKeysToFetch(
      const std::vector<KeyDescriptor>& keysToFetch) override {
    using Outcome = Result<std::shared_ptr<const Contact>>;
    if (whenAsked) whenAsked(keysToFetch);
    return card ? Outcome::success(card) : Outcome::failure(makeError(ContactErrorDomain, 1));
  }
};

}  // namespace quenlet
