#include <algorithm>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "client/c/ErrorByValue.h"
#include "client/c/Values.h"
#include "platform/foundation/Mutex.h"
#include "quenlet/Client.h"
#include "quenlet/quenlet.h"

using namespace quenlet;

namespace {

// What has been begun and not ended, by the number that the caller knows it by. Thread-safe.
class Calls final {
 public:
  std::uint64_t newNumber() EXCLUDES(mutex) {
    MutexLock lock(mutex);
    calls.emplace(++last, nullptr);
    return last;
  }
  // No effect for a call that has ended meanwhile.
  void began(std::uint64_t number, Client::Call call) EXCLUDES(mutex) {
    auto begun = std::make_unique<Client::Call>(std::move(call));
    MutexLock lock(mutex);
    const auto found = calls.find(number);
    if (found != calls.end()) found->second = std::move(begun);
  }
  void ended(std::uint64_t number) EXCLUDES(mutex) {
    std::unique_ptr<Client::Call> dropped;  // outlives the lock
    MutexLock lock(mutex);
    const auto found = calls.find(number);
    if (found == calls.end()) return;
    dropped = std::move(found->second);
    calls.erase(found);
  }
  void cancel(std::uint64_t number) EXCLUDES(mutex) {
    std::unique_ptr<Client::Call> cancelled;
    {
      MutexLock lock(mutex);
      const auto found = calls.find(number);
      if (found == calls.end()) return;
      cancelled = std::move(found->second);
      calls.erase(found);
    }
    if (cancelled) cancelled->cancel();
  }

 private:
  Mutex mutex;
  std::uint64_t last GUARDED_BY(mutex) = 0;
  std::map<std::uint64_t, std::unique_ptr<Client::Call>> calls GUARDED_BY(mutex);
};

}  // namespace

struct quenlet_client final {
  explicit quenlet_client(std::chrono::milliseconds timeLimit)
      : client(timeLimit, Client::Handlers::inDispatch) {}

  // Destroyed last: callbacks that still wait end their calls.
  Calls calls;
  Client client;
};

namespace {

template <typename Outcome>
void callBack(const Outcome& outcome, quenlet_values_callback callback, void* data) {
  if (!outcome.ok()) {
    const quenlet_error error = ErrorByValue::of(outcome.error());
    return callback(nullptr, &error, data);
  }
  const quenlet_values values = valuesOf(outcome.value());
  callback(&values, nullptr, data);
}

void callBack(const ErrorPtr& outcome, quenlet_done_callback callback, void* data) {
  const quenlet_error error = ErrorByValue::of(outcome);
  callback(outcome ? &error : nullptr, data);
}

// Begins with a handler that calls back and then forgets the call.
template <typename Callback, typename Begin>
std::uint64_t begin(quenlet_client* client, Callback callback, void* data,
                    const Begin& operation) noexcept try {
  if (client == nullptr || callback == nullptr) return 0;
  const std::uint64_t number = client->calls.newNumber();
  client->calls.began(number, operation([client, number, callback, data](const auto& outcome) {
                        client->calls.ended(number);
                        callBack(outcome, callback, data);
                      }));
  return number;
} catch (...) {
  return 0;
}

// Waits for an operation that returns an error.
template <typename Operation>
quenlet_status wait(quenlet_client* client, bool isValid, quenlet_error* error,
                    const Operation& operation) noexcept {
  return ErrorByValue::guarded(error, [&] {
    if (client == nullptr || !isValid) return ErrorByValue::invalidArgument("an argument is null");
    return ErrorByValue::of(operation(client->client));
  });
}

// Waits for an operation that returns values.
template <typename Operation>
quenlet_values* fetch(quenlet_client* client, quenlet_error* error,
                      const Operation& operation) noexcept {
  quenlet_values* values = nullptr;
  ErrorByValue::guarded(error, [&] {
    if (client == nullptr) return ErrorByValue::invalidArgument("the client is null");
    auto outcome = operation(client->client);
    if (!outcome.ok()) return ErrorByValue::of(outcome.error());
    values = new quenlet_values(valuesOf(std::move(outcome).takeValue()));
    return ErrorByValue::of(nullptr);
  });
  return values;
}

bool areTexts(const char* const* texts, size_t count) {
  if (texts == nullptr) return count == 0;
  return std::none_of(texts, texts + count, [](const char* text) { return text == nullptr; });
}

std::vector<std::string> copied(const char* const* texts, size_t count) {
  return {texts, texts + count};
}

}  // namespace

