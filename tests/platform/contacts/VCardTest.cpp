#include "platform/contacts/VCard.h"
#include "platform/contacts/VCardContactStore.h"
#include "tests/support/GoldenFile.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

// What a card tells, in one line that a table row can hold: "Dr.|Ann|B.|Lee|PhD|Annie" for the name
// (prefix, given, middle, family, suffix, nickname) when there is one, then "
// E(home:ann@example.com)", " T(...)", " A(...)" for each entry, " P(bytes)" and " skipped 1".
std::string described(const VCard& card) {
  const Contact& contact = card.contact;
  std::string text = contact.namePrefix() + "|" + contact.givenName() + "|" + contact.middleName() +
                     "|" + contact.familyName() + "|" + contact.nameSuffix() + "|" +
                     contact.nickname();
  if (text == "|||||") text.clear();

  for (const auto& e : contact.emailAddresses()) text += " E(" + e->label + ":" + e->value + ")";
  for (const auto& phone : contact.phoneNumbers()) {
    text += " T(" + phone->label + ":" + phone->value.stringValue() + ")";
  }
  for (const auto& entry : contact.postalAddresses()) {
    const PostalAddress& value = entry->value;
    text += " A(" + entry->label + ":" + value.street + "|" + value.subLocality + "|" + value.city +
            "|" + value.subAdministrativeArea + "|" + value.state + "|" + value.postalCode + "|" +
            value.country + "|" + value.isoCountryCode + ")";
  }
  if (contact.imageData()) text += " P(" + *contact.imageData() + ")";
  if (card.skippedEntries > 0) text += " skipped " + std::to_string(card.skippedEntries);
  return text;
}

std::string card(const std::string& lines, const std::string& version = "3.0") {
  return "BEGIN:VCARD\nVERSION:" + version + "\n" + lines + "\nEND:VCARD\n";
}

std::string read(const std::string& text) {
  const VCards cards = parseVCards(text);
  std::string all;
  for (const VCard& each : cards.cards) all += described(each) + "\n";
  for (const ErrorPtr& failure : cards.failures) {
    EXPECT_EQ(failure->domain(), ContactErrorDomain);
    all += std::to_string(failure->code()) + ": " + failure->debugDescription() + "\n";
  }
  return all.substr(0, all.size() - 1);
}

std::string withLineEnds(const std::string& text, const std::string& lineEnd) {
  std::string changed;
  for (const char c : text) changed += c == '\n' ? lineEnd : std::string(1, c);
  return changed;
}

void expectReadAs(const std::vector<std::pair<std::string, std::string>>& cases,
                  const std::string& version = "4.0") {
  for (const auto& [lines, expected] : cases) {
    const std::string text = card(lines, version);
    EXPECT_EQ(read(text), expected) << lines;
    EXPECT_EQ(read(withLineEnds(text, "\r\n")), expected) << lines;
    EXPECT_EQ(read(withLineEnds(text, "\r")), expected) << lines;
  }
}

// The lines of each card, what it is read as behind "=>"; "#" begins a remark.
TEST(VCardReaderTest, ReadsCardsAsFilesHoldThem) {
  for (const std::string version : {"2.1", "4.0"}) {
    std::vector<std::pair<std::string, std::string>> cards(1);
    std::istringstream lines(goldenFile("tests/platform/contacts/cards-" + version + ".txt"));
    for (std::string line; std::getline(lines, line);) {
      std::string& card = cards.back().first;
      if (line.starts_with("=> ")) {
        cards.back().second = line.substr(3);
        cards.emplace_back();
      } else if (!line.starts_with("# ")) {
        card += (card.empty() ? "" : "\n") + line;
      }
    }
    cards.pop_back();
    expectReadAs(cards, version);
  }
}

