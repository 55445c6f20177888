// What reading and changing the identity demands, in bare platform calls and one call of the crypto module.
#pragma once

#include <string>

#include "ApiCr.h"
#include "bench/bare_trace.h"

namespace bench {

/// A store of one's own, with the content of the library's, in the folder Bare beside the library's.
class BareStore {
 public:
  /// `directory` is that of KELUtils.dll, whose store there is already.
  explicit BareStore(const std::string& directory);

  /// The cached store: is the file the one that was read?
  void GetAgentId();

  /// The certificate is looked for, then the store is enciphered and put in the place of file and backup: each written
  /// beside, with the access rights of the old one, flushed and renamed, all with the lock between processes held. The
  /// live file gets a time of its own, because it was written a moment ago. False when a call failed.
  bool SetAgentId();

 private:
  void Read(const char* name);
  bool Replace(const std::string& path, const std::string& content, bool ownTime) const;

  BareTrace trace_;
  std::string live_, backup_, plain_;
  decltype(&APIcr_EncryptBuffer) encrypt_;
};

}  // namespace bench
