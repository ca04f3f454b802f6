#pragma once

namespace quenlet {

// The codes in DonationErrorDomain.
enum class DonationErrorCode {
  featureNotEnabled = 1,  // donations are disabled, or the agent has just started
  donorGaveNoAnswer = 2,
  notSerializable = 501,         // a value that no file can hold, or too large
  topLevelNotADictionary = 502,  // of the agent's own file
};

// The codes in ServiceErrorDomain: failures on the way to a service and back.
inline constexpr char ServiceErrorDomain[] = "ovaro.quenlet.service-error";
enum class ServiceErrorCode {
  noService = 1,         // nobody listens under that name
  connectionBroken = 2,  // the connection ended before the reply
  unknownOperation = 3,
  invalidArguments = 4,  // wrong count, type or class
  malformedMessage = 5,
  messageTooLarge = 6,
  tooManyConnections = 7,
  notImplemented = 8,     // the operation is known, but not served by this build
  noReply = 9,            // the operation's handler was dropped without an answer
  nameTaken = 10,         // another process listens under that name
  timedOut = 11,          // the service did not answer within the client's time limit
  bundleNotAllowed = 12,  // the program's entitlements name the bundles that it may change
};

}  // namespace quenlet
