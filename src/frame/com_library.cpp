#include "frame/com_library.h"

#include "frame/sibling_binder.h"

namespace frame {
namespace {

#define KE_ROW(name) KE_BOUND_NAME(win::ComTable, name, kRequired),
constexpr BoundName kOle32Names[] = {KE_OLE32_FUNCTIONS(KE_ROW)};
constexpr BoundName kOleaut32Names[] = {KE_OLEAUT32_FUNCTIONS(KE_ROW)};
#undef KE_ROW

}  // namespace

// Windows takes both from its own folder, whatever lies beside the host.
ComLibrary::ComLibrary() noexcept
    : ole32_(LoadLibraryW(L"ole32.dll")),
      oleaut32_(LoadLibraryW(L"oleaut32.dll")),
      bound_(ole32_ && oleaut32_ && BindNames(ole32_.Get(), &functions_, kOle32Names) &&
             BindNames(oleaut32_.Get(), &functions_, kOleaut32Names)) {}

}  // namespace frame
