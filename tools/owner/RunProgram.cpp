#include "tools/owner/RunProgram.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/foundation/FileDescriptor.h"

namespace quenlet {
namespace {

using std::filesystem::path;

constexpr std::string_view scriptMark = "#!";
// What the kernel reads of a file before it decides how to run it.
constexpr std::size_t bytesOfMark = 256;
// The kernel follows no longer chain of scripts either.
constexpr std::size_t mostScripts = 5;

Result<path> notPossible(const path& file, const std::string& reason) {
  return Result<path>::failure(makeError(PosixErrorDomain, ENOEXEC, file.native() + ": " + reason));
}

Result<path> programAt(const path& file) {
  std::error_code failure;
  path program = std::filesystem::canonical(file, failure);
  if (failure) {
    return Result<path>::failure(makePosixError(failure.value(), "find " + file.native()));
  }
  if (!std::filesystem::is_regular_file(program, failure)) {
    return notPossible(program, "it is not a file that can be executed");
  }
  if (::access(program.c_str(), X_OK) != 0) {
    return Result<path>::failure(makePosixError(errno, "execute " + program.native()));
  }
  return Result<path>::success(std::move(program));
}

// As a shell finds a command of that name.
Result<path> programNamed(const std::string& name) {
  if (name.find('/') != std::string::npos) return programAt(name);
  const char* const places = std::getenv("PATH");
  std::istringstream list(places == nullptr ? "" : places);
  for (std::string directory; std::getline(list, directory, ':');) {
    Result<path> program = programAt(path(directory.empty() ? "." : directory) / name);
    if (program.ok()) return program;
  }
  return notPossible(name, "no directory of PATH has such a program");
}

// What `env` starts when these are its arguments.
Result<path> startedByEnv(const path& script, std::string_view arguments) {
  constexpr std::array<std::string_view, 5> flags = {"-", "-i", "-v", "-S", "--split-string"};
  std::istringstream words{std::string(arguments)};
  for (std::string word; words >> word;) {
    if (std::find(flags.begin(), flags.end(), word) != flags.end()) continue;
    if (word.starts_with('-')) break;
    if (word.find('=') == std::string::npos) return programNamed(word);
  }
  return notPossible(script, "it is unclear what env starts for it; name that program instead");
}

Result<std::string> beginningOf(const path& program) {
  const FileDescriptor file(::open(program.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.isOpen()) {
    // A file that can only be executed is a program: a script has to be read.
    if (errno == EACCES) return Result<std::string>::success({});
    return Result<std::string>::failure(makePosixError(errno, "open " + program.native()));
  }
  return readAtMost(
      bytesOfMark, [&](char* room, std::size_t size) { return ::read(file.get(), room, size); },
      "read " + program.native());
}

Result<path> interpreterOf(const path& script, std::string_view line) {
  constexpr std::string_view blanks = " \t";
  line = line.substr(scriptMark.size(), line.find('\n') - scriptMark.size());
  line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
  if (line.empty()) return notPossible(script, "its first line names no program");
  // It would become an invisible part of the name.
  if (line.ends_with('\r'))
    return notPossible(script, "its first line ends with a return character");
  const std::size_t end = std::min(line.find_first_of(blanks), line.size());
  const path named = line.substr(0, end);
  Result<path> interpreter = programAt(named);
  if (interpreter.ok() && named.filename() == "env") return startedByEnv(script, line.substr(end));
  return interpreter;
}

}  // namespace

Result<RunProgram> RunProgram::of(const path& file) {
  RunProgram run;
  for (Result<path> next = programAt(file);;) {
    if (!next.ok()) return Result<RunProgram>::failure(next.error());
    const Result<std::string> beginning = beginningOf(next.value());
    if (!beginning.ok()) return Result<RunProgram>::failure(beginning.error());
    if (!beginning.value().starts_with(scriptMark)) {
      run.executable = next.value();
      return Result<RunProgram>::success(std::move(run));
    }
    run.scripts.push_back(next.value());
    next = run.scripts.size() < mostScripts
               ? interpreterOf(run.scripts.back(), beginning.value())
               : notPossible(run.scripts.front(), "too many scripts run one another");
  }
}

}  // namespace quenlet
