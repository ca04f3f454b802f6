#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "quenlet/Export.h"

namespace quenlet {

inline constexpr char DonationErrorDomain[] = "ovaro.quenlet.donation-error";
inline constexpr char GeneralErrorDomain[] = "ovaro.general-error";
// Failed system calls; the code is errno.
inline constexpr char PosixErrorDomain[] = "posix-error";
// The user-info key of a sentence for people who read a log or a terminal.
inline constexpr char DebugDescriptionKey[] = "DebugDescription";

// A failure: a domain, a code within it, and texts that explain it. Immutable. Held as an ErrorPtr,
// which is null for success, and passed on unchanged.
class QUENLET_API Error final {
 public:
  using UserInfo = std::map<std::string, std::string>;

  Error(std::string errorDomain, std::int64_t errorCode, UserInfo info = {})
      : domainName(std::move(errorDomain)), codeNumber(errorCode), info(std::move(info)) {}

  [[nodiscard]] const std::string& domain() const { return domainName; }
  [[nodiscard]] std::int64_t code() const { return codeNumber; }
  [[nodiscard]] const UserInfo& userInfo() const { return info; }
  // The sentence under DebugDescriptionKey, or an empty text.
  [[nodiscard]] std::string debugDescription() const;
  // "<domain> <code>: <sentence>", without the colon if the sentence is empty.
  [[nodiscard]] std::string description() const;

  friend bool operator==(const Error&, const Error&) = default;

 private:
  std::string domainName;
  std::int64_t codeNumber;
  UserInfo info;
};

using ErrorPtr = std::shared_ptr<const Error>;

// An error with the given sentence under DebugDescriptionKey; without user info when that is empty.
[[nodiscard]] QUENLET_API ErrorPtr makeError(std::string domain, std::int64_t code,
                                             std::string debugDescription = {});
// The error of a failed system call: `action` ("open donations.plist") and the text of
// `errorNumber`.
[[nodiscard]] QUENLET_API ErrorPtr makePosixError(int errorNumber, const std::string& action);

}  // namespace quenlet
