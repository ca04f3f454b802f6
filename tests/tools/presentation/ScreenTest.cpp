#include "tools/presentation/Screen.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/ioctl.h>

#include "platform/foundation/FileDescriptor.h"

namespace quenlet {
namespace {

// A terminal's two ends.
struct Terminal final {
  explicit Terminal(unsigned short columns) {
    const winsize size{.ws_row = 24, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
    ::grantpt(controller.get());
    ::unlockpt(controller.get());
    screen = FileDescriptor(::open(::ptsname(controller.get()), O_RDWR | O_NOCTTY));
    ::ioctl(screen.get(), TIOCSWINSZ, &size);
  }
  FileDescriptor controller{::posix_openpt(O_RDWR | O_NOCTTY)};
  FileDescriptor screen;
};

TEST(ScreenTest, IsAsWideAndAsColouredAsTheUserHasIt) {
  const Terminal terminal(133);
  const Terminal unknown(0);
  const FileDescriptor file(::open("/dev/null", O_WRONLY));
  const std::tuple<const char*, const FileDescriptor&, const char*, const char*, const char*,
                   std::size_t, bool>
      rows[] = {
          {"a terminal", terminal.screen, "", "", "xterm", 133, true},
          {"a terminal of unknown size", unknown.screen, "", "", "xterm", 80, true},
          {"no terminal", file, "", "", "xterm", 80, false},
          {"no terminal, told", file, "51", "", "xterm", 51, false},
          {"a terminal, told", terminal.screen, "51", "", "xterm", 51, true},
          {"nonsense", terminal.screen, "51x", "", "xterm", 133, true},
          {"too narrow", terminal.screen, "3", "", "xterm", 20, true},
          {"no colour", terminal.screen, "", "1", "xterm", 133, false},
          {"dumb", terminal.screen, "", "", "dumb", 133, false},
      };
  for (const auto& [name, descriptor, columns, noColour, term, width, isColoured] : rows) {
    SCOPED_TRACE(name);
    ::setenv("COLUMNS", columns, 1);
    ::setenv("NO_COLOR", noColour, 1);
    ::setenv("TERM", term, 1);
    const Screen screen = Screen::ofDescriptor(descriptor.get());
    EXPECT_EQ(screen.width, width);
    EXPECT_EQ(screen.isColoured, isColoured);
  }
  for (const char* name : {"COLUMNS", "NO_COLOR", "TERM"}) ::unsetenv(name);
}

}  // namespace
}  // namespace quenlet
