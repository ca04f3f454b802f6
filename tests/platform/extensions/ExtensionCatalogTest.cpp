#include "platform/extensions/ExtensionCatalog.h"

#include "tests/platform/extensions/HostFixture.h"

namespace quenlet {
namespace {

class ExtensionCatalogTest : public HostFixture {
 protected:
  // "<bundle>=<executable>" of all that is found, "!<code>" when something cannot be read.
  std::string found() {
    const ExtensionCatalog::Content content = *catalog.read();
    std::string all;
    for (const ExtensionManifestPtr& manifest : content.manifests) {
      all += manifest->bundleIdentifier + "=" + manifest->executable.native() + " ";
    }
    return content.unreadable ? all + nameOf(*content.unreadable) : all;
  }
  std::string reported() {
    testing::internal::CaptureStderr();
    static_cast<void>(found());
    return testing::internal::GetCapturedStderr();
  }

  const ExtensionCatalog catalog{{{root, "system"}, {root, "home/extensions"}}};
};

TEST_F(ExtensionCatalogTest, TakesTheFirstManifestOfEachBundleAndLeavesOutTheBad) {
  EXPECT_EQ(found(), "");
  write("home/extensions/a.plist", donorManifest("org.own", "own"));
  write("home/extensions/b.plist", donorManifest("org.caf\u00e9", "late"));
  write("system/b.plist", donorManifest("org.cafe\u0301", "/opt/cafe"));
  write("system/a.plist", donorManifest("org.other", "", "other.point"));
  write("system/notes.txt", donorManifest("org.text", "x"));
  const std::string good =
      "org.other= org.cafe\u0301=/opt/cafe org.own=" + (root / "home/extensions/own").native() +
      " ";
  EXPECT_EQ(found(), good);

  const std::pair<std::string, std::string> bad[] = {
      {donorManifest("ovaro.quenlet.accounts", "x"), "its bundleIdentifier is the agent's own"},
      {donorManifest("org\u001b[1m", "x"), ""},
      {donorManifest("org\u0085x", "x"), "its bundleIdentifier is not plain text"},
      {donorManifest(std::string(256, 'b'), "x"), "its bundleIdentifier is not plain text"},
      {donorManifest("", "x"), "its bundleIdentifier is not plain text"},
      {donorManifest("org.bad", "x", ""), "its extensionPoint is not plain text"},
      {donorManifest("org.bad", ""), "its executable is not plain text"},
      {"<plist version=\"1.0\"><array/></plist>", "its top level is not a dictionary"},
      {"<plist version=\"1.0\"><dict>", ""},
      {donorManifest("org.large", "x") + std::string(65536, ' '), "it is larger than 64 KiB"}};
  for (const auto& [text, sentence] : bad) {
    write("system/c.plist", text);
    const std::string line = reported();
    EXPECT_EQ(line.find("quenlet: " + (root / "system/c.plist").native() + ": " + sentence), 0U)
        << line;
    EXPECT_EQ(found(), good);
    write("system/c.plist", donorManifest("org.own", "first"), 0666);
    EXPECT_NE(reported(), "");
    EXPECT_EQ(reported(), "") << "told twice";
    EXPECT_EQ(found(), good);
  }
}

TEST_F(ExtensionCatalogTest, PassesOverDirectoriesThatCannotBeTrusted) {
  write("system/a.plist", donorManifest("org.system", "/x"));
  write("home/extensions/a.plist", donorManifest("org.own", "/x"));
  std::filesystem::permissions(root / "home", std::filesystem::perms(0775));
  EXPECT_NE(reported(), "");
  EXPECT_EQ(found(), "org.system=/x ");
  std::filesystem::permissions(root / "home", std::filesystem::perms(0755));
  EXPECT_EQ(found(), "org.system=/x org.own=/x ");
}

TEST_F(ExtensionCatalogTest, BecomesTheHostsDonors) {
  write("system/a.plist", donorManifest("org.ours", "/x"));
  write("system/b.plist", donorManifest("org.later", "/x", "ovaro.quenlet", "2.0"));
  makeHost();
  const std::vector<DonorPtr> donors = discover();
  EXPECT_TRUE(donors.size() == 2 && donors[0] && !donors[1]) << "a donor, but no extension";
  EXPECT_EQ(load("org.later"), nullptr);
  EXPECT_EQ(notes.size(), 0U);
  write("home/extensions", "a file");
  EXPECT_EQ(discover().size(), 2U);
  EXPECT_EQ(nameOf(*catalog.read()->manifest("org.own").error()), "!7");
}

}  // namespace
}  // namespace quenlet
