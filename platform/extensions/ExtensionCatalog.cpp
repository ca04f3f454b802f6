#include "platform/extensions/ExtensionCatalog.h"

#include <cerrno>
#include <system_error>

#include "platform/extensions/ExtensionError.h"
#include "platform/files/TrustedDirectory.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

Result<TrustedDirectory> openParts(const ManifestDirectory& directory) {
  Result<TrustedDirectory> opened = TrustedDirectory::open(directory.base);
  for (const std::filesystem::path& part : directory.below) {
    if (!opened.ok()) break;
    opened = opened.value().subdirectory(part.native());
  }
  return opened;
}

}  // namespace

// One reading of the directories.
class ExtensionCatalog::Reading final {
 public:
  void addDirectory(const ManifestDirectory& directory) {
    const std::filesystem::path path = directory.path();
    const Result<TrustedDirectory> opened = openParts(directory);
    if (!opened.ok()) return addFailure(path, opened.error());
    const Result<std::vector<std::string>> names = opened.value().names();
    if (!names.ok()) return setUnreadable(path, names.error());
    std::size_t count = 0;
    for (const std::string& name : names.value()) {
      if (std::filesystem::path(name).extension() != ".plist") continue;
      if (++count > maximumManifests) {
        problems.emplace_back(path.native(),
                              makeError(PosixErrorDomain, E2BIG, "there are too many manifests"));
        break;
      }
      addFile(opened.value(), name);
    }
  }

  Content content;
  Problems problems;

 private:
  // An existing directory that is not trusted, because others can write it or a parent, is ignored:
  // that is a problem to report. Any other failure means that manifests may be missing.
  void addFailure(const std::filesystem::path& path, const ErrorPtr& error) {
    std::error_code failure;
    const auto found = std::filesystem::status(path, failure).type();
    if (error->code() == ENOENT || found == std::filesystem::file_type::not_found) return;
    if (error->code() == EACCES && found == std::filesystem::file_type::directory) {
      problems.emplace_back(path.native(), error);
    } else {
      setUnreadable(path, error);
    }
  }

  void setUnreadable(const std::filesystem::path& path, const ErrorPtr& error) {
    if (content.unreadable) return;
    content.unreadable = makeExtensionError(ExtensionErrorCode::manifestsUnreadable,
                                            path.native() + ": " + error->debugDescription());
  }

  void addFile(const TrustedDirectory& directory, const std::string& name) {
    const std::filesystem::path file = directory.path() / name;
    const Result<std::string> text =
        directory.readFile(name, ExtensionManifest::maximumSizeInBytes);
    if (!text.ok()) {
      problems.emplace_back(file.native(), text.error());
      return;
    }
    Result<ExtensionManifest> manifest = ExtensionManifest::read(text.value(), directory.path());
    if (!manifest.ok()) {
      problems.emplace_back(file.native(), manifest.error());
      return;
    }
    const auto read = std::make_shared<ExtensionManifest>(std::move(manifest).takeValue());
    read->file = file;
    if (content.byBundle.emplace(canonicalKey(read->bundleIdentifier), read).second) {
      content.manifests.push_back(read);
    }
  }
};

ExtensionCatalog::ExtensionCatalog(std::vector<ManifestDirectory> manifestDirectories)
    : directories(std::move(manifestDirectories)) {}

std::shared_ptr<const ExtensionCatalog::Content> ExtensionCatalog::read() const {
  // The age counts from the start: files may change after they were read.
  const auto begin = std::chrono::steady_clock::now();
  Reading reading;
  for (const ManifestDirectory& directory : directories) reading.addDirectory(directory);
  report(reading.problems);
  auto content = std::make_shared<const Content>(std::move(reading.content));
  MutexLock lock(mutex);
  lastRead = content;
  lastReadAt = begin;
  return content;
}

std::shared_ptr<const ExtensionCatalog::Content> ExtensionCatalog::recent() const {
  constexpr std::chrono::seconds longestAge(1);
  {
    MutexLock lock(mutex);
    if (lastRead && std::chrono::steady_clock::now() - lastReadAt < longestAge) return lastRead;
  }
  return read();
}

Result<ExtensionManifestPtr> ExtensionCatalog::Content::manifest(
    const std::string& bundleIdentifier) const {
  using Found = Result<ExtensionManifestPtr>;
  const auto found = byBundle.find(canonicalKey(bundleIdentifier));
  if (found != byBundle.end()) return Found::success(found->second);
  if (unreadable) return Found::failure(unreadable);
  return Found::failure(makeExtensionError(ExtensionErrorCode::notInstalled,
                                           "no extension is installed for this bundle"));
}

void ExtensionCatalog::report(const Problems& problems) const {
  // Forgets the reporters of problems that are over: if one comes back, it is reported again.
  std::map<std::string, std::shared_ptr<ProblemReporter>> current;
  {
    MutexLock lock(mutex);
    for (const auto& [subject, problem] : problems) {
      std::shared_ptr<ProblemReporter>& reporter = current[subject];
      const auto former = reporters.find(subject);
      if (!reporter && former != reporters.end()) reporter = former->second;
      if (!reporter) reporter = std::make_shared<ProblemReporter>(subject);
    }
    reporters = current;
  }
  for (const auto& [subject, problem] : problems) current.at(subject)->setProblem(problem);
}

}  // namespace quenlet
