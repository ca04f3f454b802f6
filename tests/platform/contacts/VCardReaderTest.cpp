#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/contacts/ContactStore.h"
#include "platform/contacts/VCard.h"
#include "tests/platform/contacts/CardDescription.h"

namespace quenlet {
namespace {

std::string card(const std::string& lines, const std::string& version = "3.0") {
  return "BEGIN:VCARD\nVERSION:" + version + "\n" + lines + "\nEND:VCARD\n";
}

// Every card in its own line, or the error.
std::string read(const std::string& text) {
  const auto cards = parseVCards(text);
  if (!cards.isLeft()) return cards.right()->description();
  std::string all;
  for (const VCard& each : cards.left()) all += (all.empty() ? "" : "\n") + described(each);
  return all;
}

std::string withLineEnds(std::string text, const std::string& lineEnd) {
  for (std::size_t at = 0; (at = text.find('\n', at)) != text.npos; at += lineEnd.size()) {
    text.replace(at, 1, lineEnd);
  }
  return text;
}

TEST(VCardReaderTest, ReadsWhatProgramsExport) {
  const struct {
    const char* name;
    std::string lines;
    std::string expected;
  } cases[] = {
      {"full name", "N:Lee;Ann;Beth,Cho;Dr.;PhD,Jr.\nFN:X Y\nNICKNAME:Annie,An",
       "Dr.|Ann|Beth Cho|Lee|PhD Jr.|Annie"},
      {"short N, blanks", "N: Lee ;Ann", "|Ann||Lee||"},
      {"escapes in N", R"(N:Le\;e\, Inc\\;A\nn;\x)", "|A\nn|\\x|Le;e, Inc\\||"},
      {"first N with a name", "N:;;;;\nN:Lee;;;;\nN:Two;;;;", "|||Lee||"},
      {"FN alone", "FN:Dr. Ann \"Annie\" van der Lee", "Dr.|Ann||van der Lee||Annie"},
      {"FN beside an empty N", "N:;;;;\nFN:Ann Lee", "|Ann||Lee||"},
      {"FN that is the address", "FN:ann@EXAMPLE.com\nEMAIL:ann@example.com",
       " E(:ann@example.com)"},
      {"FN that is the firm", "FN:Lee\\, Ltd.\nORG:Lee\\, Ltd.;Sales", ""},
      {"FN that is the number", "FN:+1 202 555 0101", ""},
      {"group label", "item1.EMAIL;type=INTERNET:a@example.com\nITEM1.X-ABLabel:_$!<Work>!$_",
       " E(work:a@example.com)"},
      {"own label before its entry",
       "i.X-ABLabel:B\u00fcro\\, oben\ni.TEL;TYPE=HOME:+1 202 555 0101",
       " T(B\u00fcro, oben:+1 202 555 0101)"},
      {"label without a group labels nothing", "X-ABLabel:x\nTEL:2025550101", " T(:2025550101)"},
      {"TYPE list", "TEL;TYPE=VOICE,CELL,HOME:2025550101", " T(home:2025550101)"},
      {"repeated TYPE", "EMAIL;TYPE=INTERNET;TYPE=Work:a@example.com", " E(work:a@example.com)"},
      {"quoted TYPE list", "TEL;TYPE=\"voice,cell\":2025550101", " T(cell:2025550101)"},
      {"quoted delimiters", "EMAIL;X-A=\"a:b;c,d\",e;TYPE=home:a@example.com",
       " E(home:a@example.com)"},
      {"escaped quote in a type", "EMAIL;TYPE=a^'b^^n^n^x:a@example.com",
       " E(a\"b^n\n^x:a@example.com)"},
      {"preference",
       "EMAIL:c@x\nEMAIL;PREF=2:b@x\nEMAIL;TYPE=pref:a@x\nEMAIL;PREF=0:d@x\nEMAIL;PREF=2:e@x",
       " E(:a@x) E(:b@x) E(:e@x) E(:c@x) E(:d@x)"},
      {"mailto link", "EMAIL;VALUE=uri:MailTo:a%2Bb@example.com?subject=x", " E(:a+b@example.com)"},
      {"link that hides a line end", "EMAIL:mailto:a%0Ab@x", " E(:a%0Ab@x)"},
      {"tel link", "TEL;VALUE=uri;TYPE=\"work\":tel:+49-30-23125;ext=5",
       " T(work:+49-30-23125;ext=5)"},
      {"entries without a value are counted",
       "TEL:ask me\nEMAIL:mailto:\nTEL;VALUE=uri:sip:a@x\nTEL:112", " T(:112) skipped 3"},
      {"empty properties are not", "TEL:\nEMAIL;TYPE=HOME:  \nADR:;;;;;;\nPHOTO;ENCODING=b:", ""},
      {"address", "ADR;TYPE=HOME,POSTAL:PO Box 1;Flat 2;3 Main St,Rear;Springfield;IL;62701;USA",
       " A(home:PO Box 1\nFlat 2\n3 Main St\nRear||Springfield||IL|62701|USA|)"},
      {"address with extras", "ADR;CC=de:;;A;B;C;D;E;;;;;;;;Mitte;Kreis;;",
       " A(:A|Mitte|B|Kreis|C|D|E|de)"},
      {"country of a group", "i2.ADR:;;A\ni2.X-ABADR:at", " A(:A|||||||at)"},
      {"3.0 photo", "PHOTO;ENCODING=b;TYPE=JPEG:aGVs\n bG8=", " P(hello)"},
      {"old word for base64", "PHOTO;JPEG=1;ENCODING=BASE64:aGVsbG8=", " P(hello)"},
      {"data URI", "PHOTO:data:image/png;base64,aGVsbG8=", " P(hello)"},
      {"data URI, escaped comma", "PHOTO:data:image/png;base64\\,aGVsbG8=", " P(hello)"},
      {"data URI, percents", "PHOTO:data:,h%65llo%00%fF",
       " P(hello" + std::string("\0\xFF", 2) + ")"},
      {"photo elsewhere, then here",
       "PHOTO;VALUE=uri:http://example.com/a.png\nPHOTO:data:,x\nPHOTO:data:,y", " P(x)"},
      {"photo without padding", "PHOTO;ENCODING=b:aGVsbG8", " P(hello)"},
      {"photos that do not decode are counted",
       "PHOTO;ENCODING=b:aGVs*bG8=\nPHOTO;ENCODING=b:aGVsb\nPHOTO:data:image/png;base64\n"
       "PHOTO:data:,%4\nPHOTO:data:,x",
       " P(x) skipped 4"},
      {"fold within a character", "FN:Zo\xC3\n \xAB\n\t Lee", "|Zo\u00eb||Lee||"},
      {"unknown and blank lines", "X-FOO_BAR;A=b:\\\nNOTE:x;y\n\n   \nrev:1\nfn:Ann", "|Ann||||"},
  };
  for (const auto& [name, lines, expected] : cases) {
    for (const char* lineEnd : {"\n", "\r\n"}) {
      for (const char* version : {"3.0", "4.0"}) {
        EXPECT_EQ(read(withLineEnds(card(lines, version), lineEnd)), expected) << name;
      }
    }
  }
}

TEST(VCardReaderTest, ReadsSeveralCardsWithTheirIdentifiers) {
  const std::string text = "\xEF\xBB\xBF" + card("UID:urn:uuid:1\nFN:Ann Lee\nEMAIL:a@x\nTEL:?") +
                           "\n" + card("FN:Bo\nEMAIL:b@x", "4.0");
  const auto cards = parseVCards(text);
  ASSERT_TRUE(cards.isLeft());
  ASSERT_EQ(read(text), "|Ann||Lee|| E(:a@x) skipped 1\n|Bo|||| E(:b@x)");
  EXPECT_EQ(cards.left()[0].uid, "urn:uuid:1");
  EXPECT_EQ(cards.left()[0].formattedName, "Ann Lee");
  EXPECT_EQ(cards.left()[1].uid, "");
}

TEST(VCardReaderTest, RefusesWhatIsNoCardByLineAndOffence) {
  const std::string invalid = "ovaro.quenlet.contact-error 2: line ";
  const std::string unsupported = "ovaro.quenlet.contact-error 3: line ";
  const std::string old = "; only 3.0 and 4.0 are read";
  const struct {
    std::string text;
    std::string expected;
  } cases[] = {
      {"", invalid + "0: the last line, and no card"},
      {"\n\n", invalid + "2: the last line, and no card"},
      {"secret", invalid + "1: a property without a value"},
      {"FN:secret", invalid + "1: a property outside a card"},
      {"BEGIN:VCALENDAR\nEND:VCALENDAR",
       invalid + "1: the beginning of something else than a card"},
      {card("BEGIN:VCARD\nEND:VCARD"), invalid + "3: a card within a card"},
      {card("FN:secret\nEND:VEVENT"), invalid + "4: the end of something else than a card"},
      {card("") + "END:VCARD", invalid + "5: a property outside a card"},
      {"BEGIN:VCARD\nVERSION:3.0\nFN:sec\n ret",
       invalid + "3: the last line, in a card without END"},
      {"BEGIN:VCARD\nFN:secret\nEND:VCARD", invalid + "3: the end of a card without VERSION"},
      {card("", "2.1"), unsupported + "2: a card of vCard 2.1" + old},
      {card("", ""), unsupported + "2: an unknown vCard version" + old},
      {card("TEL;HOME;CELL:1"), unsupported + "3: a bare parameter, as vCard 2.1 has them" + old},
      {card("FN:a\n b\n\nN;ENCODING=QUOTED-PRINTABLE:=C3"),
       unsupported + "6: quoted-printable text, as vCard 2.1 has it" + old},
      {card("FN;=secret:x"), invalid + "3: a parameter without a name"},
      {card("FN;X=\"secret:x"), invalid + "3: a quoted parameter without its end"},
      {card("a.:x"), invalid + "3: no property"},
      {card("FN secret:x"), invalid + "3: a property without a value"},
      {card("FN:Ren\xE9"), invalid + "3: text that is not UTF-8"},
      {card("UID:1\nNOTE:a\x01"), invalid + "4: a control character"},
      {card("NOTE:a\xC2\x9B"), invalid + "3: a control character"},
      {card("NOTE:a\rb"), invalid + "3: a control character"},
      {card("NOTE:a" + std::string(1, '\0')), invalid + "3: a control character"},
      {std::string(maximumVCardSizeInBytes + 1, '\n'),
       "ovaro.quenlet.contact-error 2: the text is larger than 32 MiB"},
  };
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(read(text), expected) << text.substr(0, 80);
  }
}

// Each of these runs into the time limit when a step of it is not linear.
TEST(VCardReaderTest, ReadsVeryLargeLines) {
  const std::size_t size = std::size_t{1} << 20;
  const auto filled = [size](std::string start, const std::string& unit) {
    while (start.size() + unit.size() <= size) start += unit;
    return start;
  };
  EXPECT_EQ(read(card(filled("FN:Bo\nNOTE:", "x"))), "|Bo||||");
  EXPECT_EQ(read(card(filled("FN:Bo\nNOTE:x", "\n y"))), "|Bo||||");
  EXPECT_EQ(read(card(filled("FN:Bo\nADR:", ";"))), "|Bo||||");
  EXPECT_EQ(read(card(filled("N:Bo", ","))), "|||Bo||");
  EXPECT_EQ(read(card(filled("FN:Bo", ", Lee"))).size(), size - 3 + 5 - (size - 5) % 5);
  EXPECT_EQ(read(card(filled("TEL", ";TYPE=a,") + ":112")), " T(a:112)");
  EXPECT_EQ(read(card(filled("N:", "\\\\"))).size(), (size - 2) / 2 + 5);
  EXPECT_EQ(read(card(filled("PHOTO;ENCODING=b:", "AAAA\n "))).size(), 4 + (size - 17) / 6 * 3);
}

}  // namespace
}  // namespace quenlet
