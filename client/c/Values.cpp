#include "client/c/Values.h"

#include <limits>
#include <new>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "client/c/ErrorByValue.h"

namespace quenlet {
namespace {

using Content = decltype(Donation::content);

// Where a value keeps the text that `which` means: in a string, empty if absent, or in an optional.
// Both are null if values of this kind lack that text.
struct TextPlace final {
  std::string* text = nullptr;
  std::optional<std::string>* optional = nullptr;
};

TextPlace placeIn(Name& name, quenlet_text which) {
  switch (which) {
    case QUENLET_NAME_PREFIX:
      return {.optional = &name.namePrefix};
    case QUENLET_GIVEN_NAME:
      return {.optional = &name.givenName};
    case QUENLET_MIDDLE_NAME:
      return {.optional = &name.middleName};
    case QUENLET_FAMILY_NAME:
      return {.optional = &name.familyName};
    case QUENLET_NAME_SUFFIX:
      return {.optional = &name.nameSuffix};
    case QUENLET_NICKNAME:
      return {.optional = &name.nickname};
    default:
      return {};
  }
}

TextPlace placeIn(Email& email, quenlet_text which) {
  if (which == QUENLET_TEXT) return {.text = &email.address};
  return {.text = which == QUENLET_LABEL ? &email.label : nullptr};
}

TextPlace placeIn(Phone& phone, quenlet_text which) {
  if (which == QUENLET_TEXT) return {.text = &phone.number};
  return {.text = which == QUENLET_LABEL ? &phone.label : nullptr};
}

TextPlace placeIn(Postal& postal, quenlet_text which) {
  Address& address = postal.address;
  switch (which) {
    case QUENLET_LABEL:
      return {.text = &postal.label};
    case QUENLET_STREET:
      return {.text = &address.street};
    case QUENLET_SUB_LOCALITY:
      return {.text = &address.subLocality};
    case QUENLET_CITY:
      return {.text = &address.city};
    case QUENLET_SUB_ADMINISTRATIVE_AREA:
      return {.text = &address.subAdministrativeArea};
    case QUENLET_STATE:
      return {.text = &address.state};
    case QUENLET_POSTAL_CODE:
      return {.text = &address.postalCode};
    case QUENLET_COUNTRY:
      return {.text = &address.country};
    case QUENLET_ISO_COUNTRY_CODE:
      return {.text = &address.isoCountryCode};
    default:
      return {};
  }
}

TextPlace placeIn(Image&, quenlet_text) { return {}; }

TextPlace placeIn(quenlet_value& value, quenlet_text which) {
  Donation& donation = value.donation;
  switch (which) {
    case QUENLET_BUNDLE:
      return {.text = &donation.bundleIdentifier};
    case QUENLET_IDENTIFIER:
      return {.text = &donation.donationIdentifier};
    case QUENLET_CLUSTER:
      return {.optional = &donation.clusterIdentifier};
    default:
      return std::visit([which](auto& content) { return placeIn(content, which); },
                        donation.content);
  }
}

Date* dateIn(quenlet_value& value, quenlet_date which) {
  if (!value.hasOrigin) return nullptr;
  switch (which) {
    case QUENLET_DONATION_DATE:
      return &value.donation.donationDate;
    case QUENLET_EXPIRATION_DATE:
      return &value.donation.expirationDate;
  }
  return nullptr;
}

std::optional<Content> emptyContent(quenlet_kind kind) {
  switch (kind) {
    case QUENLET_NAME:
      return Name();
    case QUENLET_EMAIL:
      return Email();
    case QUENLET_PHONE:
      return Phone();
    case QUENLET_POSTAL:
      return Postal();
    case QUENLET_IMAGE:
      return Image();
    case QUENLET_NO_KIND:
      break;
  }
  return std::nullopt;
}

quenlet_value entry(Content content, std::optional<Source> source) {
  quenlet_value value{{.content = std::move(content)}, source.has_value()};
  if (source) {
    value.donation.bundleIdentifier = std::move(source->bundleIdentifier);
    value.donation.donationIdentifier = std::move(source->donationIdentifier);
    value.donation.clusterIdentifier = std::move(source->clusterIdentifier);
    value.donation.donationDate = source->donationDate;
    value.donation.expirationDate = source->expirationDate;
  }
  return value;
}

}  // namespace

quenlet_values valuesOf(Card card) {
  quenlet_values values;
  if (card.name != Name()) values.list.push_back(entry(std::move(card.name), std::nullopt));
  for (auto& email : card.emailAddresses) {
    values.list.push_back(
        entry(Email{std::move(email.value), std::move(email.label)}, std::move(email.source)));
  }
  for (auto& phone : card.phoneNumbers) {
    values.list.push_back(
        entry(Phone{std::move(phone.value), std::move(phone.label)}, std::move(phone.source)));
  }
  for (auto& postal : card.postalAddresses) {
    values.list.push_back(
        entry(Postal{.address = std::move(postal.value), .label = std::move(postal.label)},
              std::move(postal.source)));
  }
  if (card.image) values.list.push_back(entry(*std::move(card.image), std::nullopt));
  return values;
}

quenlet_values valuesOf(std::vector<Donation> donations) {
  quenlet_values values;
  for (Donation& donation : donations) values.list.push_back({std::move(donation)});
  return values;
}

std::vector<Donation> donationsOf(const quenlet_values& values) {
  std::vector<Donation> donations;
  donations.reserve(values.list.size());
  for (const quenlet_value& value : values.list) donations.push_back(value.donation);
  return donations;
}

}  // namespace quenlet

