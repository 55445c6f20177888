// KERegister.dll: registers nothing, but tells in a log that it was asked to.
#include "KERegister.h"

#include "keregister/results.h"
#include "logfile/module_log.h"

int KE_SIBLING_CALL KE_ReloadPlugins(void) {
  return logfile::LogBesideModule("KE_ReloadPlugins") ? keregister::kSuccess : keregister::kNotLogged;
}
