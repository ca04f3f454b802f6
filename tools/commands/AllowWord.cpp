#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "tools/commands/Command.h"
#include "tools/owner/AppPermissions.h"

namespace quenlet {
namespace {

// "allow": says for the owner what a sandboxed app may do, as the desktop's question would.
class AllowWord final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  [[nodiscard]] ExitCode run(Session& session) const;
  [[nodiscard]] AppPermission permission() const;
  [[nodiscard]] std::string saying() const;

  std::string appIdentifier;
  std::vector<std::string> kinds;
  bool isAboutDonations = false;
  bool isNo = false;
  bool isForgotten = false;
};

void AllowWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("allow", "Let a sandboxed app read the card, or donate");
  word->add_option("APP", appIdentifier, "The app's identifier, as flatpak list shows it")
      ->type_name("")
      ->required();
  std::vector<std::string> known;
  known.reserve(std::size(cardKindWords));
  for (const auto& entry : cardKindWords) known.emplace_back(entry.second);
  CLI::Option* which = word->add_option("KINDS", kinds,
                                        "What it may read: name, emailAddress, phoneNumber, "
                                        "postalAddress, imageData; all but the last without any")
                           ->type_name("")
                           ->check(CLI::IsMember(known).description(""));
  word->add_flag("--donate", isAboutDonations, "Let it donate, instead")->excludes(which);
  CLI::Option* no =
      word->add_flag("--not", isNo, "Refuse it, and do not be asked")->excludes(which);
  word->add_flag("--ask", isForgotten, "Take back what was said, so that you are asked")
      ->excludes(which)
      ->excludes(no);
  word->footer(
      "Replaces what you said before, here or to the desktop's question. The desktop keeps it:\n"
      "flatpak permissions quenlet shows the same. Who is allowed what: quenlet clients.\n"
      "Programs that are not in a sandbox need a file of entitlements instead. Asks no agent.");
  word->callback([this, &chosen] { chosen = [this](Session& session) { return run(session); }; });
}

AppPermission AllowWord::permission() const {
  if (isForgotten) return {};
  if (isNo) return {OwnersWord::no};
  if (isAboutDonations) return {OwnersWord::yes};
  CardKinds chosen;
  for (const std::string& kind : kinds) chosen.insert(*cardKindFor(kind));
  return {OwnersWord::yes, kinds.empty() ? usualCardKinds() : chosen};
}

std::string AllowWord::saying() const {
  if (isForgotten) {
    return "You will be asked when " + appIdentifier +
           (isAboutDonations ? " next donates." : " next reads the card.");
  }
  std::string text = appIdentifier + (isNo ? " may not " : " may ");
  if (isAboutDonations) return text + "donate.";
  text += "read ";
  if (isNo) return text + "the card.";
  std::string list;
  for (const CardKind kind : permission().kinds) {
    list.append(list.empty() ? "" : ", ").append(wordFor(kind));
  }
  return text + list + ".";
}

ExitCode AllowWord::run(Session& session) const {
  if (!isAppIdentifier(appIdentifier)) {
    return session.failWithUsage("APP is an identifier as in org.example.App", {},
                                 "quenlet clients shows programs that are not apps");
  }
  const auto permissions = AppPermissions::open();
  if (!permissions.ok()) return session.failWith(permissions.error());
  const AppWish wish = isAboutDonations ? AppWish::donate : AppWish::meCard;
  const ErrorPtr error = permissions.value()->set(wish, appIdentifier, permission());
  if (error) return session.failWith(error);
  session.say(saying());
  return ExitCode::done;
}

}  // namespace

CommandPtr makeAllowWord() { return std::make_unique<AllowWord>(); }

}  // namespace quenlet
