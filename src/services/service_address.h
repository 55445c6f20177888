// Where the management service is. Supplied at configure time.
#pragma once

namespace services {

/// Scheme and host, in front of the SOAP paths.
extern const char kServiceBaseAddress[];

}  // namespace services
