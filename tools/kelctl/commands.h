// The commands of kelctl. A new command is one file beside this one, its declaration below and its line in
// command_line.cpp.
#pragma once

#include <CLI/CLI.hpp>
#include <iosfwd>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "library.h"

namespace kelctl {

/// What a command works with. Everything outlives the commands.
struct Session {
  std::ostream& out;
  std::ostream& err;
  bool colours = false;          // the output is a console that shows them, and nobody asked for none
  std::string libraryPath = {};  // of the option --dll
  bool json = false;             // of the option --json
  int exitCode = 0;              // of a command that ends normally

  std::unique_ptr<Library> OpenTheLibrary() const { return std::make_unique<Library>(libraryPath); }

  /// Shows what a command has to tell: the text, which ends in a line end, or with --json the document. Every command
  /// shows its result through this, once; docs/kelctl.md lists the members.
  void Show(const std::string& text, const nlohmann::ordered_json& document) const;
};

/// Each adds one command, whose callback does the work and may throw the errors of errors.h.
void AddShowCommand(CLI::App& kelctl, Session& session);
void AddGetCommand(CLI::App& kelctl, Session& session);
void AddSetCommand(CLI::App& kelctl, Session& session);
void AddSettingCommand(CLI::App& kelctl, Session& session);
void AddFileCommand(CLI::App& kelctl, Session& session);
void AddIntegrationCommands(CLI::App& kelctl, Session& session);
void AddPasswordCommand(CLI::App& kelctl, Session& session);
void AddProxyCommand(CLI::App& kelctl, Session& session);
void AddRegistrationCommands(CLI::App& kelctl, Session& session);
void AddJobsCommand(CLI::App& kelctl, Session& session);
void AddLauncherCommands(CLI::App& kelctl, Session& session);
void AddOsCommand(CLI::App& kelctl, Session& session);
void AddServerCommand(CLI::App& kelctl, Session& session);
void AddUpgradeCommand(CLI::App& kelctl, Session& session);
void AddEventCommand(CLI::App& kelctl, Session& session);
void AddPolicyCommand(CLI::App& kelctl, Session& session);
void AddPromptCommand(CLI::App& kelctl, Session& session);
void AddUuidCommand(CLI::App& kelctl, Session& session);
void AddStatusCommand(CLI::App& kelctl, Session& session);
void AddDoctorCommand(CLI::App& kelctl, Session& session);
void AddRepairCommand(CLI::App& kelctl, Session& session);
void AddLogCommand(CLI::App& kelctl, Session& session);
void AddDiagnosticsCommand(CLI::App& kelctl, Session& session);

}  // namespace kelctl
