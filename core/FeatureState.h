#pragma once

namespace quenlet {

// Whether the agent serves requests, following the donations-enabled preference.
//
//   state        | preference off | preference on                  | discovery fails
//   undetermined | disabled       | enabled                        | –
//   disabled     | disabled       | newlyEnabled, then enabled     | –
//   newlyEnabled | disabled       | enabled                        | –
//   enabled      | disabled       | enabled                        | newlyEnabled
enum class FeatureState : unsigned char { undetermined, disabled, newlyEnabled, enabled };

}  // namespace quenlet
