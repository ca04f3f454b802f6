#pragma once

#include <string>
#include <vector>

#include "tools/commands/Session.h"
#include "tools/owner/CardInput.h"
#include "tools/owner/OwnersDonations.h"

// What is said of a donation. Remarks go to the error stream.
namespace quenlet {

// The first ten, and a line that tells how many more there are.
[[nodiscard]] std::vector<std::string> firstOf(std::vector<std::string> lines);
// Why a value is left out that the owner has not rejected.
inline constexpr char notTaken[] = "not taken by the agent; quenlet doctor or its log may tell why";
// "left out: you rejected it" and the like, a phrase for each reason there is, with a count.
[[nodiscard]] std::vector<std::string> reasonsOf(const DonationValues& leftOut);
// "5 donated as com.example.mail, 1 left out: you rejected it".
[[nodiscard]] std::string textOf(const OwnersDonations::Given& given, const std::string& bundle);

// What of the files could not be read. Gives whether every card could.
bool tellOfFaults(const std::vector<CardInput>& inputs, const Session& session);
// That some values take the place of others in the same files.
void tellOfRepeated(const std::vector<DonatedFile>& files, const Session& session);
// What undo cannot do.
void tellOfJournal(const OwnersDonations::Outcome& outcome, const Session& session);

}  // namespace quenlet
