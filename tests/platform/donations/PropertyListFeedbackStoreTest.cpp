#include "platform/donations/PropertyListFeedbackStore.h"

#include <optional>
#include <vector>

#include "tests/platform/donations/FileFixture.h"

namespace quenlet {
namespace {

constexpr char me[] = "me";
const DonationOrigin origin{"donor", "first", std::nullopt, Date(1), Date(2)};
const DonationOrigin otherOrigin{"other donor", "second", "cluster", Date(3), Date(4)};

DonationValuePtr name(PersonNameComponents components, const DonationOrigin& from = origin) {
  return DonationValue::donationValueWithNameComponents(std::move(components), from);
}
DonationValuePtr email(const std::string& address, const std::string& label = "home") {
  return DonationValue::donationValueWithEmailAddress(address, label, origin);
}
DonationValuePtr phone(const std::string& number, const std::string& label = "home") {
  return DonationValue::donationValueWithPhoneNumber(*PhoneNumber::withStringValue(number), label,
                                                     otherOrigin);
}
DonationValuePtr postal(PostalAddress address,
                        PostalAddressStyle style = PostalAddressStyle::mailingAddress) {
  return DonationValue::donationValueWithPostalAddress(std::move(address), style, "work", origin);
}
DonationValuePtr image(const std::string& bytes, const DonationOrigin& from = origin) {
  return DonationValue::donationValueWithImageData(bytes, from);
}
PersonNameComponents person(const std::string& given, const std::string& family) {
  PersonNameComponents components;
  components.givenName = given;
  components.familyName = family;
  return components;
}
PostalAddress address(const std::string& street, const std::string& city) {
  PostalAddress result;
  result.street = street;
  result.city = city;
  return result;
}

struct Outcome final {
  int calls = 0;
  ErrorPtr error;
};

class PropertyListFeedbackStoreTest : public FileFixture {
 protected:
  using StorePtr = std::unique_ptr<PropertyListFeedbackStore>;
  StorePtr store = newStore();

