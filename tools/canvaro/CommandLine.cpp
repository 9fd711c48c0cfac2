#include "CommandLine.h"

#include <functional>
#include <iostream>
#include <limits>
#include <memory>
#include <sstream>
#include <string>

#include <CLI/CLI.hpp>

#include "Commands.h"
#include "ToolError.h"
#include "canvaro/version.h"

namespace canvaro_tool {

namespace {

// Help as the tool has always shown it: the usage line first, then what the command does, then
// its arguments and options, then the exit status.
class ToolFormatter : public CLI::Formatter {
 public:
  std::string make_help(const CLI::App* app, std::string name,
                        CLI::AppFormatMode mode) const override {
    if (mode == CLI::AppFormatMode::Sub) return CLI::Formatter::make_help(app, name, mode);
    std::ostringstream out;
    out << make_usage(app, name) << '\n';
    if (!app->get_footer().empty()) out << app->get_footer() << '\n';
    out << make_positionals(app) << make_groups(app, mode) << make_subcommands(app, mode);
    std::string text = out.str();
    if (!text.empty() && text.back() != '\n') text += '\n';
    return text;
  }
};

// Option help is aligned in a column of this width.
constexpr std::size_t kColumn = 22;

const char* const kOverview =
    R"(Runs a scripted editing session on the canvaro library, and inspects, verifies and exports
the documents it saves. Run 'canvaro help COMMAND' for the options of a command.)";

const char* const kDemoText =
    R"(Runs a scripted editing session on a document, as a host application would: each step renders a
new picture with one of the tool's effects (brightness, blur, invert) and adds it with its
settings, paints mask strokes with several brushes, places, moves, restyles and removes shapes of
every kind in transactions, and undoes and redoes across them. Then it saves the document, loads
it into a fresh document and checks every step pixel for pixel, and prints a summary.

Output: DIR is a document package: DIR/document.json (the document's text form), DIR/manifest.json
(each picture's size and checksum) and DIR/pictures/. The session's swap files live in DIR/swap/
while it runs. A DIR from an earlier run is reused; a directory holding anything else is refused.

Exit status: 0 when the reloaded document matched, 1 when it did not or on an error.)";

const char* const kInspectText =
    R"(Shows a saved document: its undo steps and their participants, the current step, each history
item with its picture frame (swap file, geometry, size on disk, present or missing), its mask
(rectangle, pixel counts per brush) and settings (package, preset), the shapes (kind, visible,
z value, position, number of states) and a summary of the frames.

DOC is the document file or the directory 'canvaro demo' wrote (DIR/document.json).)";

const char* const kVerifyText =
    R"(Checks a saved document: every swap file it names is present, a plain file name, whole (size
and header match the record) and loads; every step names existing items and frames. For a
document package, every picture also matches the manifest's size and checksum.

Exit status: 0 when everything is in order, 1 when a problem was found (each is listed).)";

const char* const kExportText =
    R"(Writes the picture of history item N of a saved document as a PNG file, or with --mask its mask
in force: unpainted pixels black, each brush in a colour of its own (the colours are listed).
Items are numbered as 'canvaro inspect' shows them; without --item the current item is taken.)";

const char* const kSwapHelp = "the swap directory (default: 'swap' beside the document)";
const char* const kDocumentHelp = "the document file, or the directory that holds document.json";

// A value given twice is a usage error: the user meant one of them, and we cannot tell which.
void RefuseRepeats(const CLI::App& command) {
  for (const CLI::Option* option : command.get_options()) {
    if (option->count() > 1 && option->get_expected_max() <= 1) {
      throw UsageError(option->get_name() + " was given more than once");
    }
  }
}

}  // namespace

