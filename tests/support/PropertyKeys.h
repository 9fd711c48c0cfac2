// The keys of a property node's entries, in stored order, for tests that check a record's layout:
//
//   EXPECT_THAT(canvaro_test::KeysOf(tree), ElementsAre("Left", "Right", "Top", "Bottom"));
#pragma once

#include <string>
#include <vector>

#include "kelbra/Core/Property.h"

namespace canvaro_test {

inline std::vector<std::string> KeysOf(const Kelbra::Core::Property& node) {
  std::vector<std::string> keys;
  for (const auto& entry : node.Entries()) keys.push_back(entry.key);
  return keys;
}

}  // namespace canvaro_test
