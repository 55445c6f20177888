// The commands that report events. There is none for KE_Uninstall: it would announce the end of an agent that stays,
// and take away its shutdown script.
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "KELUtils.h"
#include "calls.h"
#include "commands.h"
#include "rendering.h"

namespace kelctl {
namespace {

struct EventOptions {
  std::string product, taskId;
  std::optional<std::string> insert;
  std::int32_t status = 0;
  std::uint32_t eventClass = 0, source = 0, code = 0;
};

void SendScanState(Session& session, const EventOptions& options) {
  const auto library = session.OpenTheLibrary();
  const auto product = library->ToCodePage(options.product), taskId = library->ToCodePage(options.taskId);
  auto* const send = KELCTL_EXPORT(*library, KE_ScanStateEvent);
  ThrowUnlessSuccess("KE_ScanStateEvent", send(product.c_str(), taskId.c_str(), options.status));
}

void SendRebootForced(Session& session, const EventOptions& options) {
  const auto library = session.OpenTheLibrary();
  auto* const send = KELCTL_EXPORT(*library, KE_RebootForcedEvent);
  ThrowUnlessSuccess("KE_RebootForcedEvent", send(library->ToCodePage(options.product).c_str()));
}

void SendError(Session& session, const EventOptions& options) {
  const auto library = session.OpenTheLibrary();
  const std::string insert = library->ToCodePage(options.insert.value_or(""));
  auto* const send = KELCTL_EXPORT(*library, KE_GenerateEvent);
  ThrowUnlessSuccess("KE_GenerateEvent",
                     send(options.eventClass, options.source, options.code, options.insert ? insert.c_str() : nullptr));
}

void Describe(Session& session, const EventOptions& options) {
  const auto library = session.OpenTheLibrary();
  const std::string insert = library->ToCodePage(options.insert.value_or(""));
  auto* const get = KELCTL_EXPORT(*library, KE_GetEventDescription);
  char description[512] = {};
  ThrowUnlessSuccess("KE_GetEventDescription", get(options.code, description, sizeof description, insert.c_str()));
  const std::string text = library->FromCodePage(description);
  session.Show(WithoutControlCharacters(text) + "\n", {{"description", text}});
}

void Start(Session& session, const EventOptions&) {
  const auto library = session.OpenTheLibrary();
  ThrowUnlessSuccess("KE_InitEventSystem", KELCTL_EXPORT(*library, KE_InitEventSystem)());
}

}  // namespace

void AddEventCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand("event", "Reports events of the agent, and describes its errors");
  command->require_subcommand(1);
  command->footer("Example: kelctl event describe 403");
  const auto options = std::make_shared<EventOptions>();
  const auto add = [&](const char* name, const char* description, void (*work)(Session&, const EventOptions&),
                       const char* footer) {
    CLI::App* const action = command->add_subcommand(name, description);
    action->footer(footer);
    action->callback([&session, options, work] { work(session, *options); });
    return action;
  };
  CLI::App* const scan =
      add("scan", "Reports the state of a scan", SendScanState, "Example: kelctl event scan KEAGENT 12 1");
  CLI::App* const reboot =
      add("reboot", "Reports a forced restart", SendRebootForced, "Example: kelctl event reboot KEAGENT");
  CLI::App* const error =
      add("error", "Reports an error, with its description", SendError, "Example: kelctl event error 4 3 401 nightly");
  CLI::App* const describe =
      add("describe", "Prints the description of an error", Describe, "Example: kelctl event describe 401 nightly");
  add("start", "Has the launcher start the event service", Start, "Example: kelctl event start");

  for (CLI::App* const action : {scan, reboot})
    action->add_option("PRODUCT", options->product, "The product that it is about")->required()->type_name("");
  scan->add_option("TASKID", options->taskId, "The scan's task")->required()->type_name("");
  scan->add_option("STATUS", options->status, "Its state, a number")->required()->type_name("");
  error->add_option("CLASS", options->eventClass, "The event's class, a number")->required()->type_name("");
  error->add_option("SOURCE", options->source, "Its source, a number")->required()->type_name("");
  for (CLI::App* const action : {error, describe}) {
    action->add_option("CODE", options->code, "The number of the error")->required()->type_name("");
    action->add_option("INSERT", options->insert, "The text that comes with it")->type_name("");
  }
}

}  // namespace kelctl
