#include <doctest/doctest.h>

#include <initializer_list>

#include "KELUtils.h"

TEST_CASE("module files: an unknown module directory is told by every export that needs it") {
  for (const auto edit : {KE_RemovePlugin, KE_SetVersion, KE_AddPolicyTypeSuscription, KE_RemovePolicyTypeSuscription})
    CHECK(edit("KEC", "KELUpd") == KE_NO_MODULE_DIRECTORY);
  CHECK(KE_AddPlugin("K", "H", "v") == KE_NO_MODULE_DIRECTORY);
}
