#include "apps/PermissionStore.h"

#include <utility>

#include "bus/BusError.h"

namespace quenlet {
namespace {

constexpr char storeName[] = "org.freedesktop.impl.portal.PermissionStore";
constexpr char storePath[] = "/org/freedesktop/impl/portal/PermissionStore";
constexpr char notFound[] = "org.freedesktop.portal.Error.NotFound";

const char* entryFor(AppWish wish) { return wish == AppWish::meCard ? "me-card" : "donate"; }

Result<PermissionStore::All> permissionsIn(AppWish wish, const Result<BusValues>& answer) {
  using All = Result<PermissionStore::All>;
  PermissionStore::All all;
  if (!answer.ok()) {
    if (busErrorName(*answer.error()) == notFound) return All::success(std::move(all));
    return All::failure(answer.error());
  }
  const BusDictionary* entries =
      answer.value().empty() ? nullptr : answer.value().front().dictionary();
  if (entries == nullptr) {
    return All::failure(makePosixError(EBADMSG, "read the permission store's answer"));
  }
  for (const auto& [app, texts] : *entries) {
    // Anything but a list of texts was stored by others, and allows nothing.
    const auto read = texts.texts();
    all.emplace(app, read ? AppPermission::fromTexts(wish, *read) : AppPermission{OwnersWord::no});
  }
  return All::success(std::move(all));
}

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

void PermissionStore::list(AppWish wish, AllReply reply) {
  call("Lookup", "ss", {table, entryFor(wish)},
       [wish, reply = std::move(reply)](const Result<BusValues>& answer) {
         reply(permissionsIn(wish, answer));
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
  const auto finish = [done = std::move(done)](const Result<BusValues>& answer) {
    const bool isDone = answer.ok() || busErrorName(*answer.error()) == notFound;
    done(isDone ? nullptr : answer.error());
  };
  if (permission.word == OwnersWord::unknown) {
    return call("DeletePermission", "sss", {table, entryFor(wish), app}, finish);
  }
  call("SetPermission", "sbssas",
       {table, true, entryFor(wish), app, makeTexts(permission.texts(wish))}, finish);
}

}  // namespace quenlet
