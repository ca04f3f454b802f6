#include "client/c/ErrorByValue.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "quenlet/ErrorCodes.h"

namespace quenlet {
namespace {

void copyText(std::string_view text, std::span<char> room) {
  std::size_t size = std::min(text.size(), room.size() - 1);
  const auto continues = [&](std::size_t at) {
    return (static_cast<unsigned char>(text[at]) & 0xc0) == 0x80;
  };
  while (size > 0 && size < text.size() && continues(size)) --size;
  *std::copy_n(text.data(), size, room.data()) = '\0';
}

quenlet_status statusOf(const Error& error) {
  struct Row {
    std::string_view domain;
    std::int64_t code;
    quenlet_status status;
  };
  const auto service = [](ServiceErrorCode code, quenlet_status status) {
    return Row{ServiceErrorDomain, static_cast<std::int64_t>(code), status};
  };
  const auto donation = [](DonationErrorCode code, quenlet_status status) {
    return Row{DonationErrorDomain, static_cast<std::int64_t>(code), status};
  };
  constexpr std::int64_t notEntitled = 4097;
  const Row rows[] = {
      service(ServiceErrorCode::noService, QUENLET_NO_AGENT),
      service(ServiceErrorCode::connectionBroken, QUENLET_CONNECTION_BROKEN),
      service(ServiceErrorCode::timedOut, QUENLET_TIMED_OUT),
      service(ServiceErrorCode::bundleNotAllowed, QUENLET_BUNDLE_NOT_ALLOWED),
      service(ServiceErrorCode::invalidArguments, QUENLET_INVALID_ARGUMENT),
      service(ServiceErrorCode::messageTooLarge, QUENLET_TOO_LARGE),
      donation(DonationErrorCode::featureNotEnabled, QUENLET_DONATIONS_DISABLED),
      donation(DonationErrorCode::notSerializable, QUENLET_TOO_LARGE),
      Row{GeneralErrorDomain, notEntitled, QUENLET_NOT_ENTITLED},
  };
  const auto* const found = std::find_if(std::begin(rows), std::end(rows), [&](const Row& row) {
    return row.domain == error.domain() && row.code == error.code();
  });
  return found == std::end(rows) ? QUENLET_FAILED : found->status;
}

quenlet_error made(quenlet_status status, std::int64_t code, std::string_view domain,
                   std::string_view sentence) {
  quenlet_error error{status, code, {}, {}};
  copyText(domain, error.domain);
  copyText(sentence, error.sentence);
  return error;
}

}  // namespace

quenlet_error ErrorByValue::of(const ErrorPtr& error) {
  if (!error) return made(QUENLET_OK, 0, "", "");
  return made(statusOf(*error), error->code(), error->domain(), error->debugDescription());
}

quenlet_error ErrorByValue::invalidArgument(const char* sentence) {
  return made(QUENLET_INVALID_ARGUMENT,
              static_cast<std::int64_t>(ServiceErrorCode::invalidArguments), ServiceErrorDomain,
              sentence);
}

quenlet_status ErrorByValue::put(quenlet_error* place, const quenlet_error& error) noexcept {
  if (place != nullptr) *place = error;
  return error.status;
}

quenlet_error ErrorByValue::ofCurrentException() noexcept try {
  throw;
} catch (const std::bad_alloc&) {
  return made(QUENLET_OUT_OF_MEMORY, 0, "", "out of memory");
} catch (...) {
  return made(QUENLET_FAILED, 0, "", "something has gone wrong");
}

}  // namespace quenlet
