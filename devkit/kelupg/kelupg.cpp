// KELUPG.dll: the action module of the upgrade component. It upgrades nothing, but tells in a log what it was asked.
#include <cstdio>

#include "KEAction.h"
#include "kelupg/results.h"
#include "logfile/module_log.h"

uint32_t KE_ACTION_CALL Do(uint32_t first, uint32_t second) {
  char text[32];
  std::snprintf(text, sizeof text, "%lu;%lu", static_cast<unsigned long>(first), static_cast<unsigned long>(second));
  if (!logfile::LogBesideModule(text)) return kelupg::kNotLogged;
  return first == kelupg::kVersionChanged || first == kelupg::kUninstall ? kelupg::kSuccess : kelupg::kUnknownAction;
}
