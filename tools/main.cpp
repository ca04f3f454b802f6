#include <unistd.h>

#include <chrono>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "client/CorvelProxy.h"
#include "tools/commands/CommandLine.h"

int main(int argc, char** argv) {
  quenlet::CorvelProxy agent(quenlet::patienceAtKeyboard);
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