using namespace quenlet;

quenlet_values* quenlet_values_new(void) { return new (std::nothrow) quenlet_values(); }

quenlet_values* quenlet_values_copy(const quenlet_values* values) try {
  return values == nullptr ? nullptr : new quenlet_values(*values);
} catch (...) {
  return nullptr;
}

void quenlet_values_free(quenlet_values* values) { delete values; }

size_t quenlet_values_count(const quenlet_values* values) {
  return values == nullptr ? 0 : values->list.size();
}

const quenlet_value* quenlet_values_at(const quenlet_values* values, size_t index) {
  return index < quenlet_values_count(values) ? &values->list[index] : nullptr;
}

quenlet_value* quenlet_values_add(quenlet_values* values, quenlet_kind kind) try {
  std::optional<Content> content = emptyContent(kind);
  if (values == nullptr || !content) return nullptr;
  return &values->list.emplace_back(quenlet_value{{.content = *std::move(content)}});
} catch (...) {
  return nullptr;
}

quenlet_kind quenlet_value_kind(const quenlet_value* value) {
  if (value == nullptr) return QUENLET_NO_KIND;
  // In the order of the variant.
  constexpr quenlet_kind kinds[] = {QUENLET_NAME, QUENLET_EMAIL, QUENLET_PHONE, QUENLET_POSTAL,
                                    QUENLET_IMAGE};
  static_assert(std::variant_size_v<Content> == std::size(kinds));
  return kinds[value->donation.content.index()];
}

const char* quenlet_value_text(const quenlet_value* value, quenlet_text which) {
  if (value == nullptr) return nullptr;
  // Only looked for: nothing is changed.
  const TextPlace place = placeIn(const_cast<quenlet_value&>(*value), which);
  if (place.optional != nullptr) {
    return place.optional->has_value() ? (*place.optional)->c_str() : nullptr;
  }
  return place.text == nullptr || place.text->empty() ? nullptr : place.text->c_str();
}

const void* quenlet_value_image(const quenlet_value* value, size_t* size) {
  const auto* const image =
      value == nullptr ? nullptr : std::get_if<Image>(&value->donation.content);
  if (size != nullptr) *size = image == nullptr ? 0 : image->bytes.size();
  return image == nullptr ? nullptr : image->bytes.data();
}

double quenlet_value_date(const quenlet_value* value, quenlet_date which) {
  const Date* const date =
      value == nullptr ? nullptr : dateIn(const_cast<quenlet_value&>(*value), which);
  return date == nullptr ? std::numeric_limits<double>::quiet_NaN() : date->secondsSince1970();
}

quenlet_status quenlet_value_set_text(quenlet_value* value, quenlet_text which, const char* text) {
  return ErrorByValue::guarded(nullptr, [&] {
    const TextPlace place = value == nullptr ? TextPlace() : placeIn(*value, which);
    if (place.optional != nullptr && text == nullptr) {
      place.optional->reset();
    } else if (place.optional != nullptr) {
      *place.optional = text;
    } else if (place.text != nullptr) {
      *place.text = text == nullptr ? "" : text;
    } else {
      return ErrorByValue::invalidArgument("values of this kind lack that text");
    }
    return ErrorByValue::of(nullptr);
  });
}

quenlet_status quenlet_value_set_image(quenlet_value* value, const void* bytes, size_t size) {
  return ErrorByValue::guarded(nullptr, [&] {
    auto* const image = value == nullptr ? nullptr : std::get_if<Image>(&value->donation.content);
    if (image == nullptr || (bytes == nullptr && size > 0)) {
      return ErrorByValue::invalidArgument("the value is not an image");
    }
    image->bytes.assign(static_cast<const char*>(bytes), size);
    return ErrorByValue::of(nullptr);
  });
}

quenlet_status quenlet_value_set_date(quenlet_value* value, quenlet_date which, double seconds) {
  Date* const date = value == nullptr ? nullptr : dateIn(*value, which);
  if (date == nullptr) return QUENLET_INVALID_ARGUMENT;
  *date = Date(seconds);
  return QUENLET_OK;
}
