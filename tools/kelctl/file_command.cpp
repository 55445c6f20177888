#include <nlohmann/json.hpp>

#include "KELUtils.h"
#include "arguments.h"
#include "calls.h"
#include "commands.h"

namespace kelctl {
namespace {

struct FileOptions {
  std::string path;
  std::string section;
  std::string key;
  std::string value;
};

void Get(Session& session, const FileOptions& options) {
  const auto library = session.OpenTheLibrary();
  auto* const get = KELCTL_EXPORT(*library, KE_GetEncryptedFileValue);
  const auto path = library->ToCodePage(options.path), section = library->ToCodePage(options.section);
  const auto key = library->ToCodePage(options.key);
  std::string value;
  ThrowUnlessSuccess(
      "KE_GetEncryptedFileValue",
      ReadText([&](char* buffer,
                   std::int32_t size) { return get(section.c_str(), key.c_str(), buffer, size, path.c_str()); },
               value));
  const std::string text = library->FromCodePage(value);
  session.Show(text + "\n", {{"value", text}});
}

void Set(Session& session, const FileOptions& options) {
  CheckPropertyKey(options.key);
  CheckOneLine(options.section);
  CheckOneLine(options.value);
  const auto library = session.OpenTheLibrary();
  const auto path = library->ToCodePage(options.path), section = library->ToCodePage(options.section);
  const auto key = library->ToCodePage(options.key), value = library->ToCodePage(options.value);
  auto* const set = KELCTL_EXPORT(*library, KE_SetEncryptedFileValue);
  ThrowUnlessSuccess("KE_SetEncryptedFileValue", set(section.c_str(), key.c_str(), value.c_str(), path.c_str()));
}

void AddPlace(CLI::App* command, const std::shared_ptr<FileOptions>& options) {
  command->add_option("PATH", options->path, "The file")->required()->type_name("");
  command->add_option("SECTION", options->section, "The section of the value")->required()->type_name("");
  command->add_option("KEY", options->key, "The key of the value")->required()->type_name("");
}

}  // namespace

void AddFileCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand("file", "Reads or sets one value of an enciphered INI file");
  command->require_subcommand(1);
  command->footer("Example: kelctl file get C:\\Agent\\settings.dat PROXY USER");
  const auto options = std::make_shared<FileOptions>();

  CLI::App* const get = command->add_subcommand("get", "Shows a value");
  AddPlace(get, options);
  // The library would create a missing file, which nobody expects of a reading command.
  get->get_option("PATH")->check(CLI::ExistingFile);
  get->footer("Example: kelctl file get C:\\Agent\\settings.dat PROXY USER");
  get->callback([&session, options] { Get(session, *options); });

  CLI::App* const set = command->add_subcommand("set", "Sets a value, creating the file when it is missing");
  AddPlace(set, options);
  set->add_option("VALUE", options->value, "The new value")->required()->type_name("");
  set->footer("Example: kelctl file set C:\\Agent\\settings.dat PROXY USER support");
  set->callback([&session, options] { Set(session, *options); });
}

}  // namespace kelctl
