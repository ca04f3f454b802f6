#pragma once

#include "platform/ipc/ServiceInterface.h"

// The agent's named service as it stands on the wire: its name, the names of its operations and
// what each of them takes and replies.
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

// The interface as its signatures give it: replies have their classes, the elements of the donated
// list and the accounts do not have theirs yet. The service adds these (configureDonate()).
[[nodiscard]] ServiceInterface makeCorvelInterface();

}  // namespace quenlet
