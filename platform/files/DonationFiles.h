#pragma once

// The files in which an agent keeps donations; it shares some with other programs of the user.
namespace quenlet::DonationFiles {

// Below the home directory.
inline constexpr char directory[] = "Library/Contacts/Donations";
inline constexpr char donations[] = "donations.plist";
// The key of the list in that file.
inline constexpr char donationsKey[] = "donations";
inline constexpr char rejections[] = "rejections.json";
inline constexpr char bundleVersions[] = "bundle_versions.plist";
// The key of the table in that file.
inline constexpr char versionsKey[] = "versions";
// Held locked by an agent while it runs.
inline constexpr char agentLock[] = "agent.lock";
// Held locked by a program that has donor extensions asked, or what they gave taken back.
inline constexpr char collectLock[] = "collect.lock";

}  // namespace quenlet::DonationFiles
