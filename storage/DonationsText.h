#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

#include "model/DonationValue.h"
#include "platform/files/FileContent.h"
#include "quenlet/Result.h"

namespace quenlet {

// The donations file in the form that the agent writes: the texts that the records keep, between
// the head and the tail of the property list. Stateless.
class DonationsText final {
 public:
  DonationsText() = delete;

  // The most bytes that the texts of all records may take together.
  [[nodiscard]] static std::size_t capacityInBytes();
  // The file's content, put together while it is written. An error with code notSerializable when a
  // value has no text, or all texts together are too large.
  [[nodiscard]] static Result<FileContentPtr> of(std::shared_ptr<const DonationValues> values);
  // Reads a file in exactly this form, without building a tree. Nothing for any other file, sound
  // or not: then the general reader decides.
  [[nodiscard]] static std::optional<DonationValues> read(std::string_view text);
};

}  // namespace quenlet
