#include "tools/commands/WatchWord.h"

#include <CLI/CLI.hpp>

#include "platform/files/UserDirectories.h"
#include "platform/notifications/NotificationDirectory.h"
#include "platform/notifications/SocketNotificationCenter.h"
#include "platform/scheduling/RunLoop.h"

namespace quenlet {
namespace {

ExitCode watch(Session& session) {
  RunLoop runLoop;
  const auto runtime = UserDirectories::runtimeDirectory();
  if (!runtime.isLeft()) return session.failWith(runtime.right());
  const auto path = runtime.left() / "quenlet/notifications";
  if (const auto directory = NotificationDirectory::open(path); !directory.isLeft()) {
    return session.failWith(directory.right());
  }
  SocketNotificationCenter center(runLoop.eventLoop(), path);
  const auto token = center.addObserver(MeCardValuesDidChangeNotification, [&] {
    session.out << Date::now().iso8601() << "  " << MeCardValuesDidChangeNotification << "\n"
                << std::flush;
    // Whoever read the lines is gone.
    if (!session.out) runLoop.stop();
  });
  session.out << "watching…\n" << std::flush;
  runLoop.run();
  token->cancel();
  return ExitCode::done;
}

}  // namespace

void WatchWord::addTo(CLI::App& app, ChosenAction& chosen) {
  CLI::App* word = app.add_subcommand("watch", "Write a line for each change of the card");
  word->footer("The first line says that it is ready. Ends with 0 when interrupted.");
  word->callback([&chosen] { chosen = watch; });
}

}  // namespace quenlet
