#include "platform/feedback/PropertyListFeedbackStore.h"

#include "platform/feedback/FeedbackFile.h"
#include "tests/support/DonationFactory.h"
#include "tests/support/FileFixture.h"
#include "tests/support/ManualSchedulers.h"

namespace quenlet {
namespace {

constexpr char me[] = "me";
constexpr char them[] = "somebody else";
const DonationValuePtr ann = email("ann@example.org");
const DonationValuePtr bob = email("bob@example.org");
const DonationValuePtr eve = email("eve@example.org");

PropertyList entry(const char* status, const char* address) {
  return PropertyListDictionary{{"status", status}, {"emailAddress", address}};
}

class PropertyListFeedbackStoreTest : public FileFixture {
 protected:
  struct Outcome final {
    int calls = 0;
    ErrorPtr error;
  };

  PropertyListFeedbackStoreTest() { startAnew(); }
  ~PropertyListFeedbackStoreTest() override { schedulers.clear(); }
  void startAnew() {
    store = std::make_unique<PropertyListFeedbackStore>(
        file, dataProxy, loop, schedulers.newSerialSchedulerWithName("feedback"));
    store->setChangeHandler([this] { ++changes; });
  }
  // How often the store has told of a change, once it has seen what happened to the file.
  int changesSeen() {
    runLoop();
    schedulers.runUntilIdle();
    return std::exchange(changes, 0);
  }
  std::shared_ptr<Outcome> reject(const DonationValues& values, const std::string& contact = me) {
    const auto outcome = std::make_shared<Outcome>();
    store->rejectDonatedValues(values, contact, [outcome](ErrorPtr error) {
      ++outcome->calls;
      outcome->error = std::move(error);
    });
    schedulers.runUntilIdle();
    return outcome;
  }
  bool knows(const DonationValuePtr& value, const std::string& contact = me) {
    return store->donatedValueHasBeenConfirmedOrRejected(*value, contact);
  }
  void writeForMe(PropertyListArray list) { writeEntries({{me, std::move(list)}}); }

