#pragma once

#include <filesystem>
#include <memory>

#include "modems/ModemCards.h"
#include "platform/telephony/SIMCardFile.h"

namespace quenlet {

// Keeps the file with the SIM cards' numbers, which the agent follows, in step with the modems. Not
// thread-safe.
class NumbersFile final {
 public:
  NumbersFile(std::filesystem::path file, std::shared_ptr<DataProxy> dataProxy)
      : file(std::move(file), std::move(dataProxy)) {}

  // `daemon` has these modems now. Writes the file if its list is to change, and says so on
  // standard error, without numbers. A damaged file counts as empty and is kept beside the new one.
  // An error when the file cannot be read or written: then it is as it was.
  [[nodiscard]] ErrorPtr takeModems(const std::string& daemon, const std::vector<Modem>& modems);

 private:
  [[nodiscard]] Result<SIMCardItems> writtenItems();

  ModemCards cards;
  SIMCardFile file;
};

}  // namespace quenlet
