#include "facade/OwnerQuestion.h"

#include <algorithm>
#include <utility>

#include "bus/BusError.h"
#include "facade/FacadeError.h"

namespace quenlet {
namespace {

using Answered = Result<std::optional<AppPermission>>;

constexpr char portalPath[] = "/org/freedesktop/portal/desktop";
constexpr char dialogInterface[] = "org.freedesktop.impl.portal.Access";
constexpr char requestInterface[] = "org.freedesktop.impl.portal.Request";
// What the dialog answers; any other number says that it was closed.
constexpr std::int64_t granted = 0;
constexpr std::int64_t denied = 1;

constexpr std::pair<CardKind, const char*> kindTitles[] = {
    {CardKind::name, "Name"},
    {CardKind::emailAddress, "E-mail addresses"},
    {CardKind::phoneNumber, "Phone numbers"},
    {CardKind::postalAddress, "Postal addresses"},
    {CardKind::imageData, "Picture"}};

struct Wording final {
  const char* title;
  const char* subtitle;
  const char* body;
};

Wording wordingFor(AppWish wish) {
  if (wish == AppWish::meCard) {
    return {"Share Your Card?", " wants to read your card.",
            "Your card says who you are. The app gets what is chosen here, now and later."};
  }
  return {"Let the App Add to Your Card?", " wants to donate to your card.",
          "Programs that read your card can be shown what the app donates."};
}

// A check box for each kind.
BusValue choicesFor(const CardKinds& wanted) {
  BusList choices{"(ssa(ss)s)", {}};
  for (const auto& [kind, title] : kindTitles) {
    choices.elements.emplace_back(BusStruct{{std::string(wordFor(kind)), title, BusList{"(ss)", {}},
                                             wanted.contains(kind) ? "true" : "false"}});
  }
  return choices;
}

// The kinds whose boxes are checked. A dialog that shows none has not asked for the picture.
CardKinds chosenKinds(const BusDictionary& results, CardKinds wanted) {
  const BusValue* choices = findEntry(results, "choices");
  if (choices == nullptr || choices->elements() == nullptr) {
    wanted.erase(CardKind::imageData);
    return wanted;
  }
  CardKinds chosen;
  for (const BusValue& choice : *choices->elements()) {
    const BusValues* pair = choice.members();
    if (pair == nullptr || pair->size() != 2) continue;
    const std::string* word = pair->front().text();
    const std::string* state = pair->back().text();
    if (word == nullptr || state == nullptr || *state != "true") continue;
    if (const auto kind = cardKindFor(*word)) chosen.insert(*kind);
  }
  return chosen;
}

std::optional<AppPermission> answerIn(const BusValues& reply, const AppRequest& request) {
  const auto response = reply.empty() ? std::nullopt : reply.front().integer();
  if (response == denied) return AppPermission{OwnersWord::no};
  if (response != granted || reply.size() != 2) return std::nullopt;
  if (request.wish == AppWish::donate) return AppPermission{OwnersWord::yes};
  const BusDictionary* results = reply.back().dictionary();
  const CardKinds kinds =
      chosenKinds(results == nullptr ? BusDictionary() : *results, request.kinds);
  return kinds.empty() ? AppPermission{OwnersWord::no} : AppPermission{OwnersWord::yes, kinds};
}

}  // namespace

// One question, at one program after the other.
class OwnerQuestion::Attempt final : public Cancelable {
 public:
  Attempt(BusConnection& connection, AppRequest wanted, Answer whenAnswered, BusCall prepared)
      : request(std::move(wanted)),
        call(std::move(prepared)),
        bus(connection),
        answer(std::move(whenAnswered)) {}

  void cancel() override {
    if (!answer) return;
    answer = nullptr;
    if (const auto ended = std::exchange(asking, nullptr)) ended->cancel();
    close();
  }
  void finish(const Answered& answered) {
    if (const Answer whenAnswered = std::exchange(answer, nullptr)) whenAnswered(answered);
  }
  // What shows the dialog, if it still does, takes it away.
  void close() {
    bus.call({.destination = call.destination,
              .path = *call.arguments.front().objectPath(),
              .interface = requestInterface,
              .member = "Close"},
             [](const auto&) { /* It may have closed it before, or be gone. */ });
  }

  const AppRequest request;
  BusCall call;
  // Whom to ask in which order, and whether to start it.
  std::vector<std::pair<std::string, AutoStart>> order = {};
  std::size_t next = 0;
  std::chrono::steady_clock::time_point begun = {};
  std::shared_ptr<Cancelable> asking;

 private:
  BusConnection& bus;
  Answer answer;
};

// As portals make it: of our own name on the bus, and a word.
std::string OwnerQuestion::nextHandle() {
  std::string owner = bus.uniqueName();
  owner.erase(0, owner.find_first_not_of(':'));
  std::replace(owner.begin(), owner.end(), '.', '_');
  return portalPath + ("/request/" + owner) + "/quenlet" + std::to_string(++lastQuestion);
}

std::shared_ptr<Cancelable> OwnerQuestion::ask(const AppRequest& request, Answer answer) {
  const Wording wording = wordingFor(request.wish);
  BusDictionary options{{"modal", true}, {"grant_label", "Allow"}, {"deny_label", "Deny"}};
  if (request.wish == AppWish::meCard) options.emplace("choices", choicesFor(request.kinds));
  BusCall call{
      .path = portalPath,
      .interface = dialogInterface,
      .member = "AccessDialog",
      .signature = "osssssa{sv}",
      .arguments = {BusObjectPath{nextHandle()}, request.app, request.parentWindow, wording.title,
                    request.app + wording.subtitle, wording.body, std::move(options)},
      .timeLimit = patience};
  const auto attempt = std::make_shared<Attempt>(bus, request, std::move(answer), std::move(call));
  const std::vector<DialogBackend> backends = findBackends();
  for (const DialogBackend& backend : backends) {
    attempt->order.emplace_back(backend.busName, AutoStart::off);
  }
  for (const DialogBackend& backend : backends) {
    if (backend.isOfThisDesktop) attempt->order.emplace_back(backend.busName, AutoStart::on);
  }
  tryNext(attempt);
  return attempt;
}

void OwnerQuestion::tryNext(const std::shared_ptr<Attempt>& attempt) {
  if (attempt->next == attempt->order.size()) {
    return attempt->finish(
        Answered::failure(makeFacadeError(NotPermittedError,
                                          "no program can ask the owner; the owner can say "
                                          "\"quenlet allow " +
                                              attempt->request.app + "\"")));
  }
  const auto& [name, start] = attempt->order[attempt->next++];
  attempt->call.destination = name;
  attempt->call.autoStart = start;
  attempt->begun = now();
  attempt->asking =
      bus.call(attempt->call, [this, attempt](const auto& reply) { hear(attempt, reply); });
}

void OwnerQuestion::hear(const std::shared_ptr<Attempt>& attempt, const Result<BusValues>& reply) {
  if (reply.ok()) {
    return attempt->finish(Answered::success(answerIn(reply.value(), attempt->request)));
  }
  const Error& error = *reply.error();
  // It may stand all the same.
  if (!isAbsence(error)) attempt->close();
  // The bus says the same, before the time is up, when the dialog's program ends.
  if (busErrorName(error) == BusNoReply && now() - attempt->begun >= patience) {
    return attempt->finish(Answered::success(std::nullopt));
  }
  tryNext(attempt);
}

}  // namespace quenlet
