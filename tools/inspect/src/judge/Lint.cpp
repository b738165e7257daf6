/** @file
  `inspect lint`: what is lost, dangling, contradictory or out of bounds in a boot's attributes, and what to do about
it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "judge/Lint.hpp"

#include <map>
#include <set>

#include <nlohmann/json.hpp>

#include "bytes/Text.hpp"
#include "judge/Advice.hpp"
#include "judge/Dependencies.hpp"
#include "judge/DependencyLint.hpp"
#include "judge/Expression.hpp"
#include "judge/ValueLint.hpp"

namespace corvane::inspect {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::uint64_t kStreamAttributes = 240;  // counted attributes in the attribute stream
constexpr std::uint64_t kStoreAttributes = 256;   // capacity of the driver's store
constexpr std::size_t kCountedQuestions = 241;    // one-of and checkbox questions that become attributes
constexpr std::size_t kLongestKeyword = 50;  // characters before an annotation; a longer keyword drops "PidDepList"
constexpr std::size_t kDependencyList = 50;  // identifiers in "PidDepList"

class Linter {
 public:
  Linter(const Image& image, const CacheReport* cache, const LintOptions& options)
      : image_(image),
        cache_(cache),
        options_(options),
        stored_(UsableTexts()),
        pairing_(PairTexts(image, stored_)),
        catalog_(MakeCatalog(image)),
        dependencies_(catalog_) {}

  std::vector<LintFinding> Run() {
    if (cache_ != nullptr) {
      LintCache();
    }
    LintCuts();
    LintStructure();
    LintStream();
    LintLimits();
    for (const CatalogAttribute& attribute : catalog_.Attributes) {
      LintName(attribute);
      for (Problem& problem : FindValueProblems(attribute)) {
        Add(problem.Code, std::move(problem.Text), problem.IsNote);
      }
    }
    LintDuplicates();
    LintPrompts();
    for (Problem& problem : FindDependencyProblems(catalog_, dependencies_)) {
      // A name that a cut table lost is not missing from the setup.
      const bool lost = problem.Code == "annotation-dangling" && IsCut({TableId::Strings, TableId::Attributes});
      if (!lost) {
        Add(problem.Code, std::move(problem.Text), problem.IsNote);
      }
    }
    LintDependencyList();
    if (!pairing_.Reason.empty()) {
      Add("texts-unpaired",
          fmt::format("From attribute {} on, texts are not paired with attributes: {}.", pairing_.FirstUnpaired,
                      pairing_.Reason),
          true);
    }
    return std::move(findings_);
  }

 private:
  const StoredTexts* UsableTexts() {
    const auto isWhole = [this](CacheId id) {
      const CacheVariable& variable = cache_->Content.Of(id);
      return variable.Present && variable.Problem.empty();
    };
    if (cache_ == nullptr || !isWhole(CacheId::Names) || !isWhole(CacheId::Display)) {
      return nullptr;
    }
    otherBoot_ = image_.OfCache ? "" : CompareBoots(image_, cache_->Content);
    return otherBoot_.empty() ? &cache_->Content.Texts : nullptr;
  }

  void Add(std::string code, std::string text, bool isNote = false, std::vector<LostEntry> lost = {}) {
    const char* advice = AdviceFor(code);
    findings_.push_back({std::move(code), std::move(text), advice, isNote, std::move(lost)});
  }

  bool IsCut(std::initializer_list<TableId> tables) const {
    return std::any_of(tables.begin(), tables.end(), [this](TableId id) { return cut_.contains(id); });
  }

  void LintCache() {
    for (const Finding& finding : cache_->Findings.List()) {
      Add(finding.Code, finding.Text + ".");
    }
    const CacheVerdict& verdict = cache_->Verdict;
    if (!otherBoot_.empty()) {
      Add("other-boot", fmt::format("The variable store is of another boot: {}.", otherBoot_));
    }
    for (const CacheVariable& variable : cache_->Content.Variables) {
      if (options_.Limit && variable.Footprint > *options_.Limit) {
        Add("cache-limit",
            fmt::format("\"{}\" takes {} bytes of a variable store, {} more than the limit of {}.", variable.Name,
                        variable.Footprint, variable.Footprint - *options_.Limit, *options_.Limit));
      }
    }
    if (!verdict.IsFine()) {
      std::string code = fmt::format("cache-{}", NameOf(verdict.State));
      std::replace(code.begin(), code.end(), ' ', '-');
      // The findings above already name the limit.
      if (!cache_->Content.IsWhole() || verdict.State != CacheState::Partial) {
        Add(std::move(code), fmt::format("The cache is {}. {}", NameOf(verdict.State), verdict.Reason));
      }
    }
  }

  // The attribute stream has no checksum. The cache of the same boot repeats its content.
  void LintStream() {
    if (stored_ == nullptr || image_.OfCache || !image_.Stream || !image_.Stream->Sound) {
      return;
    }
    for (const StreamRecord& cached : cache_->Content.Records) {
      const StreamRecord* sent = image_.Stream->Find(cached.Attribute.Handle);
      if (sent != nullptr &&
          (sent->Token != cached.Token || sent->ValueSize != cached.ValueSize ||
           sent->PlatformValues != cached.PlatformValues || !(sent->Attribute == cached.Attribute))) {
        Add("stream-differs",
            fmt::format("Attribute {} differs between the attribute stream and the cache.", cached.Attribute.Handle));
      }
    }
  }

  void LintCuts() {
    for (TableCut& cut : FindCuts(image_, stored_ != nullptr ? &cache_->Content : nullptr)) {
      cut_.insert(cut.Id);
      const std::string first = cut.FirstLost ? fmt::format(", from handle {} on", *cut.FirstLost) : "";
      const std::string over = cut.BytesOver ? fmt::format("; whole, it is {} bytes over its capacity of {}",
                                                           *cut.BytesOver, KindOf(cut.Id).Capacity)
                                             : "";
      Add("table-cut",
          fmt::format("The {} table {} {} entries{}{}.", KindOf(cut.Id).Name, image_.OfCache ? "will lack" : "lacks",
                      cut.Lost, first, over),
          false, std::move(cut.Known));
    }
  }

  // Adds findings of the structure, except consequences of a cut.
  void LintStructure() {
    for (const Finding& finding : image_.Findings.List()) {
      const std::string& code = finding.Code;
      const bool explained =
          code == "table-cut" || code == "table-overfull" || (code == "name-dangling" && IsCut({TableId::Strings})) ||
          (code == "value-missing" && IsCut({TableId::Values})) ||
          ((code == "value-dangling" || code == "member-dangling") && IsCut({TableId::Attributes})) ||
          (code == "table-length" &&
           IsCut({TableId::Strings, TableId::Attributes, TableId::Values, TableId::Display, TableId::Help}) &&
           image_.OfCache);
      if (!explained) {
        Add(code, finding.Text + ".");
      }
    }
  }

  void LintLimits() {
    const Stream* stream = image_.Stream ? &*image_.Stream : nullptr;
    if (stream != nullptr && stream->AttributeCount > kStreamAttributes) {
      Add("handle-limit", fmt::format("There are {} attributes, but at most {} have handles up to 255.",
                                      stream->AttributeCount, kStreamAttributes));
    }
    // The setup's attributes end at the last collection.
    const auto& records = cache_ != nullptr && stored_ != nullptr ? cache_->Content.Records
                          : stream != nullptr                     ? stream->Records
                                                                  : std::vector<StreamRecord>{};
    std::size_t questions = 0;
    std::size_t ofSetup = 0;
    for (const StreamRecord& record : records) {
      const BaseType type{BaseTypeOf(record.Attribute.Type)};
      questions += type == BaseType::Enumeration ? 1 : 0;
      ofSetup = type == BaseType::Collection ? questions : ofSetup;
    }
    if (stream != nullptr && stream->AttributeCount >= kStoreAttributes) {
      Add("attribute-limit",
          fmt::format("There are {} attributes, the maximum. Further questions are left out.", stream->AttributeCount));
    } else if (ofSetup >= kCountedQuestions) {
      Add("attribute-limit",
          fmt::format("{} one-of and checkbox questions are attributes, the maximum. Further questions are left out.",
                      ofSetup));
    }
  }

  void LintName(const CatalogAttribute& attribute) {
    const std::uint16_t handle = attribute.Entry->Handle;
    if (attribute.Name.Text.empty()) {
      Add("name-empty", fmt::format("Attribute {} has an empty name.", handle));
    }
    LintAnnotations(attribute.Name, fmt::format("the name of attribute {}", handle));
    if (!attribute.Name.Annotations.empty() && attribute.Name.Text.size() > kLongestKeyword) {
      Add("keyword-long", fmt::format("Attribute {} has an annotation after a name of {} characters.", handle,
                                      attribute.Name.Text.size()));
    }
    for (const CatalogValue& value : attribute.Possible) {
      LintAnnotations(value.Name, fmt::format("a value of {}", QuoteUtf8(attribute.Name.Text)));
    }
  }

  void LintAnnotations(const CatalogName& name, const std::string& where) {
    if (!name.Problem.empty()) {
      Add("annotation-malformed", fmt::format("In {}, {}: {}.", where, QuoteUtf8(name.Full), name.Problem));
    }
    for (const Annotation& annotation : name.Annotations) {
      if (annotation.Kind != AnnotationKind::RegEx) {
        continue;
      }
      if (const Expression expression(annotation.Expression); !expression.Problem().empty()) {
        Add("expression-invalid", fmt::format("The expression {} in {} does not compile: {}.",
                                              QuoteUtf8(annotation.Expression), where, expression.Problem()));
      }
    }
  }

  void LintDuplicates() {
    std::map<std::string, std::vector<std::uint16_t>> byName;
    for (const CatalogAttribute& attribute : catalog_.Attributes) {
      byName[attribute.Name.Text].push_back(attribute.Entry->Handle);
      std::set<std::string> values;
      for (const CatalogValue& value : attribute.Possible) {
        if (!values.insert(value.Name.Text).second) {
          Add("value-duplicate", fmt::format("Attribute {} has the value {} twice.", QuoteUtf8(attribute.Name.Text),
                                             QuoteUtf8(value.Name.Text)));
        }
      }
    }
    for (const auto& [name, handles] : byName) {
      if (handles.size() > 1 && !name.empty()) {
        Add("name-duplicate", fmt::format("{} attributes have the name {}: {}.", handles.size(), QuoteUtf8(name),
                                          fmt::join(handles, ", ")));
      }
    }
  }

  // A question without a keyword has its prompt for a name. Keywords have no blanks and are ASCII, so a name of one
  // word that equals its prompt is taken for a keyword.
  void LintPrompts() {
    std::vector<std::string> names;
    for (const CatalogAttribute& attribute : catalog_.Attributes) {
      const std::string& name = attribute.Name.Text;
      const bool isProse = std::ranges::any_of(name, [](char one) { return one == ' ' || (one & 0x80) != 0; });
      if (attribute.Token.value_or(0) != 0 && isProse && attribute.Display == name) {
        names.push_back(QuoteUtf8(name));
      }
    }
    if (!names.empty()) {
      Add("name-prompt",
          fmt::format("The prompt is the name of {}, because the questions have no keyword: {}.",
                      CountOf(names.size(), "attribute"), fmt::join(names, ", ")),
          true);
    }
  }

  // "PidDepList" has the questions that keywords of other questions name.
  void LintDependencyList() {
    const std::set<std::uint32_t> wanted = DependencyTokens(catalog_, dependencies_);
    if (wanted.size() > kDependencyList) {
      Add("dependency-list", fmt::format("Questions depend on {} questions, but \"PidDepList\" holds {}.",
                                         wanted.size(), kDependencyList));
    }
    if (stored_ == nullptr || !cache_->Content.DependencyList || IsCut({TableId::Attributes, TableId::Strings})) {
      return;
    }
    const std::vector<std::uint32_t>& list = *cache_->Content.DependencyList;
    for (const std::uint32_t token : wanted) {
      if (std::find(list.begin(), list.end(), token) == list.end() && list.size() < kDependencyList) {
        Add("dependency-differs", fmt::format("Question {} is missing from \"PidDepList\".", token));
      }
    }
  }

  const Image& image_;
  const CacheReport* cache_;
  const LintOptions& options_;
  std::string otherBoot_;
  const StoredTexts* stored_;
  Pairing pairing_;
  Catalog catalog_;
  Dependencies dependencies_;
  std::set<TableId> cut_;
  std::vector<LintFinding> findings_;
};

}  // namespace

std::vector<LintFinding> Lint(const Image& image, const CacheReport* cache, const LintOptions& options) {
  return Linter(image, cache, options).Run();
}

bool IsClean(const std::vector<LintFinding>& findings) {
  return std::all_of(findings.begin(), findings.end(), [](const LintFinding& finding) { return finding.IsNote; });
}

std::string LintAsText(const std::vector<LintFinding>& findings, const Style& style) {
  std::string out;
  std::size_t notes = 0;
  for (const LintFinding& finding : findings) {
    notes += finding.IsNote ? 1 : 0;
    out += fmt::format("{} {}: {}\n", finding.IsNote ? style.Strong("note:") : style.Bad("finding:"), finding.Code,
                       finding.Text);
    for (const LostEntry& lost : finding.Lost) {
      out += fmt::format("    {} {}\n", lost.Handle, QuoteUtf8(lost.Text));
    }
    out += fmt::format("  do: {}\n", finding.Advice);
  }
  return out + CountOf(findings.size() - notes, "finding") + ", " + CountOf(notes, "note") + '\n';
}

std::string LintAsJson(const std::vector<LintFinding>& findings) {
  Json list = Json::array();
  for (const LintFinding& finding : findings) {
    Json lost = Json::array();
    for (const LostEntry& entry : finding.Lost) {
      lost.push_back({{"handle", entry.Handle}, {"text", entry.Text}});
    }
    list.push_back({{"code", finding.Code},
                    {"severity", finding.IsNote ? "note" : "finding"},
                    {"text", finding.Text},
                    {"advice", finding.Advice},
                    {"lost", std::move(lost)}});
  }
  return Json{{"clean", IsClean(findings)}, {"findings", std::move(list)}}.dump(2) + '\n';
}

}  // namespace corvane::inspect
