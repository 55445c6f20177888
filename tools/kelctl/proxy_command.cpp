#include <cstring>
#include <nlohmann/json.hpp>

#include "KELAGAPI.h"
#include "KELUtils.h"
#include "arguments.h"
#include "calls.h"
#include "commands.h"
#include "rendering.h"
#include "settings.h"

namespace kelctl {
namespace {

struct ProxyOptions {
  std::string server;
  std::string port;
  std::string user;
  std::string password;
  std::string host;
  std::string addresses;
  bool reveal = false;
};

template <std::size_t kSize>
std::string TextIn(const char (&field)[kSize]) {
  return {field, strnlen(field, kSize)};
}

/// What is shown of a password: an empty one hides nothing.
std::string PasswordOf(const KE_PROXY& proxy, bool reveal) {
  const std::string password = TextIn(proxy.password);
  return reveal || password.empty() ? password : kMask;
}

// Host and port come in the code page, user and password, which were enciphered settings, in UTF-8.

std::string RenderTable(const Library& library, const KE_PROXY& proxy, bool reveal) {
  const std::pair<const char*, std::string> rows[] = {
      {"host      ", library.FromCodePage(TextIn(proxy.host))},
      {"port      ", std::to_string(proxy.port)},
      {"user      ", TextIn(proxy.user)},
      {"password  ", PasswordOf(proxy, reveal)},
  };
  std::string table;
  for (const auto& [name, text] : rows) {
    table += name + (text.empty() ? "(empty)" : WithoutControlCharacters(text)) + "\n";
  }
  return table;
}

nlohmann::ordered_json AsJson(const Library& library, const KE_PROXY& proxy, bool reveal) {
  const std::string password = PasswordOf(proxy, reveal);
  nlohmann::ordered_json object = {{"host", library.FromCodePage(TextIn(proxy.host))},
                                   {"port", proxy.port},
                                   {"hasCredentials", proxy.hasCredentials != 0},
                                   {"user", TextIn(proxy.user)},
                                   {"password", password}};
  if (!reveal && !password.empty()) object["masked"] = true;
  return object;
}

void Print(Session& session, const Library& library, const KE_PROXY& proxy, const ProxyOptions& options) {
  session.Show(RenderTable(library, proxy, options.reveal), AsJson(library, proxy, options.reveal));
}

void Show(Session& session, const ProxyOptions& options) {
  const auto library = session.OpenTheLibrary();
  KE_PROXY proxy{};
  ThrowUnlessSuccess("KE_GetConfiguratedProxy", KELCTL_EXPORT(*library, KE_GetConfiguratedProxy)(&proxy));
  Print(session, *library, proxy, options);
}

void ShowInternet(Session& session, const ProxyOptions& options) {
  const auto library = session.OpenTheLibrary();
  KE_PROXY proxy{};
  ThrowUnlessSuccess("KE_GetInetConfig", KELCTL_EXPORT(*library, KE_GetInetConfig)(&proxy, sizeof proxy));
  Print(session, *library, proxy, options);
}

// The library cuts a text that does not fit its field, with the terminating zero.
void CheckFits(const char* what, const std::string& text, std::size_t fieldSize) {
  if (text.size() < fieldSize) return;
  throw UsageError(std::string(what) + " may have " + std::to_string(fieldSize - 1) + " bytes");
}

// The port as a plain number, 80 for an empty one.
std::string CheckAddress(const std::string& server, const std::string& port) {
  if (server.empty()) throw UsageError("SERVER is empty");
  if (server.find(':') != server.npos) throw UsageError("SERVER is a host alone; the port stands behind it");
  const std::int32_t number = port.empty() ? 80 : ParseNumber(port);
  if (number < 1 || number > 65535) throw UsageError(port + " is out of range: 1 to 65535");
  std::string plain = std::to_string(number);
  CheckFits("SERVER with PORT", server + ":" + plain, sizeof(KE_AGENT_PROXY_RECORD::address));
  return plain;
}

void Set(Session& session, const ProxyOptions& options) {
  const auto library = session.OpenTheLibrary();
  const std::string server = library->ToCodePage(options.server);
  const std::string port = CheckAddress(server, options.port);
  CheckFits("the user", options.user, sizeof(KE_AGENT_PROXY_RECORD::user));
  CheckFits("the password", options.password, sizeof(KE_AGENT_PROXY_RECORD::password));
  const auto enciphered = [&](const std::string& text) { return text.empty() ? text : EncryptSetting(*library, text); };
  const std::string user = enciphered(options.user), password = enciphered(options.password);
  auto* const set = KELCTL_EXPORT(*library, KE_SetAgentProxyInfo);
  ThrowUnlessSuccess("KE_SetAgentProxyInfo", set(server.c_str(), port.c_str(), user.c_str(), password.c_str()));
}

void SetStatic(Session& session, const ProxyOptions& options) {
  const auto library = session.OpenTheLibrary();
  const std::string host = library->ToCodePage(options.host), addresses = library->ToCodePage(options.addresses);
  CheckFits("the host", host, sizeof(KE_STATIC_PROXY_RECORD::host));
  CheckFits("the list", addresses, sizeof(KE_STATIC_PROXY_RECORD::addresses));
  auto* const set = KELCTL_EXPORT(*library, KE_SetStaticProxyInfo);
  ThrowUnlessSuccess("KE_SetStaticProxyInfo", set(host.c_str(), addresses.c_str()));
}

}  // namespace

void AddProxyCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand("proxy", "Shows or sets how the agent reaches its server");
  command->require_subcommand(1);
  command->footer("Example: kelctl proxy show");
  const auto options = std::make_shared<ProxyOptions>();
  const auto add = [&](const char* name, const char* description, void (*work)(Session&, const ProxyOptions&),
                       const char* footer) {
    CLI::App* const action = command->add_subcommand(name, description);
    action->footer(footer);
    action->callback([&session, options, work] { work(session, *options); });
    return action;
  };
  CLI::App* const show = add("show", "Shows the proxy of the agent", Show, "Example: kelctl proxy show --json");
  CLI::App* const inet = add("inet", "Shows the proxy to use on the internet, as the installer sees it", ShowInternet,
                             "Example: kelctl proxy inet --reveal");
  for (CLI::App* const action : {show, inet}) {
    action->add_flag("--reveal", options->reveal, "Show the password instead of ********");
  }

  CLI::App* const set = add("set", "Sets the proxy of the agent and puts it in use", Set,
                            "Example: kelctl proxy set proxy.example 3128 --user support --password secret");
  set->add_option("SERVER", options->server, "The host")->required()->type_name("");
  set->add_option("PORT", options->port, "The port (default: 80)")->type_name("");
  CLI::Option* const user = set->add_option("--user", options->user, "The user in plain text")->type_name("TEXT");
  set->add_option("--password", options->password, "The password in plain text")->type_name("TEXT")->needs(user);

  CLI::App* const fixed = add("static", "Sets the static proxy; without host and addresses it is switched off",
                              SetStatic, "Example: kelctl proxy static --host relay.example --ips 10.0.0.1,10.0.0.2");
  fixed->add_option("--host", options->host, "The host")->type_name("TEXT");
  fixed->add_option("--ips", options->addresses, "The addresses, as the agent takes them")->type_name("LIST");
}

}  // namespace kelctl
