#include "tools/presentation/ReasonPresenter.h"

#include <map>
#include <string>
#include <unordered_map>
#include <utility>

#include "platform/foundation/KeyedHash.h"
#include "tools/presentation/TerminalText.h"
#include "tools/presentation/TextTable.h"
#include "tools/presentation/ValueText.h"

namespace quenlet {
namespace {

using Fit = TextTable::Fit;

constexpr std::size_t indentation = 2;

// Sentences in the order in which they came, each with the values that it is about.
class Group final {
 public:
  void add(const std::string& because, std::vector<std::string> cells) {
    const auto [place, isNew] = places.emplace(because, reasons.size());
    if (isNew) {
      reasons.emplace_back(because, TextTable({{"", Fit::whole},
                                               {"", Fit::wrapped},
                                               {"", Fit::spare, TextStyle::dim},
                                               {"", Fit::cut, TextStyle::dim}}));
    }
    reasons[place->second].second.addRow(std::move(cells));
  }

  void write(std::ostream& out, const Screen& screen) const {
    for (const auto& [because, values] : reasons) {
      screen.writeParagraph(out, printable(because) + ".", indentation);
      values.write(out, screen, std::string(2 * indentation, ' '));
    }
  }

 private:
  std::vector<std::pair<std::string, TextTable>> reasons;
  std::unordered_map<std::string, std::size_t, TextHash> places;
};

void writeAdvice(std::ostream& out, const Screen& screen, DonationState state) {
  const std::string advice = adviceFor(state);
  if (!advice.empty()) screen.writeParagraph(out, advice + ".", indentation);
}

// Writes paragraphs about values one by one.
class EachWriter final {
 public:
  EachWriter(std::ostream& stream, const Screen& outputScreen)
      : out(stream), screen(outputScreen) {}

  void write(const std::string& value, const std::string& origin, DonationState state,
             const std::string& because) {
    if (any) out << "\n";
    any = true;
    out << screen.styled(printable(value), TextStyle::bold) << "\n";
    if (!origin.empty()) screen.writeParagraph(out, printable(origin), indentation);
    screen.writeParagraph(out, std::string(titleOf(state)) + ".", indentation);
    if (!because.empty()) screen.writeParagraph(out, printable(because) + ".", indentation);
    writeAdvice(out, screen, state);
  }

 private:
  std::ostream& out;
  const Screen& screen;
  bool any = false;
};

std::string originText(const DonationOrigin& origin) {
  std::string text = "from " + origin.bundleIdentifier + " as " + origin.donationIdentifier;
  if (origin.clusterIdentifier) text += " in the cluster " + *origin.clusterIdentifier;
  return text + ", donated " + dayOf(origin.donationDate) + ", until " +
         dayOf(origin.expirationDate);
}

std::string whyStillShown(const StatedDonation& stated, Date now) {
  if (stated.donation->expirationDate().timeIntervalSince(now) > 0) return {};
  return "It has expired, and goes when the agent next starts, unless its donor renews it";
}

}  // namespace

void ReasonPresenter::writeGrouped(std::ostream& out, const Screen& screen,
                                   const StatedDonations& donations,
                                   const std::vector<UnlistedValue>& unlisted) {
  std::map<DonationState, Group> groups;
  for (const StatedDonation& stated : donations) {
    if (stated.isShown()) continue;
    const DecodedDonation decoded = stated.donation->decoded();
    const Value value(decoded.content);
    groups[stated.state].add(stated.because, {std::to_string(stated.number), textOf(value),
                                              titleOfKind(value), decoded.origin.bundleIdentifier});
  }
  for (const UnlistedValue& value : unlisted) {
    groups[value.state].add(value.because,
                            {"", value.value ? shownText(*value.value) : "",
                             value.value ? titleOfKind(*value.value) : "", value.bundleIdentifier});
  }
  for (const auto& [state, group] : groups) {
    out << "\n" << screen.styled(titleOf(state), TextStyle::bold) << "\n";
    group.write(out, screen);
    writeAdvice(out, screen, state);
  }
}

void ReasonPresenter::writeEach(std::ostream& out, const Screen& screen, Date now,
                                const StatedDonations& donations,
                                const std::vector<UnlistedValue>& unlisted) {
  EachWriter each(out, screen);
  for (const StatedDonation& stated : donations) {
    const DecodedDonation decoded = stated.donation->decoded();
    const Value value(decoded.content);
    each.write(textOf(value),
               "Number " + std::to_string(stated.number) + ", " + titleOfKind(value) + ", " +
                   originText(decoded.origin),
               stated.state, stated.isShown() ? whyStillShown(stated, now) : stated.because);
  }
  for (const UnlistedValue& value : unlisted) {
    const std::string origin = value.donation ? originText(value.donation->decoded().origin)
                               : value.bundleIdentifier.empty() ? ""
                                                                : "from " + value.bundleIdentifier;
    each.write(value.value ? shownText(*value.value) : "an entry", origin, value.state,
               value.because);
  }
}

}  // namespace quenlet
