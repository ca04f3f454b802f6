#include "tools/presentation/StatePresenter.h"

#include <string>
#include <string_view>
#include <variant>

#include "platform/foundation/JSONWriter.h"
#include "tools/presentation/DonationPresenter.h"
#include "tools/presentation/TextTable.h"
#include "tools/presentation/ValueText.h"

namespace quenlet {
namespace {

using Fit = TextTable::Fit;

// The journal keeps no images.
bool isWithoutBytes(const Value& value) {
  const auto* image = std::get_if<Value::ImageData>(&value.cases());
  return image && image->bytes->empty();
}

// "own card has it" for "ownCardHasIt".
std::string spoken(std::string_view word) {
  std::string text;
  for (const char letter : word) {
    const bool begins = letter >= 'A' && letter <= 'Z';
    if (begins) text += ' ';
    text += begins ? static_cast<char>(letter - 'A' + 'a') : letter;
  }
  return text;
}

void writeState(JSONWriter& json, DonationState state, const std::string& because) {
  json.key("state").value(wordFor(state));
  if (!because.empty()) json.key("because").value(because);
}

void writeListed(JSONWriter& json, const StatedDonation& stated) {
  const DecodedDonation decoded = stated.donation->decoded();
  json.beginObject();
  DonationPresenter::writeContent(json, Value(decoded.content));
  json.key("origin");
  DonationPresenter::writeOrigin(json, decoded.origin);
  json.key("number").value(static_cast<std::int64_t>(stated.number));
  writeState(json, stated.state, stated.because);
  if (stated.other) {
    json.key("other").value(stated.other->decoded().origin.donationIdentifier);
  }
  json.endObject();
}

void writeUnlisted(JSONWriter& json, const UnlistedValue& unlisted) {
  json.beginObject();
  if (unlisted.value && isWithoutBytes(*unlisted.value)) {
    json.key("kind").value(kindOf(*unlisted.value));
  } else if (unlisted.value) {
    DonationPresenter::writeContent(json, *unlisted.value);
  }
  if (unlisted.donation) {
    json.key("origin");
    DonationPresenter::writeOrigin(json, unlisted.donation->decoded().origin);
  } else if (!unlisted.bundleIdentifier.empty()) {
    json.key("origin").beginObject();
    json.key("bundleIdentifier").value(unlisted.bundleIdentifier).endObject();
  }
  writeState(json, unlisted.state, unlisted.because);
  json.endObject();
}

}  // namespace

void StatePresenter::writeTable(std::ostream& out, const Screen& screen,
                                const StatedDonations& donations) {
  TextTable table({{"#", Fit::whole},
                   {"VALUE", Fit::wrapped},
                   {"STATE", Fit::whole},
                   {"BUNDLE", Fit::cut},
                   {"EXPIRES", Fit::whole},
                   {"KIND", Fit::spare},
                   {"LABEL", Fit::spare},
                   {"DONATION", Fit::spare},
                   {"CLUSTER", Fit::spare},
                   {"DONATED", Fit::spare}});
  for (const StatedDonation& stated : donations) {
    const DecodedDonation decoded = stated.donation->decoded();
    const Value value(decoded.content);
    const DonationOrigin& origin = decoded.origin;
    table.addRow({std::to_string(stated.number), textOf(value), spoken(wordFor(stated.state)),
                  origin.bundleIdentifier, dayOf(origin.expirationDate), titleOfKind(value),
                  labelOf(value), origin.donationIdentifier, origin.clusterIdentifier.value_or(""),
                  dayOf(origin.donationDate)});
  }
  table.write(out, screen);
}

void StatePresenter::writeJSON(std::ostream& out, const StatedDonations& donations,
                               const std::vector<UnlistedValue>& unlisted) {
  JSONWriter json;
  json.beginArray();
  for (const StatedDonation& stated : donations) writeListed(json, stated);
  for (const UnlistedValue& value : unlisted) writeUnlisted(json, value);
  out << json.endArray().text() << "\n";
}

}  // namespace quenlet
