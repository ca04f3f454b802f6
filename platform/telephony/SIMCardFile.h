#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>

#include "platform/files/DataProxy.h"
#include "platform/foundation/ProblemReporter.h"
#include "platform/telephony/Telephony.h"
#include "quenlet/Result.h"

namespace quenlet {

// Below the home directory.
inline constexpr char SIMCardsPath[] = "Library/Telephony/sim.plist";

// The property-list file with the SIM cards' phone numbers: an array of up to `maximumItems`
// dictionaries with "identifier" and "value". Thread-safe; nothing is cached.
class SIMCardFile final {
 public:
  static constexpr std::size_t maximumItems = 1000;

  SIMCardFile(std::filesystem::path file, std::shared_ptr<DataProxy> dataProxy);

  [[nodiscard]] const std::filesystem::path& path() const { return file; }

  // A missing file means no numbers. A failure, of PosixErrorDomain when the bytes cannot be read,
  // is reported on standard error once while it lasts.
  [[nodiscard]] Result<SIMCardItems> read();
  // Keeps a copy of the file beside it, before it is replaced though it is damaged. False when that
  // fails.
  [[nodiscard]] bool keepDamaged() { return dataProxy->keepDamagedFile(file); }
  // Replaces the whole file atomically, and waits until that is durable.
  [[nodiscard]] ErrorPtr write(const SIMCardItems& items);

 private:
  const std::filesystem::path file;
  const std::shared_ptr<DataProxy> dataProxy;
  ProblemReporter problems;
};

}  // namespace quenlet
