#include "tools/owner/ShownNumbers.h"

#include "platform/feedback/FeedbackContent.h"
#include "platform/files/DurableFileWriter.h"
#include "platform/files/PosixDataProxy.h"
#include "platform/files/PosixFileOperations.h"
#include "platform/files/UserDirectories.h"
#include "platform/foundation/SHA256.h"

namespace quenlet {
namespace {

std::string digestOf(const std::vector<std::string>& items) {
  std::string digests;
  for (const std::string& item : items) digests += sha256(item);
  return sha256(digests);
}

}  // namespace

ShownNumbers::ShownNumbers(const char* fileName) {
  const auto runtime = UserDirectories::runtimeDirectory();
  if (runtime.ok()) file = runtime.value() / "quenlet" / fileName;
}

void ShownNumbers::remember(const std::vector<std::string>& items) const {
  if (!file) return;
  PosixFileOperations operations;
  static_cast<void>(DurableFileWriter(operations).replace(*file, digestOf(items)));
}

bool ShownNumbers::hold(const std::vector<std::string>& items) const {
  if (!file) return false;
  const auto shown = PosixDataProxy().dataWithContentsOfURL(*file);
  return shown.result().ok() && shown.result().value() == digestOf(items);
}

std::vector<std::string> ShownNumbers::itemsOf(const DonationValues& donations) {
  std::vector<std::string> items;
  items.reserve(donations.size());
  for (const DonationValuePtr& donation : donations) {
    items.push_back(donation->decoded().origin.donationIdentifier + '\n' +
                    FeedbackContent::contentOfValue(*donation).key);
  }
  return items;
}

}  // namespace quenlet
