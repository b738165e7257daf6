/** @file
  `inspect show` for people: attribute lines, the fill of the tables, texts, one attribute in detail.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "command/Show.hpp"

#include <fmt/ostream.h>

#include "bytes/Overloaded.hpp"
#include "bytes/Text.hpp"
#include "capture/Describe.hpp"

namespace corvane::inspect {
namespace {

std::string DescribeFlags(const TableFill& fill, const Style& style) {
  std::string flags = fill.CrcOk ? "ok" : style.Bad("bad");
  if (fill.Lost.value_or(0) > 0) {
    flags += "  " + style.Bad(fmt::format("full, {} lost", *fill.Lost));
  } else if (fill.MaybeCut) {
    flags += "  " + style.Bad("full?");
  }
  return flags;
}

void ShowTextTable(const char* title, const TextTable& table, const Style& style, std::ostream& out) {
  fmt::print(out, "{}\n", style.Strong(fmt::format("{} ({})", title, Utf8FromUcs2(table.Language))));
  for (const TextEntry& entry : table.Entries) {
    fmt::print(out, "{} {}\n", entry.Handle, QuoteUtf8(Utf8FromUcs2(entry.Text)));
  }
}

void ShowField(std::ostream& out, const char* field, const std::string& text) {
  fmt::print(out, "  {:<16}{}\n", field, text);
}

void ShowBounds(const Image& image, const AttributeEntry& attribute, const StreamRecord* record,
                const PairedTexts* texts, std::ostream& out) {
  const auto showNames = [&](const char* field, const std::vector<std::uint16_t>& handles) {
    for (std::size_t i = 0; i < handles.size(); ++i) {
      std::string text = fmt::format("{}: {} (string {})", i, DescribeName(image, handles[i]), handles[i]);
      if (record != nullptr && i < record->PlatformValues.size()) {
        text += fmt::format(", setting value {}", record->PlatformValues[i]);
      }
      if (texts != nullptr && i < texts->Values.size() && texts->Values[i]) {
        text += fmt::format(", {}", QuoteUtf8(*texts->Values[i]));
      }
      ShowField(out, i == 0 ? field : "", text);
    }
  };
  std::visit(Overloaded{
                 [](const std::monostate&) {},
                 [&](const EnumerationBounds& bounds) { showNames("possible", bounds.Names); },
                 [&](const LengthBounds& bounds) {
                   ShowField(out, "length", fmt::format("{} to {}", bounds.Minimum, bounds.Maximum));
                   ShowField(out, "subtype", fmt::to_string(bounds.Subtype));
                 },
                 [&](const IntegerBounds& bounds) {
                   ShowField(out, "range", fmt::format("{0} to {1} (0x{0:X} to 0x{1:X})", bounds.Lower, bounds.Upper));
                   ShowField(out, "step", fmt::to_string(bounds.Step));
                 },
                 [&](const BootBounds& bounds) {
                   ShowField(out, "boot type", fmt::format("{}, modes {}", bounds.ConfigType, bounds.Modes));
                   ShowField(out, "sources", fmt::format("{} to {}", bounds.MinimumSources, bounds.MaximumSources));
                   showNames("possible", bounds.Sources);
                 },
                 [&](const CollectionBounds& bounds) {
                   ShowField(out, "information", fmt::format("{:02X}", fmt::join(bounds.Info, " ")));
                 },
                 [&](const ConfigurationSetBounds& bounds) { showNames("possible", bounds.Names); },
             },
             attribute.Bounds);
}

}  // namespace

void ShowAttributes(const Image& image, std::ostream& out) {
  for (const AttributeEntry& attribute : image.Attributes.Entries) {
    fmt::print(out, "{}\n", AttributeLine(image, attribute));
  }
}

void ShowWithTexts(const Image& image, const Pairing& pairing, const Style& style, std::ostream& out) {
  for (const AttributeEntry& attribute : image.Attributes.Entries) {
    fmt::print(out, "{}\n", AttributeLine(image, attribute));
    if (const PairedTexts* texts = pairing.Find(attribute.Handle)) {
      fmt::print(out, "    {}{}{}\n", QuoteUtf8(*texts->Display), texts->Help ? " " : "",
                 texts->Help ? QuoteUtf8(*texts->Help) : "");
    }
  }
  if (!pairing.Reason.empty()) {
    fmt::print(
        out, "\n{}\n",
        style.Bad(fmt::format("texts are not paired from attribute {} on: {}", pairing.FirstUnpaired, pairing.Reason)));
  }
}

void ShowFill(const Image& image, const Style& style, std::ostream& out) {
  fmt::print(out, "{}\n",
             style.Strong(fmt::format("{:<12}{:>8}{:>10}{:>9}{:>9}  {}", "table", "used", "capacity", "percent",
                                      "entries", "crc")));
  for (const TableFill& fill : MeasureFill(image)) {
    const TableKind& kind = KindOf(fill.Id);
    const double percent = 100.0 * static_cast<double>(fill.Used) / static_cast<double>(kind.Capacity);
    fmt::print(out, "{:<12}{:>8}{:>10}{:>8.1f}%{:>9}  {}\n", kind.Name, fill.Used, kind.Capacity, percent, fill.Entries,
               DescribeFlags(fill, style));
  }
}

void ShowTexts(const Image& image, const Style& style, std::ostream& out) {
  if (image.Display) {
    ShowTextTable("display texts", *image.Display, style, out);
  }
  if (image.Help) {
    ShowTextTable("help texts", *image.Help, style, out);
  }
}

void ShowOne(const Image& image, const Pairing& pairing, const AttributeEntry& attribute, std::ostream& out) {
  fmt::print(out, "{}\n", AttributeLine(image, attribute));
  const PairedTexts* texts = pairing.Find(attribute.Handle);
  const StreamRecord* record = image.Stream ? image.Stream->Find(attribute.Handle) : nullptr;
  ShowField(out, "handle", fmt::to_string(attribute.Handle));
  ShowField(out, "name",
            fmt::format("{} (string {})", DescribeName(image, attribute.NameHandle), attribute.NameHandle));
  ShowField(out, "type",
            fmt::format("{}{} (0x{:02X})", TypeName(attribute.Type), attribute.IsReadOnly() ? ", read-only" : "",
                        attribute.Type));
  if (record != nullptr) {
    ShowField(out, "token", record->Token == 0 ? "none" : fmt::format("{0} (0x{0:X})", record->Token));
    ShowField(out, "setting size", fmt::to_string(record->ValueSize));
  }
  if (texts != nullptr) {
    ShowField(out, "display text", QuoteUtf8(*texts->Display));
    ShowField(out, "help text", texts->Help ? QuoteUtf8(*texts->Help) : "none");
  } else {
    ShowField(out, "texts", pairing.Reason.empty() ? "none" : "not known: " + pairing.Reason);
  }
  ShowField(out, "current", DescribeCurrent(image, attribute));
  ShowField(out, "default", DescribeDefault(image, attribute));
  ShowBounds(image, attribute, record, texts, out);
}

}  // namespace corvane::inspect
