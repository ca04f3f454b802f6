#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

using namespace testing;

class ShowWordTest : public ProcessTest {
 protected:
  ShowWordTest() {
    ::unsetenv("DISPLAY");
    ::unsetenv("WAYLAND_DISPLAY");
  }

  // A program of that name, which writes down what it is asked to open.
  void installOpener(const std::string& ending) {
    installCommand("xdg-open", "printf '%s\\n' \"$@\" >>" + opened.native() + "\n" + ending);
    ::setenv("WAYLAND_DISPLAY", "wayland-7", 1);
  }

  const std::filesystem::path opened = temporary / "opened";
  const std::filesystem::path page = temporary / "quenlet/pages/card.html";
};

TEST_F(ShowWordTest, KeepsOnePrivatePageAndHasTheDesktopOpenIt) {
  startAgent();
  donate("com.example.<b>", "Ann Berg", {"EMAIL:ann@example.org"});
  const Ran alone = quenlet("show");
  EXPECT_EQ(alone.code, 0);
  EXPECT_EQ(alone.out, "The page is in " + page.native() + "\n");
  EXPECT_THAT(alone.err, HasSubstr("there is no display\nhint: open it with a browser"));
  EXPECT_EQ(modeOf(page), 0600U);
  EXPECT_EQ(modeOf(page.parent_path()), 0700U);
  EXPECT_THAT(readFile(page), HasSubstr("from <bdi>com.example.&lt;b&gt;</bdi>"));

  installOpener("");
  writeFile(page, "an old page");
  EXPECT_EQ(quenlet("show").out, "Opened " + page.native() + "\n");
  EXPECT_EQ(readFile(opened), page.native() + "\n");
  EXPECT_THAT(readFile(page), HasSubstr("ann@example.org"));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(page.parent_path()), {}), 1);

  installOpener("exit 4");
  EXPECT_THAT(quenlet("show").err, StartsWith("quenlet: did not open it: xdg-open failed\n"));
}

TEST_F(ShowWordTest, WritesThePageWhereItIsToldTo) {
  installOpener("");
  EXPECT_EQ(quenlet("show").code, 3);
  startAgent();
  const std::string file = temporary / "mine.html";
  EXPECT_EQ(quenlet("show --output " + file).out, "Wrote " + file + ".\n");
  EXPECT_EQ(modeOf(file), 0600U);
  EXPECT_EQ(quenlet("show --output -").out, readFile(file));
  writeFile(file, "a diary");
  expect("show --output " + file, 1, {"mine.html", "hint: --force replaces it\n"});
  expect("show --output " + file + "/no", 1, {"quenlet: "});
  EXPECT_EQ(readFile(file), "a diary");
  expect("show --output " + file + " --force", 0, {"Wrote " + file});
  disableDonations();
  expect("show --output -", 0, {"Donations are off", "You keep no card of your own."});
  EXPECT_FALSE(std::filesystem::exists(opened));
  EXPECT_FALSE(std::filesystem::exists(page));
}

}  // namespace
}  // namespace quenlet
