#include "platform/contacts/PhoneNumberLibrary.h"

#include <dlfcn.h>

#include <string>
#include <system_error>

#include "platform/foundation/StandardStreams.h"

namespace quenlet {
namespace {

// Beside the folder of the program, which is bin or libexec, installed and in the build tree alike.
// The module of another version, which may have another interface, is in another folder.
std::filesystem::path moduleOfRunningProgram() {
  std::error_code failure;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", failure);
  return program.parent_path().parent_path() / "lib/quenlet" / QUENLET_VERSION / "phone-numbers.so";
}

}  // namespace

PhoneNumberLibrary::PhoneNumberLibrary(const std::filesystem::path& module) {
  // A relative path would load a file from the working directory.
  void* loaded = module.is_absolute()
                     ? ::dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE)
                     : nullptr;
  if (loaded) {
    readNumber = reinterpret_cast<QuenletReadNumber*>(::dlsym(loaded, readNumberSymbol));
  }
  if (readNumber) return;
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

}  // namespace quenlet
