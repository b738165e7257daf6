/** @file
  The command line of inspect: the subcommands that show and compare, and the choice among all of them.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "command/CommandLine.hpp"

#include <cerrno>
#include <exception>
#include <memory>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include <fmt/ostream.h>
#include <nlohmann/json.hpp>

#include "bytes/Text.hpp"
#include "command/Input.hpp"
#include "command/Names.hpp"
#include "command/Show.hpp"
#include "command/Subcommands.hpp"
#include "compare/Diff.hpp"
#include "compare/DiffTables.hpp"

namespace corvane::inspect {
namespace {

struct ShowOptions {
  std::vector<std::string> Arguments;  // [NAME] FILE
  bool NoTables = false;
  bool Texts = false;
  bool Json = false;
};

int RunShow(const ShowOptions& options, const Style& style, std::ostream& out, std::ostream& err) {
  const Image image = LoadImage(options.Arguments.back());
  const Pairing pairing = PairTexts(image);
  if (options.Arguments.size() > 1) {
    const std::vector<const AttributeEntry*> attributes =
        WithPath(options.Arguments.back(), [&] { return FindAttributes(image, options.Arguments.front()); });
    if (options.Json) {
      out << AttributesAsJson(image, pairing, attributes);
    } else {
      for (const AttributeEntry* attribute : attributes) {
        ShowOne(image, pairing, *attribute, out);
      }
    }
  } else if (options.Json) {
    out << ImageAsJson(image, pairing);
  } else if (options.Texts) {
    ShowTexts(image, style, out);
  } else if (options.NoTables) {
    ShowAttributes(image, out);
  } else {
    ShowWithTexts(image, pairing, style, out);
    out << '\n';
    ShowFill(image, style, out);
  }
  return ReportFindings(image.Findings, style, err);
}

void AddShow(CLI::App& app, Action& action) {
  const auto options = std::make_shared<ShowOptions>();
  CLI::App* sub =
      app.add_subcommand("show", "show [NAME] FILE: print the attributes of a capture and the fill of its tables");
  sub->add_option(
         "FILE", options->Arguments,
         "A capture (records.bin). With NAME before FILE, only that attribute, in detail. NAME is a name with or "
         "without its bracketed annotations, or a handle")
      ->required()
      ->expected(1, 2)
      ->type_name("[NAME] FILE");
  sub->add_flag("--no-tables", options->NoTables, "Print attribute lines only");
  sub->add_flag("--texts", options->Texts, "Print the display and help tables by handle instead");
  sub->add_flag("--json", options->Json, "Print the whole capture as JSON");
  sub->callback([options, &action] {
    action = [options](const Console& console, std::ostream& out, std::ostream& err) {
      return RunShow(*options, Style(console.Colour), out, err);
    };
  });
}

void AddDiffTables(CLI::App& app, Action& action) {
  struct Options {
    std::string Older;
    std::string Newer;
    std::vector<std::string> Tables;
    bool Json = false;
  };
  const auto options = std::make_shared<Options>();
  std::vector<std::string> names;
  names.reserve(std::size(kTableKinds));
  for (const TableKind& kind : kTableKinds) {
    names.emplace_back(kind.Name);
  }
  CLI::App* sub =
      app.add_subcommand("diff-tables", "diff-tables A B: print which tables of two captures differ byte for byte");
  sub->add_option("A", options->Older, "The older capture")->required();
  sub->add_option("B", options->Newer, "The newer capture")->required();
  sub->add_option("--only", options->Tables, "Compare these tables: strings, attributes, values, display, help")
      ->delimiter(',')
      ->check(CLI::IsMember(names))
      ->type_name("TABLE,...");
  sub->add_flag("--json", options->Json, "Print JSON");
  sub->callback([options, names, &action] {
    action = [options, names](const Console&, std::ostream& out, std::ostream&) {
      std::vector<TableId> tables;
      for (const std::string& name : options->Tables.empty() ? names : options->Tables) {
        tables.push_back(std::ranges::find(kTableKinds, name, &TableKind::Name)->Id);
      }
      const auto differences = DiffTables(LoadImage(options->Older), LoadImage(options->Newer), tables);
      out << (options->Json ? DifferencesAsJson(differences) : DifferencesAsText(differences));
      return std::ranges::all_of(differences, &TableDifference::Equal) ? kClean : kFindings;
    };
  });
}

void AddDiff(CLI::App& app, Action& action) {
  struct Options {
    std::string Older;
    std::string Newer;
    bool NoValues = false;
    bool Json = false;
  };
  const auto options = std::make_shared<Options>();
  CLI::App* diff = app.add_subcommand("diff", "diff A B: print what changed from A to B, by name and token");
  diff->add_option("A", options->Older, "The older input")->required();
  diff->add_option("B", options->Newer, "The newer input")->required();
  diff->add_flag("--no-values", options->NoValues, "Do not compare current values");
  diff->add_flag("--json", options->Json, "Print JSON");
  diff->callback([options, &action] {
    action = [options](const Console& console, std::ostream& out, std::ostream& err) {
      const Image older = LoadImage(options->Older);
      const Image newer = LoadImage(options->Newer);
      NoteFindings(options->Older, older, err);
      NoteFindings(options->Newer, newer, err);
      const auto differences = DiffCatalogs(MakeCatalog(older), MakeCatalog(newer), !options->NoValues);
      if (options->Json) {
        out << nlohmann::ordered_json{{"differences", DifferencesAsJson(differences)}}.dump(2) << '\n';
      } else {
        out << DiffAsText(differences, Style(console.Colour));
      }
      return differences.empty() ? kClean : kFindings;
    };
  });
}

}  // namespace

int ReportFindings(const Findings& findings, const Style& style, std::ostream& err) {
  for (const Finding& finding : findings.List()) {
    fmt::print(err, "{} {}: {}\n", style.Bad("finding:"), finding.Code, finding.Text);
  }
  return findings.List().empty() ? kClean : kFindings;
}

void NoteFindings(const std::string& path, const Image& image, std::ostream& err) {
  std::set<std::string> codes;
  for (const Finding& finding : image.Findings.List()) {
    codes.insert(finding.Code);
  }
  if (!codes.empty()) {
    fmt::print(err, "note: {}: {} ({})\n", path, CountOf(image.Findings.List().size(), "finding"),
               fmt::join(codes, ", "));
  }
}

int RunCommandLine(int argc, const char* const* argv, const Console& console, std::ostream& out,
                   std::ostream& err) try {
  CLI::App app("Reads what CorvaneDxe publishes", "inspect");
  app.require_subcommand(1);
  app.set_version_flag("--version", "inspect " INSPECT_VERSION);
  app.footer(
      "FILE is a capture, an export or a variable flash image; \"-\" is standard input.\n"
      "Exit status: 0 no findings (diff: equal), 1 findings (diff: different), 2 unusable input or usage.");
  Action action;
  for (const auto add :
       {AddShow, AddValidate, AddLint, AddExplain, AddCache, AddDiff, AddDiffTables, AddExport, AddImport, AddReport}) {
    add(app, action);
  }
  std::vector<std::string> known;
  for (const CLI::App* sub : app.get_subcommands([](CLI::App*) { return true; })) {
    known.push_back(sub->get_name());
  }
  if (argc > 1 && *argv[1] != '-' && std::ranges::find(known, argv[1]) == known.end()) {
    throw UnusableInput(fmt::format("there is no subcommand {}{}", Quote(argv[1]), DescribeNearNames(argv[1], known)));
  }
  int status = kClean;
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    status = app.exit(error, out, err) == 0 ? kClean : kUnusable;
  }
  if (action) {
    status = action(console, out, err);
  }
  out.flush();
  if (!out) {
    throw UnusableInput(fmt::format("the output cannot be written: {}", std::system_category().message(errno)));
  }
  return status;
} catch (const std::exception& error) {
  fmt::print(err, "inspect: {}\n", error.what());
  return kUnusable;
}

}  // namespace corvane::inspect
