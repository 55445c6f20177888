#include "export_table.h"

#include <algorithm>

#include "KELAGAPI.h"

namespace kelctl {
namespace {

constexpr CommandGroup kGroups[] = {
    {"password", "Sets or checks the uninstall password"},
    {"file", "Reads or sets one value of an encrypted INI file"},
    {"proxy", "Shows or sets how the agent reaches its server"},
    {"server", "Sets the address of the management server"},
    {"plugin", "Adds or removes a plug-in of a module"},
    {"version", "Records installed versions"},
    {"jobs", "Schedules jobs, and lists them"},
    {"update", "Updates the agent"},
    {"update config", "Shows and changes the update settings, UPDNW.DAT"},
    {"launch", "Has other parts of the agent work"},
    {"upgrade", "The steps of an upgrade"},
    {"event", "Reports events of the agent, and describes its errors"},
    {"prompt", "Asks the user, through the prompt program KePIRes.exe"},
};

constexpr std::size_t kLongestAddress = 511;  // bytes; the library cuts a longer one
constexpr std::size_t kPortLength = 6;        // ":65535"
constexpr Parameter kBuffer{Kind::kBuffer};
constexpr Parameter kAnswer{Kind::kAnswer};
constexpr Parameter kZero{Kind::kZero};
constexpr Parameter Argument(Kind kind, int position, const char* name, const char* help) {
  return {.kind = kind, .name = name, .help = help, .position = position};
}

constexpr Parameter Optional(Kind kind, int position, const char* name, const char* help, const char* absent) {
  return {.kind = kind, .name = name, .help = help, .position = position, .optional = true, .absent = absent};
}

constexpr Parameter Option(Kind kind, const char* name, const char* help, const char* absent = nullptr) {
  return {.kind = kind, .name = name, .help = help, .optional = true, .absent = absent};
}

constexpr Parameter Selecting(Parameter parameter) {
  parameter.use = For::kOther;
  parameter.selects = true;
  return parameter;
}

constexpr Parameter OnlyFirst(Parameter parameter) {
  parameter.use = For::kFirst;
  return parameter;
}

constexpr Parameter OnlyOther(Parameter parameter) {
  parameter.use = For::kOther;
  return parameter;
}

constexpr Parameter Longest(std::size_t bytes, Parameter parameter) {
  parameter.longest = bytes;
  return parameter;
}

constexpr Parameter Needing(const char* option, Parameter parameter) {
  parameter.needs = option;
  return parameter;
}

constexpr Parameter Choice(Parameter parameter, const char* choices) {
  parameter.choices = choices;
  return parameter;
}

constexpr Parameter kJobId = Argument(Kind::kNumber, 1, "ID", "The job's task ID");
constexpr Parameter kPeriod = Argument(Kind::kNumber, 2, "MINUTES", "The period");
constexpr Parameter kRandomWeekday =
    Option(Kind::kFlag, "--random-weekday", "On one day from Monday to Friday, at random");
constexpr Parameter kProgram =
    Option(Kind::kJobText, "--program", "The program that the scheduler starts (default: KEPLPMNG)", "KEPLPMNG");

constexpr Parameter Module(int position) {
  return Argument(Kind::kJobText, position, "MODULE", "The module that runs");
}

constexpr Parameter Arguments(int position) {
  return Optional(Kind::kJobText, position, "ARGUMENTS", "Its arguments; after -- when they begin with -", "");
}

constexpr ExportCommand kCommands[] = {
    {.name = "integrate",
     .help = "Records the integration into the console, as of now in local time",
     .example = "integrate",
     .call = KELCTL_CALL(KE_Integrate),
     .parameters = {{Kind::kNow}},
     .note = "The computer counts as integrated when it also has a device-id.\n"},
    {.name = "deintegrate",
     .help = "Clears the integration date and the device identifier",
     .example = "deintegrate",
     .call = KELCTL_CALL(KE_DeIntegrate)},
    {.name = "password set",
     .help = "Stores the uninstall password encrypted; the empty password removes it",
     .example = "password set -",
     .call = KELCTL_CALL(KE_SetUninstallPass),
     .parameters = {Argument(Kind::kSecret, 1, "PASSWORD",
                             "The password in plain text; - reads it from standard input"),
                    kZero}},
    {.name = "password check",
     .help = "Says whether this is the uninstall password; exit code 1 when it is not",
     .example = "password check secret",
     .call = KELCTL_CALL(KE_CheckInstallationPassw),
     .shows = Shows::kYesOrNo,
     .member = "matches",
     .words = {"the password does not match", "the password matches"},
     .parameters = {Argument(Kind::kPassword, 1, "PASSWORD",
                             "The password in plain text; - reads it from standard input"),
                    kZero}},
    {.name = "file get",
     .help = "Shows a value",
     .example = "file get C:\\Agent\\settings.dat PROXY USER",
     .call = KELCTL_CALL(KE_GetEncryptedFileValue),
     .shows = Shows::kText,
     .member = "value",
     // The library would create a missing file, which nobody expects of a reading command.
     .parameters = {Argument(Kind::kText, 2, "SECTION", "The section of the value"),
                    Argument(Kind::kText, 3, "KEY", "The key of the value"), kBuffer,
                    Argument(Kind::kFile, 1, "PATH", "The file")}},
    {.name = "file set",
     .help = "Sets a value, creating the file when it is missing",
     .example = "file set C:\\Agent\\settings.dat PROXY USER support",
     .call = KELCTL_CALL(KE_SetEncryptedFileValue),
     .parameters = {Argument(Kind::kText, 2, "SECTION", "The section of the value"),
                    Argument(Kind::kKey, 3, "KEY", "The key of the value"),
                    Argument(Kind::kText, 4, "VALUE", "The new value"), Argument(Kind::kText, 1, "PATH", "The file")}},
    {.name = "proxy show",
     .help = "Shows the proxy of the agent",
     .example = "proxy show --json",
     .call = KELCTL_CALL(KE_GetConfiguratedProxy),
     .shows = Shows::kProxy,
     .parameters = {{Kind::kProxy}}},
    {.name = "proxy inet",
     .help = "Shows the proxy to use on the internet, as the installer sees it",
     .example = "proxy inet --reveal",
     .call = KELCTL_CALL(KE_GetInetConfig),
     .shows = Shows::kProxy,
     .parameters = {{Kind::kProxy}, {Kind::kProxySize}}},
    {.name = "proxy set",
     .help = "Sets the proxy of the agent and puts it in use",
     .example = "proxy set proxy.example 3128 --user support --password -",
     .call = KELCTL_CALL(KE_SetAgentProxyInfo),
     .parameters = {Longest(sizeof(KE_AGENT_PROXY_RECORD::address) - 1 - kPortLength,
                            Argument(Kind::kHost, 1, "SERVER", "The host")),
                    Optional(Kind::kPort, 2, "PORT", "The port (default: 80)", "80"),
                    Longest(sizeof(KE_AGENT_PROXY_RECORD::user) - 1,
                            Option(Kind::kSecret, "--user", "The user in plain text", "")),
                    Needing("--user",
                            Longest(sizeof(KE_AGENT_PROXY_RECORD::password) - 1,
                                    Option(Kind::kSecret, "--password",
                                           "The password in plain text; - reads it from standard input", "")))}},
    {.name = "proxy static",
     .help = "Sets the static proxy; without host and addresses it is switched off",
     .example = "proxy static --host relay.example --ips 10.0.0.1,10.0.0.2",
     .call = KELCTL_CALL(KE_SetStaticProxyInfo),
     .parameters = {Longest(sizeof(KE_STATIC_PROXY_RECORD::host) - 1, Option(Kind::kText, "--host", "The host", "")),
                    Longest(sizeof(KE_STATIC_PROXY_RECORD::addresses) - 1,
                            Option(Kind::kText, "--ips", "The addresses, as the agent takes them", ""))}},
    {.name = "server set",
     .help = "Sets the address that the agent module uses",
     .example = "server set https://console.example --secure",
     .call = KELCTL_CALL(KE_SetURLServer),
     .other = KELCTL_CALL(KE_SetURLSecureServer),
     .parameters = {Longest(kLongestAddress, Argument(Kind::kText, 1, "ADDRESS", "The address")),
                    Selecting(Option(Kind::kSwitch, "--secure",
                                     "Set that of the integration messages instead, in KE_AGPRX.dat"))}},
    {.name = "init",
     .help = "Writes the registration files of an installation",
     .example = "init C:\\Agent",
     .call = KELCTL_CALL(KE_InitializeSystem),
     .other = KELCTL_CALL(KE_InitializeSystemEx),
     .parameters = {Argument(Kind::kPath, 1, "ROOT", "The installation folder"),
                    Selecting(Option(Kind::kSwitch, "--reboot-required", "Also record that a reboot is required")),
                    OnlyOther({.kind = Kind::kConstant, .absent = "TRUE"})}},
    {.name = "plugin add",
     .help = "Enters a plug-in; without VALUE it is removed",
     .example = "plugin add KEC KELUpg C:\\Agent\\KEC\\KEC.dll",
     .call = KELCTL_CALL(KE_AddPlugin),
     .parameters = {Argument(Kind::kKey, 1, "KEY", "The plug-in"),
                    Argument(Kind::kText, 2, "HOST", "The module that hosts it"),
                    Optional(Kind::kText, 3, "VALUE", "The path of its library", nullptr)}},
    {.name = "plugin remove",
     .help = "Removes a plug-in, and notifies its host KELUpg or KELUpd",
     .example = "plugin remove KEC KELUpg",
     .call = KELCTL_CALL(KE_RemovePlugin),
     .parameters = {Argument(Kind::kKey, 1, "KEY", "The plug-in"),
                    Argument(Kind::kText, 2, "HOST", "The module that hosts it")}},
    {.name = "version set",
     .help = "Records the installed version of a component",
     .example = "version set KEAGENT 2.0.1",
     .call = KELCTL_CALL(KE_SetVersion),
     .parameters = {Argument(Kind::kKey, 1, "KEY", "The component"),
                    Argument(Kind::kText, 2, "VERSION", "Its version")}},
    {.name = "subscribe",
     .help = "Subscribes a plug-in to a policy type",
     .example = "subscribe KEC 101",
     .call = KELCTL_CALL(KE_AddPolicyTypeSuscription),
     .parameters = {Argument(Kind::kKey, 1, "KEY", "The plug-in"), Argument(Kind::kText, 2, "TYPE", "The type")}},
    {.name = "unsubscribe",
     .help = "Withdraws a plug-in from a policy type",
     .example = "unsubscribe KEC 101",
     .call = KELCTL_CALL(KE_RemovePolicyTypeSuscription),
     .parameters = {Argument(Kind::kKey, 1, "KEY", "The plug-in"), Argument(Kind::kText, 2, "TYPE", "The type")}},
    {.name = "can-run",
     .help = "Says whether a command may run in the present installation state; exit code 1 when it may not",
     .example = "can-run KELUpd",
     .call = KELCTL_CALL(KE_CanRunCommand),
     .shows = Shows::kYesOrNo,
     .member = "allowed",
     .parameters = {Argument(Kind::kText, 1, "COMMAND", "The command"), kAnswer}},
    {.name = "jobs default",
     .help = "Schedules the agent's own jobs",
     .example = "jobs default",
     .call = KELCTL_CALL(KE_ScheduleDefaultTasks)},
    {.name = "jobs set",
     .help = "Adds a job at a fixed day and time",
     .example = "jobs set 70 24/12/2024 18:30 KELSCAN -- -full",
     .call = KELCTL_CALL(KE_SetTask),
     .parameters = {kProgram, Module(4), Arguments(5), kJobId,
                    Argument(Kind::kJobText, 2, "DAY", "The day, in the scheduler's notation"),
                    Argument(Kind::kJobText, 3, "TIME", "The time, in the scheduler's notation")}},
    {.name = "jobs period",
     .help = "Sets a periodic job",
     .example = "jobs period 9 60 KELUPD",
     .call = KELCTL_CALL(KE_SetPeriodicTask),
     .parameters = {kProgram, Module(3), Arguments(4), kJobId, kPeriod, kRandomWeekday}},
    {.name = "jobs window",
     .help = "Sets a periodic job that starts within a window of the day",
     .example = "jobs window 70 1440 12:00 13:30 KELSCAN -- -full",
     .call = KELCTL_CALL(KE_SetPeriodicTaskEx),
     .other = KELCTL_CALL(KE_SetPeriodicTaskRangeDate),
     .parameters = {Module(5), Arguments(6), kJobId, kPeriod, Argument(Kind::kMinute, 3, "START", "HH:MM"),
                    Argument(Kind::kMinute, 4, "END", "HH:MM"), OnlyFirst(kRandomWeekday),
                    Selecting(Option(Kind::kJobText, "--recurrence",
                                     "In the scheduler's notation, in place of the period"))}},
    {.name = "jobs next-boot",
     .help = "Has the plug-in manager run a command after the next boot",
     .example = "jobs next-boot \"KELUPG -CONTINUE\" --delay 90",
     .call = KELCTL_CALL(KE_ScheduleTaskReboot),
     .parameters = {Argument(Kind::kJobText, 1, "COMMAND", "The command"),
                    Option(Kind::kNumber, "--delay", "Seconds after the boot (default: 0)"), kAnswer}},
    {.name = "jobs delete-next-boot",
     .help = "Calls the export that is to remove such a job, and does nothing",
     .example = "jobs delete-next-boot",
     .call = KELCTL_CALL(KE_RemoveScheduleTaskReboot),
     .parameters = {kZero}},
    {.name = "update now",
     .help = "Has the launcher update the agent; waits for the end",
     .example = "update now --values 1 0",
     .call = KELCTL_CALL(KE_UpdateNow),
     .other = KELCTL_CALL(KE_UpdateNowEx),
     .parameters = {Selecting(Option(Kind::kPair, "--values", "Two numbers for the launcher"))}},
    {.name = "update beside-others",
     .help = "Whether to install next to other products",
     .example = "update beside-others 1",
     .call = KELCTL_CALL(KE_SetNoCheckAVValue),
     .parameters = {Choice(Argument(Kind::kChoice, 1, "VALUE", "1 or 0"), "0 1")}},
    {.name = "update config get",
     .help = "Shows a setting",
     .example = "update config get UPDATE SOURCE",
     .call = KELCTL_CALL(KE_GetUpdateNowConfig),
     .shows = Shows::kText,
     .member = "value",
     .parameters = {Argument(Kind::kText, 1, "SECTION", "The section"),
                    Argument(Kind::kText, 2, "KEY", "The key"),
                    {.kind = Kind::kConstant, .absent = ""},
                    kBuffer}},
    {.name = "update config set",
     .help = "Changes a setting",
     .example = "update config set UPDATE SOURCE server",
     .call = KELCTL_CALL(KE_SetUpdateNowConfig),
     .parameters = {Argument(Kind::kSection, 1, "SECTION", "The section"), Argument(Kind::kKey, 2, "KEY", "The key"),
                    Argument(Kind::kText, 3, "VALUE", "The new value"),
                    Option(Kind::kFlag, "--only-if-exists", "Do not create the file")}},
    {.name = "notify",
     .help = "Notifies the plug-ins of the stored device identifier",
     .example = "notify remote-control",
     .call = KELCTL_CALL(KE_NotifyDeviceID),
     .parameters = {Choice(Optional(Kind::kChoice, 1, "TARGET", "all, installer or remote-control", nullptr),
                           "all installer remote-control")}},
    {.name = "launch report",
     .help = "Has the launcher send the report",
     .example = "launch report",
     .call = KELCTL_CALL(KE_SendReport)},
    {.name = "launch rcm-config",
     .help = "Has the launcher apply the remote-control configuration",
     .example = "launch rcm-config",
     .call = KELCTL_CALL(KE_AplyLocalRCMCfg)},
    {.name = "launch install-helper",
     .help = "Starts the installer helper",
     .example = "launch install-helper",
     .call = KELCTL_CALL(KE_LaunchKEPWInst)},
    {.name = "upgrade start",
     .help = "Brings the configuration files up to the current layout",
     .example = "upgrade start C:\\Agent",
     .call = KELCTL_CALL(KE_UpgradeStart),
     .parameters = {Argument(Kind::kFolder, 1, "DIR", "The installation directory")}},
    {.name = "upgrade complete",
     .help = "Schedules the jobs again and records the version",
     .example = "upgrade complete 0 2.1.0",
     .call = KELCTL_CALL(KE_UpgradeComplete),
     .other = KELCTL_CALL(KE_ScheduleUpgradeComplete),
     .parameters = {Argument(Kind::kUnsigned, 1, "CODE", "The installer's result code"),
                    Argument(Kind::kText, 2, "VERSION", "The new version"),
                    Selecting(Option(Kind::kSwitch, "--only-start", "Only start the plug-in manager"))}},
    // No command for KE_Uninstall: it would announce the end of an agent that stays, and remove its shutdown script.
    {.name = "event scan",
     .help = "Reports the state of a scan",
     .example = "event scan KEAGENT 12 1",
     .call = KELCTL_CALL(KE_ScanStateEvent),
     .parameters = {Argument(Kind::kText, 1, "PRODUCT", "The product that it is about"),
                    Argument(Kind::kText, 2, "TASKID", "The scan's task"),
                    Argument(Kind::kNumber, 3, "STATUS", "Its state, a number")}},
    {.name = "event reboot",
     .help = "Reports a forced restart",
     .example = "event reboot KEAGENT",
     .call = KELCTL_CALL(KE_RebootForcedEvent),
     .parameters = {Argument(Kind::kText, 1, "PRODUCT", "The product that it is about")}},
    {.name = "event error",
     .help = "Reports an error, with its description",
     .example = "event error 4 3 401 nightly",
     .call = KELCTL_CALL(KE_GenerateEvent),
     .parameters = {Argument(Kind::kUnsigned, 1, "CLASS", "The event's class, a number"),
                    Argument(Kind::kUnsigned, 2, "SOURCE", "Its source, a number"),
                    Argument(Kind::kUnsigned, 3, "CODE", "The number of the error"),
                    Optional(Kind::kText, 4, "INSERT", "The text that comes with it", nullptr)}},
    {.name = "event describe",
     .help = "Shows the description of an error",
     .example = "event describe 401 nightly",
     .call = KELCTL_CALL(KE_GetEventDescription),
     .shows = Shows::kText,
     .member = "description",
     .parameters = {Argument(Kind::kUnsigned, 1, "CODE", "The number of the error"), kBuffer,
                    Optional(Kind::kText, 2, "INSERT", "The text that comes with it", "")}},
    {.name = "event start",
     .help = "Has the launcher start the event service",
     .example = "event start",
     .call = KELCTL_CALL(KE_InitEventSystem)},
    {.name = "prompt reboot",
     .help = "Asks whether the computer may be restarted now; shows the answer: yes, no or later",
     .example = "prompt reboot",
     .call = KELCTL_CALL(KE_GetCanReboot),
     .shows = Shows::kAnswer,
     .member = "answer",
     .words = {"yes", "no", "later"},
     .parameters = {kAnswer}},
    {.name = "prompt ask",
     .help = "Asks a question of any kind; shows the answer: yes, no or later",
     .example = "prompt ask 7 60",
     .call = KELCTL_CALL(KE_GetUserResponse),
     .shows = Shows::kAnswer,
     .member = "answer",
     .words = {"yes", "no", "later"},
     .parameters = {kAnswer, Argument(Kind::kNumber, 1, "KIND", "The number of the question"),
                    Argument(Kind::kNumber, 2, "SECONDS", "The time for it")}},
    {.name = "prompt countdown",
     .help = "Shows the countdown to a restart, and waits for its end",
     .example = "prompt countdown 30",
     .call = KELCTL_CALL(KE_ShowRebootCountDown),
     .parameters = {Argument(Kind::kNumber, 1, "SECONDS", "Its length")}},
    {.name = "prompt install",
     .help = "Shows the installation dialog, and does not wait for it",
     .example = "prompt install --reboot-msg 1",
     .call = KELCTL_CALL(KE_ShowInstallDialogEx),
     .parameters = {Option(Kind::kUnsigned, "--reboot-msg", "The number of its message (default: 0)")}},
    {.name = "prompt hide",
     .help = "Closes the installation dialog",
     .example = "prompt hide",
     .call = KELCTL_CALL(KE_HideInstallDialog)},
    {.name = "prompt hide-guide",
     .help = "Closes the installation guide, and moves the installation state forward to 47",
     .example = "prompt hide-guide",
     .call = KELCTL_CALL(KE_HideInstalationGuide)},
    {.name = "uuid",
     .help = "Shows the hardware UUID of this machine; an empty line when there is none or the query is switched off",
     .example = "uuid",
     .call = KELCTL_CALL(KE_GetUUID),
     .shows = Shows::kText,
     .member = "uuid",
     .parameters = {kBuffer}},
};

static_assert(std::ranges::all_of(kCommands, [](const ExportCommand& command) {
  return Fits(command, command.call, For::kOther) &&
         (command.other.name == nullptr || Fits(command, command.other, For::kFirst));
}));

}  // namespace

std::span<const ExportCommand> ExportCommands() { return kCommands; }
std::span<const CommandGroup> CommandGroups() { return kGroups; }

}  // namespace kelctl
