#include "tests/platform/extensions/DonorScript.h"
#include "tests/support/KeepingAgent.h"
#include "tests/support/TemporaryDirectory.h"
#include "tools/owner/CollectLock.h"
#include "tools/owner/CollectedDonor.h"
#include "tools/owner/DonorAnswers.h"

namespace quenlet {
namespace {

TEST(CollectLockTest, LeavesTheWordThatAUnitWaitsFor) {
  const TemporaryHome runtime;
  std::filesystem::permissions(runtime.path(), std::filesystem::perms::owner_all);
  for (int time = 0; time < 2; ++time) EXPECT_EQ(CollectLock::leaveWord(), nullptr);
  EXPECT_EQ(runtime.read("quenlet-collect-wanted"), "");
  EXPECT_TRUE(std::filesystem::exists(runtime / "quenlet-collect-wanted"));
  std::filesystem::permissions(runtime.path(), std::filesystem::perms::all);
  EXPECT_NE(CollectLock::leaveWord(), nullptr);
}

class DonorAnswersTest : public testing::Test {
 protected:
  void install(const std::string& bundle, const std::string& program) {
    home.write("installed/" + bundle, donorScript(program), 0700);
    home.write("installed/" + bundle + ".plist", donorManifest(bundle, bundle));
  }
  // "bundle:" and the number of values or "!" and the error's code, for each donor.
  std::string ask(const std::vector<std::string>& bundles) {
    const DonorAnswers answers = DonorAnswers::ask(catalog, bundles);
    std::string text = answers.unreadable ? "unreadable " : "";
    for (const auto& [bundle, donated] : answers.donors) {
      text += bundle + ":" +
              (donated.ok() ? std::to_string(donated.value().size())
                            : "!" + std::to_string(donated.error()->code())) +
              " ";
    }
    return text;
  }

  const TemporaryDirectory home;
  const std::shared_ptr<const ExtensionCatalog> catalog = std::make_shared<ExtensionCatalog>(
      std::vector<ManifestDirectory>{{std::filesystem::canonical(home.path()), "installed"}});
};

TEST_F(DonorAnswersTest, AreThoseOfEachDonorWhateverBecomesOfTheOthers) {
  EXPECT_EQ(ask({}), "");
  EXPECT_EQ(ask({"none"}), "none:!1 ");
  install("a", "answer(request(), b'\\7\\0\\0'); request()");
  install("b", "request()");
  install("c", "answer(request(), b'\\0' + error(b'why')); request()");
  home.write("installed/d.plist", donorManifest("d", "d"));
  home.write("installed/e.plist", donorManifest("e", "e", "another.point"));
  EXPECT_EQ(ask({}), "a:0 b:!3 c:!3 d:!2 ");
  EXPECT_EQ(ask({"c", "none", "a", "c", "e"}), "none:!1 e:!1 c:!3 a:0 ");
}

class CollectedDonorTest : public testing::Test {
 protected:
  static DonationValuePtr value(const std::string& bundle, const std::string& id, double date) {
    return email(id + "@example.org", DonationOrigin{bundle, id, {}, Date(date), Date(1000)});
  }
  // "donated leftOut removed", or "!" and the error's code; then what is held.
  std::string replace(const DonationValues& values) {
    const auto collected = CollectedDonor::replace(agent, "donor", values, before);
    std::string text = collected.ok() ? std::to_string(collected.value().donated) + " " +
                                            std::to_string(collected.value().leftOut) + " " +
                                            std::to_string(collected.value().removed)
                                      : "!" + std::to_string(collected.error()->code());
    return text + " " + agent.heldText();
  }

  KeepingAgent agent;
  std::shared_ptr<const DonationValues> before =
      listOf({value("donor", "a", 1), value("donor", "b", 1), value("other", "c", 1)});
};

TEST_F(CollectedDonorTest, TakesThePlaceOfAllThatTheDonorHadGivenBefore) {
  agent.held = *before;
  EXPECT_EQ(replace({value("donor", "b", 5), value("donor", "d", 5)}), "2 0 1 b@5 c@1 d@5 ");
  agent.held.push_back(value("donor", "e", 3));
  EXPECT_EQ(replace({}), "0 0 0 b@5 c@1 d@5 e@3 ") << "what came since the list stays";
  before = listOf(agent.held);
  EXPECT_EQ(replace({}), "0 0 3 c@1 ") << "nothing any more";
}

TEST_F(CollectedDonorTest, RemovesWhatARejectedValueWasToReplace) {
  agent.held = *before;
  agent.rejectedIdentifiers = {"b"};
  EXPECT_EQ(replace({value("donor", "a", 5), value("donor", "b", 5)}), "1 1 1 a@5 c@1 ");
}

TEST_F(CollectedDonorTest, RemovesNothingUnlessTheDonationSucceeded) {
  agent.held = *before;
  agent.failure = makeError("domain", 7);
  agent.failing = 1;
  EXPECT_EQ(replace({value("donor", "d", 5)}), "!7 a@1 b@1 c@1 ");
  agent.failing = 3;
  EXPECT_EQ(replace({value("donor", "d", 5)}), "!7 a@1 b@1 c@1 d@5 ") << "told, too";
}

}  // namespace
}  // namespace quenlet
