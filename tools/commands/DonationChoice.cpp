#include "tools/commands/DonationChoice.h"

#include <set>

#include "tools/owner/Selection.h"
#include "tools/owner/ShownNumbers.h"

namespace quenlet {
namespace {

// Whether the selection counts; says why not.
bool isUsable(const Session& session, const DonationValues& list, const Selection& selection,
              const std::string& text) {
  if (selection.places.empty()) {
    session.refuse("no-match",
                   "no donation has the identifier, the number or the value \"" + text + "\"",
                   "quenlet list shows what there is");
    return false;
  }
  if (selection.by != SelectedBy::number ||
      ShownNumbers::ofDonations().hold(ShownNumbers::itemsOf(list), selection.places.front())) {
    return true;
  }
  session.refuse("stale-number", "the list has changed since its numbers were shown",
                 "quenlet list shows the present ones");
  return false;
}

}  // namespace

std::optional<DonationValues> DonationChoice::choose(const Session& session,
                                                     const DonationValues& list,
                                                     const std::vector<std::string>& texts) {
  std::set<std::size_t> places;
  for (const std::string& text : texts) {
    const Selection selection = select(list, text);
    if (!isUsable(session, list, selection, text)) return std::nullopt;
    places.insert(selection.places.begin(), selection.places.end());
  }
  DonationValues chosen;
  for (const std::size_t place : places) chosen.push_back(list[place]);
  return chosen;
}

}  // namespace quenlet
