// The command line of one command: options ("--name value", "--name=value", or a bare flag) and
// positional arguments, checked against the options the command knows.
//
//   Arguments args(argv, {{"steps", true}, {"json", false}});   // throws UsageError
//   if (args.Has("help")) ...
//   int steps = args.GetInt("steps", 12, 1, 1000);
//
// Every command knows "--help" (and "-h"). Unknown options, a missing value, an unexpected
// positional argument or a value that is not a number in range throw UsageError naming it.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace canvaro_tool {

struct OptionSpec {
  std::string name;  // without the leading "--"
  bool takesValue;
};

class Arguments {
 public:
  Arguments(const std::vector<std::string>& args, const std::vector<OptionSpec>& options);

  bool Has(const std::string& name) const { return values_.count(name) != 0; }
  // The value given to option `name`, if it was given.
  std::optional<std::string> Get(const std::string& name) const;
  // The value of option `name` as an integer in [min, max], or `fallback` when it was not given.
  std::int64_t GetInt(const std::string& name, std::int64_t fallback, std::int64_t min,
                      std::int64_t max) const;
  const std::vector<std::string>& Positional() const { return positional_; }
  // Throws UsageError unless there are between `min` and `max` positional arguments; `what`
  // names them in the message ("a document").
  void ExpectPositional(std::size_t min, std::size_t max, const std::string& what) const;

 private:
  std::map<std::string, std::string> values_;
  std::vector<std::string> positional_;
};

// `text` as an integer in [min, max]; `what` names it in the UsageError otherwise.
std::int64_t ParseInt(const std::string& text, const std::string& what, std::int64_t min,
                      std::int64_t max);

}  // namespace canvaro_tool
