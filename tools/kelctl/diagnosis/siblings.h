// The sibling modules and programs of the library.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "diagnosis/findings.h"
#include "diagnosis/product.h"

namespace kelctl {

enum class SiblingKind { kModule, kProgram };

/// A function that the library looks up.
struct SiblingName {
  std::string name;
  bool required = true;  // without it the module is of no use; else only some calls are
};

/// A module or program that the library uses.
struct Sibling {
  std::string name;  // for people
  SiblingKind kind = SiblingKind::kModule;
  std::vector<std::string> places;  // paths in the code page, in the order in which the library tries them
  std::vector<SiblingName> names;   // the functions that a module should have
  Health whenUnusable = Health::kFailure;
  std::string unlisted = {};  // why `places` is empty
  std::string unlistedCode = "MODULE-NOT-LISTED";
};

/// Those with a fixed place in the tree, then those that the registry and settings files name.
std::vector<Sibling> SiblingsOf(const Product& product);

/// The first place where the file is; none when it is missing.
std::optional<std::string> FindSibling(const Sibling& sibling);

/// Looks for one: all is well when its file is there.
Finding LookForSibling(const Sibling& sibling);

/// Looks for each and examines it: a module is loaded and freed again, a program is only looked at. Loading
/// runs code of the module: a child process does it, with a time limit for each.
Findings CheckSiblings(const Product& product);

/// The child's part: examines the siblings from number `first` on, and writes a line of JSON for each to `out`.
void ExamineSiblings(const Product& product, std::size_t first, std::ostream& out);

}  // namespace kelctl
