#include <sys/stat.h>

#include "platform/contacts/VCard.h"
#include "platform/contacts/VCardContactStore.h"
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
  const auto cards = parseVCards(text);
  if (!cards.isLeft()) return cards.right()->description();

  std::string all;
  for (const VCard& each : cards.left()) all += described(each) + "\n";
  return all.substr(0, all.size() - 1);
}

void expectReadAs(const std::vector<std::pair<std::string, std::string>>& cases) {
  for (const auto& [lines, expected] : cases) {
    const std::string text = card(lines, "4.0");
    EXPECT_EQ(read(text), expected) << lines;
    std::string otherLineEnds;
    for (const char c : text) otherLineEnds += c == '\n' ? "\r\n" : std::string(1, c);
    EXPECT_EQ(read(otherLineEnds), expected) << lines;
  }
}

TEST(VCardReaderTest, ReadsNamesAndSkipsWhatItDoesNotKnow) {
  expectReadAs({
      {"N:Lee;Ann;Beth,Cho;Dr.;PhD,Jr.\nFN:X Y\nNICKNAME:Annie,An",
       "Dr.|Ann|Beth Cho|Lee|PhD Jr.|Annie"},
      {R"(N:Le\;e\, Inc\\;A\nn;\x)", "|A\nn|\\x|Le;e, Inc\\||"},
      {"N:;;;;\nN:Lee;;;;\nN:Two;;;;", "|||Lee||"},
      {"N:;;;;\nFN:Dr. Ann \"Annie\" van der Lee", "Dr.|Ann||van der Lee||Annie"},
      {"FN:ann@EXAMPLE.com\nEMAIL:ann@example.com", " E(:ann@example.com)"},
      {"FN:Zo\xC3\n \xAB\n\t Lee", "|Zo\u00eb||Lee||"},
      {"X-FOO_BAR;A=b:\\\nNOTE:x;y\n\n   \nrev:1\nfn:Ann", "|Ann||||"},
  });
}

TEST(VCardReaderTest, ReadsEntriesWithTheirLabels) {
  expectReadAs({
      {"item1.EMAIL;type=INTERNET:a@x\nITEM1.X-ABLabel:_$!<Work>!$_", " E(work:a@x)"},
      {"i.X-ABLabel:B\u00fcro\\, oben\ni.TEL;TYPE=HOME:+1 202 555 0101",
       " T(B\u00fcro, oben:+1 202 555 0101)"},
      {"TEL;TYPE=VOICE,CELL,HOME:2025550101", " T(home:2025550101)"},
      {"EMAIL;X-A=\"a:b;c,d\",e;TYPE=a^'b^^n^n^x:a@x", " E(a\"b^n\n^x:a@x)"},
      {"EMAIL:c@x\nEMAIL;PREF=2:b@x\nEMAIL;TYPE=pref:a@x\nEMAIL;PREF=0:d@x\nEMAIL;PREF=2:e@x",
       " E(:a@x) E(:b@x) E(:e@x) E(:c@x) E(:d@x)"},
      {"EMAIL;VALUE=uri:MailTo:a%2Bb@example.com?subject=x", " E(:a+b@example.com)"},
      {"EMAIL:mailto:a%0Ab@x", " E(:a%0Ab@x)"},  // must not bring in a line end
      {"TEL;VALUE=uri;TYPE=\"work\":tel:+49-30-23125;ext=5", " T(work:+49-30-23125;ext=5)"},
      {"TEL:ask me\nEMAIL:mailto:\nTEL;VALUE=uri:sip:a@x\nTEL:112", " T(:112) skipped 3"},
      {"TEL:\nEMAIL;TYPE=HOME:  \nADR:;;;;;;\nPHOTO;ENCODING=b:", ""},
      {"ADR;TYPE=HOME,POSTAL:PO Box 1;Flat 2;3 Main St,Rear;Springfield;IL;62701;USA",
       " A(home:PO Box 1\nFlat 2\n3 Main St\nRear||Springfield||IL|62701|USA|)"},
      {"i2.ADR:;;A\ni2.X-ABADR:at", " A(:A|||||||at)"},
      {"ADR;CC=de:;;A;B;C;D;E;;;;;;;;Mitte;Kreis;;", " A(:A|Mitte|B|Kreis|C|D|E|de)"},
  });
}

