#include "frame/random_number.h"

#include <cstdlib>
#include <ctime>

namespace frame {
namespace {

static_assert(RAND_MAX == 32767);

int NumberOfThisSecond() {
  std::srand(static_cast<unsigned>(std::time(nullptr)));
  return std::rand();
}

}  // namespace

RandomNumber g_randomNumber = NumberOfThisSecond;

}  // namespace frame
