#include <cmath>
#include <cstddef>
#include <memory>
#include <utility>

#include "client/c/Values.h"
#include "platform/extensions/ExtensionError.h"
#include "quenlet/Extension.h"
#include "quenlet/quenlet.h"

namespace quenlet {
namespace {

ErrorPtr donorFailed() {
  return makeExtensionError(ExtensionErrorCode::donorFailed, "the donor has failed");
}

// Asks the author's functions.
class CExtension final : public Extension {
 public:
  explicit CExtension(const quenlet_extension& author) : asked(author) {}

  Result<Date> renew(const Donation& donation) override {
    const quenlet_value value{donation};
    double expiration = std::nan("");
    const quenlet_status status = asked.renew(&value, &expiration, asked.data);
    if (status != QUENLET_OK || !std::isfinite(expiration)) {
      return Result<Date>::failure(donorFailed());
    }
    return Result<Date>::success(Date(expiration));
  }

  Result<std::vector<Donation>> allDonations(std::uint64_t reason) override {
    const std::unique_ptr<quenlet_values, void (*)(quenlet_values*)> values(
        asked.all_donations(reason, asked.data), quenlet_values_free);
    if (!values) return Result<std::vector<Donation>>::failure(donorFailed());
    return Result<std::vector<Donation>>::success(donationsOf(*values));
  }

 private:
  const quenlet_extension& asked;
};

}  // namespace
}  // namespace quenlet

int quenlet_extension_run(const quenlet_extension* extension) try {
  constexpr int notStarted = 2;
  // As far as the first version went: programs that know no more are served for ever.
  constexpr std::size_t leastSize =
      offsetof(quenlet_extension, all_donations) + sizeof(extension->all_donations);
  if (extension == nullptr || extension->size < leastSize || extension->renew == nullptr ||
      extension->all_donations == nullptr) {
    return notStarted;
  }
  quenlet::CExtension asked(*extension);
  return quenlet::runExtension(asked);
} catch (...) {
  return 2;
}
