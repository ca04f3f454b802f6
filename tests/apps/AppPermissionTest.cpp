#include <gmock/gmock.h>

#include "apps/AppPermission.h"

namespace quenlet {
namespace {

TEST(AppPermissionTest, ReadsWhatIsInTheStore) {
  using Texts = std::vector<std::string>;
  const std::tuple<const char*, AppWish, Texts, AppPermission> rows[] = {
      {"nothing", AppWish::meCard, {}, {}},
      {"no", AppWish::meCard, {"no"}, {OwnersWord::no}},
      {"kinds", AppWish::meCard, Texts{"imageData", "name"},
       AppPermission{OwnersWord::yes, {CardKind::name, CardKind::imageData}}},
      {"yes of others", AppWish::meCard, {"yes"}, {OwnersWord::yes, usualCardKinds()}},
      {"a kind and a no", AppWish::meCard, {"name", "no"}, {OwnersWord::no}},
      {"unknown kind", AppWish::meCard, {"name", "shoeSize"}, {OwnersWord::no}},
      {"donations", AppWish::donate, {"yes"}, {OwnersWord::yes}},
      {"no donations", AppWish::donate, {"no"}, {OwnersWord::no}},
      {"kinds of donations", AppWish::donate, {"name"}, {OwnersWord::no}},
  };
  for (const auto& [name, wish, texts, permission] : rows) {
    const AppPermission read = AppPermission::fromTexts(wish, texts);
    EXPECT_EQ(read, permission) << name;
    EXPECT_EQ(AppPermission::fromTexts(wish, read.texts(wish)), read) << name;
  }
  EXPECT_EQ((AppPermission{OwnersWord::yes}.texts(AppWish::meCard)), Texts{"no"});
}

TEST(AppPermissionTest, KnowsIdentifiersOfApps) {
  for (const char* text : {"org.example.App", "a.b", "org.example_2.App-x"}) {
    EXPECT_TRUE(isAppIdentifier(text)) << text;
  }
  const std::string tooLong = "org." + std::string(252, 'a');
  for (const std::string text : {"", "App", "org..App", "org.App.", "org.Äpp", "org.a:b", "org.a b",
                                 "org.a\n", "../a.b", tooLong.c_str()}) {
    EXPECT_FALSE(isAppIdentifier(text)) << text;
  }
}

}  // namespace
}  // namespace quenlet
