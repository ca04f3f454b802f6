#include "tools/owner/UserAccounts.h"

#include "platform/files/DonationFiles.h"
#include "platform/files/PosixDataProxy.h"
#include "platform/files/UserDirectories.h"

namespace quenlet {

Result<std::unique_ptr<UserAccounts>> UserAccounts::open() {
  using Opened = Result<std::unique_ptr<UserAccounts>>;
  const auto home = UserDirectories::homeDirectory();
  if (!home.ok()) return Opened::failure(home.error());
  return Opened::success(std::unique_ptr<UserAccounts>(
      new UserAccounts(home.value(), std::make_shared<PosixDataProxy>())));
}

UserAccounts::UserAccounts(const std::filesystem::path& home,
                           const std::shared_ptr<DataProxy>& dataProxy)
    : accountStore(std::make_shared<PropertyListAccountStore>(
          home / AccountsPath, dataProxy, std::make_shared<AccountFileProblems>())),
      agentCatchUp(home / DonationFiles::directory, dataProxy),
      untoldAccounts(home / AccountsPath, dataProxy) {}

}  // namespace quenlet