TEST(VCardReaderTest, ReadsNamesEntriesAndPhotosAndSkipsWhatItDoesNotKnow) {
  expectReadAs({
      {R"(N:Le\;e\, Inc\\;A\nn;\x)", "|A\nn|\\x|Le;e, Inc\\||"},
      {"FN:+1 202 555 0104", ""},
      {"FN;DERIVED=TRUE:Ann", ""},
      {"FN:Zo\xC3\n \xAB\n\t Lee", "|Zo\u00eb||Lee||"},
      {"X-FOO_BAR;A=b:\\\nNOTE:x;y\n\n   \nrev:1\nfn:Ann", "|Ann||||"},
      {"EMAIL;X-A=\"a:b;c,d\",e;TYPE=a^'b^^n^n^x:a@x", " E(a\"b^n\n^x:a@x)"},
      {"TEL:\nEMAIL;TYPE=HOME:  \nADR:;;;;;;\nPHOTO;ENCODING=b:", ""},
      {"ADR;TYPE=HOME,POSTAL:PO Box 1;Flat 2;3 Main St,Rear;Springfield;IL;62701;USA",
       " A(home:PO Box 1\nFlat 2\n3 Main St\nRear||Springfield||IL|62701|USA|)"},
      {"PHOTO:data:,h%65llo%00%fF", " P(hello" + std::string("\0\xFF", 2) + ")"},
      {"PHOTO;VALUE=uri:http://example.com/a.png\nPHOTO:data:,x\nPHOTO:data:,y", " P(x)"},
  });
}

