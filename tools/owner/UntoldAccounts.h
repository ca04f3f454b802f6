#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/files/DataProxy.h"
#include "quenlet/Result.h"

namespace quenlet {

// Marks accounts whose changes the agent has yet to hear of: their identifiers, in a file beside
// the accounts. The mark is made before the store is written and goes when the agent was told, so
// that the news outlives a program that is killed in between. One thread; hold the store's lock.
class UntoldAccounts final {
 public:
  // In the directory of accounts. Account files do not begin with a dot.
  static constexpr char fileName[] = ".untold.plist";

  UntoldAccounts(const std::filesystem::path& accountsDirectory, std::shared_ptr<DataProxy> files);

  // None without a mark. An error in PropertyListErrorDomain when it is damaged, or another when it
  // cannot be read.
  [[nodiscard]] Result<std::vector<std::string>> identifiers() const;
  // In place of a former mark. Durable when it returns null.
  [[nodiscard]] ErrorPtr mark(const std::vector<std::string>& identifiers) const;
  // Null when there is no mark any more.
  [[nodiscard]] ErrorPtr clear() const;

 private:
  const std::filesystem::path file;
  const std::shared_ptr<DataProxy> dataProxy;
};

}  // namespace quenlet
