#pragma once

// The files in which an agent keeps donations, and what other programs of the user share with it.
namespace quenlet::DonationFiles {

// Below the home directory.
inline constexpr char directory[] = "Library/Contacts/Donations";
inline constexpr char donations[] = "donations.plist";
inline constexpr char rejections[] = "rejections.json";
inline constexpr char bundleVersions[] = "bundle_versions.plist";
// The key of the table in that file.
inline constexpr char versionsKey[] = "versions";
// Locked by an agent for its life.
inline constexpr char agentLock[] = "agent.lock";

}  // namespace quenlet::DonationFiles
