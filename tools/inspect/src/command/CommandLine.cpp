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

#include "bytes/Text.hpp"
#include "cache/CacheVerdict.hpp"
#include "command/Input.hpp"
#include "command/Names.hpp"
#include "command/Show.hpp"
#include "compare/Diff.hpp"
#include "compare/DiffTables.hpp"
#include "export/Export.hpp"
#include "export/Redfish.hpp"
#include "export/Report.hpp"
#include "judge/Explain.hpp"
#include "judge/Lint.hpp"
#include "judge/Validate.hpp"

namespace corvane::inspect {
namespace {

// The action of the chosen subcommand. Returns the exit status.
using Action = std::function<int(const Console& console, std::ostream& out, std::ostream& err)>;

struct ShowOptions {
  std::vector<std::string> Arguments;  // [NAME] FILE
  bool NoTables = false;
  bool Texts = false;
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
         "A capture (records.bin); with NAME before it, that attribute alone in detail. NAME is a name with or "
         "without its bracketed annotations, or a handle")
      ->required()
      ->expected(1, 2)
      ->type_name("[NAME] FILE");
  sub->add_flag("--no-tables", options->NoTables, "Attribute lines only");
  sub->add_flag("--texts", options->Texts, "The display and help tables by handle instead");
  sub->add_flag("--json", options->Json, "All that the capture holds, as JSON");
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
      app.add_subcommand("diff-tables", "diff-tables A B: tell which tables of two captures differ byte for byte");
  sub->add_option("A", options->Older, "The older capture")->required();
  sub->add_option("B", options->Newer, "The newer capture")->required();
  sub->add_option("--only", options->Tables, "Compare these tables: strings, attributes, values, display, help")
      ->delimiter(',')
      ->check(CLI::IsMember(names))
      ->type_name("TABLE,...");
  sub->add_flag("--json", options->Json, "As JSON");
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

// A decimal number of bytes above 0.
const CLI::Validator kByteCount(
    [](std::string& text) {
      const bool digits = !text.empty() && text.size() <= 15 && text.find_first_not_of("0123456789") == text.npos;
      return digits && text.find_first_not_of('0') != text.npos ? std::string()
                                                                : text + " is no number of bytes above 0";
    },
    "BYTES");

// Writes to the file, or to `out` if the path is empty.
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

// Notes the findings of an input. They may be the cause of a difference.
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

// Writes two documents into a folder, or everything as one document.
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
    action = [options](const Console&, std::ostream& out, std::ostream&) -> int {
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
    action = [options](const Console& console, std::ostream& out, std::ostream& err) {
      if (options->Output.empty() && console.Terminal) {
        throw UnusableInput("a capture is binary: name a file with -o, or redirect standard output");
      }
      const Image image = LoadImage(options->Input);
      NoteFindings(options->Input, image, err);
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
    action = [options](const Console&, std::ostream& out, std::ostream&) -> int {
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
      ->check(kByteCount)
      ->type_name("BYTES");
  sub->add_flag("--json", options->Json, "As JSON");
  sub->callback([options, &action] {
    action = [options](const Console& console, std::ostream& out, std::ostream& err) {
      const std::vector<std::uint8_t> flash = ReadFile(options->Input);
      const CacheReport report = WithPath(options->Input, [&] { return ReportCache(flash, options->Judge); });
      out << (options->Json ? CacheAsJson(report, options->Judge)
                            : CacheAsText(report, options->Judge, Style(console.Colour)));
      ReportFindings(report.Findings, Style(console.Colour), err);
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
    action = [options](const Console& console, std::ostream& out, std::ostream&) {
      const Image image = LoadImage(options->Input);
      const Validation validation = Validate(image, !options->Profile.empty());
      out << (options->Json ? ValidationAsJson(image, validation)
                            : ValidationAsText(image, validation, Style(console.Colour)));
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
      ->check(kByteCount)
      ->type_name("BYTES");
  sub->add_flag("--json", options->Json, "As JSON");
  sub->callback([options, &action] {
    action = [options](const Console& console, std::ostream& out, std::ostream&) {
      const Input input = LoadInput(options->Input, options->Flash, {.Firmware = {}, .Limit = options->Lint.Limit});
      if (options->Lint.Limit && !input.Cache) {
        throw UnusableInput("--limit needs a flash image: only there the sizes of variables can be seen");
      }
      const std::vector<LintFinding> findings = Lint(input.Image, input.Cache ? &*input.Cache : nullptr, options->Lint);
      out << (options->Json ? LintAsJson(findings) : LintAsText(findings, Style(console.Colour)));
      return IsClean(findings) ? kClean : kFindings;
    };
  });
}

// Parses "NAME=VALUE". The value of an integer attribute is a number.
Plan::value_type ParseSetting(const Image& image, const Catalog& catalog, const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == text.npos) {
    throw UnusableInput(fmt::format("{} is not of the form NAME=VALUE", Quote(text)));
  }
  const std::size_t attribute = FindOneAttribute(image, text.substr(0, equals));
  const CatalogAttribute& of = catalog.Attributes[attribute];
  const std::string wanted = text.substr(equals + 1);
  const std::optional<std::size_t> value = of.FindValue(wanted);
  const auto* bounds = std::get_if<IntegerBounds>(&of.Entry->Bounds);
  if (bounds != nullptr && (!value || *value < bounds->Lower || *value > bounds->Upper)) {
    throw UnusableInput(fmt::format("{} is no number from {} to {}, as {} has them", Quote(wanted), bounds->Lower,
                                    bounds->Upper, Quote(of.Name.Text)));
  }
  if (!value) {
    std::vector<std::string> known;
    std::ranges::transform(of.Possible, std::back_inserter(known),
                           [](const CatalogValue& possible) { return possible.Name.Text; });
    throw UnusableInput(fmt::format("the attribute {} has no value {}{}", Quote(of.Name.Text), Quote(wanted),
                                    DescribeNearNames(wanted, known)));
  }
  return {attribute, *value};
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
  sub->add_option("NAME", options->Name, "The attribute: its name with or without annotations, or its handle")
      ->required();
  sub->add_option("FILE", options->Input, "The input")->required();
  sub->add_option("FLASH", options->Flash, "The variable flash image of the same boot, for its \"PidDepList\"");
  sub->add_option("--set", options->Plan, "A planned set; may be given several times, for all of them at once")
      ->type_name("NAME=VALUE")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  sub->add_flag("--json", options->Json, "As JSON");
  sub->callback([options, &action] {
    action = [options](const Console& console, std::ostream& out, std::ostream&) {
      const Input input = LoadInput(options->Input, options->Flash, {});
      const Catalog catalog = MakeCatalog(input.Image);
      const Dependencies dependencies(catalog);
      const std::size_t attribute =
          WithPath(options->Input, [&] { return FindOneAttribute(input.Image, options->Name); });
      Plan plan;
      for (const std::string& setting : options->Plan) {
        plan.push_back(ParseSetting(input.Image, catalog, setting));
      }
      const bool listed = input.Cache && input.Cache->Content.DependencyList;
      const Explanation explanation =
          Explain(catalog, dependencies, attribute, plan, listed ? &*input.Cache->Content.DependencyList : nullptr);
      out << (options->Json ? ExplanationAsJson(catalog, dependencies, explanation)
                            : ExplanationAsText(catalog, dependencies, explanation, Style(console.Colour)));
      const bool agree = !explanation.IsListed || *explanation.IsListed == explanation.IsCollected;
      return agree ? kClean : kFindings;
    };
  });
}

}  // namespace

int RunCommandLine(int argc, const char* const* argv, const Console& console, std::ostream& out,
                   std::ostream& err) try {
  CLI::App app("Reads what CorvaneDxe publishes", "inspect");
  app.require_subcommand(1);
  app.set_version_flag("--version", "inspect " INSPECT_VERSION);
  app.footer(
      "FILE is a capture, an export of one or a variable flash image; \"-\" is standard input.\n"
      "Exit status: 0 nothing found (diff: equal), 1 findings (different), 2 unusable input or usage.");
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
