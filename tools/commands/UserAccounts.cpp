#include "tools/commands/UserAccounts.h"

#include "platform/files/PosixDataProxy.h"
#include "platform/files/UserDirectories.h"

namespace quenlet {

Result<std::unique_ptr<UserAccounts>> UserAccounts::open() {
  using Opened = Result<std::unique_ptr<UserAccounts>>;
  const auto home = UserDirectories::homeDirectory();
  if (!home.isLeft()) return Opened::right(home.right());
  return Opened::left(std::unique_ptr<UserAccounts>(
      new UserAccounts(home.left() / "Library", std::make_shared<PosixDataProxy>())));
}

UserAccounts::UserAccounts(const std::filesystem::path& library,
                           const std::shared_ptr<DataProxy>& dataProxy)
    : accountStore(std::make_shared<PropertyListAccountStore>(
          library / "Accounts", dataProxy, std::make_shared<AccountFileProblems>())),
      agentCatchUp(library / "Contacts" / "Donations", dataProxy) {}

}  // namespace quenlet