  StorePtr newStore() { return std::make_unique<PropertyListFeedbackStore>(file, dataProxy, loop); }
  std::shared_ptr<Outcome> reject(const DonationValues& values, const std::string& contact = me) {
    const auto outcome = std::make_shared<Outcome>();
    store->rejectDonatedValues(values, contact, [outcome](ErrorPtr error) {
      ++outcome->calls;
      outcome->error = std::move(error);
    });
    return outcome;
  }
  bool knows(const DonationValuePtr& value, const std::string& contact = me) {
    return store->donatedValueHasBeenConfirmedOrRejected(*value, contact);
  }
};

TEST_F(PropertyListFeedbackStoreTest, ComparesContentWhateverItsIdentifierAndLabel) {
  const struct {
    const char* what;
    DonationValuePtr rejected;
    DonationValuePtr asked;
    bool isSame;
  } rows[] = {
      {"another donation", image("bytes"), image("bytes", otherOrigin), true},
      {"e-mail normal form", email("mailto:Ann@Example.org"), email(" ann@example.ORG", "x"), true},
      {"phone digits", phone("+49 (30) 1234-56"), phone("+4930123456", "work"), true},
      {"composition of a name", name(person("Ren\u00e9", "")), name(person("Rene\u0301", "")),
       true},
      {"address style", postal(address("Main St", "Ulm")),
       postal(address("Main St", "Ulm"), PostalAddressStyle::abbreviated), true},
      {"address without fields", postal({}), postal({}), true},
      {"e-mail alias", email("ann@gmail.com"), email("ann@googlemail.com"), false},
      {"no country code", phone("+4930123456"), phone("4930123456"), false},
      {"letter case of a name", name(person("Ann", "Lee")), name(person("ann", "lee")), false},
      {"absent and empty", name(person("Ann", "")), name({{}, "Ann", {}, {}, {}, {}}), false},
      {"text moved between fields", postal(address("ab", "c")), postal(address("a", "bc")), false},
      {"kind", email("+4930123456"), phone("+4930123456"), false},
      {"image bytes", image("one"), image("two"), false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    std::filesystem::remove(file);
    store = newStore();
    EXPECT_FALSE(knows(row.asked));
    EXPECT_EQ(reject({row.rejected})->error, nullptr);
    EXPECT_TRUE(knows(row.rejected));
    EXPECT_EQ(knows(row.asked), row.isSame);
    EXPECT_FALSE(knows(row.asked, "somebody else"));
    store = newStore();
    EXPECT_TRUE(knows(row.rejected));
    EXPECT_EQ(knows(row.asked), row.isSame);
  }
}

TEST_F(PropertyListFeedbackStoreTest, AnswersOnlyOnceTheRejectionIsDurable) {
  dataProxy->holdsWrites = true;
  const auto first = reject({email("a@example.org")});
  const auto second = reject({email("b@example.org")});
  const auto third = reject({phone("+4930123456")}, "somebody else");
  EXPECT_FALSE(knows(email("a@example.org")));
  EXPECT_EQ(first->calls + second->calls + third->calls, 0);

  dataProxy->releaseWrites();
  EXPECT_EQ(first->calls, 1);
  EXPECT_EQ(second->calls, 0);
  dataProxy->releaseWrites();
  EXPECT_EQ(second->calls + third->calls, 2);
  EXPECT_EQ(dataProxy->writes, 2) << "those that wait for one write share the next";
  store = newStore();
  EXPECT_TRUE(knows(email("a@example.org")) && knows(email("b@example.org")) &&
              knows(phone("+4930123456"), "somebody else"));
}

TEST_F(PropertyListFeedbackStoreTest, RecordsNothingWhenItCannotWrite) {
  dataProxy->failsWrites = true;
  const auto failed = reject({email("ann@example.org")});
  EXPECT_EQ(failed->calls, 1);
  EXPECT_EQ(failed->error->code(), ENOSPC);
  EXPECT_FALSE(knows(email("ann@example.org")));

  dataProxy->failsWrites = false;
  EXPECT_EQ(reject({email("ann@example.org")})->error, nullptr);
  EXPECT_TRUE(knows(email("ann@example.org")));
}

TEST_F(PropertyListFeedbackStoreTest, AValueThatTheFileCannotHoldFailsAlone) {
  dataProxy->holdsWrites = true;
  const auto writing = reject({email("a@example.org")});
  const auto bad = reject({email("b@example.org"), email("\x01@example.org")});
  const auto good = reject({email("c@example.org")});
  EXPECT_EQ(bad->calls, 1);
  EXPECT_EQ(bad->error->domain(), PropertyListErrorDomain);
  dataProxy->releaseWrites();
  dataProxy->releaseWrites();
  EXPECT_TRUE(writing->calls == 1 && good->calls == 1 && !good->error);
  EXPECT_FALSE(knows(email("b@example.org")));
}

TEST_F(PropertyListFeedbackStoreTest, TakesWhatOtherProgramsWriteAndKeepsWhatItDoesNotKnow) {
  EXPECT_FALSE(knows(email("ann@example.org")));
  const PropertyList confirmed = PropertyListDictionary{
      {"status", "confirmed"}, {"emailAddress", "Ann@example.org"}, {"note", "theirs"}};
  const PropertyList undecided =
      PropertyListDictionary{{"status", "asked"}, {"emailAddress", "ann@example.net"}};
  const PropertyList future = PropertyListDictionary{{"status", "rejected"}, {"shoeSize", 43}};
  writeEntries({{me, PropertyListArray{confirmed, undecided, future, 7}}, {"version", 2}});
  runLoop();
  EXPECT_TRUE(knows(email("ann@example.org")));
  EXPECT_FALSE(knows(email("ann@example.net")));

  EXPECT_EQ(reject({email("ann@example.org")})->error, nullptr);
  const PropertyList rejected =
      PropertyListDictionary{{"status", "rejected"}, {"emailAddress", "ann@example.org"}};
  const PropertyListDictionary expected{{me, PropertyListArray{rejected, undecided, future, 7}},
                                        {"version", 2}};
  EXPECT_EQ(entries(), expected);

  EXPECT_EQ(reject({email("ANN@example.org")})->calls, 1);
  EXPECT_EQ(dataProxy->writes, 1) << "what is rejected already is not written again";
}

TEST_F(PropertyListFeedbackStoreTest, KeepsADamagedFileAsideBeforeItWrites) {
  EXPECT_EQ(reject({email("ann@example.org")})->error, nullptr);
  for (const std::string damage :
       {"<plist version", "<plist version=\"1.0\"><array/></plist>",
        "<plist version=\"1.0\"><dict><key>me</key><true/></dict></plist>"}) {
    writeBytes(damage);
    store = newStore();
    EXPECT_FALSE(knows(email("ann@example.org")));
    EXPECT_EQ(reject({email("ann@example.org")})->error, nullptr);
    const std::vector<std::string> copies = damagedCopies();
    EXPECT_EQ(std::count(copies.begin(), copies.end(), damage), 1);
  }
}

TEST_F(PropertyListFeedbackStoreTest, DoesNotForgetOrReplaceWhatItCannotRead) {
  EXPECT_EQ(reject({email("ann@example.org")})->error, nullptr);
  EXPECT_TRUE(knows(email("ann@example.org")));
  std::filesystem::remove(file);
  std::filesystem::create_directory(file);
  runLoop();
  EXPECT_TRUE(knows(email("ann@example.org")));
  EXPECT_EQ(reject({email("bob@example.org")})->error->code(), EISDIR);
  EXPECT_FALSE(knows(email("bob@example.org")));
}

}  // namespace
}  // namespace quenlet
