// Lets the inner pieces, linked into the test program, believe that they are the DLL of a product tree.
#pragma once

#include "store/integra_store.h"
#include "support/product_tree.h"
#include "win/module.h"

namespace support {

/// Attaches the inner pieces to the KELUtils.dll of a tree for the scope: its folder is the module directory, and the
/// lock exists.
struct InnerModule {
  explicit InnerModule(const ProductTree& tree) : InnerModule(tree.Path("KELUtils/KELUtils.dll")) {}
  explicit InnerModule(const std::filesystem::path& dll) : anchor(dll) {
    win::IntegraLock.Create();
    win::AttachModule(anchor.Handle());
  }
  ~InnerModule() {
    win::DetachModule();
    store::DropIntegraStore();
    win::IntegraLock.Destroy();
  }
  LoadedDll anchor;
};

}  // namespace support
