// Lets the inner pieces, linked into the test program, believe that they are the DLL of a product tree.
#pragma once

#include "support/product_tree.h"

namespace support {

/// Attaches the inner pieces to the KELUtils.dll of a tree for the scope: its folder is the module directory, and the
/// lock exists.
class InnerModule {
 public:
  explicit InnerModule(const ProductTree& tree);
  ~InnerModule();

 private:
  LoadedDll anchor_;
};

}  // namespace support
