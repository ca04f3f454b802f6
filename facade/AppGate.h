#pragma once

#include <functional>
#include <map>
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
//   nothing        | the owner is asked; all that the app wants meanwhile waits for the same answer
//     yes, no      | is stored, and counts
//     closed       | Cancelled; nothing is stored, so that the owner is asked again, but not more
//                  | than `mostCancels` times while this process runs
//     nobody asks  | NotPermitted
//
// Use on the loop's thread; must outlive what it has begun.
class AppGate final {
 public:
  using Reply = std::function<void(Result<AppPermission> permission)>;

  // Closing a dialog is no answer, but an app must not wear the owner down.
  static constexpr int mostCancels = 3;

  AppGate(PermissionStore& permissions, OwnerQuestion& dialog)
      : store(permissions), question(dialog) {}

  // The permission is a yes.
  void pass(const AppRequest& request, Reply reply);
  // The same without asking the owner: NotPermitted where they would be asked.
  void look(AppWish wish, const std::string& app, Reply reply);

 private:
  using Key = std::pair<AppWish, std::string>;
  void askOwner(const AppRequest& request, Reply reply);
  void hear(const AppRequest& request, const Result<std::optional<AppPermission>>& answer);
  void answerAll(const Key& key, const Result<AppPermission>& permission);

  PermissionStore& store;
  OwnerQuestion& question;
  std::map<Key, std::vector<Reply>> waiting;
  std::map<Key, int> cancels;
};

}  // namespace quenlet
