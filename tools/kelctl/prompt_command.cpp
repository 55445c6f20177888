#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

#include "KELUtils.h"
#include "calls.h"
#include "commands.h"

namespace kelctl {
namespace {

struct PromptOptions {
  std::int32_t kind = 0, seconds = 0;
  std::uint32_t rebootMessage = 0;
};

void ShowAnswer(const Session& session, std::uint32_t answer) {
  session.Show(std::to_string(answer) + "\n", {{"answer", answer}});
}

void Reboot(Session& session, const PromptOptions&) {
  const auto library = session.OpenTheLibrary();
  std::uint32_t answer = 0;
  ThrowUnlessSuccess("KE_GetCanReboot", KELCTL_EXPORT(*library, KE_GetCanReboot)(&answer));
  ShowAnswer(session, answer);
}

void Ask(Session& session, const PromptOptions& options) {
  const auto library = session.OpenTheLibrary();
  std::uint32_t answer = 0;
  auto* const ask = KELCTL_EXPORT(*library, KE_GetUserResponse);
  ThrowUnlessSuccess("KE_GetUserResponse", ask(&answer, options.kind, options.seconds));
  ShowAnswer(session, answer);
}

void CountDown(Session& session, const PromptOptions& options) {
  const auto library = session.OpenTheLibrary();
  auto* const countDown = KELCTL_EXPORT(*library, KE_ShowRebootCountDown);
  ThrowUnlessSuccess("KE_ShowRebootCountDown", countDown(options.seconds));
}

void Install(Session& session, const PromptOptions& options) {
  const auto library = session.OpenTheLibrary();
  auto* const show = KELCTL_EXPORT(*library, KE_ShowInstallDialogEx);
  ThrowUnlessSuccess("KE_ShowInstallDialogEx", show(options.rebootMessage));
}

void Hide(Session& session, const PromptOptions&) {
  const auto library = session.OpenTheLibrary();
  ThrowUnlessSuccess("KE_HideInstallDialog", KELCTL_EXPORT(*library, KE_HideInstallDialog)());
}

void HideGuide(Session& session, const PromptOptions&) {
  const auto library = session.OpenTheLibrary();
  ThrowUnlessSuccess("KE_HideInstalationGuide", KELCTL_EXPORT(*library, KE_HideInstalationGuide)());
}

}  // namespace

void AddPromptCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand("prompt", "Asks the user, through the prompt program KePIRes.exe");
  command->require_subcommand(1);
  command->footer("Example: kelctl prompt reboot");
  const auto options = std::make_shared<PromptOptions>();
  const auto add = [&](const char* name, const char* description, void (*work)(Session&, const PromptOptions&),
                       const char* footer) {
    CLI::App* const action = command->add_subcommand(name, description);
    action->footer(footer);
    action->callback([&session, options, work] { work(session, *options); });
    return action;
  };
  add("reboot", "Asks whether the computer may be restarted now; prints the answer, 0, 1 or 2", Reboot,
      "Example: kelctl prompt reboot");
  CLI::App* const countDown = add("countdown", "Shows the countdown to a restart, and waits for its end", CountDown,
                                  "Example: kelctl prompt countdown 30");
  CLI::App* const ask =
      add("ask", "Asks a question of any kind; prints the answer, 0, 1 or 2", Ask, "Example: kelctl prompt ask 7 60");
  ask->add_option("KIND", options->kind, "The number of the question")->required()->type_name("");
  for (CLI::App* const action : {countDown, ask}) {
    action->add_option("SECONDS", options->seconds, "The time for it")->required()->type_name("");
  }
  CLI::App* const install = add("install", "Shows the installation dialog, and does not wait for it", Install,
                                "Example: kelctl prompt install --reboot-msg 1");
  install->add_option("--reboot-msg", options->rebootMessage, "The number of its message (default: 0)")->type_name("N");
  add("hide", "Closes the installation dialog", Hide, "Example: kelctl prompt hide");
  add("hide-guide", "Closes the installation guide, and moves the installation state forward to 47", HideGuide,
      "Example: kelctl prompt hide-guide");
}

}  // namespace kelctl