int RunCommandLine(int argc, const char* const* argv) {
  CLI::App app(kOverview, "canvaro");
  app.formatter(std::make_shared<ToolFormatter>());
  app.get_formatter()->column_width(kColumn);
  app.footer(kOverview);
  app.description("");
  app.set_version_flag("--version", std::string("canvaro ") + Kelbra::Canvaro::GetVersionString());
  app.require_subcommand(1);

  // Set by the chosen command's callback; run once parsing has succeeded.
  std::function<int()> run;
  const auto command = [&](const char* name, const char* summary, const char* text) {
    CLI::App* sub = app.add_subcommand(name, summary);
    sub->footer(text);
    return sub;
  };

  DemoOptions demo;
  CLI::App* demoCommand =
      command("demo", "run a scripted editing session and save its document", kDemoText);
  CLI::Option* picture =
      demoCommand
          ->add_option("--picture", demo.picture,
                       "the source picture (PNG); default: a built-in generated picture")
          ->option_text("FILE");
  demoCommand
      ->add_option("--size", demo.size,
                   "the built-in picture's size (default 4000x3000: the memory budget swaps)")
      ->option_text("WxH")
      ->excludes(picture);
  demoCommand->add_option("--steps", demo.steps, "number of editing steps, 1 to 500 (default 12)")
      ->option_text("N")
      ->check(CLI::Range(1, 500));
  demoCommand->add_option("--out", demo.out, "output directory (default: canvaro-demo)")
      ->option_text("DIR");
  demoCommand->add_flag("--verbose", demo.verbose, "show the library's log lines");
  demoCommand->callback([&] {
    RefuseRepeats(*demoCommand);
    run = [&] { return RunDemo(demo); };
  });

  InspectOptions inspect;
  CLI::App* inspectCommand =
      command("inspect", "show a saved document as a readable tree (or JSON)", kInspectText);
  inspectCommand->add_option("DOC", inspect.document, kDocumentHelp)
      ->option_text("(required)")
      ->required();
  inspectCommand->add_flag("--json", inspect.json, "print the same as JSON");
  inspectCommand->add_option("--swap", inspect.swap, kSwapHelp)->option_text("DIR");
  inspectCommand->callback([&] {
    RefuseRepeats(*inspectCommand);
    run = [&] { return RunInspect(inspect); };
  });

  VerifyOptions verify;
  CLI::App* verifyCommand =
      command("verify", "check every swap file that a saved document names", kVerifyText);
  verifyCommand->add_option("DOC", verify.document, kDocumentHelp)
      ->option_text("(required)")
      ->required();
  verifyCommand->add_option("--swap", verify.swap, kSwapHelp)->option_text("DIR");
  verifyCommand->add_flag("--load", verify.load,
                          "also open the package with the library and walk every step");
  verifyCommand->callback([&] {
    RefuseRepeats(*verifyCommand);
    run = [&] { return RunVerify(verify); };
  });

  ExportOptions exportOptions;
  CLI::App* exportCommand =
      command("export", "write the picture or the mask of an item as PNG", kExportText);
  exportCommand->add_option("DOC", exportOptions.document, kDocumentHelp)
      ->option_text("(required)")
      ->required();
  exportCommand->add_option("--item", exportOptions.item, "the item (default: the current one)")
      ->option_text("N")
      ->check(CLI::Range(std::int64_t{0}, std::int64_t{std::numeric_limits<std::int32_t>::max()}));
  exportCommand->add_flag("--mask", exportOptions.mask,
                          "export the item's mask instead of its picture");
  exportCommand->add_option("--out", exportOptions.out, "the PNG file to write")
      ->option_text("FILE (required)")
      ->required();
  exportCommand->add_option("--swap", exportOptions.swap, kSwapHelp)->option_text("DIR");
  exportCommand->callback([&] {
    RefuseRepeats(*exportCommand);
    run = [&] { return RunExport(exportOptions); };
  });

  // canvaro help [COMMAND]
  std::string helpTopic;
  CLI::App* helpCommand = app.add_subcommand("help", "explain the tool or one of its commands");
  helpCommand->add_option("COMMAND", helpTopic, "the command to explain");
  helpCommand->callback([&] {
    run = [&] {
      if (helpTopic.empty()) {
        std::cout << app.help();
        return 0;
      }
      for (const CLI::App* sub : app.get_subcommands({})) {
        if (sub->get_name() == helpTopic && sub != helpCommand) {
          std::cout << sub->help("canvaro");
          return 0;
        }
      }
      throw UsageError("unknown command '" + helpTopic + "' (try 'canvaro help')");
    };
  });

  try {
    try {
      app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
      const auto chosen = app.get_subcommands();
      std::cout << (chosen.empty() ? app.help() : chosen.front()->help("canvaro"));
      return 0;
    } catch (const CLI::CallForVersion& version) {
      std::cout << version.what() << '\n';
      return 0;
    } catch (const CLI::ParseError& error) {
      if (argc <= 1) {
        std::cerr << app.help();
        return kExitUsage;
      }
      if (app.get_subcommands().empty() && argv[1][0] != '-') {
        throw UsageError(std::string("unknown command '") + argv[1] + "' (try 'canvaro --help')");
      }
      throw UsageError(std::string(error.what()) + " (try 'canvaro --help')");
    }
    return run();
  } catch (const UsageError& error) {
    std::cerr << "canvaro: " << error.what() << '\n';
    return kExitUsage;
  } catch (...) {
    std::cerr << "canvaro: " << DescribeCurrent() << '\n';
    return kExitProblem;
  }
}

}  // namespace canvaro_tool
