#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "model/Value.h"
#include "platform/feedback/FeedbackEntries.h"

// Parts of sentences for people; not made safe for a terminal. Pure functions.
namespace quenlet {

// "3", "3,000".
[[nodiscard]] std::string numberText(std::size_t number);
// "1 donation", "3,000 donations".
[[nodiscard]] std::string counted(std::size_t number, const std::string& noun);
// "1 entry", "3 entries".
[[nodiscard]] std::string counted(std::size_t number, const char* one, const char* several);
// "a", "a and b", "a, b and c", "a, b, c and 4 more".
[[nodiscard]] std::string enumerated(const std::vector<std::string>& words);
// "the e-mail address ann@example.org", "the image (14 bytes, GIF)".
[[nodiscard]] std::string phraseFor(const Value& value);
// "rejected" or "confirmed"; JSON has it, too.
[[nodiscard]] const char* wordFor(FeedbackStatus status);

}  // namespace quenlet