// What a card has no use for may be anything; one bad line costs no other.
TEST(VCardReaderTest, SkipsAndCountsBadLinesWithoutLosingTheCard) {
  expectReadAs({
      {"NOTE;X=\"a:b\nNOTE:Ren\xE9\nNOTE:a\xC2\x9B\nFN:Ann", "|Ann||||"},
      {"TEL;X=\"a:112\nTEL 113\na.:114\nwords\nEND:VEVENT\nTEL:115", " T(:115) skipped 4"},
      {"FN:Ren\xE9\nFN:Ann\xC2\x9B\nTEL;TYPE=a\xFF:112\nTEL;TYPE=a\xC2\x85:113\nFN:Bo",
       "|Bo|||| skipped 4"},
      {"N;CHARSET=none:Lee;Ann", " skipped 1"},
      {"FN:" + std::string(65'537, 'x') + "\nFN:Bo", "|Bo|||| skipped 1"},
      {"ADR:;;;" + withLineEnds(std::string(25'000, '\n'), "x,"), " skipped 1"},
      {"TEL;TYPE=" + std::string(65'537, 'x') + ":112", " skipped 1"},
  });
  EXPECT_EQ(read("BEGIN:VCARD\nFN:Ann\nEND:VCARD"), "|Ann||||") << "VERSION is not missed";
  EXPECT_EQ(parseVCards(card("FN:" + std::string(65'536, 'x'))).cards[0].skippedEntries, 0U);
  const auto photoOf = [](std::size_t size) {
    return parseVCards(card("PHOTO:data:," + std::string(size, 'x'))).cards[0].skippedEntries;
  };
  EXPECT_EQ(photoOf(8 << 20), 0U);
  EXPECT_EQ(photoOf((8 << 20) + 1), 1U);
  const VCard many = parseVCards(card(withLineEnds(std::string(1'002, '\n'), "TEL:11\n"))).cards[0];
  EXPECT_EQ(many.contact.phoneNumbers().size(), 1'000U);
  EXPECT_EQ(many.skippedEntries, 2U);
  const VCard bad =
      parseVCards(card("words\nFN:Ann\ntel:no" + withLineEnds(std::string(200, '\n'), "\nTEL:?")))
          .cards[0];
  EXPECT_EQ(bad.skippedEntries, 202U);
  ASSERT_EQ(bad.skipped.size(), 100U);
  EXPECT_EQ(bad.skipped[0], (SkippedEntry{"", 3}));
  EXPECT_EQ(bad.skipped[1], (SkippedEntry{"TEL", 5}));
}

TEST(VCardReaderTest, ReadsTheOldVersionAsPhonesWriteIt) {
  expectReadAs(
      {
          {"FN;CHARSET=iso-8859-15:\xA4va Berg", "|\u20acva||Berg||"},
          {"FN;CHARSET=windows-1252:\x80va Berg", "|\u20acva||Berg||"},
          {"FN:Ren\xE9 Dupont", "|Ren\u00e9||Dupont||"},
          {"ADR;HOME;ENCODING=QUOTED-PRINTABLE:;;1 Main St=0D=0A=\nRear, left;Ulm;=3D;89=\n 073;",
           " A(home:1 Main St\nRear, left||Ulm||=|89 073||)"},
      },
      "2.1");
}

TEST(VCardReaderTest, ReadsUTF16WithAndWithoutAMark) {
  std::string little, big;
  for (const char c : card("FN:Ann\nTEL:112")) {
    little += {c, '\0'};
    big += {'\0', c};
  }
  for (const std::string& text : {little, "\xFF\xFE" + little, big, "\xFE\xFF" + big}) {
    EXPECT_EQ(read(text), "|Ann|||| T(:112)");
  }
}

TEST(VCardReaderTest, ReadsEveryCardThatHasAnEndAndNamesTheOthersByTheirLine) {
  const std::string text = "\xEF\xBB\xBF" + goldenFile("tests/platform/contacts/many-cards.vcf");
  EXPECT_EQ(read(text) + "\n", goldenFile("tests/platform/contacts/many-cards.txt"));
  const std::vector<VCard> cards = parseVCards(text).cards;
  EXPECT_EQ(cards[0].uid, "urn:uuid:1");
  EXPECT_EQ(cards[0].formattedName, "Ann Lee");
  EXPECT_EQ(cards[1].place, 4U);
  EXPECT_EQ(cards[3].place, 8U);
  EXPECT_EQ(read(""), "2: line 0: the last line, and no card");
  EXPECT_EQ(read("FN:secret\n\nBEGIN:VCALENDAR"), "2: line 3: the last line, and no card");
  EXPECT_EQ(read(std::string(maximumVCardSizeInBytes + 1, '\n')),
            "2: the text is larger than 32 MiB");
}

// Each of these runs into the time limit when a step of it is not linear.
TEST(VCardReaderTest, ReadsVeryLargeLines) {
  constexpr std::size_t size = 1 << 20;
  const auto filled = [](std::string start, const std::string& unit) {
    while (start.size() + unit.size() <= size) start += unit;
    return start;
  };
  EXPECT_EQ(read(card(filled("FN:Bo\nNOTE:x", "\n y"))), "|Bo||||");
  EXPECT_EQ(read(card(filled("FN:Bo", ", Lee"))), " skipped 1");
  EXPECT_EQ(read(card(filled("TEL", ";TYPE=a,") + ":112")), " T(a:112)");
  EXPECT_EQ(read(card(filled("N;ENCODING=quoted-printable:", "=\n"), "2.1")), "");
  EXPECT_EQ(read(card(filled("X", ";base64\n "))), " skipped 1");
  EXPECT_EQ(read(card(filled("PHOTO;ENCODING=b:", "AAAA\n "))).size(), 4 + (size - 17) / 6 * 3);
}

template <typename T>
void add(LabeledValues<T>& entries, std::string label, T value) {
  entries.append(std::make_shared<const LabeledValue<T>>(
      LabeledValue<T>{std::move(label), std::move(value), {}}));
}

ContactFields everything() {
  ContactFields fields;
  fields.namePrefix = "Prof. Dr.";
  fields.givenName = "Zo\u00eb";
  fields.middleName = "a;b,c\\n\\d";
  for (int i = 0; i < 100; ++i) fields.familyName += "a\u00fc\u20ac\U0001F600\\;";
  fields.nameSuffix = "Jr.";
  fields.nickname = "Z, \"the\" one";
  for (const char* label : {"home", "", "pref", "internet", "School", "a,b", "B\u00fcro", "_$!<x>",
                            "two\nlines", "^n", "a:\"b\"", "x-y2"}) {
    add(fields.emailAddresses, label, std::string("zoe@example.com"));
  }
  add(fields.phoneNumbers, "cell", *PhoneNumber::withStringValue("+1 (202) 555-0101, 12"));
  add(fields.postalAddresses, "home",
      PostalAddress{"1 Main St\nRear, left", "Mitte", "Berlin", "K; W", "BE", "10115", "Germany",
                    "de"});
  add(fields.postalAddresses, "", PostalAddress{.street = "", .city = "Ulm"});
  std::string image = "\x89PNG\r\n\x1A\n";
  for (int i = 0; i < 1000; ++i) image += static_cast<char>(i);
  fields.imageData = std::make_shared<const std::string>(std::move(image));
  return fields;
}

TEST(VCardWriterTest, IsReadBackEqual) {
  ContactFields nickname, address;
  nickname.nickname = "Bo Lee";
  add(address.emailAddresses, "", std::string("bo@example.com"));
  for (const auto& fields : {everything(), ContactFields(), nickname, address}) {
    const std::string text = writeVCard(Contact(fields));
    const VCards read = parseVCards(text);
    ASSERT_EQ(read.cards.size(), 1U) << text;
    EXPECT_EQ(read.cards[0].contact, Contact(fields)) << text;
    EXPECT_EQ(read.cards[0].skippedEntries, 0U) << text;
  }
}

TEST(VCardWriterTest, FoldsBetweenCharactersAt75Bytes) {
  for (std::size_t offset = 0; offset < 4; ++offset) {
    ContactFields fields;
    fields.familyName.assign(offset, 'x');
    for (int i = 0; i < 200; ++i) fields.familyName += "\U0001F600";
    std::istringstream lines(writeVCard(Contact(std::move(fields))));
    for (std::string line; std::getline(lines, line);) {
      ASSERT_TRUE(line.size() <= 76 && line.ends_with('\r')) << line;
      ASSERT_TRUE(isValidUTF8(line)) << "a character is split";
    }
  }
}

TEST(VCardWriterTest, WritesPlainCardsPlainlyAndLeavesOutWhatNoCardHolds) {
  ContactFields fields;
  fields.givenName = "An\x01n\xC2\x9B\r\nB";
  fields.familyName = "Lee\xFF";
  add(fields.emailAddresses, "home", std::string("a@example.com"));
  add(fields.emailAddresses, "My own", std::string("b@example.com"));
  fields.imageData = std::make_shared<const std::string>("\xFF\xD8\xFF");
  EXPECT_EQ(writeVCard(Contact(std::move(fields))),
            "BEGIN:VCARD\r\nVERSION:4.0\r\nFN:\r\nN:;Ann\\nB;;;\r\n"
            "EMAIL;TYPE=home:a@example.com\r\n"
            "item1.EMAIL:b@example.com\r\nitem1.X-ABLabel:My own\r\n"
            "PHOTO:data:image/jpeg;base64,/9j/\r\nEND:VCARD\r\n");
}

TEST(VCardContactStoreTest, FillsOnlyTheFieldsAskedForAndRefusesOtherFilesWithoutWaiting) {
  using Key = KeyDescriptor;
  const TemporaryDirectory directory;
  const std::filesystem::path path = directory / "me.vcf";
  VCardContactStore store{path};
  const auto fetched = [&](const std::vector<Key>& keys) {
    const auto contact = store._crossPlatformUnifiedMeContactWithKeysToFetch(keys);
    return contact.ok() ? described({.contact = *contact.value()})
                        : contact.error()->description().substr(0, 29);
  };
  // What follows the first card does not matter.
  writeFile(path, card("N:F;G;M;P;S\nEMAIL:a@example.com\nTEL:112\nADR;CC=de:;\nPHOTO:data:,x") +
                      card("FN:Other", "5.0") + "BEGIN:VCARD");
  EXPECT_EQ(fetched({Key::givenName, Key::emailAddresses}), "|G|||| E(:a@example.com)");
  EXPECT_EQ(fetched({Key::namePrefix, Key::middleName, Key::imageData}), "P||M||| P(x)");
  EXPECT_EQ(fetched({Key::postalAddresses, Key::phoneNumbers, Key::nameSuffix}),
            "||||S| T(:112) A(:|||||||de)");
  writeFile(path, card("FN:Other", "5.0") + card("FN:Next"));
  EXPECT_EQ(fetched({Key::givenName}), "ovaro.quenlet.contact-error 3") << "the next is not theirs";
  EXPECT_EQ(parseFirstVCard(card("TEL:?\nPHOTO;b:?"), {Key::givenName}).value().skippedEntries, 0U)
      << "a photo is not decoded to learn a name";
  std::filesystem::resize_file(path, std::uintmax_t{1} << 40);
  EXPECT_EQ(fetched({}), "ovaro.quenlet.contact-error 2") << "a file of a tebibyte";
  std::filesystem::remove(path);
  EXPECT_EQ(fetched({}), "ovaro.quenlet.contact-error 1") << "no file";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(fetched({}), "ovaro.quenlet.contact-error 2") << "FIFO";
}

}  // namespace
}  // namespace quenlet
