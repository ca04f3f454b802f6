#include <algorithm>
#include <optional>
#include <set>
#include <span>

#include "tools/page/CardValues.h"
#include "tools/page/PageSections.h"
#include "tools/page/PageText.h"
#include "tools/presentation/ValueText.h"

namespace quenlet {
namespace {

constexpr std::size_t mostBytesInPicture = std::size_t{4} << 20;
// More values of a kind than these are shown on demand only.
constexpr std::size_t mostOpenValues = 8;
// The most donors that are named for one value.
constexpr std::size_t mostDonorsNamed = 3;

// The name on the card, and whether it is the owner's own.
struct NameOnCard final {
  PersonNameComponents components;
  bool isOwn;
};

NameOnCard nameOnCard(const PageContent& content) {
  if (content.own.contact) {
    auto own = PersonNameComponents::componentsForContact(*content.own.contact);
    if (!textOf(own).empty()) return {std::move(own), true};
  }
  return {PersonNameComponents::componentsForContact(content.donated), false};
}

struct Picture final {
  std::shared_ptr<const std::string> bytes;  // null without a picture
  bool isOwn = false;

  [[nodiscard]] std::optional<ImageType> type() const {
    return bytes && bytes->size() <= mostBytesInPicture ? ImageType::of(*bytes) : std::nullopt;
  }
};

Picture pictureOnCard(const PageContent& content) {
  if (content.own.contact && content.own.contact->imageData()) {
    return {content.own.contact->imageData(), true};
  }
  return {content.donated.imageData(), false};
}

SomeDonations shownOf(DonationKind kind, const PageContent& content) {
  SomeDonations shown;
  for (const PageDonation& donation : content.donations) {
    if (donation.stated.isShown() && donation.stated.donation->kind() == kind) {
      shown.push_back(&donation);
    }
  }
  return shown;
}

// "from A until …, also from B, C and 2 others".
void writeSources(HTMLWriter& html, bool isOwn, const SomeDonations& sources) {
  std::set<std::string> named;
  const auto isNew = [&](const PageDonation* source) {
    return named.insert(source->origin.bundleIdentifier).second;
  };
  std::size_t others = 0;
  if (isOwn) html.text("your own card");
  for (const PageDonation* source : sources) {
    if (!isNew(source)) continue;
    if (named.size() > mostDonorsNamed) {
      ++others;
      continue;
    }
    const bool isFirst = named.size() == 1;
    html.text(!isFirst ? ", " : isOwn ? ", also from " : "from ");
    if (named.size() == 2 && !isOwn) html.text("also from ");
    writeForeign(html, source->origin.bundleIdentifier);
    if (isFirst && !isOwn) writeUntil(html, source->origin.expirationDate);
  }
  if (others > 0) html.text(" and " + counted(others, "other"));
}

std::string initialsOf(const PersonNameComponents& name) {
  std::string initials;
  for (const std::optional<std::string>* part : {&name.givenName, &name.familyName}) {
    if (!*part) continue;
    std::string_view rest = trimmed(**part);
    if (rest.empty()) continue;
    if (const auto character = takeCharacter(rest)) appendCharacter(initials, *character);
  }
  return initials;
}

void writePicture(HTMLWriter& html, const Picture& picture, const PersonNameComponents& name) {
  if (const auto type = picture.type()) {
    const auto frame = html.open("div", {{"class", "portrait"}});
    html.image(*type, *picture.bytes, "Picture on the card");
  } else {
    html.element("div", {{"class", "portrait"}, {"aria-hidden", "true"}}, initialsOf(name));
  }
}

void writeNameSource(HTMLWriter& html, const NameOnCard& name, const PageContent& content) {
  const SomeDonations donated = shownOf(DonationKind::name, content);
  if (!name.isOwn && donated.empty()) return;
  const auto line = html.open("p", {{"class", "from"}});
  html.text("Name: ");
  writeSources(html, name.isOwn, name.isOwn ? SomeDonations{} : donated);
}

void writePictureSource(HTMLWriter& html, const Picture& picture, const PageContent& content) {
  if (!picture.bytes) return;
  const auto line = html.open("p", {{"class", "from"}});
  html.text("Picture: ");
  writeSources(html, picture.isOwn,
               picture.isOwn ? SomeDonations{} : shownOf(DonationKind::imageData, content));
  if (picture.type()) return;
  html.text(picture.bytes->size() > mostBytesInPicture
                ? ". It is too large for this page."
                : ". It is not of a type that this page can show.");
}

void writeHead(HTMLWriter& html, const PageContent& content) {
  const NameOnCard name = nameOnCard(content);
  const Picture picture = pictureOnCard(content);
  const auto head = html.open("div", {{"class", "head"}});
  writePicture(html, picture, name.components);
  const auto who = html.open("div");
  PersonNameComponents spoken = name.components;
  spoken.nickname.reset();
  {
    const auto heading = html.open("h2", {{"id", "card-name"}});
    const std::string text = textOf(spoken);
    text.empty() ? html.text("No name") : writeForeign(html, text);
  }
  if (name.components.nickname && !name.components.nickname->empty()) {
    const auto nickname = html.open("p", {{"class", "nickname"}});
    writeForeign(html, "“" + *name.components.nickname + "”");
  }
  writeNameSource(html, name, content);
  writePictureSource(html, picture, content);
}

void writeValue(HTMLWriter& html, const CardValue& value) {
  const auto item = html.open("li", {{"class", value.isOwn ? "own" : "donated"}});
  {
    const auto lines = html.open("div", {{"class", "value"}});
    for (const std::string& line : value.lines) {
      const auto block = html.open("div");
      writeForeign(html, line);
    }
  }
  const auto from = html.open("div", {{"class", "from"}});
  if (!value.label.empty()) {
    const auto label = html.open("span", {{"class", "label"}});
    writeForeign(html, value.label);
  }
  html.text(" ");
  writeSources(html, value.isOwn, value.sources);
}

void writeValueList(HTMLWriter& html, std::span<const CardValue> values) {
  const auto list = html.open("ul", {{"class", "values"}});
  for (const CardValue& value : values) writeValue(html, value);
}

void writeValues(HTMLWriter& html, std::string_view title, const std::vector<CardValue>& values) {
  if (values.empty()) return;
  const auto group = html.open("section", {{"class", "kind"}});
  html.element("h3", title);
  const auto lists = html.open("div");
  const std::size_t open = std::min(values.size(), mostOpenValues);
  const std::size_t listed = std::min(values.size(), mostRows);
  writeValueList(html, std::span(values).first(open));
  if (open == values.size()) return;
  const auto rest = html.open("details");
  html.element("summary", numberText(values.size() - open) + " more");
  writeValueList(html, std::span(values).subspan(open, listed - open));
  writeOmission(html, values.size(), "quenlet card");
}

const char* whyEmpty(const PageContent& content) {
  if (!content.donations.empty() || !content.missing.empty()) {
    return "No donation can be shown. The reasons are below.";
  }
  return content.donationsEnabled
             ? "Nothing has been donated yet, and you keep no card of your own."
             : "You keep no card of your own.";
}

bool isEmpty(const PageContent& content) {
  return std::none_of(content.donations.begin(), content.donations.end(),
                      [](const PageDonation& donation) { return donation.stated.isShown(); }) &&
         !content.own.contact;
}

}  // namespace

void writeCard(HTMLWriter& html, const PageContent& content) {
  if (isEmpty(content)) {
    const auto card =
        html.open("section", {{"id", "card"}, {"class", "card"}, {"aria-labelledby", "card-name"}});
    html.element("h2", {{"id", "card-name"}}, "Your card is empty");
    html.element("p", whyEmpty(content));
    return;
  }
  const auto card =
      html.open("article", {{"id", "card"}, {"class", "card"}, {"aria-labelledby", "card-name"}});
  writeHead(html, content);
  writeValues(html, "E-mail", cardValuesOf(DonationKind::emailAddress, content));
  writeValues(html, "Phone", cardValuesOf(DonationKind::phoneNumber, content));
  writeValues(html, "Address", cardValuesOf(DonationKind::postalAddress, content));
}

}  // namespace quenlet
