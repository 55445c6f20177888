#include "agent/uuid.h"

#include <wbemcli.h>

#include <cstring>
#include <new>
#include <string>

#include "siblings/settings_file.h"
#include "text/text.h"
#include "trace/trace.h"
#include "win/module.h"
#include "win/owner.h"

namespace agent {

namespace {

#define KE_ROW(name) KE_BOUND_NAME(ComTable, name, kRequired),
constexpr win::BoundName kOle32Names[] = {KE_OLE32_FUNCTIONS(KE_ROW)};
constexpr win::BoundName kOleaut32Names[] = {KE_OLEAUT32_FUNCTIONS(KE_ROW)};
#undef KE_ROW

// The modules of COM, loaded while the object lives: few hosts need them at other times. Windows loads both from its
// own folder.
struct ComLibrary {
  const win::ModuleHandle ole32 = win::LoadModule("ole32.dll", 0), oleaut32 = win::LoadModule("oleaut32.dll", 0);
  ComTable functions{};
  const bool bound = ole32 && oleaut32 && win::BindNames(ole32.Get(), &functions, kOle32Names) &&
                     win::BindNames(oleaut32.Get(), &functions, kOleaut32Names);
};

// COM on this thread, until the end of the scope.
struct ComScope {
  explicit ComScope(const ComTable& table) noexcept
      : com(table), initialised(SUCCEEDED(com.CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {}
  ComScope(const ComScope&) = delete;
  ComScope& operator=(const ComScope&) = delete;
  ~ComScope() {
    if (initialised) com.CoUninitialize();
  }
  const ComTable& com;
  const bool initialised;
};

template <typename Interface>
void ReleaseInterface(Interface* object) noexcept {
  object->Release();
}

template <typename Interface>
using ComPointer = win::Owner<Interface*, &ReleaseInterface<Interface>, 0>;

// The object that `call(out)` stores; none when it fails or stores nothing.
template <typename Interface, typename Call>
ComPointer<Interface> ObtainObject(Call call) {
  Interface* object = nullptr;
  const HRESULT result = call(&object);
  ComPointer<Interface> owned(object);
  if (FAILED(result)) owned.Reset();
  return owned;
}

// A text in COM's own memory. Throws std::bad_alloc.
struct ComText {
  ComText(const ComTable& table, const wchar_t* value) : com(table), text(com.SysAllocString(value)) {
    if (text == nullptr) throw std::bad_alloc();
  }
  ComText(const ComText&) = delete;
  ComText& operator=(const ComText&) = delete;
  ~ComText() { com.SysFreeString(text); }
  const ComTable& com;
  const BSTR text;
};

// A value of any type, empty at first.
struct ComVariant {
  explicit ComVariant(const ComTable& table) noexcept : com(table) {}
  ComVariant(const ComVariant&) = delete;
  ComVariant& operator=(const ComVariant&) = delete;
  ~ComVariant() { com.VariantClear(&value); }
  const ComTable& com;
  VARIANT value{};  // VT_EMPTY
};

KE_RESULT Failed(const char* function, const char* message) noexcept {
  Trace(trace::kDetail, function, "%s", message);
  return KE_NOT_CREATED;
}

// The security of a process can be set only once. That of the host stays, and is no failure.
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
  const ComText place(com, L"ROOT\\CIMV2");
  return ObtainObject<IWbemServices>([&](IWbemServices** out) {
    return locator.ConnectServer(place.text, nullptr, nullptr, nullptr, 0, nullptr, nullptr, out);
  });
}

bool SetProxySecurity(const ComTable& com, IWbemServices& services) {
  return SUCCEEDED(com.CoSetProxyBlanket(&services, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr,
                                         RPC_C_AUTHN_LEVEL_CALL, RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE));
}

ComPointer<IEnumWbemClassObject> Query(const ComTable& com, IWbemServices& services) {
  const ComText language(com, L"WQL"), query(com, L"SELECT * FROM Win32_ComputerSystemProduct");
  return ObtainObject<IEnumWbemClassObject>([&](IEnumWbemClassObject** out) {
    return services.ExecQuery(language.text, query.text, WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, nullptr,
                              out);
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
  ComVariant uuid(com);
  const HRESULT result = object.Get(L"UUID", 0, &uuid.value, nullptr, nullptr);
  if (SUCCEEDED(result) && uuid.value.vt == VT_BSTR && uuid.value.bstrVal)
    text::CopyCut(Narrow(uuid.value.bstrVal), buffer, size);
}

// The next object; none after the last one, and after a failure.
ComPointer<IWbemClassObject> Next(IEnumWbemClassObject& objects) {
  return ObtainObject<IWbemClassObject>([&](IWbemClassObject** out) {
    ULONG count = 0;
    return objects.Next(static_cast<LONG>(WBEM_INFINITE), 1, out, &count);
  });
}

}  // namespace

KE_RESULT QueryUuid(const char* function, const ComTable& com, char* buffer, std::size_t size) {
  const ComScope scope(com);
  if (!scope.initialised) return Failed(function, "Error initializing COM");
  if (!SetSecurity(com)) return Failed(function, "Error setting COM security level");
  const auto locator = CreateLocator(com);
  if (!locator) return Failed(function, "Error obtaining the initial locator to WMI");
  const auto services = Connect(com, *locator.Get());
  if (!services) return Failed(function, "Error connecting to WMI");
  if (!SetProxySecurity(com, *services.Get())) return Failed(function, "Error setting the security level on the proxy");
  const auto objects = Query(com, *services.Get());
  if (!objects) return Failed(function, "Error executing the query");
  while (const auto object = Next(*objects.Get())) CopyUuid(com, *object.Get(), buffer, size);
  return KE_SUCCESS;
}

KE_RESULT QueryMachineUuid(const char* function, char* buffer, std::size_t size) {
  if (siblings::GetMyConfigIniValue("UUID", "CheckUUID") == "false") {
    *buffer = '\0';
    return KE_SUCCESS;
  }
  const ComLibrary com;
  return com.bound ? QueryUuid(function, com.functions, buffer, size) : Failed(function, "Error initializing COM");
}

}  // namespace agent
