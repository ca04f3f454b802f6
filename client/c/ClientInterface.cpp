#include <algorithm>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
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
    calls.emplace(++last, std::nullopt);
    return last;
  }
  // No effect for one that has ended or been cancelled meanwhile.
  void began(std::uint64_t number, Client::Call call) EXCLUDES(mutex) {
    MutexLock lock(mutex);
    const auto found = calls.find(number);
    if (found != calls.end()) found->second = std::move(call);
  }
  // False once it has ended or been cancelled.
  [[nodiscard]] bool isUnderWay(std::uint64_t number) EXCLUDES(mutex) {
    MutexLock lock(mutex);
    return calls.contains(number);
  }
  // Ends it, and gives the call back if it has begun; false if it had ended or been cancelled.
  bool take(std::uint64_t number, std::optional<Client::Call>& call) EXCLUDES(mutex) {
    MutexLock lock(mutex);
    const auto found = calls.find(number);
    if (found == calls.end()) return false;
    call = std::move(found->second);
    calls.erase(found);
    return true;
  }

 private:
  Mutex mutex;
  std::uint64_t last GUARDED_BY(mutex) = 0;
  std::map<std::uint64_t, std::optional<Client::Call>> calls GUARDED_BY(mutex);
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
void callBack(Outcome outcome, quenlet_values_callback callback, void* data) {
  quenlet_values values;
  quenlet_error error{};
  ErrorByValue::guarded(&error, [&] {
    if (!outcome.ok()) return ErrorByValue::of(outcome.error());
    values = valuesOf(std::move(outcome).takeValue());
    return ErrorByValue::of(nullptr);
  });
  const bool succeeded = error.status == QUENLET_OK;
  callback(succeeded ? &values : nullptr, succeeded ? nullptr : &error, data);
}

void callBack(const ErrorPtr& outcome, quenlet_done_callback callback, void* data) {
  const quenlet_error error = ErrorByValue::of(outcome);
  callback(outcome ? &error : nullptr, data);
}

// Whether a call's handler is called once, or until it is cancelled.
enum class Handled { once, often };

template <Handled Times, typename Callback, typename Begin>
std::uint64_t begin(quenlet_client* client, Callback callback, void* data,
                    const Begin& operation) noexcept {
  if (client == nullptr || callback == nullptr) return 0;
  std::uint64_t number = 0;
  try {
    number = client->calls.newNumber();
    client->calls.began(number, operation([client, number, callback, data](auto outcome) {
                          std::optional<Client::Call> ended;
                          const bool isWanted = Times == Handled::once
                                                    ? client->calls.take(number, ended)
                                                    : client->calls.isUnderWay(number);
                          if (isWanted) callBack(std::move(outcome), callback, data);
                        }));
    return number;
  } catch (...) {
    // The request may have been sent. Its handler finds the number gone and does nothing.
    std::optional<Client::Call> dropped;
    client->calls.take(number, dropped);
    return 0;
  }
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
    values = std::make_unique<quenlet_values>(valuesOf(std::move(outcome).takeValue())).release();
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

quenlet_client* quenlet_client_new(unsigned int timeLimit) try {
  return new quenlet_client(timeLimit == 0 ? Client::standardTimeLimit
                                           : std::chrono::milliseconds(timeLimit));
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
  return begin<Handled::once>(client, callback, data, [&](auto handler) {
    return client->client.card(std::move(handler));
  });
}

uint64_t quenlet_client_on_card_change(quenlet_client* client, quenlet_values_callback callback,
                                       void* data) {
  return begin<Handled::often>(client, callback, data, [&](auto handler) {
    return client->client.onCardChange(std::move(handler));
  });
}

uint64_t quenlet_client_fetch_donations_async(quenlet_client* client,
                                              quenlet_values_callback callback, void* data) {
  return begin<Handled::once>(client, callback, data, [&](auto handler) {
    return client->client.donations(std::move(handler));
  });
}

uint64_t quenlet_client_donate_async(quenlet_client* client, const quenlet_values* donations,
                                     quenlet_done_callback callback, void* data) {
  if (donations == nullptr) return 0;
  return begin<Handled::once>(client, callback, data, [&](auto handler) {
    return client->client.donate(donationsOf(*donations), std::move(handler));
  });
}

uint64_t quenlet_client_remove_async(quenlet_client* client, const char* const* identifiers,
                                     size_t count, quenlet_done_callback callback, void* data) {
  if (!areTexts(identifiers, count)) return 0;
  return begin<Handled::once>(client, callback, data, [&](auto handler) {
    return client->client.remove(copied(identifiers, count), std::move(handler));
  });
}

void quenlet_client_cancel(quenlet_client* client, uint64_t call) {
  std::optional<Client::Call> cancelled;
  if (client != nullptr && client->calls.take(call, cancelled) && cancelled) cancelled->cancel();
}
