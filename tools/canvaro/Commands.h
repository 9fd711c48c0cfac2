// The tool's commands. Each takes the arguments after its name, prints its results on stdout and
// returns the exit status; failures are thrown (ToolError: status 1, UsageError: status 2) and
// reported by main().
#pragma once

#include <string>
#include <vector>

namespace canvaro_tool {

// canvaro demo [--picture FILE.png] [--size WxH] [--steps N] [--out DIR] [--verbose]
int RunDemo(const std::vector<std::string>& args);
// canvaro inspect DOC [--json] [--swap DIR]
int RunInspect(const std::vector<std::string>& args);
// canvaro verify DOC [--swap DIR]
int RunVerify(const std::vector<std::string>& args);
// canvaro export DOC [--step N] [--mask] --out FILE.png [--swap DIR]
int RunExport(const std::vector<std::string>& args);

}  // namespace canvaro_tool
