#include "tools/commands/OutputFile.h"

#include <cerrno>

#include "platform/files/DurableFileWriter.h"
#include "platform/files/PosixFileOperations.h"

namespace quenlet {

ExitCode writeOutputFile(const Session& session, const std::string& file, std::string_view data,
                         bool replaces) {
  PosixFileOperations operations;
  DurableFileWriter writer(operations);
  const ErrorPtr error = replaces ? writer.replace(file, data) : writer.create(file, data);
  const ExitCode code = session.finishWith(error);
  if (error && error->domain() == PosixErrorDomain && error->code() == EEXIST) {
    session.hint("--force replaces it");
  }
  return code;
}

}  // namespace quenlet
