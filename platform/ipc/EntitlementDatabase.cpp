#include "platform/ipc/EntitlementDatabase.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/foundation/Either.h"
#include "platform/foundation/PropertyListSerializer.h"
#include "platform/scheduling/FileDescriptor.h"

namespace quenlet {

namespace {

constexpr off_t maximumFileSize = off_t{1} << 20;

void reportIgnored(const std::filesystem::path& path, const std::string& reason) {
  std::fprintf(stderr, "quenlet: entitlements in %s are ignored: %s\n", path.c_str(),
               reason.c_str());
}

// Why others than root and the own user could have written it; empty when they could not.
std::string mistrust(const struct stat& status) {
  if (status.st_uid != 0 && status.st_uid != ::geteuid()) return "it belongs to another user";
  if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) return "its group or others can write it";
  return {};
}

Result<std::string> failed(std::string reason) {
  return Result<std::string>::right(makeError(PosixErrorDomain, EINVAL, std::move(reason)));
}

Result<std::string> readAll(const FileDescriptor& file, std::size_t size) {
  std::string bytes(size, '\0');
  std::size_t held = 0;
  while (held < size) {
    const ssize_t count = ::read(file.get(), bytes.data() + held, size - held);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return Result<std::string>::right(makePosixError(errno, "read"));
    if (count == 0) break;
    held += static_cast<std::size_t>(count);
  }
  bytes.resize(held);
  return Result<std::string>::left(std::move(bytes));
}

Result<std::string> readTrusted(const std::filesystem::path& path) {
  // O_NONBLOCK: a pipe of that name must not hold up the start.
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status {};
  if (!file.isOpen() || ::fstat(file.get(), &status) != 0) {
    return Result<std::string>::right(makePosixError(errno, "open"));
  }
  if (!S_ISREG(status.st_mode)) return failed("it is no regular file");
  if (std::string reason = mistrust(status); !reason.empty()) return failed(std::move(reason));
  if (status.st_size > maximumFileSize) return failed("it is larger than 1 MiB");
  return readAll(file, static_cast<std::size_t>(status.st_size));
}

std::string canonicalPath(const std::filesystem::path& path) {
  std::error_code failure;
  std::filesystem::path canonical = std::filesystem::weakly_canonical(path, failure);
  return failure ? path.lexically_normal().native() : canonical.native();
}

// The property lists of a trusted directory, by name.
std::vector<std::filesystem::path> listFiles(const std::filesystem::path& directory) {
  std::vector<std::filesystem::path> files;
  struct stat status {};
  if (::stat(directory.c_str(), &status) != 0) {
    if (errno != ENOENT)
      reportIgnored(directory, makePosixError(errno, "look")->debugDescription());
    return files;
  }
  if (const std::string reason = mistrust(status); !reason.empty()) {
    reportIgnored(directory, reason);
    return files;
  }
  std::error_code failure;
  for (std::filesystem::directory_iterator entry(directory, failure), none; entry != none;
       entry.increment(failure)) {
    if (entry->path().extension() == ".plist") files.push_back(entry->path());
    if (failure) break;
  }
  if (failure) reportIgnored(directory, failure.message());
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

EntitlementDatabase::EntitlementDatabase(const std::filesystem::path& prefix) {
  for (const auto& file : listFiles(prefix / "share" / "quenlet" / "entitlements")) {
    addFile(file, prefix);
  }
}

std::filesystem::path EntitlementDatabase::prefixOfRunningProgram() {
  std::error_code failure;
  return std::filesystem::read_symlink("/proc/self/exe", failure).parent_path().parent_path();
}

void EntitlementDatabase::addFile(const std::filesystem::path& file,
                                  const std::filesystem::path& prefix) {
  const Result<std::string> text = readTrusted(file);
  if (!text.isLeft()) return reportIgnored(file, text.right()->debugDescription());
  const Result<PropertyList> content = PropertyListSerializer::objectWithData(text.left());
  if (!content.isLeft()) return reportIgnored(file, content.right()->debugDescription());
  const PropertyListDictionary* programs = content.left().dictionary();
  if (programs == nullptr) return reportIgnored(file, "its top level is not a dictionary");
  for (const auto& [path, entitlements] : *programs) {
    if (entitlements.dictionary() == nullptr) {
      reportIgnored(file, "the value of " + path + " is not a dictionary");
      continue;
    }
    // An absolute path takes the prefix's place.
    auto& known = entitlementsByExecutable[canonicalPath(prefix / path)];
    for (const auto& [name, value] : *entitlements.dictionary()) {
      known.insert_or_assign(name, value);
    }
  }
}

std::optional<PropertyList> EntitlementDatabase::value(const std::filesystem::path& executable,
                                                       const std::string& entitlement) const {
  const auto found = entitlementsByExecutable.find(executable.native());
  if (found == entitlementsByExecutable.end()) return std::nullopt;
  const PropertyList* held = findEntry(found->second, entitlement);
  return held == nullptr ? std::nullopt : std::optional(*held);
}

}  // namespace quenlet
