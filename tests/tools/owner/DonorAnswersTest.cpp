#include "tools/owner/DonorAnswers.h"

#include <gtest/gtest.h>

#include "tests/platform/extensions/DonorScript.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

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

}  // namespace
}  // namespace quenlet