TEST(VCardReaderTest, ReadsTheFirstPhotoThatDecodesAndCountsTheOthers) {
  expectReadAs({
      {"PHOTO;ENCODING=b;TYPE=JPEG:aGVs\n bG8=", " P(hello)"},
      {"PHOTO;JPEG=1;ENCODING=BASE64:aGVsbG8", " P(hello)"},  // the old word, without padding
      {"PHOTO:data:image/png;base64\\,aGVsbG8=", " P(hello)"},
      {"PHOTO:data:,h%65llo%00%fF", " P(hello" + std::string("\0\xFF", 2) + ")"},
      {"PHOTO;VALUE=uri:http://example.com/a.png\nPHOTO:data:,x\nPHOTO:data:,y", " P(x)"},
      {"PHOTO;ENCODING=b:aGVs*bG8=\nPHOTO;ENCODING=b:aGVsb\nPHOTO:data:image/png;base64\n"
       "PHOTO:data:,%4\nPHOTO:data:,x",
       " P(x) skipped 4"},
  });
}

TEST(VCardReaderTest, ReadsSeveralCardsWithTheirIdentifiers) {
  const std::string text = "\xEF\xBB\xBF" + card("UID:urn:uuid:1\nFN:Ann Lee\nTEL:?") + "\n" +
                           card("FN:Bo\nEMAIL:b@x", "4.0");
  ASSERT_EQ(read(text), "|Ann||Lee|| skipped 1\n|Bo|||| E(:b@x)");
  EXPECT_EQ(parseVCards(text).left()[0].uid, "urn:uuid:1");
  EXPECT_EQ(parseVCards(text).left()[0].formattedName, "Ann Lee");
}

TEST(VCardReaderTest, RefusesWhatIsNoCardByLineAndOffence) {
  const std::string old = "; only 3.0 and 4.0 are read";
  const std::tuple<int, std::string, std::string> cases[] = {
      {2, "", "0: the last line, and no card"},
      {2, "FN:secret", "1: a property outside a card"},
      {2, "BEGIN:VCALENDAR", "1: the beginning of something else than a card"},
      {2, card("BEGIN:VCARD\nEND:VCARD"), "3: a card within a card"},
      {2, card("FN:secret\nEND:VEVENT"), "4: the end of something else than a card"},
      {2, card("") + "END:VCARD", "5: a property outside a card"},
      {2, "BEGIN:VCARD\nVERSION:3.0\nFN:sec\n ret", "3: the last line, in a card without END"},
      {2, "BEGIN:VCARD\nFN:secret\nEND:VCARD", "3: the end of a card without VERSION"},
      {2, card("FN;=secret:x"), "3: a parameter without a name"},
      {2, card("FN;X=\"secret:x"), "3: a quoted parameter without its end"},
      {2, card("a.:x"), "3: no property"},
      {2, card("FN secret:x"), "3: a property without a value"},
      {2, card("FN:Ren\xE9"), "3: text that is not UTF-8"},
      {2, card("NOTE:a\xC2\x9B"), "3: a control character"},
      {2, card("NOTE:a\rb"), "3: a control character"},
      {2, card("NOTE:a" + std::string(1, '\0')), "3: a control character"},
      {3, card("", "2.1"), "2: a card of vCard 2.1" + old},
      {3, card("", ""), "2: an unknown vCard version" + old},
      {3, card("TEL;HOME;CELL:1"), "3: a bare parameter, as vCard 2.1 has them" + old},
      {3, card("FN:a\n b\n\nN;ENCODING=QUOTED-PRINTABLE:=C3"),
       "6: quoted-printable text, as vCard 2.1 has it" + old},
  };
  for (const auto& [code, text, expected] : cases) {
    const std::string domain = "ovaro.quenlet.contact-error ";
    EXPECT_EQ(read(text), domain + std::to_string(code) + ": line " + expected);
  }
  EXPECT_EQ(read(std::string(maximumVCardSizeInBytes + 1, '\n')),
            "ovaro.quenlet.contact-error 2: the text is larger than 32 MiB");
}

