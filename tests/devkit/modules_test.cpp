#include <doctest/doctest.h>

#include "KEAction.h"
#include "KERegister.h"
#include "kelupg/results.h"
#include "support/product_tree.h"

TEST_CASE("small modules: every call is a line of the bounded log beside the module") {
  const support::Folder folder;
  for (const char* file : {"KERegister.dll", "KELUPG.dll"})
    std::filesystem::copy_file(support::BuildFolder() / "devkit" / file, folder / file);
  const support::LoadedDll reload(folder / "KERegister.dll"), action(folder / "KELUPG.dll");
  support::WriteFile(folder / "KERegister.log", std::string(65536, 'o'));
  CHECK(CALL(reload, KE_ReloadPlugins)() == 0);
  const std::string process = ";" + std::to_string(GetCurrentProcessId()) + ";", text = ";KE_ReloadPlugins\r\n";
  CHECK(support::ReadFile(folder / "KERegister.log").substr(23) == process + folder / "KERegister.dll" + text);
  CHECK(support::ReadFile(folder / "KERegister.log.old").size() == 65536);
  CHECK(CALL(action, Do)(1, 0) == kelupg::kSuccess);
  const support::LockedFile locked(folder / "KELUPG.log");
  CHECK(CALL(action, Do)(1, 0) == kelupg::kNotLogged);
}
