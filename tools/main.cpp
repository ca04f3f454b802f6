#include <unistd.h>

#include <chrono>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "client/CorvelProxy.h"
#include "tools/commands/CommandLine.h"

int main(int argc, char** argv) {
  // Somebody waits at the keyboard: an agent that hangs is to be told soon. One that has answered
  // may take its time over a large donation.
  using std::chrono::seconds;
  quenlet::CorvelProxy agent(quenlet::Patience(seconds(5), seconds(25)));
  quenlet::Session session{std::cout,
                           std::cerr,
                           agent,
                           quenlet::Date::now(),
                           [](auto time) { std::this_thread::sleep_for(time); },
                           quenlet::Screen::ofDescriptor(STDOUT_FILENO)};
  if (::isatty(STDERR_FILENO) == 1) {
    session.errorScreen = quenlet::Screen::ofDescriptor(STDERR_FILENO);
  }
  return static_cast<int>(
      quenlet::CommandLine::run(std::vector<std::string>(argv + 1, argv + argc), session));
}
