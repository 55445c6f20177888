#include "support/inner_module.h"

#include "frame/module.h"
#include "store/integra_store.h"

namespace support {

InnerModule::InnerModule(const ProductTree& tree) : anchor_(tree.Path("KELUtils/KELUtils.dll")) {
  frame::IntegraLock.Create();
  frame::AttachModule(anchor_.Handle());
}

InnerModule::~InnerModule() {
  frame::DetachModule();
  store::DropIntegraStore();
  frame::IntegraLock.Destroy();
}

}  // namespace support
