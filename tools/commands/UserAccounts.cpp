#include "tools/commands/UserAccounts.h"

#include "platform/files/DonationFiles.h"
#include "platform/files/PosixDataProxy.h"
#include "platform/files/UserDirectories.h"

namespace quenlet {

Result<std::unique_ptr<UserAccounts>> UserAccounts::open() {
  using Opened = Result<std::unique_ptr<UserAccounts>>;
  const auto home = UserDirectories::homeDirectory();
  if (!home.isLeft()) return Opened::right(home.right());
  return Opened::left(std::unique_ptr<UserAccounts>(
      new UserAccounts(home.left(), std::make_shared<PosixDataProxy>())));
}

UserAccounts::UserAccounts(const std::filesystem::path& home,
                           const std::shared_ptr<DataProxy>& dataProxy)
    : accountStore(std::make_shared<PropertyListAccountStore>(
          home / "Library/Accounts", dataProxy, std::make_shared<AccountFileProblems>())),
      agentCatchUp(home / DonationFiles::directory, dataProxy) {}

}  // namespace quenlet