// Each of these runs into the time limit when a step of it is not linear.
TEST(VCardReaderTest, ReadsVeryLargeLines) {
  const std::size_t size = std::size_t{1} << 20;
  const auto filled = [size](std::string start, const std::string& unit) {
    while (start.size() + unit.size() <= size) start += unit;
    return start;
  };
  EXPECT_EQ(read(card(filled("FN:Bo\nNOTE:x", "\n y"))), "|Bo||||");
  EXPECT_EQ(read(card(filled("FN:Bo", ", Lee"))).size(), size - 3 + 5 - (size - 5) % 5);
  EXPECT_EQ(read(card(filled("TEL", ";TYPE=a,") + ":112")), " T(a:112)");
  EXPECT_EQ(read(card(filled("N:", "\\\\"))).size(), (size - 2) / 2 + 5);
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
      PostalAddress{"1 Main St\nRear, left", "Mitte", "Berlin", "Kreis; West", "BE", "10115",
                    "Germany", "de"});
  add(fields.postalAddresses, "", PostalAddress{.street = "", .city = "Ulm"});
  std::string image = "\x89PNG\r\n\x1A\n";
  for (int i = 0; i < 1000; ++i) image += static_cast<char>(i);
  fields.imageData = std::make_shared<const std::string>(std::move(image));
  return fields;
}

TEST(VCardWriterTest, IsReadBackEqual) {
  ContactFields nickname, address;
  nickname.nickname = "Bo Lee";
  add(address.emailAddresses, "", std::string("Bo Lee"));
  for (const auto& fields : {everything(), ContactFields(), nickname, address}) {
    const std::string text = writeVCard(Contact(fields));
    const auto cards = parseVCards(text);
    ASSERT_TRUE(cards.isLeft()) << cards.right()->description() << text;
    ASSERT_EQ(cards.left().size(), 1u) << text;
    EXPECT_EQ(cards.left()[0].contact, Contact(fields)) << text;
    EXPECT_EQ(cards.left()[0].skippedEntries, 0u) << text;
  }
}

TEST(VCardWriterTest, FoldsBetweenCharactersAt75Bytes) {
  for (std::size_t offset = 0; offset < 4; ++offset) {
    ContactFields fields;
    fields.familyName.assign(offset, 'x');
    for (int i = 0; i < 200; ++i) fields.familyName += "\U0001F600";
    const std::string text = writeVCard(Contact(std::move(fields)));
    std::string_view rest = text;
    while (!rest.empty()) {
      const std::size_t end = rest.find("\r\n");
      ASSERT_LE(end, 75u);
      ASSERT_EQ(rest.substr(0, end).find('\n'), std::string_view::npos);
      rest.remove_prefix(end + 2);
      ASSERT_FALSE(rest.starts_with(' ') && (rest[1] & 0xC0) == 0x80) << "a character is split";
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
    return contact.isLeft() ? described({.contact = *contact.left()})
                            : contact.right()->description().substr(0, 29);
  };
  writeFile(path, card("N:F;G;M;P;S\nEMAIL:a@example.com\nTEL:112\nADR;CC=de:;\nPHOTO:data:,x") +
                      card("FN:Other"));
  EXPECT_EQ(fetched({Key::givenName, Key::emailAddresses}), "|G|||| E(:a@example.com)");
  EXPECT_EQ(fetched({Key::namePrefix, Key::middleName, Key::imageData}), "P||M||| P(x)");
  EXPECT_EQ(fetched({Key::postalAddresses, Key::phoneNumbers, Key::nameSuffix}),
            "||||S| T(:112) A(:|||||||de)");
  std::filesystem::resize_file(path, std::uintmax_t{1} << 40);
  EXPECT_EQ(fetched({}), "ovaro.quenlet.contact-error 2") << "a file of a tebibyte";
  std::filesystem::remove(path);
  EXPECT_EQ(fetched({}), "ovaro.quenlet.contact-error 1") << "no file";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(fetched({}), "ovaro.quenlet.contact-error 2") << "FIFO";
}

}  // namespace
}  // namespace quenlet
