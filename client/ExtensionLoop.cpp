#include "client/ExtensionLoop.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <bit>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>

#include "client/Conversion.h"
#include "platform/extensions/DonorExtensionInterface.h"
#include "platform/extensions/ExtensionError.h"
#include "platform/ipc/ErrorWire.h"
#include "platform/ipc/UnixServiceConnection.h"
#include "protocol/DonationWire.h"

namespace quenlet {
namespace {

// An exception's text may quote personal values, so it is not passed on.
ErrorPtr extensionFailed() {
  return makeExtensionError(ExtensionErrorCode::donorFailed, "the donor threw an exception");
}

// Passes the agent's requests to the extension, on the thread that serves the socket.
class ExtensionDispatcher final : public ExportedObject {
 public:
  explicit ExtensionDispatcher(Extension& asked) : extension(asked) {}

  void perform(const std::string& selector, WireReader arguments, WireReply reply) override {
    WireEncoder encoder;
    if (selector == DonorExtensionSelector::renew) {
      renew(arguments, encoder);
    } else {
      redonate(arguments, encoder);
    }
    reply(std::move(encoder).take());
  }

 private:
  void renew(WireReader& arguments, WireEncoder& encoder) const {
    const Result<Date> date = renewed(DonationWire::decodeValue(arguments));
    date.ok() ? encoder.date(date.value()) : encoder.null();
    ErrorWire::encode(encoder, date.ok() ? nullptr : date.error());
  }

  [[nodiscard]] Result<Date> renewed(const DonationValuePtr& value) const try {
    if (value) return extension.renew(Conversion::donation(*value));
    return Result<Date>::failure(
        makeServiceError(ServiceErrorCode::invalidArguments, "the value is not a valid donation"));
  } catch (...) {
    return Result<Date>::failure(extensionFailed());
  }

  void redonate(WireReader& arguments, WireEncoder& encoder) const {
    const auto reason = std::bit_cast<std::uint64_t>(arguments.integer().value_or(0));
    const Result<DonationValues> values = allValues(reason);
    if (values.ok()) {
      DonationWire::encode(encoder, values.value());
    } else {
      encoder.null();
    }
    ErrorWire::encode(encoder, values.ok() ? nullptr : values.error());
  }

  [[nodiscard]] Result<DonationValues> allValues(std::uint64_t reason) const try {
    Result<std::vector<Donation>> donations = extension.allDonations(reason);
    if (!donations.ok()) return Result<DonationValues>::failure(donations.error());
    return Conversion::donationValues(std::move(donations).takeValue());
  } catch (...) {
    return Result<DonationValues>::failure(extensionFailed());
  }

  Extension& extension;
};

bool isSocket(int descriptor) {
  struct stat status {};
  return ::fstat(descriptor, &status) == 0 && S_ISSOCK(status.st_mode);
}

// Moves the socket to another descriptor, close-on-exec: the author's code may read the standard
// input, or start programs that do.
FileDescriptor takeOverStandardInput() {
  FileDescriptor socket(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  const FileDescriptor nothing(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  if (!nothing.isOpen() || ::dup2(nothing.get(), STDIN_FILENO) < 0) socket.reset();
  return socket;
}

}  // namespace

void serveExtension(Extension& extension, FileDescriptor socket) {
  const auto loop = std::make_shared<EventLoop>();
  const auto context = std::make_shared<ServiceContext>();
  context->loop = loop;
  // The agent accepts only answers in a single message.
  context->limits.repliesInParts = false;
  const auto connection = std::make_shared<UnixServiceConnection>(
      context, std::move(socket), PeerIdentity(),
      [loop = loop.get()](UnixServiceConnection&) { loop->stop(); });
  connection->setExportedInterface(makeDonorExtensionInterface());
  connection->setExportedObject(std::make_shared<ExtensionDispatcher>(extension));
  connection->start();
  connection->resume();
  loop->run();
}

int runExtension(Extension& extension) {
  if (!isSocket(STDIN_FILENO)) {
    std::fputs(
        "This program is a donor extension: quenlet-agent starts it, as its manifest says.\n",
        stderr);
    return 2;
  }
  FileDescriptor socket = takeOverStandardInput();
  if (!socket.isOpen()) {
    std::perror("take over the agent's socket");
    return 2;
  }
  serveExtension(extension, std::move(socket));
  return 0;
}

}  // namespace quenlet
