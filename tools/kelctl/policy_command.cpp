#include <nlohmann/json.hpp>
#include <ostream>

#include "commands.h"
#include "policy/script_registration.h"
#include "texts.h"

namespace kelctl {
namespace {

using policy::ScriptKind;

struct PolicyOptions {
  std::string kind;
  std::string program;
  std::string parameters;
};

// Shows the errors of the policy's routines, and nothing else.
class ErrorSink final : public policy::ILogSink {
 public:
  explicit ErrorSink(std::ostream& err) : err_(err) {}
  std::uint32_t KE_API FirstSlot() override { return 0; }
  std::uint32_t KE_API GetLevel(std::uint32_t* level) override { return *level = policy::kSinkErrors, 0; }
  void KE_API Write(std::uint32_t, std::uint32_t, const wchar_t*, const wchar_t*) override {}
  void KE_API WriteError(std::uint32_t, std::uint32_t, const wchar_t*, std::uint32_t, std::uint32_t,
                         const wchar_t* text) override {
    err_ << "kelctl: " << Utf8FromWide(text) << "\n";
  }

 private:
  std::ostream& err_;
};

std::string KindName(ScriptKind kind) { return kind == ScriptKind::kStartup ? "startup" : "shutdown"; }

ScriptKind KindOf(const PolicyOptions& options) {
  for (const ScriptKind kind : policy::kScriptKinds) {
    if (options.kind == KindName(kind)) return kind;
  }
  throw UsageError("\"" + options.kind + "\" is neither startup nor shutdown");
}

void Finish(KE_RESULT result) {
  if (result == KE_SUCCESS) return;
  if (result == KE_MISSING_ARGUMENT) throw UsageError("the text is empty");
  if (result == KE_OUT_OF_RANGE) throw UsageError("the text is too long for a policy, or has a control character");
  throw CommandError(kCallFailed,
                     "the policy could not be read or changed as a whole: result " + std::to_string(result));
}

nlohmann::ordered_json AsJson(const std::vector<policy::ListedScript>& scripts) {
  auto list = nlohmann::ordered_json::array();
  for (const auto& listed : scripts) {
    list.push_back({{"kind", KindName(listed.kind)},
                    {"place", listed.place},
                    {"local", listed.local},
                    {"program", Utf8FromWide(policy::Wide(listed.script.program))},
                    {"parameters", Utf8FromWide(policy::Wide(listed.script.parameters))}});
  }
  return {{"scripts", std::move(list)}};
}

std::string AsTable(const std::vector<policy::ListedScript>& scripts) {
  std::string table;
  for (const auto& listed : scripts) {
    table += Padded(KindName(listed.kind), 10) + Padded(listed.place, 13) + (listed.local ? "local  " : "other  ") +
             WithoutControlCharacters(Utf8FromWide(policy::Wide(listed.script.program)));
    if (!listed.script.parameters.empty()) {
      table += "  " + WithoutControlCharacters(Utf8FromWide(policy::Wide(listed.script.parameters)));
    }
    table += "\n";
  }
  return table;
}

void List(Session& session, const PolicyOptions&) {
  ErrorSink sink(session.err);
  std::vector<policy::ListedScript> scripts;
  const KE_RESULT result = policy::ListScripts(&sink, policy::MachinePlaces(), scripts);
  session.Show(AsTable(scripts), AsJson(scripts));
  Finish(result);
}

void Add(Session& session, const PolicyOptions& options) {
  ErrorSink sink(session.err);
  const policy::Script script{policy::Utf16(WideFromUtf8(options.program)),
                              policy::Utf16(WideFromUtf8(options.parameters))};
  Finish(policy::RegisterScript(&sink, policy::MachinePlaces(), KindOf(options), script));
}

void Remove(Session& session, const PolicyOptions& options) {
  ErrorSink sink(session.err);
  Finish(policy::RemoveScripts(&sink, policy::MachinePlaces(), KindOf(options),
                               {policy::Utf16(WideFromUtf8(options.parameters))}, policy::ScriptFiles::kDeleted));
}

}  // namespace

void AddPolicyCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command =
      kelctl.add_subcommand("policy", "Shows and changes the startup and shutdown scripts of the machine's policy");
  command->require_subcommand(1);
  command->footer("Example: kelctl policy list");
  const auto options = std::make_shared<PolicyOptions>();
  const auto add = [&](const char* name, const char* description, void (*work)(Session&, const PolicyOptions&),
                       const char* footer) {
    CLI::App* const action = command->add_subcommand(name, description);
    action->footer(footer);
    action->callback([&session, options, work] { work(session, *options); });
    return action;
  };
  add("list", "Shows every script with each place that lists it", List,
      "\"other\" is a script of another policy, such as the domain's; it is never changed.\n"
      "Example: kelctl policy list --json");

  CLI::App* const adding = add("add", "Adds a script to the local policy; nothing happens when it is there", Add,
                               "A program without a folder lies in the policy's own folder for the kind.\n"
                               "Example: kelctl policy add shutdown C:\\Agent\\finish.cmd \"/quiet\"");
  CLI::App* const removing = add("remove", "Removes the local policy's scripts with exactly these parameters", Remove,
                                 "Their files in the policy's own folder for the kind are deleted.\n"
                                 "Example: kelctl policy remove shutdown \"/quiet\"");
  for (CLI::App* const action : {adding, removing})
    action->add_option("KIND", options->kind, "startup or shutdown")->required()->type_name("");
  adding->add_option("PROGRAM", options->program, "The script, or a program")->required()->type_name("");
  adding->add_option("PARAMETERS", options->parameters, "Its parameters")->type_name("");
  removing->add_option("PARAMETERS", options->parameters, "The parameters")->required()->type_name("");
}

}  // namespace kelctl
