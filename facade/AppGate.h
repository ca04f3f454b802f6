#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "apps/PermissionStore.h"
#include "facade/OwnerQuestion.h"

namespace quenlet {

// Lets an app do what the owner allows it:
//
//   in the store   | what happens
//   yes            | allowed
//   no             | NotPermitted
//   there is none  | NotPermitted, with what the owner can do
//   nothing        | the owner is asked; all that the app wants meanwhile waits for the same answer
//     yes, no      | is stored, and counts; a no that cannot be stored, in this process
//     closed       | Cancelled; the time is stored, and the owner is not asked more than
//                  | `mostClosings` times a day
//     nobody asks  | NotPermitted
//
// When all who wait for the owner's answer have left the bus, the dialog is closed. That counts as
// if the owner had: an app must not have dialogs come and go. Use on the loop's thread; must
// outlive what it has begun.
class AppGate final {
 public:
  using Reply = std::function<void(Result<AppPermission> permission)>;

  // Closing a dialog does not answer it, but an app must not wear the owner down.
  static constexpr std::size_t mostClosings = 3;

  // Whether a connection whose request is under way is still on the bus.
  using IsConnected = std::function<bool(const std::string& sender)>;

  AppGate(PermissionStore& permissions, OwnerQuestion& dialog, IsConnected knows,
          std::function<Date()> clock = Date::now)
      : store(permissions),
        question(dialog),
        isConnected(std::move(knows)),
        now(std::move(clock)) {}

  // The permission is a yes. No reply when the sender leaves the bus first.
  void pass(const AppRequest& request, Reply reply);
  // The same without asking the owner: NotPermitted where they would be asked.
  void look(AppWish wish, const std::string& app, Reply reply);
  // The connection has left the bus.
  void forget(const std::string& sender);
  // Closes all dialogs, and opens no other: what would ask the owner is Cancelled.
  void end();

 private:
  using Key = std::pair<AppWish, std::string>;
  struct Waiting final {
    std::string sender;
    Reply reply;
  };
  // One question to the owner.
  struct Question final {
    std::vector<Waiting> waiting = {};
    PermissionStore::Dates closings = {};
    std::shared_ptr<Cancelable> dialog = {};
  };
  void askOwner(const AppRequest& request, Reply reply);
  template <typename Step>
  void take(const Key& key, const Step& step);
  void open(const AppRequest& request, const Result<PermissionStore::Dates>& closings);
  void hear(const AppRequest& request, const Result<std::optional<AppPermission>>& answer);
  [[nodiscard]] PermissionStore::Dates recent(const PermissionStore::Dates& dates) const;
  void noteClosing(const Key& key, PermissionStore::Dates closings, PermissionStore::Done done);
  void answerAll(const Key& key, const Result<AppPermission>& permission);

  PermissionStore& store;
  OwnerQuestion& question;
  const IsConnected isConnected;
  const std::function<Date()> now;
  std::map<Key, Question> questions;
  // What the store did not take.
  std::map<Key, PermissionStore::Dates> unstoredClosings;
  std::set<Key> unstoredRefusals;
  bool hasEnded = false;
};

}  // namespace quenlet
