#include "tools/owner/AvailableExtensions.h"

#include <gmock/gmock.h>

#include "platform/extensions/ExtensionCatalog.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

using testing::HasSubstr;

class AvailableExtensionsTest : public testing::Test {
 protected:
  AvailableExtensionsTest() {
    ::unsetenv("XDG_CONFIG_HOME");
    install("post", "<key>group</key><string>mail</string>");
    install("snail", "<key>group</key><string>mail</string>");
    install("other", "<key>name</key><string>of no interest here</string>");
  }

  void install(const std::string& name, const std::string& remarks) const {
    top.write(
        fileOf(name),
        "<plist version=\"1.0\"><dict><key>extensionPoint</key><string>ovaro.quenlet</string>"
        "<key>version</key><string>1.0</string><key>bundleIdentifier</key><string>org.example." +
            name + "</string><key>executable</key><string>bin</string>" + remarks +
            "<key>reads</key><array><string>~/" + name + "</string></array></dict></plist>");
  }
  static std::string fileOf(const std::string& name) {
    return "prefix/share/quenlet/extensions-available/" + name + ".plist";
  }
  AvailableExtensions open() const {
    return AvailableExtensions::openIn(top / "prefix", top / "home");
  }
  // "name " of each, with "+" before it when the agent finds it.
  static std::string textOf(const AvailableExtensions& available,
                            const std::vector<AvailableExtension>& extensions) {
    const auto installed = ExtensionCatalog(available.directories()).read();
    std::string text;
    for (const AvailableExtension& extension : extensions) {
      EXPECT_EQ(extension.reads, std::vector<std::string>({"~/" + extension.name}));
      const bool isOn = installed->manifest(extension.manifest.bundleIdentifier).ok();
      text += (isOn ? "+" : "") + extension.name + " ";
    }
    return text;
  }
  std::string all() const {
    const AvailableExtensions available = open();
    return textOf(available, available.all());
  }
  void enable(const std::string& word) const {
    const AvailableExtensions available = open();
    for (const auto& each : available.named(word)) EXPECT_EQ(available.enable(each), nullptr);
  }

  const TemporaryDirectory top;
};

TEST_F(AvailableExtensionsTest, AreSwitchedOffByNameAndGroupWhenTheyAreNotInstalledAnyMore) {
  enable("mail");
  EXPECT_EQ(all(), "other +post +snail ");
  std::filesystem::remove(top / fileOf("post"));
  EXPECT_EQ(all(), "other +post +snail ");
  const AvailableExtensions available = open();
  EXPECT_EQ(textOf(available, available.named("mail")), "+post +snail ");
  EXPECT_EQ(available.disable(available.named("post").front()), nullptr);
  EXPECT_EQ(all(), "other +snail ");
}

TEST_F(AvailableExtensionsTest, AreAllThereButTheDamagedOne) {
  enable("post");
  top.write(fileOf("post"), "damaged");
  top.write(fileOf("snail"), "damaged");
  EXPECT_EQ(all(), "other +post ");
  const AvailableExtensions available = open();
  ASSERT_EQ(available.damaged().size(), 2U);
  EXPECT_EQ(available.damaged()[1].name, "snail");
  EXPECT_THAT(available.damaged()[1].error->description(), HasSubstr(fileOf("snail") + ": "));

  ASSERT_EQ(::chmod((top / fileOf("post")).parent_path().c_str(), 0775), 0);
  EXPECT_EQ(all(), "+post ");
  EXPECT_EQ(open().damaged().size(), 1U);
}

// What enable() has not written is the owner's own file.
TEST_F(AvailableExtensionsTest, AreNotThoseOfTheOwnersOwnManifests) {
  const std::string own = "home/.config/quenlet/extensions/";
  std::filesystem::create_directories(top / own);
  std::filesystem::copy_file(top / fileOf("post"), top / (own + "org.example.post.plist"));
  std::filesystem::remove(top / fileOf("post"));
  EXPECT_EQ(all(), "other snail ");
}

}  // namespace
}  // namespace quenlet
