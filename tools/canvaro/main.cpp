// canvaro: runs a scripted editing session on the library and inspects, verifies and exports
// the documents it saves. `canvaro --help` lists the commands; `canvaro COMMAND --help` explains
// one.
#include <iostream>
#include <string>
#include <vector>

#include <glog/logging.h>

#include "tools/canvaro/Commands.h"
#include "tools/canvaro/ToolError.h"

namespace {

using namespace canvaro_tool;

struct Command {
  const char* name;
  int (*run)(const std::vector<std::string>&);
  const char* summary;
};

const Command kCommands[] = {
    {"demo", &RunDemo, "run a scripted editing session and save its document"},
    {"inspect", &RunInspect, "show a saved document as a readable tree (or JSON)"},
    {"verify", &RunVerify, "check every swap file that a saved document names"},
    {"export", &RunExport, "write the picture or the mask of a step as PNG"},
};

void PrintUsage(std::ostream& out) {
  out << "Usage: canvaro COMMAND [OPTIONS]\n\nCommands:\n";
  for (const auto& command : kCommands) {
    out << "  " << command.name << std::string(10 - std::string(command.name).size(), ' ')
        << command.summary << '\n';
  }
  out << "\nRun 'canvaro COMMAND --help' for the options of a command.\n";
}

// The library logs through glog. The tool keeps those lines off the terminal (they would break
// its one-line errors; `demo --verbose` shows them) and never writes log files.
void SetUpLogging(const char* program) {
  google::InitGoogleLogging(program);
  for (int severity = 0; severity < google::NUM_SEVERITIES; ++severity) {
    google::SetLogDestination(severity, "");
  }
  FLAGS_logtostderr = false;
  FLAGS_stderrthreshold = google::GLOG_FATAL;
}

}  // namespace

int main(int argc, char** argv) {
  SetUpLogging(argv[0]);
  const std::vector<std::string> args(argv + 1, argv + argc);
  try {
    if (args.empty()) {
      PrintUsage(std::cerr);
      return kExitUsage;
    }
    if (args[0] == "--help" || args[0] == "-h" || args[0] == "help") {
      PrintUsage(std::cout);
      return 0;
    }
    for (const auto& command : kCommands) {
      if (args[0] == command.name) {
        return command.run(std::vector<std::string>(args.begin() + 1, args.end()));
      }
    }
    throw UsageError("unknown command '" + args[0] + "' (try 'canvaro --help')");
  } catch (const UsageError& error) {
    std::cerr << "canvaro: " << error.what() << '\n';
    return kExitUsage;
  } catch (...) {
    std::cerr << "canvaro: " << DescribeCurrent() << '\n';
    return kExitProblem;
  }
}
