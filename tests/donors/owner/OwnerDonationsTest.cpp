#include "donors/owner/GitDonations.h"
#include "donors/owner/PictureDonations.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

// The one value, "" for none; or "!" and the error's sentence.
std::string textOf(const SourceDonor::Donations& donations) {
  if (!donations.ok()) return "!" + donations.error()->debugDescription();
  if (donations.value().empty()) return "";
  const Email* email = std::get_if<Email>(&donations.value().at(0).content);
  return email ? email->address : std::get<Image>(donations.value().at(0).content).bytes;
}

TEST(GitDonationsTest, TellWhatIsNotSetFromWhatCannotBeRead) {
  const std::pair<std::optional<CommandEnd>, const char*> rows[] = {
      {CommandEnd{"ann@example.org", 0}, "ann@example.org"},
      {CommandEnd{"7+ann@users.noreply.example.org", 0}, ""},
      {CommandEnd{"ann@localhost", 0}, ""},
      {CommandEnd{"", 1}, ""},
      {CommandEnd{"", 128}, "!git cannot read its settings"},
      {CommandEnd{"ann@example.org", -9}, "!git cannot read its settings"},
      {std::nullopt, "!git is not there, or does not answer"},
  };
  for (const auto& [answer, expected] : rows) EXPECT_EQ(textOf(gitDonationsFrom(answer)), expected);
}

TEST(GitDonationsTest, AskGitItselfForWhatItsFilesInclude) {
  const TemporaryHome home;
  EXPECT_EQ(textOf(gitDonations()), "");
  home.write(".gitconfig", "[include]\n  path = more\n");
  home.write("more", "[user]\n  name = ann\n  email = ann@example.org\n");
  EXPECT_EQ(textOf(gitDonations()), "ann@example.org");
  home.write("more", "[user\n");
  EXPECT_EQ(textOf(gitDonations()), "!git cannot read its settings");
}

TEST(PictureDonationsTest, GiveTheFirstFileThatIsThereIfItIsWhole) {
  using namespace std::string_literals;
  const std::string png = "\x89PNG\r\n\x1A\nx\0\0\0\0IEND\xAE\x42\x60\x82"s;
  const std::string jpeg = "\xFF\xD8\xFF\xE0x\xFF\xD9\0\0"s;
  const std::string damaged = "!picture 1: it is not a whole PNG or JPEG image";
  const TemporaryDirectory home;
  const auto donated = [&] { return textOf(pictureDonations({home / "face", home / "icon"})); };
  EXPECT_EQ(donated(), "");
  home.write("icon", jpeg);
  EXPECT_EQ(donated(), jpeg);
  const std::pair<std::string, std::string> rows[] = {
      {png, png},
      {png.substr(0, png.size() - 1), damaged},
      {jpeg.substr(0, 5), damaged},
      {"\xFF\xD8\xFF\xD9", damaged},
      {jpeg + std::string(2000, 'x'), damaged},
      {"text", damaged},
      {"", damaged},
  };
  for (const auto& [bytes, expected] : rows) {
    home.write("face", bytes);
    EXPECT_EQ(donated(), expected);
  }
}

}  // namespace
}  // namespace quenlet