  ManualSchedulerProvider schedulers;
  int changes = 0;
  std::unique_ptr<PropertyListFeedbackStore> store;
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
    startAnew();
    EXPECT_FALSE(knows(asked));
    EXPECT_EQ(reject({rejected})->error, nullptr);
    for (int run = 0; run < 2; ++run) {
      EXPECT_TRUE(knows(rejected));
      EXPECT_EQ(knows(asked), isSame);
      EXPECT_FALSE(knows(asked, them));
      startAnew();
    }
  }
}

// Other programs read and write these keys.
TEST_F(PropertyListFeedbackStoreTest, KeepsTheFormOfItsFile) {
  const DonationValues all{named({.givenName = "Zo\u00eb", .familyName = "Berg"}),
                           email("mailto:Ann@Example.ORG"), phone("+49 (30) 1-5"),
                           postal({.street = "1 <Lane>", .city = "Ulm"}), image("abc")};
  EXPECT_EQ(reject(all)->error, nullptr);
  using Entries = PropertyListDictionary;
  const std::pair<const char*, PropertyList> contents[] = {
      {"nameComponents", Entries{{"familyName", "Berg"}, {"givenName", "Zo\u00eb"}}},
      {"emailAddress", "mailto:Ann@Example.ORG"},
      {"phoneNumber", "+49 (30) 1-5"},
      {"postalAddress", Entries{{"city", "Ulm"}, {"street", "1 <Lane>"}}},
      {"imageData", Data{"abc"}}};
  PropertyListArray expected;
  for (const auto& content : contents) expected.push_back(Entries{content, {"status", "rejected"}});
  EXPECT_EQ(entries(), (Entries{{me, expected}}));
}

TEST_F(PropertyListFeedbackStoreTest, AnswersOnlyOnceTheRejectionIsDurable) {
  dataProxy->failsWrites = true;
  EXPECT_EQ(reject({ann})->error->code(), ENOSPC);
  EXPECT_FALSE(knows(ann));
  dataProxy->failsWrites = false;
  dataProxy->holdsWrites = true;
  const auto first = reject({ann});
  const auto second = reject({bob});
  const auto third = reject({ann}, them);
  const auto unwritable = reject({eve, email("\x01@example.org")});
  EXPECT_EQ(unwritable->calls, 1) << "a value that the file cannot hold fails alone";
  EXPECT_EQ(unwritable->error->domain(), PropertyListErrorDomain);
  EXPECT_EQ(first->calls + second->calls + third->calls + knows(ann), 0);

  dataProxy->releaseWrites();
  schedulers.runUntilIdle();
  EXPECT_EQ(first->calls, 1);
  EXPECT_EQ(second->calls, 0);
  dataProxy->releaseWrites();
  EXPECT_TRUE(second->calls == 1 && third->calls == 1 && !second->error && !third->error);
  dataProxy->failsReads = true;
  EXPECT_TRUE(knows(bob)) << "what it cannot read it does not forget";
  dataProxy->failsReads = false;
  EXPECT_EQ(dataProxy->writes, 3) << "those that wait for one write share the next";
  startAnew();
  EXPECT_TRUE(knows(ann) && knows(bob) && knows(ann, them) && !knows(eve));
}

TEST_F(PropertyListFeedbackStoreTest, TakesWhatOtherProgramsWriteAndKeepsWhatItDoesNotKnow) {
  EXPECT_FALSE(knows(ann));
  const PropertyList undecided = entry("asked", "bob@example.org");
  const PropertyListDictionary future{{"status", "rejected"}, {"shoeSize", 43}};
  const PropertyListArray before{entry("confirmed", "Ann@example.org"), undecided, future, 7};
  writeEntries({{me, before}, {"version", 2}});
  EXPECT_EQ(changesSeen(), 1);
  EXPECT_TRUE(knows(ann));
  EXPECT_FALSE(knows(bob));

  EXPECT_EQ(reject({ann})->error, nullptr);
  const PropertyListArray left{entry("rejected", "ann@example.org"), undecided, future, 7};
  EXPECT_EQ(entries(), (PropertyListDictionary{{me, left}, {"version", 2}}));

  EXPECT_EQ(reject({email("ANN@example.org")})->calls, 1);
  EXPECT_EQ(dataProxy->writes, 1) << "what is rejected already is not written again";
}

TEST_F(PropertyListFeedbackStoreTest, ForgetsWhatAnotherProgramTakesBackAndNothingElse) {
  const PropertyList undecided = entry("asked", "ann@example.org");
  const PropertyList bobs = entry("confirmed", "bob@example.org");
  writeEntries({{me, PropertyListArray{entry("rejected", "Ann@example.org"), undecided, bobs, 7,
                                       entry("confirmed", "ann@example.org")}},
                {them, PropertyListArray{entry("rejected", "ann@example.org")}},
                {"version", 2}});
  EXPECT_TRUE(knows(ann) && knows(bob));
  const FeedbackFile feedback(file, dataProxy);
  const auto decisions = feedback.decisions(me).value();
  ASSERT_EQ(decisions.size(), 2u);
  EXPECT_TRUE(decisions[0].status == FeedbackStatus::rejected &&
              decisions[0].value == Value::emailAddress("Ann@example.org", ""));
  EXPECT_EQ(decisions[1].status, FeedbackStatus::confirmed);

  EXPECT_EQ(feedback.remove({decisions[0].key, "e?"}, me).value(), 1u);
  const PropertyListArray left{undecided, bobs, 7};
  EXPECT_EQ(entries().find(me)->second, PropertyList(left));
  EXPECT_EQ(changesSeen(), 0);
  EXPECT_TRUE(!knows(ann) && knows(bob) && knows(ann, them));
  EXPECT_EQ(feedback.remove({decisions[0].key}, me).value(), 0u);
  EXPECT_EQ(dataProxy->writes, 1);

  dataProxy->failsWrites = true;
  EXPECT_EQ(feedback.remove({decisions[1].key}, me).error()->code(), ENOSPC);
  writeBytes("<plist version");
  EXPECT_EQ(feedback.remove({decisions[1].key}, me).error()->domain(), PropertyListErrorDomain);
  EXPECT_EQ(feedback.decisions(me).error()->domain(), PropertyListErrorDomain);
  EXPECT_EQ(readFile(file), "<plist version");
}

TEST_F(PropertyListFeedbackStoreTest, ReplacesNoFileThatItCannotReadAndTellsOnceItIsWhole) {
  const PropertyList annRejected = entry("rejected", "ann@example.org");
  for (const std::string damage : {"<plist", "", "<plist version=\"1.0\"><array/></plist>"}) {
    SCOPED_TRACE(damage);
    writeBytes(damage);
    testing::internal::CaptureStderr();
    startAnew();
    EXPECT_FALSE(knows(ann));
    EXPECT_FALSE(knows(bob));
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(said.starts_with("quenlet: file.plist: ") && said.ends_with('\n'));
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    const ErrorPtr error = reject({bob})->error;
    ASSERT_TRUE(error && error->domain() == PropertyListErrorDomain);
    EXPECT_TRUE(error->debugDescription().starts_with("file.plist is damaged: "));
    EXPECT_EQ(readFile(file), damage);
    EXPECT_EQ(changesSeen(), 0);

    writeForMe({annRejected});
    EXPECT_EQ(changesSeen(), 1);
    EXPECT_TRUE(knows(ann) && !knows(bob));
    writeBytes(damage);
    EXPECT_EQ(changesSeen(), 0);
    EXPECT_TRUE(knows(ann));
    writeForMe({annRejected, entry("confirmed", "eve@example.org")});
    EXPECT_EQ(changesSeen(), 1);
    EXPECT_EQ(reject({bob})->error, nullptr);
    EXPECT_EQ(changesSeen(), 0) << "its own additions are news to nobody";
    EXPECT_TRUE(knows(ann) && knows(bob) && knows(eve));
  }
  EXPECT_EQ(damagedCopy(), "");
}

TEST_F(PropertyListFeedbackStoreTest, KeepsAsideAFileWhereAContactHasNoList) {
  const std::string damage = "<plist version=\"1.0\"><dict><key>me</key><true/></dict></plist>";
  writeBytes(damage);
  EXPECT_FALSE(knows(ann));
  EXPECT_EQ(reject({ann})->error, nullptr);
  EXPECT_EQ(damagedCopy(), damage);
}

TEST_F(PropertyListFeedbackStoreTest, ReadsAgainLaterWhatTheSystemCouldNotRead) {
  writeForMe({entry("rejected", "ann@example.org")});
  startAnew();
  dataProxy->failsReads = true;
  EXPECT_FALSE(knows(ann));
  EXPECT_EQ(reject({bob})->error->code(), EMFILE);
  schedulers.advance(5.0);
  dataProxy->failsReads = false;
  schedulers.advance(9.9);
  EXPECT_FALSE(knows(ann)) << "the second delay is twice the first";
  EXPECT_EQ(changesSeen(), 0);
  schedulers.advance(0.2);
  EXPECT_TRUE(knows(ann));
  EXPECT_EQ(changesSeen(), 1);
}

TEST_F(PropertyListFeedbackStoreTest, RejectsNothingWhileAnotherProgramHoldsTheLock) {
  EXPECT_EQ(reject({ann})->error, nullptr);
  const auto lock = LockFile::tryLock(file.string() + ".lock").value();
  const auto before = std::chrono::steady_clock::now();
  const ErrorPtr error = reject({bob})->error;
  EXPECT_TRUE(knows(ann) && !knows(bob));
  const std::chrono::duration<double> waited = std::chrono::steady_clock::now() - before;
  EXPECT_TRUE(waited.count() >= 2.0 && waited.count() < 60) << waited.count();
  EXPECT_EQ(error->code(), EWOULDBLOCK);
}

}  // namespace
}  // namespace quenlet
