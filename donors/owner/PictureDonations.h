#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

#include "donors/source/SourceDonor.h"

namespace quenlet {

// The picture that stands for the owner at login: the first of the files that is there. An error
// when that one cannot be read or is not a whole image.
[[nodiscard]] SourceDonor::Donations pictureDonations(
    const std::vector<std::filesystem::path>& files);

// Whether the bytes begin and end as a PNG or JPEG image does. What is between is for those to
// examine who show it.
[[nodiscard]] bool isWholeImage(std::string_view bytes);

}  // namespace quenlet
