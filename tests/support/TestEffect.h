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

// The parameter object: a kind name (reported as the type name) and one number.
class TestEffectParameters final : public Kelbra::Proc::Settings {
 public:
  TestEffectParameters(std::string kind, int amount) : kind_(std::move(kind)), amount_(amount) {}

  const std::string& GetTypeName() const override { return kind_; }
  int GetAmount() const { return amount_; }
  void SetAmount(int amount) { amount_ = amount; }

 private:
  std::string kind_;
  int amount_;
};

class TestEffect : public Kelbra::Canvaro::EffectSettings {
 public:
  TestEffect(std::string kind, int amount) : parameters_(std::move(kind), amount) {}
  TestEffect(std::string kind, int amount, std::string implName)
      : EffectSettings(std::move(implName)), parameters_(std::move(kind), amount) {}

  static boost::intrusive_ptr<TestEffect> Make(std::string kind, int amount = 0) {
    return new TestEffect(std::move(kind), amount);
  }

  int GetAmount() const { return parameters_.GetAmount(); }
  void SetAmount(int amount) { parameters_.SetAmount(amount); }

  Ptr Clone() const override { return new TestEffect(*this); }
  const Kelbra::Proc::Settings& GetSettings() const override { return parameters_; }

  bool IsEqual(const IEffectSettings& other) const override {
    const auto* effect = dynamic_cast<const TestEffect*>(&other);
    return effect != nullptr && effect->parameters_.GetTypeName() == parameters_.GetTypeName() &&
           effect->GetAmount() == GetAmount() && effect->GetImplName() == GetImplName();
  }

  void Serialize(const Kelbra::Drevin::ISerializerPtr& serializer) const override {
    EffectSettings::Serialize(serializer);
    serializer->WriteString("kind", parameters_.GetTypeName());
    serializer->WriteInt("amount", GetAmount());
  }
  void Deserialize(const Kelbra::Drevin::ISerializerConstPtr& serializer) override {
    EffectSettings::Deserialize(serializer);
    parameters_ = TestEffectParameters(serializer->ReadString("kind", parameters_.GetTypeName()),
                                       serializer->ReadInt("amount", GetAmount()));
  }

 protected:
  TestEffect(const TestEffect&) = default;

 private:
  TestEffectParameters parameters_;
};

}  // namespace canvaro_test
