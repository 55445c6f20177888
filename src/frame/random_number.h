// The one source of chance, so that tests can do without.
#pragma once

namespace frame {

/// A number from 0 to 32767.
using RandomNumber = int (*)();

/// Where the library takes its random numbers. Tests put a function of their own here; nothing else changes it.
///
/// The product's source seeds the C library's generator with the current time on each use: two numbers of the same
/// second and thread are equal.
extern RandomNumber g_randomNumber;

}  // namespace frame
