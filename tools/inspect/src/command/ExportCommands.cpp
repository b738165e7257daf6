/** @file
  The subcommands that write files: export, import, report.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "command/Subcommands.hpp"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>
#include <system_error>

#include <fmt/ostream.h>

#include "bytes/Text.hpp"
#include "command/Input.hpp"
#include "export/Export.hpp"
#include "export/FirmwareAttributes.hpp"
#include "export/Pldm.hpp"
#include "export/Redfish.hpp"
#include "export/Report.hpp"
#include "judge/ValueLint.hpp"

namespace corvane::inspect {
namespace {

using Json = nlohmann::ordered_json;

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

struct ExportOptions {
  std::string Input;
  std::string Output;
  bool Json = false;
  bool Redfish = false;
  std::string PldmFolder;
  std::string Profile;
  std::string AttributesFolder;
  RedfishNames Names;
};

// Notes values that surprise readers of the export.
void NoteValues(const Catalog& catalog, std::ostream& err) {
  for (const CatalogAttribute& attribute : catalog.Attributes) {
    for (const Problem& problem : FindValueProblems(attribute)) {
      fmt::print(err, "{}: {}\n", problem.IsNote ? "note" : "warning", problem.Text);
    }
  }
}

Json LeftAsJson(const std::vector<LeftOut>& left) {
  Json list = Json::array();
  for (const LeftOut& one : left) {
    list.push_back({{"handle", one.Handle}, {"attribute", one.Attribute}, {"what", one.What}, {"reason", one.Reason}});
  }
  return list;
}

// Writes the files and lists the parts left out.
int WriteExport(const std::string& folder, const ExportResult& result, std::size_t total, bool json,
                std::ostream& out) {
  for (const ExportFile& file : result.Files) {
    const std::filesystem::path path = std::filesystem::path(folder) / file.Path;
    std::error_code error;  // a folder that cannot be made is one that cannot be written to
    std::filesystem::create_directories(path.parent_path(), error);
    WriteOutput(path.string(), file.Content, out);
    std::filesystem::permissions(path, std::filesystem::perms{file.Mode}, error);
  }
  if (json) {
    out << Json{{"leftOut", LeftAsJson(result.Left)}}.dump(2) << '\n';
    return kClean;
  }
  for (const LeftOut& one : result.Left) {
    fmt::print(out, "left out: {} {} ({}): {}\n", one.What, PrintableUtf8(one.Attribute), one.Handle,
               PrintableUtf8(one.Reason));
  }
  fmt::print(out, "{} attributes of {} exported\n", result.Attributes, total);
  return kClean;
}

int RunExport(const ExportOptions& options, std::ostream& out, std::ostream& err) {
  const Image image = LoadImage(options.Input);
  if (!options.Redfish && options.PldmFolder.empty() && options.AttributesFolder.empty()) {
    WriteOutput(options.Output, ExportJson(image.Capture, image.OfCache), out);
    return kClean;
  }
  const Catalog catalog = MakeCatalog(image);
  const std::size_t total = catalog.Attributes.size();
  NoteValues(catalog, err);
  if (!options.PldmFolder.empty()) {
    return WriteExport(options.PldmFolder, ExportPldm(image, !options.Profile.empty()), total, options.Json, out);
  }
  if (!options.AttributesFolder.empty()) {
    for (const char* name : {"/attributes", "/authentication"}) {
      if (std::filesystem::exists(options.AttributesFolder + name)) {  // with attributes of another boot, perhaps
        throw UnusableInput(options.AttributesFolder + name + ": already exists; name another folder");
      }
    }
    return WriteExport(options.AttributesFolder, ExportFirmwareAttributes(catalog, options.Names.Language), total,
                       options.Json, out);
  }
  RedfishExport redfish = ExportRedfish(catalog, options.Names);
  if (options.Output.empty()) {
    out << Json{{"registry", redfish.Registry}, {"bios", redfish.Bios}, {"leftOut", LeftAsJson(redfish.Left)}}.dump(2)
        << '\n';
    return kClean;
  }
  return WriteExport(
      options.Output,
      {{{"AttributeRegistry.json", redfish.Registry.dump(2) + '\n'}, {"Bios.json", redfish.Bios.dump(2) + '\n'}},
       std::move(redfish.Left),
       redfish.Bios["Attributes"].size()},
      total, options.Json, out);
}

// The cache names the firmware, unless the cache is of another boot.
std::optional<std::string> FirmwareOf(const Input& input, const std::vector<LintFinding>& findings) {
  const bool known = input.Cache && !input.Cache->Content.Version.empty() &&
                     std::ranges::find(findings, "other-boot", &LintFinding::Code) == findings.end();
  return known ? std::optional(Utf8FromLatin1(input.Cache->Content.Version)) : std::nullopt;
}

}  // namespace

void AddExport(CLI::App& app, Action& action) {
  const auto options = std::make_shared<ExportOptions>();
  CLI::App* sub = app.add_subcommand("export", "export FILE: write the capture as JSON or as Redfish documents");
  sub->add_option("FILE", options->Input, "The input")->required();
  CLI::Option* output = sub->add_option(
      "-o,--output", options->Output,
      "Output file, or folder for --redfish: AttributeRegistry.json and Bios.json. Default: standard output");
  sub->add_flag("--json", options->Json,
                "All of the capture, so that `import` gives the same bytes again; with another form, its report");
  CLI::Option* redfish = sub->add_flag("--redfish", options->Redfish, "Write an AttributeRegistry and a Bios resource");
  CLI::Option* pldm =
      sub->add_option("--pldm", options->PldmFolder, "The tables that the PLDM daemon of a management controller keeps")
          ->type_name("FOLDER")
          ->excludes(redfish)
          ->excludes(output);
  sub->add_option("--profile", options->Profile, "common: enumerations, strings and integers alone")
      ->check(CLI::IsMember({"common"}))
      ->type_name("common")
      ->needs(pldm);
  sub->add_option("--firmware-attributes", options->AttributesFolder,
                  "The tree of a device of Linux's firmware-attributes class")
      ->type_name("FOLDER")
      ->excludes(redfish)
      ->excludes(output)
      ->excludes(pldm);
  sub->add_option("--language", options->Names.Language, "Language tag of the texts")->capture_default_str();
  sub->add_option("--registry-id", options->Names.Id, "Id of the registry")->capture_default_str();
  sub->add_option("--registry-version", options->Names.Version, "Version of the registry")->capture_default_str();
  sub->add_option("--owner", options->Names.Owner, "Owning entity of the registry")->capture_default_str();
  sub->add_option("--bios-uri", options->Names.BiosUri, "URI of the Bios resource")->capture_default_str();
  sub->add_option("--settings", options->Names.SettingsUri, "Where Redfish clients send changes")->type_name("URI");
  sub->callback([options, &action] {
    if (!options->Json && !options->Redfish && options->PldmFolder.empty() && options->AttributesFolder.empty()) {
      throw CLI::RequiredError("--json, --redfish, --pldm or --firmware-attributes");
    }
    action = [options](const Console&, std::ostream& out, std::ostream& err) { return RunExport(*options, out, err); };
  });
}

void AddImport(CLI::App& app, Action& action) {
  struct Options {
    std::string Input;
    std::string Output;
  };
  const auto options = std::make_shared<Options>();
  CLI::App* sub = app.add_subcommand("import", "import FILE: write an export as a capture again");
  sub->add_option("FILE", options->Input, "An export of `export --json`, edited or not")->required();
  sub->add_option("-o,--output", options->Output, "Output file. Default: standard output");
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
  sub->add_option("--since", options->Older, "An older input. The page also lists the differences");
  sub->add_option("-o,--output", options->Output, "Output file. Default: standard output");
  sub->add_flag("--json", options->Json, "What the page shows, as JSON");
  sub->callback([options, &action] {
    action = [options](const Console&, std::ostream& out, std::ostream&) -> int {
      const Input input = LoadInput(options->Input, options->Flash, {});
      std::optional<Image> older;
      if (!options->Older.empty()) {
        older = LoadImage(options->Older);
      }
      const std::vector<LintFinding> findings = Lint(input.Image, input.Cache ? &*input.Cache : nullptr, {});
      const auto data = ReportData({options->Input, input.Image, FirmwareOf(input, findings)}, findings,
                                   {options->Older, older ? &*older : nullptr});
      WriteOutput(options->Output, options->Json ? data.dump(2) + '\n' : ReportPage(data), out);
      return input.Image.Findings.List().empty() && IsClean(findings) ? kClean : kFindings;
    };
  });
}

}  // namespace corvane::inspect
