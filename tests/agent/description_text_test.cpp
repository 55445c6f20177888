#include "agent/texts.h"

#include <doctest/doctest.h>

TEST_CASE("event descriptions: the first %s takes the text, and nothing else is a conversion") {
  const std::string x511(511, 'x'), x509(509, 'x');
  const std::string rows[][3] = {
      {"50% of %d and %%", "i", "50% of %d and %%"},  // no placeholder
      {"a %s b", "%s %n %%", "a %s %n %% b"},         // an insert is no format
      {"%d %n %5s %s %s %", "i", "%d %n %5s i %s %"},
      {"%%s", "i", "%s"},
      {"%%%s %%", "i", "%i %"},
      {x511 + "%s", "i", x511},
      {x509 + "%s", "abc", x509 + "ab"},
      {"%s" + x511, x511 + "y", x511},
  };
  for (const auto& [resource, insert, description] : rows)
    CHECK_MESSAGE(agent::DescriptionText(resource, insert) == description, resource);
}
