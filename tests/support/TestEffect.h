// A small concrete effect, written the way a host writes its effects, for tests that need effect
// objects in settings records, masks or documents.
//
//   auto blur = canvaro_test::TestEffect::Make("Blur", 3);    // parameters of kind "Blur"
//   SettingsCore step(blur);                                   // shares blur
//   blur->SetAmount(5);                                        // visible through step
//
// Two test effects are equal when their parameter kind, amount and implementation name match.
// It writes "implName" (through EffectSettings), then "kind" and "amount"; its class identifier
// is "TestEffect".
#pragma once

#include <string>
#include <utility>

#include "canvaro/settings/EffectSettings.h"
#include "kelbra/Proc/Settings.h"

namespace canvaro_test {

// The effect is its own parameter object: a kind name (reported as the type name) and one number.
class TestEffect : public Kelbra::Canvaro::EffectSettings, public Kelbra::Proc::Settings {
 public:
  TestEffect(std::string kind, int amount) : kind_(std::move(kind)), amount_(amount) {}
  TestEffect(std::string kind, int amount, std::string implName)
      : EffectSettings(std::move(implName)), kind_(std::move(kind)), amount_(amount) {}

  static boost::intrusive_ptr<TestEffect> Make(std::string kind, int amount = 0) {
    return new TestEffect(std::move(kind), amount);
  }

  int GetAmount() const { return amount_; }
  void SetAmount(int amount) { amount_ = amount; }

  Ptr Clone() const override { return new TestEffect(*this); }
  const Kelbra::Proc::Settings& GetSettings() const override { return *this; }
  const std::string& GetTypeName() const override { return kind_; }

  bool IsEqual(const IEffectSettings& other) const override {
    const auto* effect = dynamic_cast<const TestEffect*>(&other);
    return effect != nullptr && effect->kind_ == kind_ && effect->amount_ == amount_ &&
           effect->GetImplName() == GetImplName();
  }

  void Serialize(const Kelbra::Drevin::ISerializerPtr& serializer) const override {
    EffectSettings::Serialize(serializer);
    serializer->WriteString("kind", kind_);
    serializer->WriteInt("amount", amount_);
  }
  void Deserialize(const Kelbra::Drevin::ISerializerConstPtr& serializer) override {
    EffectSettings::Deserialize(serializer);
    kind_ = serializer->ReadString("kind", kind_);
    amount_ = serializer->ReadInt("amount", amount_);
  }

 protected:
  TestEffect(const TestEffect&) = default;

 private:
  std::string kind_;
  int amount_;
};

}  // namespace canvaro_test
