#include "Arguments.h"

#include <charconv>

#include "ToolError.h"

namespace canvaro_tool {

Arguments::Arguments(const std::vector<std::string>& args, const std::vector<OptionSpec>& options) {
  auto find = [&](const std::string& name) -> const OptionSpec* {
    if (name == "help") {
      static const OptionSpec kHelp{"help", false};
      return &kHelp;
    }
    for (const auto& option : options) {
      if (option.name == name) return &option;
    }
    return nullptr;
  };
  bool optionsEnded = false;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (optionsEnded || arg.size() < 2 || arg[0] != '-' || arg == "-") {
      positional_.push_back(arg);
      continue;
    }
    if (arg == "--") {
      optionsEnded = true;
      continue;
    }
    if (arg == "-h") {
      values_["help"] = "";
      continue;
    }
    if (arg.rfind("--", 0) != 0) throw UsageError("unknown option '" + arg + "'");
    std::string name = arg.substr(2);
    std::optional<std::string> value;
    if (const auto equals = name.find('='); equals != std::string::npos) {
      value = name.substr(equals + 1);
      name.resize(equals);
    }
    const OptionSpec* spec = find(name);
    if (spec == nullptr) throw UsageError("unknown option '--" + name + "'");
    if (spec->takesValue && !value) {
      if (i + 1 >= args.size()) throw UsageError("option '--" + name + "' needs a value");
      value = args[++i];
    } else if (!spec->takesValue && value) {
      throw UsageError("option '--" + name + "' takes no value");
    }
    values_[name] = value.value_or("");
  }
}

std::optional<std::string> Arguments::Get(const std::string& name) const {
  const auto it = values_.find(name);
  if (it == values_.end()) return std::nullopt;
  return it->second;
}

std::int64_t Arguments::GetInt(const std::string& name, std::int64_t fallback, std::int64_t min,
                               std::int64_t max) const {
  const auto value = Get(name);
  return value ? ParseInt(*value, "--" + name, min, max) : fallback;
}

void Arguments::ExpectPositional(std::size_t min, std::size_t max, const std::string& what) const {
  if (positional_.size() < min) throw UsageError("missing " + what);
  if (positional_.size() > max) {
    throw UsageError("unexpected argument '" + positional_[max] + "'");
  }
}

std::int64_t ParseInt(const std::string& text, const std::string& what, std::int64_t min,
                      std::int64_t max) {
  std::int64_t value = 0;
  const char* end = text.data() + text.size();
  const auto [ptr, error] = std::from_chars(text.data(), end, value);
  if (text.empty() || error != std::errc() || ptr != end || value < min || value > max) {
    throw UsageError(what + " wants a whole number from " + std::to_string(min) + " to " +
                     std::to_string(max) + ", not '" + text + "'");
  }
  return value;
}

}  // namespace canvaro_tool