quenlet_client* quenlet_client_new(unsigned int time_limit) try {
  return new quenlet_client(time_limit == 0 ? Client::standardTimeLimit
                                            : std::chrono::milliseconds(time_limit));
} catch (...) {
  return nullptr;
}

void quenlet_client_free(quenlet_client* client) { delete client; }

quenlet_values* quenlet_client_fetch_card(quenlet_client* client, quenlet_error* error) {
  return fetch(client, error, [](Client& agent) { return agent.card(); });
}

quenlet_values* quenlet_client_fetch_donations(quenlet_client* client, quenlet_error* error) {
  return fetch(client, error, [](Client& agent) { return agent.donations(); });
}

quenlet_status quenlet_client_donate(quenlet_client* client, const quenlet_values* donations,
                                     quenlet_error* error) {
  return wait(client, donations != nullptr, error,
              [&](Client& agent) { return agent.donate(donationsOf(*donations)); });
}

quenlet_status quenlet_client_remove(quenlet_client* client, const char* const* identifiers,
                                     size_t count, quenlet_error* error) {
  return wait(client, areTexts(identifiers, count), error,
              [&](Client& agent) { return agent.remove(copied(identifiers, count)); });
}

quenlet_status quenlet_client_remove_bundle(quenlet_client* client, const char* bundle,
                                            quenlet_error* error) {
  return wait(client, bundle != nullptr, error,
              [&](Client& agent) { return agent.removeBundle(bundle); });
}

quenlet_status quenlet_client_reject(quenlet_client* client, const char* identifier,
                                     quenlet_error* error) {
  return wait(client, identifier != nullptr, error,
              [&](Client& agent) { return agent.reject(identifier); });
}

quenlet_status quenlet_client_reject_cluster(quenlet_client* client, const char* cluster,
                                             quenlet_error* error) {
  return wait(client, cluster != nullptr, error,
              [&](Client& agent) { return agent.rejectCluster(cluster); });
}

int quenlet_client_fd(quenlet_client* client, quenlet_error* error) {
  int descriptor = -1;
  ErrorByValue::guarded(error, [&] {
    if (client == nullptr) return ErrorByValue::invalidArgument("the client is null");
    const Result<int> found = client->client.fd();
    if (!found.ok()) return ErrorByValue::of(found.error());
    descriptor = found.value();
    return ErrorByValue::of(nullptr);
  });
  return descriptor;
}

void quenlet_client_dispatch(quenlet_client* client) {
  ErrorByValue::guarded(nullptr, [&] {
    if (client != nullptr) client->client.dispatch();
    return ErrorByValue::of(nullptr);
  });
}

uint64_t quenlet_client_fetch_card_async(quenlet_client* client, quenlet_values_callback callback,
                                         void* data) {
  return begin(client, callback, data,
               [&](auto handler) { return client->client.card(std::move(handler)); });
}

uint64_t quenlet_client_on_card_change(quenlet_client* client, quenlet_values_callback callback,
                                       void* data) try {
  if (client == nullptr || callback == nullptr) return 0;
  const std::uint64_t number = client->calls.newNumber();
  client->calls.began(number, client->client.onCardChange([callback, data](const auto& card) {
    callBack(card, callback, data);
  }));
  return number;
} catch (...) {
  return 0;
}

uint64_t quenlet_client_fetch_donations_async(quenlet_client* client,
                                              quenlet_values_callback callback, void* data) {
  return begin(client, callback, data,
               [&](auto handler) { return client->client.donations(std::move(handler)); });
}

uint64_t quenlet_client_donate_async(quenlet_client* client, const quenlet_values* donations,
                                     quenlet_done_callback callback, void* data) {
  if (donations == nullptr) return 0;
  return begin(client, callback, data, [&](auto handler) {
    return client->client.donate(donationsOf(*donations), std::move(handler));
  });
}

uint64_t quenlet_client_remove_async(quenlet_client* client, const char* const* identifiers,
                                     size_t count, quenlet_done_callback callback, void* data) {
  if (!areTexts(identifiers, count)) return 0;
  return begin(client, callback, data, [&](auto handler) {
    return client->client.remove(copied(identifiers, count), std::move(handler));
  });
}

void quenlet_client_cancel(quenlet_client* client, uint64_t call) {
  if (client != nullptr) client->calls.cancel(call);
}
