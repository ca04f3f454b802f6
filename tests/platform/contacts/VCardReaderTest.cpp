#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/contacts/VCard.h"
#include "tests/platform/contacts/CardDescription.h"

namespace quenlet {
namespace {

std::string withCRLF(const std::string& text) {
  std::string converted;
  for (const char c : text) converted += c == '\n' ? std::string("\r\n") : std::string(1, c);
  return converted;
}

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

void expectReadAs(const std::vector<std::pair<std::string, std::string>>& cases) {
  for (const auto& [lines, expected] : cases) {
    const std::string text = card(lines, "4.0");
    EXPECT_EQ(read(text), expected) << lines;
    EXPECT_EQ(read(withCRLF(text)), expected) << lines;
  }
}

TEST(VCardReaderTest, ReadsNamesAndSkipsWhatItDoesNotKnow) {
  expectReadAs({
      {"N:Lee;Ann;Beth,Cho;Dr.;PhD,Jr.\nFN:X Y\nNICKNAME:Annie,An",
       "Dr.|Ann|Beth Cho|Lee|PhD Jr.|Annie"},
      {"N: Lee ;Ann", "|Ann||Lee||"},
      {R"(N:Le\;e\, Inc\\;A\nn;\x)", "|A\nn|\\x|Le;e, Inc\\||"},
      {"N:;;;;\nN:Lee;;;;\nN:Two;;;;", "|||Lee||"},
      {"N:;;;;\nFN:Dr. Ann \"Annie\" van der Lee", "Dr.|Ann||van der Lee||Annie"},
      {"FN:ann@EXAMPLE.com\nEMAIL:ann@example.com", " E(:ann@example.com)"},
      {"FN:Lee\\, Ltd.\nORG:Lee\\, Ltd.;Sales", ""},
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
      {"EMAIL;TYPE=INTERNET;TYPE=Work:a@x", " E(work:a@x)"},
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
      {"ADR;CC=de:;;A;B;C;D;E;;;;;;;;Mitte;Kreis;;", " A(:A|Mitte|B|Kreis|C|D|E|de)"},
      {"i2.ADR:;;A\ni2.X-ABADR:at", " A(:A|||||||at)"},
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
      {2, card("UID:1\nNOTE:a\x01"), "4: a control character"},
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

}  // namespace
}  // namespace quenlet
