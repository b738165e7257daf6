/** @file
  The command line of inspect: subcommands, options, exit statuses.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "command/CommandLine.hpp"

#include <cerrno>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/ostream.h>

#include "cache/CacheVerdict.hpp"
#include "compare/Diff.hpp"
#include "compare/DiffTables.hpp"
#include "judge/Explain.hpp"
#include "export/Export.hpp"
#include "command/Input.hpp"
#include "judge/Lint.hpp"
#include "export/Redfish.hpp"
#include "export/Report.hpp"
#include "command/Show.hpp"
#include "bytes/Text.hpp"
#include "judge/Validate.hpp"

namespace corvane::inspect {
namespace {

// What the subcommand that was asked for does.
using Action = std::function<int(const Style& style, std::ostream& out, std::ostream& err)>;

struct ShowOptions {
  std::vector<std::string> Arguments;  // [NAME] FILE
  bool NoTables = false;
  bool Texts = false;
  bool Json = false;
};

struct DiffOptions {
  std::string Older;
  std::string Newer;
  std::vector<TableId> Tables;
  bool Json = false;
};

int ReportFindings(const Findings& findings, const Style& style, std::ostream& err) {
  for (const Finding& finding : findings.List()) {
    fmt::print(err, "{} {}: {}\n", style.Bad("finding:"), finding.Code, finding.Text);
  }
  return findings.List().empty() ? kClean : kFindings;
}

int RunShow(const ShowOptions& options, const Style& style, std::ostream& out, std::ostream& err) {
  const Image image = LoadImage(options.Arguments.back());
  const Pairing pairing = PairTexts(image);
  if (options.Arguments.size() > 1) {
    const std::string& name = options.Arguments.front();
    const std::vector<const AttributeEntry*> attributes = image.FindByName(name);
    if (attributes.empty()) {
      throw UnusableInput(fmt::format("{}: no attribute has the name {}", options.Arguments.back(), Quote(name)));
    }
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

int RunDiffTables(const DiffOptions& options, std::ostream& out) {
  const Image older = LoadImage(options.Older);
  const Image newer = LoadImage(options.Newer);
  const std::vector<TableDifference> differences = DiffTables(older, newer, options.Tables);
  out << (options.Json ? DifferencesAsJson(differences) : DifferencesAsText(differences));
  return std::ranges::all_of(differences, &TableDifference::Equal) ? kClean : kFindings;
}

std::vector<TableId> AllTables() {
  std::vector<TableId> tables;
  tables.reserve(kTableKinds.size());
  for (const TableKind& kind : kTableKinds) {
    tables.push_back(kind.Id);
  }
  return tables;
}

void AddShow(CLI::App& app, ShowOptions& options) {
  CLI::App* show =
      app.add_subcommand("show", "show [NAME] FILE: print the attributes of a capture and the fill of its tables");
  show->add_option("FILE", options.Arguments,
                   "A capture (records.bin); with NAME before it, that attribute alone in detail. NAME goes with or "
                   "without its bracketed annotations")
      ->required()
      ->expected(1, 2)
      ->type_name("[NAME] FILE");
  show->add_flag("--no-tables", options.NoTables, "Attribute lines only");
  show->add_flag("--texts", options.Texts, "The display and help tables by handle instead");
  show->add_flag("--json", options.Json, "All that the capture holds, as JSON");
}

void AddDiffTables(CLI::App& app, DiffOptions& options) {
  std::map<std::string, TableId> names;
  for (const TableKind& kind : kTableKinds) {
    names.emplace(kind.Name, kind.Id);
  }
  CLI::App* diff =
      app.add_subcommand("diff-tables", "diff-tables A B: tell which tables of two captures differ byte for byte");
  diff->add_option("A", options.Older, "The older capture")->required();
  diff->add_option("B", options.Newer, "The newer capture")->required();
  diff->add_option("--only", options.Tables, "Compare these tables: strings, attributes, values, display, help")
      ->delimiter(',')
      ->transform(CLI::CheckedTransformer(names))
      ->type_name("TABLE,...");
  diff->add_flag("--json", options.Json, "As JSON");
}

// To the file, or to `out` where none is named.
void WriteOutput(const std::string& path, std::string_view content, std::ostream& out) {
  if (path.empty()) {
    out << content;
    return;
  }
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << content;
  file.close();
  if (!file) {
    throw UnusableInput(fmt::format("{}: cannot be written: {}", path, std::system_category().message(errno)));
  }
}

// Two inputs are compared as they are; what is wrong with them may be why they differ.
void NoteFindings(const std::string& path, const Image& image, std::ostream& err) {
  std::set<std::string> codes;
  for (const Finding& finding : image.Findings.List()) {
    codes.insert(finding.Code);
  }
  if (!codes.empty()) {
    fmt::print(err, "note: {}: {} findings ({})\n", path, image.Findings.List().size(), fmt::join(codes, ", "));
  }
}

void AddDiff(CLI::App& app, Action& action) {
  struct Options {
    std::string Older;
    std::string Newer;
    bool NoValues = false;
    bool Json = false;
  };
  const auto options = std::make_shared<Options>();
  CLI::App* diff = app.add_subcommand("diff", "diff A B: tell what changed from A to B, by name and token");
  diff->add_option("A", options->Older, "The older input")->required();
  diff->add_option("B", options->Newer, "The newer input")->required();
  diff->add_flag("--no-values", options->NoValues, "Leave current values out");
  diff->add_flag("--json", options->Json, "As JSON");
  diff->callback([options, &action] {
    action = [options](const Style& style, std::ostream& out, std::ostream& err) {
      const Image older = LoadImage(options->Older);
      const Image newer = LoadImage(options->Newer);
      NoteFindings(options->Older, older, err);
      NoteFindings(options->Newer, newer, err);
      const auto differences = DiffCatalogs(MakeCatalog(older), MakeCatalog(newer), !options->NoValues);
      if (options->Json) {
        out << nlohmann::ordered_json{{"differences", DifferencesAsJson(differences)}}.dump(2) << '\n';
      } else {
        out << DiffAsText(differences, style);
      }
      return differences.empty() ? kClean : kFindings;
    };
  });
}

// Two documents in a folder and what they leave out, or all of it as one document.
int RunExportRedfish(const std::string& input, const std::string& folder, const RedfishNames& names, bool json,
                     std::ostream& out) {
  const Image image = LoadImage(input);
  const RedfishExport result = ExportRedfish(MakeCatalog(image), names);
  nlohmann::ordered_json left = nlohmann::ordered_json::array();
  for (const LeftOut& one : result.Left) {
    left.push_back({{"handle", one.Handle}, {"attribute", one.Attribute}, {"what", one.What}, {"reason", one.Reason}});
  }
  if (folder.empty()) {
    out << nlohmann::ordered_json{{"registry", result.Registry}, {"bios", result.Bios}, {"leftOut", std::move(left)}}
               .dump(2)
        << '\n';
    return kClean;
  }
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  WriteOutput(folder + "/AttributeRegistry.json", result.Registry.dump(2) + '\n', out);
  WriteOutput(folder + "/Bios.json", result.Bios.dump(2) + '\n', out);
  if (json) {
    out << nlohmann::ordered_json{{"leftOut", std::move(left)}}.dump(2) << '\n';
    return kClean;
  }
  for (const LeftOut& one : result.Left) {
    fmt::print(out, "left out: {} {} ({}): {}\n", one.What, PrintableUtf8(one.Attribute), one.Handle,
               PrintableUtf8(one.Reason));
  }
  fmt::print(out, "{} attributes of {} exported\n", result.Bios["Attributes"].size(), image.Attributes.Entries.size());
  return kClean;
}

void AddExport(CLI::App& app, Action& action) {
  struct Options {
    std::string Input;
    std::string Output;
    bool Json = false;
    bool Redfish = false;
    RedfishNames Names;
  };
  const auto options = std::make_shared<Options>();
  CLI::App* sub = app.add_subcommand("export", "export FILE: write the capture in another form");
  sub->add_option("FILE", options->Input, "The input")->required();
  sub->add_option(
      "-o,--output", options->Output,
      "Where to; standard output if left out. A folder for --redfish: AttributeRegistry.json and Bios.json");
  sub->add_flag("--json", options->Json,
                "All of the capture, so that `import` gives the same bytes again; with --redfish, what is said of it");
  sub->add_flag("--redfish", options->Redfish, "An AttributeRegistry and a Bios resource");
  sub->add_option("--registry-id", options->Names.Id, "Id of the registry")->capture_default_str();
  sub->add_option("--registry-version", options->Names.Version, "Its version")->capture_default_str();
  sub->add_option("--owner", options->Names.Owner, "Its owning entity")->capture_default_str();
  sub->add_option("--bios-uri", options->Names.BiosUri, "Where the Bios resource is")->capture_default_str();
  sub->callback([options, &action] {
    if (!options->Json && !options->Redfish) {
      throw CLI::RequiredError("--json or --redfish");
    }
    action = [options](const Style&, std::ostream& out, std::ostream&) -> int {
      if (options->Redfish) {
        return RunExportRedfish(options->Input, options->Output, options->Names, options->Json, out);
      }
      const Image image = LoadImage(options->Input);
      WriteOutput(options->Output, ExportJson(image.Capture, image.OfCache), out);
      return kClean;
    };
  });
}

void AddImport(CLI::App& app, Action& action) {
  struct Options {
    std::string Input;
    std::string Output;
  };
  const auto options = std::make_shared<Options>();
  CLI::App* sub = app.add_subcommand("import", "import FILE: write the capture that an export stands for");
  sub->add_option("FILE", options->Input, "What `export --json` wrote, edited or not")->required();
  sub->add_option("-o,--output", options->Output, "Where to; standard output if left out");
  sub->callback([options, &action] {
    action = [options](const Style&, std::ostream& out, std::ostream&) {
      const Image image = LoadImage(options->Input);
      WriteOutput(options->Output, {reinterpret_cast<const char*>(image.Capture.data()), image.Capture.size()}, out);
      return kClean;
    };
  });
}

void AddReport(CLI::App& app, Action& action) {
  struct Options {
    std::string Input;
    std::string Flash;
    std::string Older;
    std::string Output;
    bool Json = false;
  };
  const auto options = std::make_shared<Options>();
  CLI::App* sub = app.add_subcommand("report", "report FILE [FLASH]: put everything about a boot on one page of HTML");
  sub->add_option("FILE", options->Input, "The input")->required();
  sub->add_option("FLASH", options->Flash, "The variable flash image (vars.fd) that the same boot left");
  sub->add_option("--since", options->Older, "An older input; the page tells the differences, too");
  sub->add_option("-o,--output", options->Output, "Where to; standard output if left out");
  sub->add_flag("--json", options->Json, "What the page shows, as JSON");
  sub->callback([options, &action] {
    action = [options](const Style&, std::ostream& out, std::ostream&) -> int {
      const Input input = LoadInput(options->Input, options->Flash, {});
      std::optional<Image> older;
      if (!options->Older.empty()) {
        older = LoadImage(options->Older);
      }
      const std::vector<LintFinding> findings = Lint(input.Image, input.Cache ? &*input.Cache : nullptr, {});
      const auto data =
          ReportData({options->Input, input.Image}, findings, {options->Older, older ? &*older : nullptr});
      WriteOutput(options->Output, options->Json ? data.dump(2) + '\n' : ReportPage(data), out);
      return input.Image.Findings.List().empty() && IsClean(findings) ? kClean : kFindings;
    };
  });
}

void AddCache(CLI::App& app, Action& action) {
  struct Options {
    std::string Input;
    CacheOptions Judge;
    bool Json = false;
  };
  const auto options = std::make_shared<Options>();
  CLI::App* sub = app.add_subcommand("cache", "cache FILE: judge the attribute cache of a variable flash image");
  sub->add_option("FILE", options->Input, "A variable flash image (vars.fd)")->required();
  sub->add_option("--firmware", options->Judge.Firmware, "Version of the firmware that boots next")
      ->type_name("VERSION");
  sub->add_option("--limit", options->Judge.Limit,
                  "Bytes that the store takes for one variable, header and name included")
      ->type_name("BYTES");
  sub->add_flag("--json", options->Json, "As JSON");
  sub->callback([options, &action] {
    action = [options](const Style& style, std::ostream& out, std::ostream& err) {
      const std::vector<std::uint8_t> flash = ReadFile(options->Input);
      const CacheReport report = WithPath(options->Input, [&] { return ReportCache(flash, options->Judge); });
      out << (options->Json ? CacheAsJson(report, options->Judge) : CacheAsText(report, options->Judge, style));
      ReportFindings(report.Findings, style, err);
      return report.Verdict.IsFine() && report.Findings.List().empty() ? kClean : kFindings;
    };
  });
}

void AddValidate(CLI::App& app, Action& action) {
  struct Options {
    std::string Input;
    std::string Profile;
    bool Json = false;
  };
  const auto options = std::make_shared<Options>();
  CLI::App* sub = app.add_subcommand("validate", "validate FILE: check the structure of everything that is published");
  sub->add_option("FILE", options->Input, "The input")->required();
  sub->add_option("--profile", options->Profile,
                  "common: say, too, where a reader that knows enumerations, strings and integers alone stops")
      ->check(CLI::IsMember({"common"}))
      ->type_name("common");
  sub->add_flag("--json", options->Json, "As JSON");
  sub->callback([options, &action] {
    action = [options](const Style& style, std::ostream& out, std::ostream&) {
      const Image image = LoadImage(options->Input);
      const Validation validation = Validate(image, !options->Profile.empty());
      out << (options->Json ? ValidationAsJson(image, validation) : ValidationAsText(image, validation, style));
      return validation.Problems.List().empty() ? kClean : kFindings;
    };
  });
}

void AddLint(CLI::App& app, Action& action) {
  struct Options {
    std::string Input;
    std::string Flash;
    LintOptions Lint;
    bool Json = false;
  };
  const auto options = std::make_shared<Options>();
  CLI::App* sub =
      app.add_subcommand("lint", "lint FILE [FLASH]: tell what is lost, dangling, contradictory or out of bounds");
  sub->add_option("FILE", options->Input, "The input")->required();
  sub->add_option("FLASH", options->Flash, "The variable flash image (vars.fd) that the same boot left");
  sub->add_option("--limit", options->Lint.Limit,
                  "Bytes that the store takes for one variable, header and name included; needs a flash image")
      ->type_name("BYTES");
  sub->add_flag("--json", options->Json, "As JSON");
  sub->callback([options, &action] {
    action = [options](const Style& style, std::ostream& out, std::ostream&) {
      const Input input = LoadInput(options->Input, options->Flash, {.Firmware = {}, .Limit = options->Lint.Limit});
      if (options->Lint.Limit && !input.Cache) {
        throw UnusableInput("--limit needs a flash image: only there the sizes of variables can be seen");
      }
      const std::vector<LintFinding> findings = Lint(input.Image, input.Cache ? &*input.Cache : nullptr, options->Lint);
      out << (options->Json ? LintAsJson(findings) : LintAsText(findings, style));
      return IsClean(findings) ? kClean : kFindings;
    };
  });
}

// "NAME=VALUE", both without annotations, as positions in the catalog.
Plan::value_type ParseSetting(const Catalog& catalog, const Dependencies& dependencies, const std::string& text) {
  const std::size_t equals = text.find('=');
  const std::optional<std::size_t> attribute = dependencies.Find(text.substr(0, equals));
  if (!attribute || equals == text.npos) {
    throw UnusableInput(fmt::format("no attribute has the name that {} begins with", Quote(text)));
  }
  const std::vector<CatalogValue>& possible = catalog.Attributes[*attribute].Possible;
  const auto found = std::ranges::find_if(possible, [value = text.substr(equals + 1)](const CatalogValue& candidate) {
    return candidate.Name.Text == value;
  });
  if (found == possible.end()) {
    throw UnusableInput(fmt::format("the attribute in {} has no such value", Quote(text)));
  }
  return {*attribute, static_cast<std::size_t>(found - possible.begin())};
}

void AddExplain(CLI::App& app, Action& action) {
  struct Options {
    std::string Name;
    std::string Input;
    std::string Flash;
    std::vector<std::string> Plan;
    bool Json = false;
  };
  const auto options = std::make_shared<Options>();
  CLI::App* sub = app.add_subcommand(
      "explain", "explain NAME FILE [FLASH]: tell who forces an attribute, whom it forces, what a set drags along");
  sub->add_option("NAME", options->Name, "The attribute, with or without its annotations")->required();
  sub->add_option("FILE", options->Input, "The input")->required();
  sub->add_option("FLASH", options->Flash, "The variable flash image of the same boot, for its \"PidDepList\"");
  sub->add_option("--set", options->Plan, "A planned set; may be given several times, for all of them at once")
      ->type_name("NAME=VALUE")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  sub->add_flag("--json", options->Json, "As JSON");
  sub->callback([options, &action] {
    action = [options](const Style& style, std::ostream& out, std::ostream&) {
      const Input input = LoadInput(options->Input, options->Flash, {});
      const Catalog catalog = MakeCatalog(input.Image);
      const Dependencies dependencies(catalog);
      const std::optional<std::size_t> attribute = dependencies.Find(ParseKeyword(options->Name).Bare);
      if (!attribute) {
        throw UnusableInput(fmt::format("{}: no attribute has the name {}", options->Input, Quote(options->Name)));
      }
      Plan plan;
      for (const std::string& setting : options->Plan) {
        plan.push_back(ParseSetting(catalog, dependencies, setting));
      }
      const bool listed = input.Cache && input.Cache->Content.DependencyList;
      const Explanation explanation =
          Explain(catalog, dependencies, *attribute, plan, listed ? &*input.Cache->Content.DependencyList : nullptr);
      out << (options->Json ? ExplanationAsJson(catalog, dependencies, explanation)
                            : ExplanationAsText(catalog, dependencies, explanation, style));
      const bool agree = !explanation.IsListed || *explanation.IsListed == explanation.IsCollected;
      return agree ? kClean : kFindings;
    };
  });
}

}  // namespace

int RunCommandLine(int argc, const char* const* argv, bool colour, std::ostream& out, std::ostream& err) try {
  const Style style(colour);
  ShowOptions showOptions;
  DiffOptions diffOptions;
  CLI::App app("Reads what CorvaneDxe publishes", "inspect");
  app.require_subcommand(1);
  app.footer("Exit status: 0 nothing found (diff: equal), 1 findings (different), 2 unusable input or usage.");
  AddShow(app, showOptions);
  AddDiffTables(app, diffOptions);
  Action action;
  AddDiff(app, action);
  AddExport(app, action);
  AddImport(app, action);
  AddReport(app, action);
  AddValidate(app, action);
  AddLint(app, action);
  AddExplain(app, action);
  AddCache(app, action);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error, out, err) == 0 ? kClean : kUnusable;
  }
  if (action) {
    return action(style, out, err);
  }
  if (app.got_subcommand("show")) {
    return RunShow(showOptions, style, out, err);
  }
  if (diffOptions.Tables.empty()) {
    diffOptions.Tables = AllTables();
  }
  return RunDiffTables(diffOptions, out);
} catch (const std::exception& error) {
  fmt::print(err, "inspect: {}\n", error.what());
  return kUnusable;
}

}  // namespace corvane::inspect
