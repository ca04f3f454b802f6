#pragma once

#include "platform/ipc/ServiceInterface.h"

// The agent's service on the wire: its name and its operations with their arguments and replies.
namespace quenlet {

inline constexpr char CorvelServiceName[] = "ovaro.quenlet.agent";

namespace CorvelSelector {
inline constexpr char donate[] = "donateMeCardValues:completionHandler:";
inline constexpr char removeIdentifiers[] =
    "removeDonatedMeCardValuesForIdentifiers:completionHandler:";
inline constexpr char removeBundle[] =
    "removeDonatedMeCardValuesWithBundleIdentifier:completionHandler:";
inline constexpr char fetch[] = "fetchDonatedMeCard:";
inline constexpr char synchronousFetch[] = "synchronousDonatedMeCard:";
inline constexpr char list[] = "meCardDonations:";
inline constexpr char changeAccount[] = "changeFromAccount:toAccount:completionHandler:";
inline constexpr char rejectValue[] = "rejectValueWithDonationIdentifier:completionHandler:";
inline constexpr char rejectCluster[] = "rejectValuesWithClusterIdentifier:completionHandler:";
inline constexpr char removeRejections[] = "removeAllRejectionsWithCompletionHandler:";
}  // namespace CorvelSelector

// The interface as far as the signatures determine it: the classes in replies are set. The service
// adds those of the donated list's elements and of the accounts (configureDonate()).
[[nodiscard]] ServiceInterface makeCorvelInterface();

}  // namespace quenlet
