#include <sys/epoll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>

#include "platform/files/UserDirectories.h"
#include "platform/notifications/NotificationDirectory.h"
#include "platform/notifications/SocketNotificationCenter.h"
#include "platform/scheduling/RunLoop.h"
#include "tools/commands/Command.h"

namespace quenlet {
namespace {

// Whether standard output has a reader that may go away.
bool hasReader() {
  struct stat status {};
  return ::fstat(STDOUT_FILENO, &status) == 0 &&
         (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode) || ::isatty(STDOUT_FILENO) == 1);
}

ExitCode watch(Session& session) {
  RunLoop runLoop;
  const auto runtime = UserDirectories::runtimeDirectory();
  if (!runtime.ok()) return session.failWith(runtime.error());
  const auto path = runtime.value() / "quenlet/notifications";
  if (const auto directory = NotificationDirectory::open(path); !directory.ok()) {
    return session.failWith(directory.error());
  }
  SocketNotificationCenter center(runLoop.eventLoop(), path);
  const auto token = center.addObserver(MeCardValuesDidChangeNotification, [&] {
    session.out << Date::now().iso8601() << "  " << MeCardValuesDidChangeNotification << "\n"
                << std::flush;
    if (!session.out) runLoop.stop();
  });
  if (hasReader()) {
    static_cast<void>(runLoop.eventLoop().watch(STDOUT_FILENO, EPOLLERR | EPOLLHUP,
                                                [&](auto) { runLoop.stop(); }));
  }
  session.out << "watching…\n" << std::flush;
  runLoop.run();
  token->cancel();
  return ExitCode::done;
}

// "watch": writes a line for each change of the donated card, until SIGINT or SIGTERM. Stateless.
// Run it before the process starts another thread.
class WatchWord final : public Command {
 public:
  void addTo(CLI::App& app, ChosenAction& chosen) override;
};

void WatchWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("watch", "Write a line for each change of the card");
  word->footer(
      "The first line says that it is ready. Ends with 0 when interrupted, or when nobody"
      " reads its lines any more.");
  word->callback([&chosen] { chosen = watch; });
}

}  // namespace

CommandPtr makeWatchWord() { return std::make_unique<WatchWord>(); }

}  // namespace quenlet
