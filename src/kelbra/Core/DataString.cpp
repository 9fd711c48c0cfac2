#include "kelbra/Core/DataString.h"

#include <algorithm>
#include <cstring>

#include "kelbra/Core/CoreException.h"

namespace Kelbra::Core {

namespace {

class OutputString final : public RefCounted<IDataOutput> {
 public:
  explicit OutputString(std::string& target) : target_(target) {}

  void Write(const void* data, std::size_t size) override {
    if (closed_) throw FileException("Cannot write to a closed string stream");
    target_.append(static_cast<const char*>(data), size);
  }
  void Flush() override {}
  void Close() override { closed_ = true; }
  std::string GetName() const override { return "<string>"; }

 private:
  std::string& target_;
  bool closed_ = false;
};

class InputString final : public RefCounted<IDataInput> {
 public:
  explicit InputString(std::string data) : data_(std::move(data)) {}

  void Read(void* data, std::size_t size) override {
    if (size > data_.size() - position_) {
      throw FileException("Cannot read <string>: unexpected end of data (wanted " +
                          std::to_string(size) + " bytes at offset " + std::to_string(position_) +
                          ", " + std::to_string(data_.size() - position_) + " left)");
    }
    ReadSome(data, size);
  }

  std::size_t ReadSome(void* data, std::size_t size) override {
    const std::size_t take = std::min(size, data_.size() - position_);
    if (take > 0) std::memcpy(data, data_.data() + position_, take);
    position_ += take;
    return take;
  }

  std::uint64_t GetRemaining() const override { return data_.size() - position_; }
  std::string GetName() const override { return "<string>"; }

 private:
  std::string data_;
  std::size_t position_ = 0;
};

}  // namespace

IDataOutputPtr DataOutputString::Create(std::string& target) {
  return IDataOutputPtr(new OutputString(target));
}

IDataInputPtr DataInputString::Create(std::string data) {
  return IDataInputPtr(new InputString(std::move(data)));
}

}  // namespace Kelbra::Core
