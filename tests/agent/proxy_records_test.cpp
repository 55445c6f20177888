#include "agent/proxy_records.h"

#include <doctest/doctest.h>

#include <cstring>
#include <string>

using namespace agent;

// A description filled from a record, as text.
static std::string Filled(void (*fill)(const KE_AGENT_PROXY_RECORD&, KE_PROXY&), const KE_AGENT_PROXY_RECORD& record) {
  KE_PROXY proxy;
  std::memset(&proxy, '~', sizeof proxy);
  ClearProxy(proxy);
  fill(record, proxy);
  CHECK((sizeof proxy == kProxyExtent || reinterpret_cast<const char*>(&proxy)[kProxyExtent] == '~'));
  return proxy.host + (" " + std::to_string(proxy.port)) + (proxy.hasCredentials ? " as " : "") + proxy.user + "/" +
         proxy.password;
}

TEST_CASE("proxy records: how they become host, port, user and password, configured and for the internet") {
  const char* rows[][3] = {{"h:3128", "h 3128/", "h 3128/"}, {"h", " 0/", "h 80/"},       {"h:", "h 0/", "h 80/"},
                           {"h:0", "h 0/", "h 80/"},         {":81", " 81/", " 81/"},     {"", " 0/", " 80/"},
                           {"h:1:2", "h 1/", "h 1/"},        {"h:80x", "h 80/", "h 80/"}, {"h:x1", "h 0/", "h 80/"}};
  for (const auto& [address, configured, internet] : rows) {
    KE_AGENT_PROXY_RECORD record{0, 0, {}, "", "no user, no password", {}};
    std::strcpy(record.address, address);
    CHECK_MESSAGE(Filled(FillConfiguredProxy, record) == configured, address);
    CHECK_MESSAGE(Filled(FillInternetProxy, record) == internet, address);
  }
  // Texts without a terminator are taken to the end of their field.
  KE_AGENT_PROXY_RECORD record;
  std::memset(&record, 'x', sizeof record);
  const std::string credentials = " as " + std::string(128, 'x') + "/" + std::string(128, 'x');
  CHECK(Filled(FillConfiguredProxy, record) == " 0" + credentials);
  CHECK(Filled(FillInternetProxy, record) == std::string(255, 'x') + " 80" + credentials);
}
