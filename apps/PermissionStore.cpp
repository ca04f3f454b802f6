#include "apps/PermissionStore.h"

#include <cerrno>
#include <utility>

#include "bus/BusError.h"

namespace quenlet {
namespace {

constexpr char storeName[] = "org.freedesktop.impl.portal.PermissionStore";
constexpr char storePath[] = "/org/freedesktop/impl/portal/PermissionStore";
constexpr char notFound[] = "org.freedesktop.portal.Error.NotFound";

std::string entryFor(AppWish wish) { return wish == AppWish::meCard ? "me-card" : "donate"; }
std::string closingsFor(AppWish wish) { return entryFor(wish) + "-closed"; }

}  // namespace

void PermissionStore::call(std::string member, std::string signature, BusValues arguments,
                           BusConnection::ReplyHandler handler) {
  bus.call({.destination = storeName,
            .path = storePath,
            .interface = storeName,
            .member = std::move(member),
            .signature = std::move(signature),
            .arguments = std::move(arguments),
            .autoStart = AutoStart::on},
           std::move(handler));
}

// By apps; nothing for anything but a list of texts, which others have stored.
void PermissionStore::lookUp(const std::string& entry, std::function<void(Result<Texts>)> reply) {
  call("Lookup", "ss", {table, entry}, [reply = std::move(reply)](const Result<BusValues>& answer) {
    if (!answer.ok()) {
      const bool isNone = busErrorName(*answer.error()) == notFound;
      return reply(isNone ? Result<Texts>::success({}) : Result<Texts>::failure(answer.error()));
    }
    const BusDictionary* entries =
        answer.value().empty() ? nullptr : answer.value().front().dictionary();
    if (entries == nullptr) {
      return reply(
          Result<Texts>::failure(makePosixError(EBADMSG, "read the permission store's answer")));
    }
    Texts texts;
    for (const auto& [app, stored] : *entries) texts.emplace(app, stored.texts());
    reply(Result<Texts>::success(std::move(texts)));
  });
}

void PermissionStore::setTexts(const std::string& entry, const std::string& app,
                               const std::vector<std::string>& texts, Done done) {
  call("SetPermission", "sbssas", {table, true, entry, app, makeTexts(texts)},
       [done = std::move(done)](const auto& answer) {
         done(answer.ok() ? nullptr : answer.error());
       });
}

void PermissionStore::remove(const std::string& entry, const std::string& app, Done done) {
  call("DeletePermission", "sss", {table, entry, app},
       [done = std::move(done)](const Result<BusValues>& answer) {
         const bool isGone = answer.ok() || busErrorName(*answer.error()) == notFound;
         done(isGone ? nullptr : answer.error());
       });
}

void PermissionStore::list(AppWish wish, AllReply reply) {
  lookUp(entryFor(wish), [wish, reply = std::move(reply)](const Result<Texts>& stored) {
    if (!stored.ok()) return reply(Result<All>::failure(stored.error()));
    All all;
    for (const auto& [app, texts] : stored.value()) {
      all.emplace(app,
                  texts ? AppPermission::fromTexts(wish, *texts) : AppPermission{OwnersWord::no});
    }
    reply(Result<All>::success(std::move(all)));
  });
}

void PermissionStore::find(AppWish wish, const std::string& app, Reply reply) {
  list(wish, [app, reply = std::move(reply)](const Result<All>& all) {
    if (!all.ok()) return reply(Result<AppPermission>::failure(all.error()));
    const auto found = all.value().find(app);
    reply(Result<AppPermission>::success(found == all.value().end() ? AppPermission{}
                                                                    : found->second));
  });
}

void PermissionStore::set(AppWish wish, const std::string& app, const AppPermission& permission,
                          Done done) {
  const bool isToAsk = permission.word == OwnersWord::unknown;
  // The owner's word first: it has to be kept, and where there is one, no closing counts.
  const auto removeClosings = [this, wish, app, isToAsk,
                               done = std::move(done)](const ErrorPtr& error) {
    if (error) return done(error);
    remove(closingsFor(wish), app,
           [isToAsk, done](const ErrorPtr& kept) { done(isToAsk ? kept : nullptr); });
  };
  if (isToAsk) return remove(entryFor(wish), app, removeClosings);
  setTexts(entryFor(wish), app, permission.texts(wish), removeClosings);
}

void PermissionStore::findClosings(AppWish wish, const std::string& app, DatesReply reply) {
  lookUp(closingsFor(wish), [app, reply = std::move(reply)](const Result<Texts>& stored) {
    if (!stored.ok()) return reply(Result<Dates>::failure(stored.error()));
    Dates dates;
    const auto found = stored.value().find(app);
    if (found != stored.value().end() && found->second) {
      for (const std::string& text : *found->second) {
        if (const auto date = Date::fromISO8601(text)) dates.push_back(*date);
      }
    }
    reply(Result<Dates>::success(std::move(dates)));
  });
}

void PermissionStore::setClosings(AppWish wish, const std::string& app, const Dates& dates,
                                  Done done) {
  std::vector<std::string> texts;
  for (const Date& date : dates) texts.push_back(date.iso8601());
  setTexts(closingsFor(wish), app, texts, std::move(done));
}

}  // namespace quenlet
