// The tool's command line, parsed with CLI11: the commands, their options and their help.
//
//   return canvaro_tool::RunCommandLine(argc, argv);   // from main(), after logging is set up
//
// `canvaro --help` and `canvaro help` list the commands, `canvaro help COMMAND` and
// `canvaro COMMAND --help` explain one, `canvaro --version` prints the library's version. `--`
// ends the options. Unknown or repeated options, missing or surplus arguments and values out of
// range are usage errors: one line on stderr, exit status 2.
#pragma once

namespace canvaro_tool {

// Parses the command line and runs the chosen command; returns the exit status. Never throws.
int RunCommandLine(int argc, const char* const* argv);

}  // namespace canvaro_tool
