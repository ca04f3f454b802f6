#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "apps/AppPermission.h"
#include "bus/BusConnection.h"
#include "quenlet/Date.h"

namespace quenlet {

// The desktop's store of what the owner allows sandboxed apps, as far as it is about the card:
// `flatpak permissions quenlet` shows the same. The store's program is small, keeps files of its
// own, and is started if need be. Use on the loop's thread. Replies come on the loop.
class PermissionStore final {
 public:
  using Reply = std::function<void(Result<AppPermission> permission)>;
  // By the identifiers of the apps.
  using All = std::map<std::string, AppPermission>;
  using AllReply = std::function<void(Result<All> permissions)>;
  using Done = std::function<void(ErrorPtr error)>;
  using Dates = std::vector<Date>;
  using DatesReply = std::function<void(Result<Dates> dates)>;

  static constexpr char table[] = "quenlet";

  explicit PermissionStore(BusConnection& connection) : bus(connection) {}

  // What the owner said to one app: unknown when there is no entry.
  void find(AppWish wish, const std::string& app, Reply reply);
  // What the owner said to all of them.
  void list(AppWish wish, AllReply reply);
  // Stores, or for unknown removes, what the owner says, and removes when the question was closed:
  // that this fails is an error only for unknown, where it would keep the owner from being asked.
  // The app's identifier is a valid one.
  void set(AppWish wish, const std::string& app, const AppPermission& permission, Done done);

  // When the owner last closed the question of an app without an answer; kept in whole seconds.
  void findClosings(AppWish wish, const std::string& app, DatesReply reply);
  void setClosings(AppWish wish, const std::string& app, const Dates& dates, Done done);

 private:
  using Texts = std::map<std::string, std::optional<std::vector<std::string>>>;
  void lookUp(const std::string& entry, std::function<void(Result<Texts> texts)> reply);
  void setTexts(const std::string& entry, const std::string& app,
                const std::vector<std::string>& texts, Done done);
  void remove(const std::string& entry, const std::string& app, Done done);
  void call(std::string member, std::string signature, BusValues arguments,
            BusConnection::ReplyHandler handler);

  BusConnection& bus;
};

}  // namespace quenlet
