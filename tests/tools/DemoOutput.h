// A small saved document made by `canvaro demo`, shared by the tests of one suite (the demo
// runs once per suite), and a fresh copy of it for tests that damage it.
//
//   class VerifyCommandTest : public canvaro_test::DemoOutputTest {};
//   TEST_F(VerifyCommandTest, ...) { auto dir = FreshCopy(); RunTool({"verify", dir.string()}); }
#pragma once

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "ToolRunner.h"
#include "kelbra/Core/Property.h"
#include "kelbra/Core/PropertySerializer.h"
#include "support/TempDir.h"

namespace canvaro_test {

class DemoOutputTest : public ::testing::Test {
 protected:
  static constexpr int kSteps = 4;  // every kind of edit of the script happens by step 4

  static void SetUpTestSuite() {
    shared_ = std::make_unique<TempDir>();
    demoRun_ = RunTool({"demo", "--size", "48x36", "--steps", std::to_string(kSteps), "--out",
                        (shared_->path() / "demo").string()});
  }
  static void TearDownTestSuite() { shared_.reset(); }

  void SetUp() override { ASSERT_EQ(demoRun_.status, 0) << demoRun_.out << demoRun_.err; }

  static std::filesystem::path Demo() { return shared_->path().native() / "demo"; }
  static const ToolRun& DemoRun() { return demoRun_; }

  // A path in a folder of the test's own, removed with the test.
  std::filesystem::path Scratch(const std::string& name) const {
    return scratch_.path().native() / name;
  }
  // A copy of the demo's output that the test may change; removed with the test.
  std::filesystem::path FreshCopy() {
    std::filesystem::copy(Demo(), Scratch("copy"), std::filesystem::copy_options::recursive);
    return Scratch("copy");
  }

  // What `canvaro inspect --json` says of the document in `dir`.
  static nlohmann::json InspectJson(const std::filesystem::path& dir) {
    return nlohmann::json::parse(RunToolOk({"inspect", dir.string(), "--json"}).out);
  }
  // The swap file of item `item`'s picture.
  static std::string PictureFile(const std::filesystem::path& dir, int item) {
    return InspectJson(dir)["items"]["list"][item]["frame"]["file"];
  }

  // Rewrites the document file in `dir` after `edit` changed its tree.
  static void EditDocument(const std::filesystem::path& dir,
                           const std::function<void(Kelbra::Core::Property&)>& edit) {
    const std::filesystem::path file = dir / "document.json";
    Kelbra::Core::Property tree = Kelbra::Core::PropertySerializer::FromString(ReadFile(file));
    edit(tree);
    std::ofstream(file, std::ios::binary | std::ios::trunc)
        << Kelbra::Core::PropertySerializer::ToString(tree);
  }
  // The collection under `key` of `node`, to be changed in place.
  static Kelbra::Core::Property::Collection& Collection(Kelbra::Core::Property& node,
                                                        const std::string& key) {
    return std::get<Kelbra::Core::Property::Collection>(node.Find(key)->value);
  }

 private:
  static inline std::unique_ptr<TempDir> shared_;
  static inline ToolRun demoRun_;
  TempDir scratch_;
};

}  // namespace canvaro_test
