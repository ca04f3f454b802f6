#include <sys/epoll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <utility>

#include "client/CorvelProxy.h"
#include "platform/files/UserDirectories.h"
#include "platform/ipc/ServiceAddress.h"
#include "platform/notifications/NotificationDirectory.h"
#include "platform/notifications/SocketNotificationCenter.h"
#include "platform/scheduling/RunLoop.h"
#include "protocol/CorvelInterface.h"
#include "tools/commands/AgentPresence.h"
#include "tools/commands/Command.h"
#include "tools/presentation/WatchReport.h"

namespace quenlet {
namespace {

// Whether standard output has a reader that may go away.
bool hasReader() {
  struct stat status {};
  return ::fstat(STDOUT_FILENO, &status) == 0 &&
         (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode) || ::isatty(STDOUT_FILENO) == 1);
}

// Fetches the card whenever something may have changed, and reports how it differs from the one
// before. The agent is never waited for. Use on the thread on which it replies; it outlives the
// replies.
//
// The card of an agent that has ended is the one before for the next agent.
class CardWatch final {
 public:
  // `agent` does not reply before its operations have returned.
  CardWatch(Session& commandSession, CorvelProtocol& agent, WatchReport& watchReport)
      : session(commandSession), asked(agent), report(watchReport) {}
  CardWatch(const CardWatch&) = delete;
  CardWatch& operator=(const CardWatch&) = delete;

  // Fetches the card; once more after the fetch that is under way. The first outcome is reported as
  // the beginning.
  void lookAgain();
  // The same for a change that the agent has told of, which is reported even if the card has stayed
  // as it was.
  void lookAfterNotification();

 private:
  void receive(const ContactPtr& card, const ErrorPtr& error);
  void begin(const ErrorPtr& error);
  void note(const ErrorPtr& error);

  Session& session;
  CorvelProtocol& asked;
  WatchReport& report;
  bool hasBegun = false;
  bool isFetching = false;
  bool isOutdated = false;
  bool wasNotified = false;
  // Null until the agent has given one.
  ContactPtr lastCard;
  // Null while the agent gives a card.
  ErrorPtr lastRefusal;
};

void CardWatch::lookAgain() {
  if (std::exchange(isFetching, true)) {
    isOutdated = true;
    return;
  }
  asked.fetchDonatedMeCard(
      [this](const ContactPtr& card, const ErrorPtr& error) { receive(card, error); });
}

void CardWatch::lookAfterNotification() {
  wasNotified = true;
  lookAgain();
}

void CardWatch::receive(const ContactPtr& card, const ErrorPtr& error) {
  isFetching = false;
  if (!std::exchange(hasBegun, true)) {
    begin(error);
  } else if (error) {
    note(error);
  } else if (lastCard) {
    const CardChanges changes = CardChanges::between(*lastCard, *card);
    if (wasNotified || !changes.empty()) report.changed(Date::now(), changes);
  }
  wasNotified = false;
  lastRefusal = error;
  if (card) lastCard = card;
  if (std::exchange(isOutdated, false)) lookAgain();
}

void CardWatch::begin(const ErrorPtr& error) {
  if (error) static_cast<void>(session.failWith(error));
  report.began(!error || !isNoAnswer(*error));
}

void CardWatch::note(const ErrorPtr& error) {
  // That an agent is gone is noticed elsewhere, sooner.
  if (isNoAgent(*error) || (lastRefusal && *lastRefusal == *error)) return;
  report.refused(Date::now(), *error);
}

// "watch": tells what changes on the donated card, until SIGINT or SIGTERM. Run it before the
// process starts another thread.
class WatchWord final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;

 private:
  [[nodiscard]] ExitCode run(Session& session) const;
  // Returns when the loop has ended.
  void follow(Session& session, RunLoop& runLoop, const std::filesystem::path& path,
              const ServiceAddress& agentAddress) const;

  bool asJSON = false;
};

void WatchWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("watch", "Tell what changes on the card, as it happens");
  word->add_flag("--json", asJSON, "An object a line, for programs");
  word->footer(
      "The first line says that it is ready. Also tells when the agent ends and when one is there\n"
      "again. Ends with 0 when interrupted, or when nobody reads its lines any more.");
  word->callback([this, &chosen] { chosen = [this](Session& session) { return run(session); }; });
}

ExitCode WatchWord::run(Session& session) const {
  RunLoop runLoop;
  const auto runtime = UserDirectories::runtimeDirectory();
  if (!runtime.ok()) return session.failWith(runtime.error());
  const auto path = NotificationDirectory::below(runtime.value());
  if (const auto directory = NotificationDirectory::open(path); !directory.ok()) {
    return session.failWith(directory.error());
  }
  const Result<ServiceAddress> agentAddress = ServiceAddress::forService(CorvelServiceName);
  if (!agentAddress.ok()) return session.failWith(agentAddress.error());
  follow(session, runLoop, path, agentAddress.value());
  return ExitCode::done;
}

void WatchWord::follow(Session& session, RunLoop& runLoop, const std::filesystem::path& path,
                       const ServiceAddress& agentAddress) const {
  EventLoop& loop = runLoop.eventLoop();
  WatchReport report(session.out, session.screen,
                     asJSON ? WatchReport::Format::json : WatchReport::Format::text,
                     [&] { runLoop.stop(); });
  const auto replies = std::make_shared<ClientLoop>();
  CorvelProxy agent(std::make_shared<AgentConnection>(patienceAtKeyboard), replies);
  const auto repliesWatch =
      loop.watch(replies->events.descriptor(), EPOLLIN, [&](auto) { replies->events.dispatch(); });
  CardWatch card(session, agent, report);
  SocketNotificationCenter center(loop, path);
  const auto token =
      center.addObserver(MeCardValuesDidChangeNotification, [&] { card.lookAfterNotification(); });
  const AgentPresence presence(loop, agentAddress, session.pause, [&](bool isThere) {
    if (!isThere) return report.agentEnded(Date::now());
    report.agentAppeared(Date::now());
    card.lookAgain();
  });
  if (hasReader()) {
    static_cast<void>(
        loop.watch(STDOUT_FILENO, EPOLLERR | EPOLLHUP, [&](auto) { runLoop.stop(); }));
  }
  card.lookAgain();
  runLoop.run();
  repliesWatch->cancel();
  token->cancel();
}

}  // namespace

CommandPtr makeWatchWord() { return std::make_unique<WatchWord>(); }

}  // namespace quenlet
