#include "platform/donations/PropertyListFeedbackStore.h"

#include "tests/platform/donations/FileFixture.h"
#include "tests/support/DonationFactory.h"

namespace quenlet {
namespace {

constexpr char me[] = "me";
constexpr char them[] = "somebody else";
const DonationValuePtr ann = email("ann@example.org");
const DonationValuePtr bob = email("bob@example.org");
const DonationValuePtr eve = email("eve@example.org");

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
  const DonationOrigin origin = from("other donor", "second", "cluster", Date(4));
  const std::tuple<const char*, DonationValuePtr, DonationValuePtr, bool> rows[] = {
      {"another donation", image("bytes"), image("bytes", origin), true},
      {"e-mail normal form", ann, email("mailto:Ann@Example.ORG", origin, "x"), true},
      {"phone digits", phone("+49 (30) 1-5"), phone("+493015", origin, "work"), true},
      {"canonical name", named({.givenName = "\u00e9"}), named({.givenName = "e\u0301"}), true},
      {"address style", postal({.city = "Ulm"}),
       postal({.city = "Ulm"}, origin, PostalAddressStyle::abbreviated), true},
      {"address without fields", postal({}), postal({}), true},
      {"absent and empty", named({.nickname = ""}), named({}), false},
      {"text moved between fields", postal({.street = "ab", .city = "c"}),
       postal({.street = "a", .city = "bc"}), false},
      {"kind", email("+4930123456"), phone("+4930123456"), false},
  };
  for (const auto& [what, rejected, asked, isSame] : rows) {
    SCOPED_TRACE(what);
    std::filesystem::remove(file);
    store = newStore();
    EXPECT_FALSE(knows(asked));
    EXPECT_EQ(reject({rejected})->error, nullptr);
    for (int run = 0; run < 2; ++run) {
      EXPECT_TRUE(knows(rejected));
      EXPECT_EQ(knows(asked), isSame);
      EXPECT_FALSE(knows(asked, them));
      store = newStore();
    }
  }
}

TEST_F(PropertyListFeedbackStoreTest, AnswersOnlyOnceTheRejectionIsDurable) {
  dataProxy->holdsWrites = true;
  const auto first = reject({ann});
  const auto second = reject({bob});
  const auto third = reject({ann}, them);
  const auto unwritable = reject({eve, email("\x01@example.org")});
  EXPECT_EQ(unwritable->calls, 1) << "a value that the file cannot hold fails alone";
  EXPECT_EQ(unwritable->error->domain(), PropertyListErrorDomain);
  EXPECT_EQ(first->calls + second->calls + third->calls + knows(ann), 0);

  dataProxy->releaseWrites();
  EXPECT_EQ(first->calls, 1);
  EXPECT_EQ(second->calls, 0);
  dataProxy->releaseWrites();
  EXPECT_TRUE(second->calls == 1 && third->calls == 1 && !second->error && !third->error);
  EXPECT_EQ(dataProxy->writes, 2) << "those that wait for one write share the next";
  store = newStore();
  EXPECT_TRUE(knows(ann) && knows(bob) && knows(ann, them) && !knows(eve));
}

TEST_F(PropertyListFeedbackStoreTest, TakesWhatOtherProgramsWriteAndKeepsWhatItDoesNotKnow) {
  EXPECT_FALSE(knows(ann));
  using Entry = PropertyListDictionary;
  const Entry confirmed{{"status", "confirmed"}, {"emailAddress", "Ann@example.org"}};
  const Entry undecided{{"status", "asked"}, {"emailAddress", "bob@example.org"}};
  const Entry future{{"status", "rejected"}, {"shoeSize", 43}};
  writeEntries({{me, PropertyListArray{confirmed, undecided, future, 7}}, {"version", 2}});
  runLoop();
  EXPECT_TRUE(knows(ann));
  EXPECT_FALSE(knows(bob));

  EXPECT_EQ(reject({ann})->error, nullptr);
  const Entry rejected{{"status", "rejected"}, {"emailAddress", "ann@example.org"}};
  const PropertyListArray left{rejected, undecided, future, 7};
  EXPECT_EQ(entries(), (PropertyListDictionary{{me, left}, {"version", 2}}));

  EXPECT_EQ(reject({email("ANN@example.org")})->calls, 1);
  EXPECT_EQ(dataProxy->writes, 1) << "what is rejected already is not written again";
}

TEST_F(PropertyListFeedbackStoreTest, KeepsADamagedFileAsideBeforeItWrites) {
  for (const std::string damage :
       {"<plist version", "<plist version=\"1.0\"><array/></plist>",
        "<plist version=\"1.0\"><dict><key>me</key><true/></dict></plist>"}) {
    writeBytes(damage);
    store = newStore();
    EXPECT_FALSE(knows(ann));
    EXPECT_EQ(reject({ann})->error, nullptr);
    const std::vector<std::string> copies = damagedCopies();
    EXPECT_EQ(std::count(copies.begin(), copies.end(), damage), 1);
  }
}

TEST_F(PropertyListFeedbackStoreTest, NeitherRecordsWhatItCannotWriteNorForgetsWhatItCannotRead) {
  dataProxy->failsWrites = true;
  EXPECT_EQ(reject({ann})->error->code(), ENOSPC);
  EXPECT_FALSE(knows(ann));
  dataProxy->failsWrites = false;
  EXPECT_EQ(reject({ann})->error, nullptr);
  EXPECT_TRUE(knows(ann));
  std::filesystem::remove(file);
  std::filesystem::create_directory(file);
  runLoop();
  EXPECT_TRUE(knows(ann));
  EXPECT_EQ(reject({bob})->error->code(), EISDIR);
  EXPECT_FALSE(knows(bob));
}

}  // namespace
}  // namespace quenlet
