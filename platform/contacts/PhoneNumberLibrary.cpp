#include "platform/contacts/PhoneNumberLibrary.h"

#include <dlfcn.h>

#include <string>
#include <system_error>

#include "platform/foundation/StandardStreams.h"

namespace quenlet {
namespace {

// Beside the folder of the program, which is bin, libexec or libexec/quenlet, installed and in the
// build tree alike. The module of another version, which may have another interface, is in another
// folder.
std::filesystem::path moduleOfRunningProgram() {
  std::error_code failure;
  auto folder = std::filesystem::read_symlink("/proc/self/exe", failure).parent_path();
  if (folder.filename() == "quenlet") folder = folder.parent_path();
  return folder.parent_path() / "lib/quenlet" / QUENLET_VERSION / "phone-numbers.so";
}

}  // namespace

PhoneNumberLibrary::PhoneNumberLibrary(const std::filesystem::path& module) {
  // A relative path would load a file from the working directory.
  void* loaded = module.is_absolute()
                     ? ::dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE)
                     : nullptr;
  if (loaded) {
    readNumber = reinterpret_cast<QuenletReadNumber*>(::dlsym(loaded, readNumberSymbol));
    writeNumber = reinterpret_cast<QuenletWriteNumber*>(::dlsym(loaded, writeNumberSymbol));
  }
  if (readNumber && writeNumber) return;
  readNumber = nullptr;
  writeNumber = nullptr;
  const char* reason = ::dlerror();
  StandardStreams::writeError(
      std::string("quenlet: phone numbers are compared by their digits alone: ") +
      (reason ? reason : "there is no such module"));
}

const PhoneNumberLibrary& PhoneNumberLibrary::shared() {
  static const PhoneNumberLibrary library(moduleOfRunningProgram());
  return library;
}

std::optional<QuenletInternationalNumber> PhoneNumberLibrary::read(const std::string& text) const {
  QuenletInternationalNumber number{};
  if (!readNumber || readNumber(text.c_str(), &number) == 0) return std::nullopt;
  return number;
}

std::optional<QuenletWrittenNumber> PhoneNumberLibrary::write(const std::string& text) const {
  QuenletWrittenNumber number{};
  if (!writeNumber || writeNumber(text.c_str(), &number) == 0) return std::nullopt;
  return number;
}

}  // namespace quenlet
