// Run by the build: writes the manual pages and completion scripts of the command below a
// directory, laid out as below an installed "share".
//   quenlet-help-files VERSION DIRECTORY

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "tools/commands/CommandLine.h"
#include "tools/help/Completions.h"
#include "tools/help/ManualPage.h"

namespace {

using quenlet::Completions;
using quenlet::HelpPage;
using quenlet::ManualPage;

void write(const std::filesystem::path& file, const std::string& text) {
  std::filesystem::create_directories(file.parent_path());
  std::ofstream out;
  out.exceptions(std::ios::failbit | std::ios::badbit);
  out.open(file, std::ios::binary | std::ios::trunc);
  out << text << std::flush;
}

void writePages(const std::filesystem::path& directory, const HelpPage& page,
                const std::string& version) {
  write(directory / ManualPage::fileName(page), ManualPage::render(page, version));
  for (const HelpPage& below : page.pages) writePages(directory, below, version);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: quenlet-help-files VERSION DIRECTORY\n";
    return 2;
  }
  const std::filesystem::path share = argv[2];
  const HelpPage program = quenlet::CommandLine::help();
  try {
    // Removes the pages of words that no longer exist.
    std::filesystem::remove_all(share / "man");
    writePages(share / "man/man1", program, argv[1]);
    write(share / "bash-completion/completions/quenlet", Completions::forBash(program));
    write(share / "zsh/site-functions/_quenlet", Completions::forZsh(program));
    write(share / "fish/vendor_completions.d/quenlet.fish", Completions::forFish(program));
  } catch (const std::exception& failure) {
    std::cerr << "quenlet-help-files: " << failure.what() << "\n";
    return 1;
  }
  return 0;
}
