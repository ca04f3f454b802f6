#include <CLI/CLI.hpp>
#include <string>
#include <tuple>

#include "client/waitForReply.h"
#include "platform/contacts/ContactStore.h"
#include "platform/contacts/VCard.h"
#include "tools/commands/Command.h"
#include "tools/owner/OwnCard.h"
#include "tools/owner/OwnCardFile.h"
#include "tools/presentation/TerminalText.h"
#include "tools/presentation/ValueText.h"
#include "tools/presentation/WholeCardPresenter.h"

namespace quenlet {
namespace {

// "me": shows all that is known of the owner, and puts an own card in place.
class MeWord final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  [[nodiscard]] ExitCode run(Session& session) const;
  // Without asking the agent when the own card has what is wanted.
  [[nodiscard]] bool isEnough(const WholeCard& card) const;
  [[nodiscard]] ExitCode show(Session& session, const WholeCard& card) const;
  [[nodiscard]] ExitCode showFirst(Session& session, const WholeCard& card) const;
  [[nodiscard]] ExitCode writeImage(Session& session, const WholeCard& card) const;
  [[nodiscard]] ExitCode set(Session& session) const;

  std::string format = "text";
  std::string wantedKind;
  std::string imageFile;
  bool replacesImage = false;
  std::string cardFile;
};

void MeWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("me", "Show all that is known of you, and from whom");
  CLI::Option* form = word->add_option("--format", format, "text, vcard or json")
                          ->type_name("FORMAT")
                          ->capture_default_str()
                          ->check(CLI::IsMember({"text", "vcard", "json"}));
  CLI::Option* get =
      word->add_option("--get", wantedKind, "Print one email, phone, name or address")
          ->type_name("KIND")
          ->check(CLI::IsMember({"email", "phone", "name", "address"}))
          ->excludes(form);
  CLI::Option* image = word->add_option("--image", imageFile, "Write the picture to a file")
                           ->type_name("FILE")
                           ->excludes(form)
                           ->excludes(get);
  word->add_flag("--force", replacesImage, "Replace that file if it is there")->needs(image);
  word->footer(
      "Your own card comes first; what was donated follows, unless your own card has it, too.");
  word->callback([this, word, &chosen] {
    if (!word->get_subcommands().empty()) return;
    chosen = [this](Session& session) { return run(session); };
  });

  CLI::App* setting = word->add_subcommand("set", "Make a vCard file your own card");
  setting->add_option("FILE", cardFile, "A file with one card, of a person")
      ->type_name("")
      ->required();
  setting->footer("A copy of your former card is kept beside it. Needs no agent.");
  setting->callback(
      [this, &chosen] { chosen = [this](Session& session) { return set(session); }; });
}

ExitCode fail(const Session& session, const std::string& sentence) {
  return session.failWith(
      makeError(ContactErrorDomain, static_cast<int>(ContactErrorCode::noMeContact), sentence));
}

ExitCode MeWord::run(Session& session) const {
  const Result<OwnCard> own = OwnCard::read();
  if (!own.ok()) return session.failWith(own.error());
  ExitCode code = ExitCode::done;
  if (const ErrorPtr& fault = own.value().fault) {
    code = session.failWith(
        makeError(fault->domain(), fault->code(), "your own card: " + fault->debugDescription()));
  }
  const ContactPtr& contact = own.value().contact;
  const WholeCard ownAlone = WholeCard::of(contact, Contact());
  if (isEnough(ownAlone)) return show(session, ownAlone);
  const auto [donated] = waitForReply<Result<ContactPtr>>(
      [&](EitherContactReply reply) { session.agent.synchronousDonatedMeCard(std::move(reply)); });
  if (!donated.ok()) {
    // Better than nothing, and the exit code says that it may not be all.
    if (wantedKind.empty() && imageFile.empty() && contact) {
      static_cast<void>(show(session, ownAlone));
    }
    session.out << std::flush;
    return session.failWith(donated.error());
  }
  const ExitCode shown = show(session, WholeCard::of(contact, *donated.value()));
  return shown == ExitCode::done ? code : shown;
}

bool MeWord::isEnough(const WholeCard& card) const {
  if (!imageFile.empty()) return card.isImageOwn;
  return !wantedKind.empty() && WholeCardPresenter::firstOf(card, wantedKind).has_value();
}

ExitCode MeWord::show(Session& session, const WholeCard& card) const {
  if (!wantedKind.empty()) return showFirst(session, card);
  if (!imageFile.empty()) return writeImage(session, card);
  if (format == "json") {
    WholeCardPresenter::writeJSON(session.out, card);
  } else if (format == "vcard") {
    session.out << writeVCard(card.contact);
  } else if (card.contact == Contact()) {
    session.out << "Nothing is known of you: neither an own card nor a donation.\n"
                   "hint: quenlet me set FILE makes a vCard file your own card\n";
  } else {
    WholeCardPresenter::writeText(session.out, card, session.screen);
  }
  return ExitCode::done;
}

ExitCode MeWord::showFirst(Session& session, const WholeCard& card) const {
  const auto value = WholeCardPresenter::firstOf(card, wantedKind);
  if (!value) return fail(session, wantedKind + " is not known");
  session.out << printable(*value) << "\n";
  return ExitCode::done;
}

ExitCode MeWord::writeImage(Session& session, const WholeCard& card) const {
  const auto& image = card.contact.imageData();
  if (!image) return fail(session, "a picture is not known");
  const ExitCode code = session.writeFile(imageFile, *image, replacesImage);
  if (code == ExitCode::done) {
    session.say("Wrote " + imageText(*image) + ", to " + imageFile + ".");
  }
  return code;
}

ExitCode MeWord::set(Session& session) const {
  const Result<OwnCardFile> file = OwnCardFile::open();
  if (!file.ok()) return session.failWith(file.error());
  const auto placed = file.value().replaceWith(cardFile);
  if (!placed.ok()) return session.failWith(placed.error());
  const auto& [card, former, isUnchanged] = placed.value();
  const std::string name = textOf(PersonNameComponents::componentsForContact(card.contact));
  session.say(
      (isUnchanged ? "This is your own card already: " : "Your own card is now this one: ") + name);
  if (former) session.say("The former one is kept: " + former->native());
  for (const SkippedEntry& entry : card.skipped) {
    session.warn("skipped " + WholeCardPresenter::textOf(entry));
  }
  return ExitCode::done;
}

}  // namespace

CommandPtr makeMeWord() { return std::make_unique<MeWord>(); }

}  // namespace quenlet
