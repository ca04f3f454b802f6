#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/feedback/FeedbackEntries.h"
#include "platform/files/DataProxy.h"
#include "platform/files/PropertyListFile.h"
#include "quenlet/Result.h"

namespace quenlet {

// Below the home directory.
inline constexpr char FeedbackPath[] = "Library/Contacts/Feedback/feedback.plist";

// The feedback file for programs that show decisions and take them back. Thread-safe. Nothing is
// cached, and the file is not watched: PropertyListFeedbackStore is what an agent asks.
class FeedbackFile final {
 public:
  FeedbackFile(std::filesystem::path path, std::shared_ptr<DataProxy> dataProxy);

  // The decisions on that contact's values, in the order of the file; of several on the same
  // content, the first. Elements that are not understood are left out. Empty without a file.
  [[nodiscard]] Result<std::vector<FeedbackDecision>> decisions(
      const std::string& contactIdentifier) const;
  // Removes all decisions on the contents with these keys, and nothing else. Returns for how many
  // keys there was one. Durable when it succeeds; a damaged or unreadable file stays and is an
  // error. Blocks as PropertyListFile::update() does.
  [[nodiscard]] Result<std::size_t> remove(const std::vector<std::string>& keys,
                                           const std::string& contactIdentifier) const;

 private:
  const PropertyListFile file;
};

}  // namespace quenlet
