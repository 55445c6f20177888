#include "command_line.h"
#include "commands.h"
#include "diagnosis/examination.h"
#include "diagnosis/store_files.h"

namespace kelctl {
namespace {

void Diagnose(Session& session) {
  const Product product(LibraryPath(session.libraryPath));
  const Findings findings = Examine(product, ReadStoreCopies(product));
  session.Show(RenderFindings(findings, session.colours), JsonOf(findings));
  if (!IsHealthy(findings)) session.exitCode = kNotHealthy;
}

}  // namespace

void AddDoctorCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand(
      "doctor",
      "Examines every module, program, store file and settings file of the installation, and changes nothing");
  command->footer(
      "Exit code 0 when the installation is healthy, warnings included, 3 when something failed. docs/kelctl.md says "
      "what is a warning.\n"
      "Example: kelctl doctor");
  command->callback([&session] { Diagnose(session); });
}

}  // namespace kelctl
