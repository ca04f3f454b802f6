#include "tools/presentation/Wording.h"

#include <algorithm>
#include <string_view>
#include <variant>

#include "tools/presentation/ValueText.h"

namespace quenlet {
namespace {

struct Phrase final {
  std::string operator()(const PersonNameComponents& name) const {
    return "the name " + textOf(name);
  }
  std::string operator()(const Value::EmailAddress& email) const {
    return "the e-mail address " + email.address;
  }
  std::string operator()(const Value::PhoneNumber& phone) const {
    return "the phone number " + phone.number;
  }
  std::string operator()(const Value::PostalAddress& postal) const {
    return "the postal address " + textOf(postal.address);
  }
  std::string operator()(const Value::ImageData& image) const {
    return "the image (" + imageText(*image.bytes) + ")";
  }
};

}  // namespace

std::string numberText(std::size_t number) {
  const std::string digits = std::to_string(number);
  std::string text;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (i > 0 && (digits.size() - i) % 3 == 0) text += ',';
    text += digits[i];
  }
  return text;
}

std::string counted(std::size_t number, const std::string& noun) {
  return numberText(number) + " " + noun + (number == 1 ? "" : "s");
}

std::string counted(std::size_t number, const char* one, const char* several) {
  return numberText(number) + " " + (number == 1 ? one : several);
}

std::string enumerated(const std::vector<std::string>& words) {
  constexpr std::size_t most = 3;
  const std::size_t left = words.size() > most + 1 ? words.size() - most : 0;
  const std::size_t shown = words.size() - left;
  std::string text;
  for (std::size_t i = 0; i < shown; ++i) {
    if (i > 0) text += i + 1 == shown && left == 0 ? " and " : ", ";
    text += words[i];
  }
  return left == 0 ? text : text + " and " + std::to_string(left) + " more";
}

std::string phraseFor(const Value& value) { return std::visit(Phrase{}, value.cases()); }

const char* wordFor(FeedbackStatus status) {
  return status == FeedbackStatus::rejected ? "rejected" : "confirmed";
}

}  // namespace quenlet
