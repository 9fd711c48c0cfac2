// canvaro: runs a scripted editing session on the library and inspects, verifies and exports
// the documents it saves. `canvaro --help` lists the commands; `canvaro help COMMAND` explains
// one.
#include <csignal>

#include <glog/logging.h>

#include "tools/canvaro/CommandLine.h"

namespace {

// The library logs through glog once it is set up. The tool keeps those lines off the terminal
// (they would break its one-line errors; `demo --verbose` shows them) and never writes log files.
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
  // Past a file size limit (ulimit -f) a write then fails with "File too large" and the tool
  // reports it, instead of being killed without a word.
  std::signal(SIGXFSZ, SIG_IGN);
  SetUpLogging(argv[0]);
  return canvaro_tool::RunCommandLine(argc, argv);
}
