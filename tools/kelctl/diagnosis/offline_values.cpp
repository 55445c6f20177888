#include "diagnosis/offline_values.h"

#include <algorithm>

#include "code_page.h"
#include "registration/texts.h"
#include "store/accessor_table.h"
#include "text/text.h"

namespace kelctl {
namespace {

std::string TextOf(const store::IniStore& store, const char* section, const char* key) {
  const store::IniEntry* const entry = store::LookupEntry(store, section, key);
  return std::string(entry ? entry->value : std::string_view());
}

std::int32_t NumberOf(const store::IniStore& store, std::string_view getter) {
  const auto state = [&] { return text::DecimalFromText(TextOf(store, "INSTALL", "State").c_str()); };
  if (getter == "KE_GetInstallState") return state();
  if (getter == "KE_IsInstallComplete") return state() >= registration::kInstallComplete ? 1 : 0;
  if (getter == "KE_GetLastInstallError") return text::DecimalFromText(TextOf(store, "INSTALL", "LastError").c_str());
  const bool integrated =
      !TextOf(store, "INTEGRATION", "Date").empty() && !TextOf(store, "INTEGRATION", "DEVICEID").empty();
  return integrated ? 1 : 0;  // KE_IsIntegrated
}

}  // namespace

Reading ValueIn(const store::IniStore& store, const StoreValue& value) {
  if (value.getter.type == GetterType::kNumber) return {.number = NumberOf(store, value.getter.name)};
  const auto* const row = std::ranges::find(store::kTextGetters, value.getter.name, &store::TextGetter::exportName);
  const std::string text = TextOf(store, row->section, row->key);
  const bool required = row->read == store::TextRead::kRestored || row->read == store::TextRead::kRequired;
  if (text.empty() && required) return {.result = KE_STORE_UNUSABLE};
  return {.text = Utf8FromCodePage(text)};
}

std::vector<ReadStoreValue> ValuesIn(const store::IniStore* store) {
  std::vector<ReadStoreValue> values;
  for (const StoreValue& value : StoreValues()) {
    values.push_back({&value, store ? ValueIn(*store, value) : Reading{.result = KE_STORE_UNUSABLE}});
  }
  return values;
}

bool HasUninstallPassword(const store::IniStore& store) { return !TextOf(store, "UNINSTALL", "PASSWORD").empty(); }

}  // namespace kelctl
