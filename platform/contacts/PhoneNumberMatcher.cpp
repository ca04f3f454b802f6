#include "platform/contacts/PhoneNumberMatcher.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <system_error>

namespace quenlet {
namespace {

// <prefix>/bin/<program> and <prefix>/lib/quenlet/<module>: installed and in the build tree alike.
std::filesystem::path moduleOfRunningProgram() {
  std::error_code failure;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", failure);
  return program.parent_path().parent_path() / "lib/quenlet/phone-numbers.so";
}

}  // namespace

PhoneNumberMatcher::PhoneNumberMatcher(const std::filesystem::path& module) {
  // A relative path would be looked for in the working directory.
  void* loaded = module.is_absolute()
                     ? ::dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE)
                     : nullptr;
  if (loaded) match = reinterpret_cast<QuenletNumberMatch*>(::dlsym(loaded, numberMatchSymbol));
  if (match) return;
  const char* reason = ::dlerror();
  std::fprintf(stderr, "quenlet: phone numbers are compared by their digits alone: %s\n",
               reason ? reason : "there is no such module");
}

const PhoneNumberMatcher& PhoneNumberMatcher::shared() {
  static const PhoneNumberMatcher matcher(moduleOfRunningProgram());
  return matcher;
}

bool PhoneNumberMatcher::areSameNumber(const std::string& a, const std::string& b) const {
  if (a == b) return true;
  // The library takes the region from the first number that has one; one order makes it symmetric.
  const auto& [first, second] = std::minmax(a, b);
  return match && match(first.c_str(), second.c_str()) != 0;
}

}  // namespace quenlet
