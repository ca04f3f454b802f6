#include "donors/owner/PictureDonations.h"

#include <cerrno>
#include <string>
#include <utility>

#include "donors/source/DonationCluster.h"
#include "foreign/ForeignFiles.h"

namespace quenlet {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view pngStart = "\x89PNG\r\n\x1A\n"sv;
constexpr std::string_view pngEnd = "\0\0\0\0IEND\xAE\x42\x60\x82"sv;
constexpr std::string_view jpegStart = "\xFF\xD8\xFF"sv;
constexpr std::string_view jpegEnd = "\xFF\xD9"sv;

// Cameras write a little behind the end.
constexpr std::size_t mostBehindEnd = 1024;

}  // namespace

bool isWholeImage(std::string_view bytes) {
  if (bytes.starts_with(pngStart)) return bytes.ends_with(pngEnd);
  if (!bytes.starts_with(jpegStart)) return false;
  const std::size_t end = bytes.rfind(jpegEnd);
  return end != bytes.npos && end >= jpegStart.size() && bytes.size() - end <= mostBehindEnd;
}

SourceDonor::Donations pictureDonations(const std::vector<std::filesystem::path>& files) {
  using Donations = SourceDonor::Donations;
  std::vector<Donation> donations;
  std::size_t number = 0;
  for (const std::filesystem::path& file : files) {
    ++number;
    auto bytes = ForeignFiles::read(file);
    if (bytes.ok() && !bytes.value()) continue;
    const ErrorPtr error =
        !bytes.ok() ? bytes.error()
        : isWholeImage(*bytes.value())
            ? nullptr
            : makeError(PosixErrorDomain, EINVAL, "it is not a whole PNG or JPEG image");
    if (error) {
      return Donations::failure(ForeignFiles::locate("picture " + std::to_string(number), *error));
    }
    DonationCluster cluster("org.quenlet.donors.picture", "picture");
    cluster.add(Image{*std::move(bytes).takeValue()}, "image");
    cluster.moveTo(donations);
    break;
  }
  return Donations::success(std::move(donations));
}

}  // namespace quenlet
