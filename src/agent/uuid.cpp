#include "agent/uuid.h"

#include <wbemcli.h>

#include <cstring>
#include <string>

#include "siblings/settings_file.h"
#include "text/text.h"
#include "trace/trace.h"
#include "win/module.h"

namespace agent {

namespace {

#define KE_ROW(name) KE_BOUND_NAME(ComTable, name, kRequired),
constexpr win::BoundName kOle32Names[] = {KE_OLE32_FUNCTIONS(KE_ROW)};
constexpr win::BoundName kOleaut32Names[] = {KE_OLEAUT32_FUNCTIONS(KE_ROW)};
#undef KE_ROW

}  // namespace

// Windows takes both from its own folder, whatever lies beside the host.
ComLibrary::ComLibrary() noexcept
    : ole32_(LoadLibraryW(L"ole32.dll")),
      oleaut32_(LoadLibraryW(L"oleaut32.dll")),
      bound_(ole32_ && oleaut32_ && win::BindNames(ole32_.Get(), &functions_, kOle32Names) &&
             win::BindNames(oleaut32_.Get(), &functions_, kOleaut32Names)) {}

namespace {

KE_RESULT Failed(const char* function, const char* message) noexcept {
  Trace(trace::kDetail, function, "%s", message);
  return KE_NOT_CREATED;
}

// The security of a process can be set once. Where the host has done it, its own choice stays, and is no failure.
bool SetSecurity(const ComTable& com) {
  const HRESULT result = com.CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_DEFAULT,
                                                  RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE, nullptr);
  return SUCCEEDED(result) || result == RPC_E_TOO_LATE;
}

ComPointer<IWbemLocator> CreateLocator(const ComTable& com) {
  return ObtainObject<IWbemLocator>([&](IWbemLocator** out) {
    return com.CoCreateInstance(__uuidof(WbemLocator), nullptr, CLSCTX_INPROC_SERVER, __uuidof(IWbemLocator),
                                reinterpret_cast<void**>(out));
  });
}

ComPointer<IWbemServices> Connect(const ComTable& com, IWbemLocator& locator) {
  const ComBstr place(com, L"ROOT\\CIMV2");
  return ObtainObject<IWbemServices>([&](IWbemServices** out) {
    return locator.ConnectServer(place.Get(), nullptr, nullptr, nullptr, 0, nullptr, nullptr, out);
  });
}

bool SetProxySecurity(const ComTable& com, IWbemServices& services) {
  return SUCCEEDED(com.CoSetProxyBlanket(&services, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr,
                                         RPC_C_AUTHN_LEVEL_CALL, RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE));
}

ComPointer<IEnumWbemClassObject> Query(const ComTable& com, IWbemServices& services) {
  const ComBstr language(com, L"WQL"), query(com, L"SELECT * FROM Win32_ComputerSystemProduct");
  return ObtainObject<IEnumWbemClassObject>([&](IEnumWbemClassObject** out) {
    return services.ExecQuery(language.Get(), query.Get(), WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY,
                              nullptr, out);
  });
}

// A text in the system's code page.
std::string Narrow(const wchar_t* wide) {
  const int size = WideCharToMultiByte(CP_ACP, 0, wide, -1, nullptr, 0, nullptr, nullptr);
  std::string text(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_ACP, 0, wide, -1, text.data(), size, nullptr, nullptr);
  text.resize(strnlen(text.data(), text.size()));
  return text;
}

void CopyUuid(const ComTable& com, IWbemClassObject& object, char* buffer, std::size_t size) {
  ComVariant value(com);
  if (FAILED(object.Get(L"UUID", 0, value.Out(), nullptr, nullptr)) || value.Text() == nullptr) return;
  text::CopyCut(Narrow(value.Text()), buffer, size);
}

// The next object; none after the last one. What ends the enumeration early counts as its end.
ComPointer<IWbemClassObject> Next(IEnumWbemClassObject& objects) {
  return ObtainObject<IWbemClassObject>([&](IWbemClassObject** out) {
    ULONG count = 0;
    return objects.Next(static_cast<LONG>(WBEM_INFINITE), 1, out, &count);
  });
}

}  // namespace

bool IsUuidQueryOn() { return siblings::GetMyConfigIniValue("UUID", "CheckUUID") != "false"; }

KE_RESULT QueryMachineUuid(const char* function, const ComTable& com, char* buffer, std::size_t size) {
  const ComScope scope(com, COINIT_APARTMENTTHREADED);
  if (!scope) return Failed(function, "Error initializing COM");
  if (!SetSecurity(com)) return Failed(function, "Error setting COM security level");
  const auto locator = CreateLocator(com);
  if (!locator) return Failed(function, "Error obtaining the initial locator to WMI");
  const auto services = Connect(com, *locator.Get());
  if (!services) return Failed(function, "Error connecting to WMI");
  if (!SetProxySecurity(com, *services.Get())) {
    return Failed(function, "Error setting the security level on the proxy");
  }
  const auto objects = Query(com, *services.Get());
  if (!objects) return Failed(function, "Error executing the query");
  while (const auto object = Next(*objects.Get())) CopyUuid(com, *object.Get(), buffer, size);
  return KE_SUCCESS;
}

KE_RESULT QueryMachineUuid(const char* function, char* buffer, std::size_t size) {
  const ComLibrary library;
  const ComTable* const com = library.Functions();
  if (com == nullptr) return Failed(function, "Error initializing COM");
  return QueryMachineUuid(function, *com, buffer, size);
}

}  // namespace agent
