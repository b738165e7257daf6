/** @file
  Any bytes as a capture: decoded, shown, paired, judged, exported and taken back.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <sstream>

#include <nlohmann/json.hpp>

#include "Require.hpp"
#include "command/Show.hpp"
#include "export/Export.hpp"
#include "export/FirmwareAttributes.hpp"
#include "export/Pldm.hpp"
#include "export/Redfish.hpp"
#include "judge/Explain.hpp"
#include "judge/Lint.hpp"
#include "judge/Validate.hpp"

using namespace corvane::inspect;

namespace {

void ShowAll(const Image& image) {
  const Pairing pairing = PairTexts(image);
  std::ostringstream out;
  ShowWithTexts(image, pairing, Style(false), out);
  ShowFill(image, Style(false), out);
  ShowTexts(image, Style(false), out);
  for (const AttributeEntry& attribute : image.Attributes.Entries) {
    ShowOne(image, pairing, attribute, out);
  }
  Require(nlohmann::json::accept(ImageAsJson(image, pairing)));
}

void JudgeAll(const Image& image) {
  const Validation validation = Validate(image, true);
  Require(nlohmann::json::accept(ValidationAsJson(image, validation)));
  ValidationAsText(image, validation, Style(false));
  const std::vector<LintFinding> findings = Lint(image, nullptr, {});
  Require(nlohmann::json::accept(LintAsJson(findings)));
  const Catalog catalog = MakeCatalog(image);
  const Dependencies dependencies(catalog);
  for (std::size_t i = 0; i < std::min<std::size_t>(catalog.Attributes.size(), 8); ++i) {
    const Explanation explanation = Explain(catalog, dependencies, i, {}, nullptr);
    Require(nlohmann::json::accept(ExplanationAsJson(catalog, dependencies, explanation)));
    ExplanationAsText(catalog, dependencies, explanation, Style(false));
  }
}

// The PLDM tables are sound, whatever they were made of.
void ExportAll(const Image& image) {
  for (const bool common : {false, true}) {
    const ExportResult pldm = ExportPldm(image, common);
    const auto content = [&pldm](std::size_t file) {
      const std::string& text = pldm.Files[file].Content;
      return Bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    };
    Findings findings;
    DecodeStringTable(content(0), findings);
    Require(DecodeAttributeTable(content(1), findings).Entries.size() == pldm.Attributes);
    DecodeValueTable(content(2), findings);
    Require(findings.List().empty());
  }
  const Catalog catalog = MakeCatalog(image);
  ExportFirmwareAttributes(catalog, "en");
  Require(nlohmann::json::accept(ExportRedfish(catalog, {}).Registry.dump()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const Image image = DecodeImage({data, data + size});
    ShowAll(image);
    JudgeAll(image);
    ExportAll(image);
    const std::string exported = ExportJson(image.Capture);
    Require(ImportJson({reinterpret_cast<const std::uint8_t*>(exported.data()), exported.size()}) == image.Capture);
  } catch (const UnusableInput&) {
  }
  return 0;
}
