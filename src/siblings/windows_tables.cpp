#include "siblings/windows_tables.h"

#include <span>

#include "siblings/binder.h"
#include "win/owner.h"

namespace siblings {

namespace {

#define KE_ROW(name) KE_BOUND_NAME(Advapi32Table, name, kOptional),
constexpr BoundName kAdvapi32Names[] = {KE_ADVAPI32_FUNCTIONS(KE_ROW)};
#undef KE_ROW
#define KE_ROW(name) KE_BOUND_NAME(Shell32Table, name, kOptional),
constexpr BoundName kShell32Names[] = {KE_SHELL32_FUNCTIONS(KE_ROW)};
#undef KE_ROW

Advapi32Table g_advapi32{};
Shell32Table g_shell32{};

template <typename Table>
void Bind(const wchar_t* file, std::span<const BoundName> names, Table& table) noexcept {
  table.module = LoadLibraryW(file);
  if (table.module) win::BindNames(table.module, &table, names);
}

template <typename Table>
void Release(Table& table) noexcept {
  win::ModuleHandle(table.module).Reset();
  table = {};
}

}  // namespace

const Advapi32Table& Advapi32() noexcept { return g_advapi32; }

const Shell32Table& Shell32() noexcept { return g_shell32; }

void BindWindowsTables() noexcept {
  Bind(L"Advapi32.dll", kAdvapi32Names, g_advapi32);
  Bind(L"Shell32.dll", kShell32Names, g_shell32);
}

void ReleaseWindowsTables() noexcept {
  Release(g_shell32);
  Release(g_advapi32);
}

}  // namespace siblings
