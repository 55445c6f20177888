// The proxy that the plug-in's INI file describes.
#pragma once

#include "plugin/results.h"

namespace kec {

/// Fills the whole record from [PROXY] Host, Port, User and Password: kSuccess, kNoProxy without a host, or
/// kBadSettings for a text that does not fit or a port that is none. Only success changes the record.
plugin::Result ReadProxy(KE_PROXY& proxy) noexcept;

}  // namespace kec
