#pragma once

#include <ostream>

#include "platform/contacts/Contact.h"
#include "tools/owner/DonationStates.h"
#include "tools/presentation/Screen.h"

namespace quenlet {

// Shows the donated me card. Stateless.
class CardPresenter final {
 public:
  CardPresenter() = delete;

  // Sections for people; each entry with the number of its donation in `listed`, its label and its
  // origin. Empty sections are left out. False for an empty card: nothing was written.
  [[nodiscard]] static bool writeText(std::ostream& out, const Screen& screen, const Contact& card,
                                      const StatedDonations& listed);
  // An object with "name", "emailAddresses", "phoneNumbers", "postalAddresses", "imageBytes".
  static void writeJSON(std::ostream& out, const Contact& card);
};

}  // namespace quenlet
