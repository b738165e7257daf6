/** @file
  The subcommands that judge a boot: validate, lint, explain, cache.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "command/Subcommands.hpp"

#include <memory>

#include "bytes/Text.hpp"
#include "command/Input.hpp"
#include "command/Names.hpp"
#include "judge/Explain.hpp"
#include "judge/Lint.hpp"
#include "judge/Validate.hpp"

namespace corvane::inspect {
namespace {

// A decimal number of bytes above 0.
const CLI::Validator kByteCount(
    [](std::string& text) {
      const bool digits = !text.empty() && text.size() <= 15 && text.find_first_not_of("0123456789") == text.npos;
      return digits && text.find_first_not_of('0') != text.npos ? std::string()
                                                                : text + " is not a number of bytes above 0";
    },
    "BYTES");

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
    throw UnusableInput(fmt::format("{} is not a number from {} to {}, the bounds of {}", Quote(wanted), bounds->Lower,
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

}  // namespace

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
  sub->add_option("--limit", options->Judge.Limit, "Largest variable that the store accepts, header and name included")
      ->check(kByteCount)
      ->type_name("BYTES");
  sub->add_flag("--json", options->Json, "Print JSON");
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
                  "common: also print where a reader that knows only enumerations, strings and integers stops")
      ->check(CLI::IsMember({"common"}))
      ->type_name("common");
  sub->add_flag("--json", options->Json, "Print JSON");
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
      app.add_subcommand("lint", "lint FILE [FLASH]: print what is lost, dangling, contradictory or out of bounds");
  sub->add_option("FILE", options->Input, "The input")->required();
  sub->add_option("FLASH", options->Flash, "The variable flash image (vars.fd) that the same boot left");
  sub->add_option("--limit", options->Lint.Limit,
                  "Largest variable that the store accepts, header and name included; needs a flash image")
      ->check(kByteCount)
      ->type_name("BYTES");
  sub->add_flag("--json", options->Json, "Print JSON");
  sub->callback([options, &action] {
    action = [options](const Console& console, std::ostream& out, std::ostream&) {
      const Input input = LoadInput(options->Input, options->Flash, {.Firmware = {}, .Limit = options->Lint.Limit});
      if (options->Lint.Limit && !input.Cache) {
        throw UnusableInput("--limit needs a flash image, which has the sizes of variables");
      }
      const std::vector<LintFinding> findings = Lint(input.Image, input.Cache ? &*input.Cache : nullptr, options->Lint);
      out << (options->Json ? LintAsJson(findings) : LintAsText(findings, Style(console.Colour)));
      return IsClean(findings) ? kClean : kFindings;
    };
  });
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
      "explain", "explain NAME FILE [FLASH]: print what forces an attribute, what it forces, and what a change causes");
  sub->add_option("NAME", options->Name, "The attribute: its name with or without annotations, or its handle")
      ->required();
  sub->add_option("FILE", options->Input, "The input")->required();
  sub->add_option("FLASH", options->Flash, "The variable flash image of the same boot, for its \"PidDepList\"");
  sub->add_option("--set", options->Plan, "A planned change. Repeat the option to plan several changes at once")
      ->type_name("NAME=VALUE")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  sub->add_flag("--json", options->Json, "Print JSON");
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

}  // namespace corvane::inspect
