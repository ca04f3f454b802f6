#include "facade/OwnerQuestion.h"

#include <utility>

#include "bus/BusError.h"
#include "facade/FacadeError.h"

namespace quenlet {
namespace {

using Answered = Result<std::optional<AppPermission>>;

constexpr char portalPath[] = "/org/freedesktop/portal/desktop";
constexpr char accessInterface[] = "org.freedesktop.impl.portal.Access";
constexpr char requestPath[] = "/org/freedesktop/portal/desktop/request/quenlet/";
// Then the dialog counts as closed.
constexpr std::chrono::minutes patience{10};
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

// Whether somebody else may have the dialog.
bool isWithoutDialog(const Error& error) {
  const std::string name = busErrorName(error);
  return isAbsence(error) || name == "org.freedesktop.DBus.Error.UnknownMethod" ||
         name == "org.freedesktop.DBus.Error.UnknownInterface" ||
         name == "org.freedesktop.DBus.Error.UnknownObject" ||
         name.starts_with("org.freedesktop.DBus.Error.Spawn");
}

}  // namespace

struct OwnerQuestion::Attempt final {
  AppRequest request;
  Answer answer;
  BusCall call;
  // Whom to ask in which order, and whether to start it.
  std::vector<std::pair<std::string, AutoStart>> order = {};
  std::size_t next = 0;
};

void OwnerQuestion::ask(const AppRequest& request, Answer answer) {
  const Wording wording = wordingFor(request.wish);
  BusDictionary options{{"modal", true}, {"grant_label", "Allow"}, {"deny_label", "Deny"}};
  if (request.wish == AppWish::meCard) options.emplace("choices", choicesFor(request.kinds));
  const std::string handle = requestPath + std::to_string(++lastQuestion);
  BusCall call{
      .path = portalPath,
      .interface = accessInterface,
      .member = "AccessDialog",
      .signature = "osssssa{sv}",
      .arguments = {BusObjectPath{handle}, request.app, request.parentWindow, wording.title,
                    request.app + wording.subtitle, wording.body, std::move(options)},
      .timeLimit = patience};
  auto attempt = std::make_shared<Attempt>(Attempt{request, std::move(answer), std::move(call)});
  const std::vector<DialogBackend> backends = findBackends();
  for (const DialogBackend& backend : backends) {
    attempt->order.emplace_back(backend.busName, AutoStart::off);
  }
  for (const DialogBackend& backend : backends) {
    if (backend.isOfThisDesktop) attempt->order.emplace_back(backend.busName, AutoStart::on);
  }
  tryNext(attempt);
}

void OwnerQuestion::tryNext(const std::shared_ptr<Attempt>& attempt) {
  if (attempt->next == attempt->order.size()) {
    return attempt->answer(
        Answered::failure(makeFacadeError(NotPermittedError,
                                          "no program can ask the owner; the owner can say "
                                          "\"quenlet allow " +
                                              attempt->request.app + "\"")));
  }
  const auto& [name, start] = attempt->order[attempt->next++];
  attempt->call.destination = name;
  attempt->call.autoStart = start;
  bus.call(attempt->call, [this, attempt](const auto& reply) { hear(attempt, reply); });
}

void OwnerQuestion::hear(const std::shared_ptr<Attempt>& attempt, const Result<BusValues>& reply) {
  if (reply.ok()) {
    return attempt->answer(Answered::success(answerIn(reply.value(), attempt->request)));
  }
  if (isWithoutDialog(*reply.error())) return tryNext(attempt);
  // Whatever ended the dialog, the owner has not answered.
  attempt->answer(Answered::success(std::nullopt));
}

}  // namespace quenlet
