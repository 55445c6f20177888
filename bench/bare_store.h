// The bare Windows calls, and the call of the crypto module, that reading and changing the identity needs.
#pragma once

#include <string>

#include "ApiCr.h"
#include "bench/bare_trace.h"

namespace bench {

/// A second store with the content of the library's store, in the folder Bare next to it.
class BareStore {
 public:
  /// `directory` is the folder of KELUtils.dll, whose store exists.
  explicit BareStore(const std::string& directory);

  /// Reads the cached store: checks whether the file has changed.
  void GetAgentId();

  /// Reads the certificate, encrypts the store and replaces file and backup atomically, keeping their access rights,
  /// under the lock between processes. The live file gets a distinct write time. Returns false if a call failed.
  bool SetAgentId();

 private:
  void Read(const char* name);
  bool Replace(const std::string& path, const std::string& content, bool ownTime) const;

  BareTrace trace_;
  std::string live_, backup_, plain_;
  decltype(&APIcr_EncryptBuffer) encrypt_;
};

}  // namespace bench
