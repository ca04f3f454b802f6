#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tools/owner/DonationJournal.h"
#include "tools/owner/HeldDonations.h"
#include "tools/owner/WaitingAgent.h"

namespace quenlet {

// Donates files for the owner, whole, and takes such donations back. One thread.
//
// A file replaces its earlier values: all of them in its own bundle, in another bundle those that
// the journal has from it. If one of its cards cannot be read, nothing is removed. The agent has no
// operation that replaces and removes at once, so the new values come first: between the two steps,
// and after a crash there, the card shows both. The same donation made again, or undo, then puts
// that right.
//
//   donate  list ─▶ journal ─▶ donate ─▶ list ─▶ journal ─▶ remove what is left of before
//   undo    list ─▶ donate what was replaced ─▶ list ─▶ remove what was given ─▶ journal
class OwnersDonations final {
 public:
  struct Given final {
    std::size_t donated = 0;
    DonationValues leftOut;   // the agent did not take them
    std::size_t removed = 0;  // the file gave them before and has them no longer
  };
  struct Outcome final {
    std::vector<Given> files;  // in the order of the files
    JournalEntry::Kept kept = JournalEntry::Kept::all;
    // The journal was damaged: earlier donations cannot be undone any more.
    bool beganNewJournal = false;
  };
  struct Undone final {
    JournalEntry entry = {};
    std::size_t removed = 0;      // values of that donation
    std::size_t restored = 0;     // values that it had replaced or removed
    std::size_t expired = 0;      // values that have expired since and do not come back
    std::size_t changed = 0;      // values that another donor has replaced since
    DonationValues leftOut = {};  // values that the agent did not take
  };

  OwnersDonations(CorvelProtocol& askedAgent, DonationJournal donationJournal, Date currentDate)
      : agent(askedAgent), journal(std::move(donationJournal)), now(currentDate) {}

  // Donates all files or, on an error from the agent, none. `key` is that of their pseudonyms.
  // After an error that leaves the outcome open, undo still takes back what was given.
  [[nodiscard]] Result<Outcome> donate(const std::vector<DonatedFile>& files,
                                       const std::string& key) const;
  // Takes the last donation back and forgets it, so that the next call takes the one before. Values
  // that others have given in its place since stay. Nothing when the journal is empty.
  [[nodiscard]] Result<std::optional<Undone>> undo() const;

 private:
  [[nodiscard]] ErrorPtr giveNoted(const DonationValues& values, std::int64_t number) const;
  [[nodiscard]] ErrorPtr finish(const std::vector<DonatedFile>& files,
                                const std::vector<JournalEntry>& former, std::int64_t number,
                                Outcome& outcome) const;
  [[nodiscard]] DonationValues returning(const HeldDonations& held, Undone& undone) const;
  [[nodiscard]] Result<Undone> takeBack(JournalEntry entry) const;

  const WaitingAgent agent;
  const DonationJournal journal;
  const Date now;
};

}  // namespace quenlet
