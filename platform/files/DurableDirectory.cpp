#include "platform/files/DurableDirectory.h"

#include <fcntl.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/foundation/FileDescriptor.h"

namespace quenlet {

using std::filesystem::path;

path DurableDirectory::of(const path& file) {
  path directory = file.parent_path();
  return directory.empty() ? path(".") : directory;
}

int DurableDirectory::ensure(FileOperations& operations, const path& directory) {
  if (!directory.empty() && !directory.has_filename() && directory != directory.root_path()) {
    return ensure(operations, directory.parent_path());  // a trailing slash
  }
  std::error_code unknown;  // an error here shows again in mkdir()
  if (std::filesystem::is_directory(directory, unknown)) return 0;
  const path parent = of(directory);
  if (parent != directory) {
    if (const int failure = ensure(operations, parent); failure != 0) return failure;
  }
  if (operations.mkdir(directory, 0700) != 0) {
    if (errno != EEXIST) return errno;
    return std::filesystem::is_directory(directory, unknown) ? 0 : ENOTDIR;  // made by another
  }
  return synchronize(operations, parent);
}

int DurableDirectory::synchronize(FileOperations& operations, const path& directory) {
  const FileDescriptor descriptor(
      operations.open(directory, O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0));
  if (!descriptor.isOpen()) return errno;
  int outcome = 0;
  do outcome = operations.fsync(descriptor.get());
  while (outcome != 0 && errno == EINTR);
  return outcome == 0 ? 0 : errno;
}

}  // namespace quenlet
