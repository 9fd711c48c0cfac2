#include "kelbra/Core/CoreManager.h"

namespace Kelbra::Core {

namespace {

class DataVideoFFFactory final : public RefCounted<IDataVideoFactory> {
 public:
  Proc::IDataVideoPtr Create(Proc::PixFmt format, const Conf::FrameInfo& info) const override {
    return Proc::DataVideoFF::Create(format, info);
  }
};

}  // namespace

const IDataVideoFactoryPtr& CoreManager::GetDataVideoFFFactory() {
  // Never destroyed: the factory stays usable while other static objects are torn down.
  static const auto* factory = new IDataVideoFactoryPtr(new DataVideoFFFactory);
  return *factory;
}

}  // namespace Kelbra::Core
