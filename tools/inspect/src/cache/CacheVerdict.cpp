/** @file
  `inspect cache`: the attribute cache in a variable store, and what the next boot does with it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "cache/CacheVerdict.hpp"

#include <functional>

#include <nlohmann/json.hpp>

#include "bytes/Text.hpp"

namespace corvane::inspect {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kGather = "gathers all attributes from the setup's form sets and ";

// What is lost without a variable.
const char* LossOf(CacheId id) {
  switch (id) {
    case CacheId::Attributes:
      return "the attributes";
    case CacheId::Counters:
      return "everything but passwords and boot configuration";
    case CacheId::Names:
      return "the names";
    case CacheId::Display:
      return "the display texts";
    case CacheId::Help:
      return "the help texts";
    default:
      return "nothing";
  }
}

std::string Join(const std::vector<std::string>& parts) {
  std::string text;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    text += (i == 0 ? "" : i + 1 == parts.size() ? " and " : ", ") + parts[i];
  }
  return text;
}

// Joins the descriptions of the variables that match.
std::string List(const CacheContent& cache, const std::function<bool(const CacheVariable&)>& matches,
                 const std::function<std::string(const CacheVariable&)>& describe) {
  std::vector<std::string> parts;
  for (const CacheVariable& variable : cache.Variables) {
    if (matches(variable)) {
      parts.push_back(describe(variable));
    }
  }
  return Join(parts);
}

bool IsNeeded(const CacheVariable& variable) {
  return variable.Id != CacheId::Status;
}
bool IsMissing(const CacheVariable& variable) {
  return IsNeeded(variable) && !variable.Present;
}
bool IsBroken(const CacheVariable& variable) {
  return !variable.Problem.empty();
}
bool IsHarmed(const CacheVariable& variable) {
  return IsMissing(variable) || IsBroken(variable);
}
std::string NameOfVariable(const CacheVariable& variable) {
  return fmt::format("\"{}\"", variable.Name);
}

bool IsTextList(CacheId id) {
  return id == CacheId::Names || id == CacheId::Display || id == CacheId::Help;
}

// The next boot, if the version is its own and no seal is broken. It restores whatever the other variables hold.
std::string DescribeRestore(const CacheContent& cache) {
  const auto loses =
      List(cache, IsHarmed, [](const CacheVariable& variable) -> std::string { return LossOf(variable.Id); });
  const auto does = [&cache](Restore what) {
    return List(
        cache, [what](const CacheVariable& variable) { return variable.Outcome == what; }, NameOfVariable);
  };
  std::string text =
      fmt::format("It trusts the version and restores what it can: {} are lost or wrong, in whole or in part. ", loses);
  const std::string damaged = does(Restore::DeletesOne);
  if (!does(Restore::Recorded).empty()) {
    text += fmt::format(
        "It detects this, publishes what is left and deletes the cache. The boot after it {}writes the cache.",
        kGather);
  } else if (!does(Restore::DeletesVersion).empty()) {
    text += fmt::format("It publishes what is left and deletes \"BiosVersion\". The boot after it {}writes the cache.",
                        kGather);
  } else if (!damaged.empty()) {
    text += fmt::format(
        "It publishes what is left and deletes {}. The boot after it misses this and deletes the cache. The next one "
        "{}writes the cache.",
        damaged, kGather);
  } else {
    text +=
        "It does not detect this. Every boot publishes the same until the firmware version changes or a byte other "
        "than 0 is written to \"AttCacheStatus\".";
  }
  if (std::any_of(cache.Variables.begin(), cache.Variables.end(),
                  [](const CacheVariable& variable) { return IsMissing(variable) && IsTextList(variable.Id); })) {
    text +=
        " If the store has no room for the variable, boots that gather and boots without these texts alternate "
        "forever.";
  }
  return text;
}

std::string DescribeTooLarge(const CacheContent& cache, std::size_t limit) {
  const auto isOver = [limit](const CacheVariable& variable) { return variable.Footprint > limit; };
  const bool texts = std::all_of(cache.Variables.begin(), cache.Variables.end(), [&](const CacheVariable& variable) {
    return !isOver(variable) || IsTextList(variable.Id);
  });
  if (!texts) {
    return fmt::format("It {}cannot write the whole cache, so it deletes the cache. Every later boot does the same.",
                       kGather);
  }
  const auto lost =
      List(cache, isOver, [](const CacheVariable& variable) -> std::string { return LossOf(variable.Id); });
  return fmt::format(
      "It {0}writes a cache without {1}. The boot after it publishes without {1} and deletes the cache. Both "
      "kinds of boot alternate forever.",
      kGather, lost);
}

Json ContentAsJson(const CacheContent& cache) {
  Json variables = Json::array();
  for (const CacheVariable& variable : cache.Variables) {
    variables.push_back({{"name", variable.Name},
                         {"present", variable.Present},
                         {"size", variable.Size},
                         {"footprint", variable.Footprint},
                         {"content", variable.Content ? Json(*variable.Content) : Json()},
                         {"entries", variable.Entries},
                         {"problem", variable.Problem.empty() ? Json() : Json(variable.Problem)}});
  }
  return variables;
}

}  // namespace

const char* NameOf(CacheState state) {
  switch (state) {
    case CacheState::Absent:
      return "absent";
    case CacheState::Valid:
      return "valid";
    case CacheState::Stale:
      return "stale";
    case CacheState::MarkedBad:
      return "marked bad";
    case CacheState::Partial:
      return "partial";
    case CacheState::Corrupt:
      return "corrupt";
  }
  return "";
}

const char* NameOf(Seal seal) {
  switch (seal) {
    case Seal::None:
      return "none";
    case Seal::Fits:
      return "fits";
    case Seal::Broken:
      return "broken";
  }
  return "";
}

CacheVerdict JudgeCache(const CacheContent& cache, const CacheOptions& options) {
  const std::string rebuild = std::string("It ") + kGather + "writes the cache again.";
  const CacheVariable& version = cache.Of(CacheId::Version);
  const std::string shown = Quote(cache.Version);
  if (cache.IsAbsent()) {
    return {CacheState::Absent, "It has no variables.", rebuild};
  }
  const std::string missing = List(cache, IsMissing, NameOfVariable);
  std::string harm = missing.empty() ? "" : fmt::format("There is no {}. ", missing);
  for (const CacheVariable& variable : cache.Variables) {
    harm += IsBroken(variable) ? fmt::format("\"{}\": {}. ", variable.Name, variable.Problem) : "";
  }
  harm.resize(harm.empty() ? 0 : harm.size() - 1);
  const CacheState harmed = missing.empty() ? CacheState::Corrupt : CacheState::Partial;
  if (!version.Present) {
    return {CacheState::Partial, harm, "Without a version nothing is restored. " + rebuild};
  }
  if (cache.Version.empty()) {
    return {CacheState::Corrupt, fmt::format("\"{}\": {}.", version.Name, version.Problem),
            "The version belongs to no firmware, so nothing is restored. " + rebuild};
  }
  if (options.Firmware && *options.Firmware != cache.Version) {
    return {CacheState::Stale,
            fmt::format("It is of the firmware version {}, not {}.", shown, Quote(*options.Firmware)), rebuild};
  }
  if (cache.Status != 0) {
    return {CacheState::MarkedBad, fmt::format("\"AttCacheStatus\" is {}, not 0.", cache.Status),
            rebuild + " That clears the mark."};
  }
  if (cache.Seal == Seal::Broken) {
    return {harmed, harm, "The seal is broken, so nothing is restored. " + rebuild};
  }
  if (!harm.empty()) {
    return {harmed, harm, DescribeRestore(cache)};
  }
  const auto isOver = [&options](const CacheVariable& variable) {
    return options.Limit && variable.Footprint > *options.Limit;
  };
  const std::string over = List(cache, isOver, [&](const CacheVariable& variable) {
    return fmt::format("\"{}\" ({} bytes, {} over)", variable.Name, variable.Footprint,
                       variable.Footprint - *options.Limit);
  });
  if (!over.empty()) {
    return {CacheState::Partial,
            fmt::format("A store with a limit of {} bytes for a variable has no room for {}.", *options.Limit, over),
            DescribeTooLarge(cache, *options.Limit)};
  }
  return {CacheState::Valid,
          fmt::format("All variables are present and intact, with {} attributes for the firmware version {}.",
                      cache.Counters ? cache.Counters->Attributes : 0, shown),
          fmt::format("{} restores the attributes without reading the setup, and reads the current values again. Any "
                      "other version gathers them.",
                      options.Firmware ? "It" : "A firmware of that version")};
}

CacheReport ReportCache(Bytes flash, const CacheOptions& options) {
  CacheReport report;
  report.Store = ReadVariableStore(flash, report.Findings);
  report.Content = DecodeCache(report.Store);
  report.Verdict = JudgeCache(report.Content, options);
  return report;
}

std::string CacheAsText(const CacheReport& report, const CacheOptions& options, const Style& style) {
  const CacheVerdict& verdict = report.Verdict;
  const std::string name = NameOf(verdict.State);
  std::string out =
      fmt::format("verdict: {}\n  {}\nnext boot:\n  {}\n\n", verdict.IsFine() ? style.Strong(name) : style.Bad(name),
                  verdict.Reason, verdict.NextBoot);
  out += style.Strong(fmt::format("{:<16}{:>8}{:>12}{:>10}{:>9}  {}", "variable", "data", "with header", "content",
                                  "entries", "state")) +
         '\n';
  for (const CacheVariable& variable : report.Content.Variables) {
    if (!variable.Present) {
      const std::string why = IsBroken(variable) ? variable.Problem : "missing";
      out += fmt::format("{:<16}{:>8}{:>12}{:>10}{:>9}  {}\n", variable.Name, "-", "-", "-", "-",
                         IsNeeded(variable) ? style.Bad(why) : "missing: counts as 0");
      continue;
    }
    std::string state = variable.Problem.empty() ? "ok" : style.Bad(variable.Problem);
    if (options.Limit && variable.Footprint > *options.Limit) {
      state += style.Bad(fmt::format(", {} bytes over the limit", variable.Footprint - *options.Limit));
    }
    out += fmt::format("{:<16}{:>8}{:>12}{:>10}{:>9}  {}\n", variable.Name, variable.Size, variable.Footprint,
                       variable.Content ? fmt::to_string(*variable.Content) : "-",
                       variable.Entries > 0 ? fmt::to_string(variable.Entries) : "-", state);
  }
  out += fmt::format("\nseal: {}\n", NameOf(report.Content.Seal));
  if (report.Content.Counters) {
    const CacheCounters& counters = *report.Content.Counters;
    out += fmt::format("counted: {} attributes, {} names, {} display texts, {} help texts\n", counters.Attributes,
                       counters.Names, counters.Display, counters.Help);
  }
  const VariableStore& store = report.Store;
  out += fmt::format("store: {} bytes, {} variables; {} in use, {} deleted, {} free\n", store.Size,
                     store.Authenticated ? "authenticated" : "plain", store.Live, store.Used - store.Live,
                     store.Size - store.Used);
  return out;
}

std::string CacheAsJson(const CacheReport& report, const CacheOptions& options) {
  const CacheCounters counters = report.Content.Counters.value_or(CacheCounters{});
  Json findings = Json::array();
  for (const Finding& finding : report.Findings.List()) {
    findings.push_back({{"code", finding.Code}, {"text", finding.Text}});
  }
  const Json json = {{"verdict", NameOf(report.Verdict.State)},
                     {"reason", report.Verdict.Reason},
                     {"nextBoot", report.Verdict.NextBoot},
                     {"firmware", options.Firmware ? Json(Utf8FromLatin1(*options.Firmware)) : Json()},
                     {"limit", options.Limit ? Json(*options.Limit) : Json()},
                     {"version", Utf8FromLatin1(report.Content.Version)},
                     {"status", report.Content.Status},
                     {"seal", NameOf(report.Content.Seal)},
                     {"counters",
                      {{"attributes", counters.Attributes},
                       {"names", counters.Names},
                       {"display", counters.Display},
                       {"help", counters.Help}}},
                     {"variables", ContentAsJson(report.Content)},
                     {"dependencyList", report.Content.DependencyList ? Json(*report.Content.DependencyList) : Json()},
                     {"store",
                      {{"size", report.Store.Size},
                       {"authenticated", report.Store.Authenticated},
                       {"live", report.Store.Live},
                       {"deleted", report.Store.Used - report.Store.Live},
                       {"free", report.Store.Size - report.Store.Used}}},
                     {"findings", std::move(findings)}};
  return json.dump(2) + '\n';
}

}  // namespace corvane::inspect
