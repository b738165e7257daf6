/** @file
  fuzz_seeds BOOT FOLDER: writes the seeds of the fuzz targets, made from the records and variables that a boot of the
  virtual notebook left in BOOT.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <filesystem>
#include <fstream>
#include <iterator>

#include "FakeUefi/FakeNotebook.hpp"
#include "FakeUefi/ReferenceCompression.hpp"
#include "Fuzz/FuzzInput.hpp"

extern "C" {
#include <Guid/VariableFormat.h>
#include <IndustryStandard/PldmBios.h>
#include <Uefi/UefiInternalFormRepresentation.h>
}

namespace {

Bytes ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  Require(file.good(), "a file cannot be read");
  return {std::istreambuf_iterator<char>(file), {}};
}

Bytes Cut(const Bytes& bytes, size_t size) {
  return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(std::min(size, bytes.size()))};
}

// As FuzzInput takes them apart.
Bytes Block(const Bytes& bytes) {
  return Join(U16(bytes.size()), bytes);
}
Bytes Text(std::string_view text) {
  return Join(U8(std::min<size_t>(text.size(), 200)), text.substr(0, 200));
}

/// Payloads by record type.
std::map<UINT8, Bytes> ReadRecords(const std::filesystem::path& path) {
  const Bytes bytes = ReadFile(path);
  FuzzInput rest(bytes.data(), bytes.size());
  std::map<UINT8, Bytes> payloads;
  while (rest.More()) {
    rest.Bytes(sizeof(EFI_GUID));
    const auto length = rest.Take<std::uint64_t>();
    const auto type = rest.Take();
    payloads[type] = rest.Bytes(length);
  }
  return payloads;
}

/// The driver's variables that are valid in a variable flash, by name.
std::map<std::string, Bytes> ReadVariables(const std::filesystem::path& path) {
  const Bytes flash = ReadFile(path);
  std::map<std::string, Bytes> variables;
  for (size_t at = 0; at + sizeof(AUTHENTICATED_VARIABLE_HEADER) < flash.size(); at += 4) {
    AUTHENTICATED_VARIABLE_HEADER header;
    std::memcpy(&header, &flash[at], sizeof(header));
    if (header.StartId == VARIABLE_DATA && header.State == VAR_ADDED &&
        SameGuid(header.VendorGuid, gVaroAttributeVariableGuid)) {
      FuzzInput rest(&flash[at] + sizeof(header), flash.size() - at - sizeof(header));
      const Bytes wide = rest.Bytes(header.NameSize);
      std::string name;
      for (size_t i = 0; i + 2 < wide.size(); i += 2) {
        name += static_cast<char>(wide[i]);
      }
      variables[name] = rest.Bytes(header.DataSize);
    }
  }
  return variables;
}

/// The names of a string table by handle.
std::map<UINT16, std::string> ReadNames(const Bytes& table) {
  FuzzInput rest(table.data(), table.size());
  std::map<UINT16, std::string> names;
  for (UINT16 handle = rest.Take<std::uint16_t>(); handle == 16 + names.size(); handle = rest.Take<std::uint16_t>()) {
    const Bytes name = rest.Block();
    names[handle] = {name.begin(), name.end()};
  }
  return names;
}

/// Form sets whose questions have the names, values and bounds of the first attributes of a table.
Bytes FormsOf(const Bytes& table, std::map<UINT16, std::string>& names, UINT16 questions) {
  constexpr UINT8 kOneOf = 0;  // positions in the target's list of question kinds
  constexpr UINT8 kNumeric = 2;
  constexpr UINT8 kString = 3;
  Bytes forms = Join(UINT8{0}, UINT8{0}, UINT16{0}, U8(0xFF), UINT8{0}, Text("Setup"));
  FuzzInput rest(table.data(), table.size());
  for (UINT16 identifier = 400; identifier < 400 + questions && rest.More(); ++identifier) {
    rest.Take<std::uint16_t>();
    const auto type = rest.Take();
    const Bytes head = Join(UINT16{identifier}, Text(names[rest.Take<std::uint16_t>()]), Text("Prompt"), Text("Help"),
                            UINT8{1}, UINT32{0});
    if (type == PLDM_BIOS_ATTRIBUTE_ENUMERATION) {
      const auto count = rest.Take();
      Append(forms, Join(kOneOf, head, count));
      for (UINT8 i = 0; i < count; ++i) {
        const std::string& name = names[rest.Take<std::uint16_t>()];
        Append(forms, Join(UINT16{i}, Text(name), Text(name)));
      }
      rest.Bytes(rest.Take());
    } else if (type == PLDM_BIOS_ATTRIBUTE_INTEGER) {
      const auto lower = rest.Take<std::uint64_t>();
      const auto upper = rest.Take<std::uint64_t>();
      rest.Bytes(12);
      Append(forms, Join(kNumeric, head, U16(lower), U32(upper), UINT8{1}));
    } else if (type == PLDM_BIOS_ATTRIBUTE_STRING || type == PLDM_BIOS_ATTRIBUTE_PASSWORD) {
      rest.Bytes(7);
      Append(forms, Join(kString, head, UINT16{0}, UINT32{64}, UINT8{1}));
    } else {  // a boot configuration or a collection, which no question makes
      rest.Bytes(4);
      rest.Bytes(type == PLDM_BIOS_ATTRIBUTE_BOOT_CONFIG_SETTING ? rest.Take() * sizeof(UINT16) : 0);
    }
  }
  return forms;
}

/// One numeric question 251 times, with a help text that soon fills the table.
Bytes FullForms() {
  const std::string help(120, 'h');
  return Join(UINT8{0}, UINT8{0}, UINT16{0}, UINT8{2 | 0x10}, UINT16{400}, Text("Volume"), Text("Volume"), UINT8{0xE8},
              Text(help), UINT8{1}, UINT32{0}, UINT16{0}, UINT32{100}, UINT8{1}, UINT8{250});
}

Bytes BootOptions() {
  const Bytes path = FakeBootOption::Bbs(2);
  return Join(UINT32{2}, UINT16{1}, UINT16{0}, UINT32{1}, U16(path.size()), u"Disk", UINT16{0}, path, UINT32{0},
              UINT16{0}, u"Net", UINT16{0});
}

Bytes SmbiosTable() {
  const auto structure = [](std::uint8_t type, const Bytes& body) {
    return Join(type, U8(4 + body.size()), UINT16{1}, body, UINT16{0});
  };
  const auto token = [](unsigned id) { return Join(U16(id), UINT32{0x01020304}); };
  const Bytes head = Join(UINT16{0xB2}, UINT8{0x7C}, UINT32{0x55});
  return Join(structure(0, Bytes(20, 1)), structure(218, Join(head, token(5), token(3), token(0), token(9))),
              structure(218, Join(head, token(5), token(0xFFFF))), structure(127, {}));
}

/// Calls of the operations, with honest answers: a name, a text, all handles, an attribute, its change, one by name.
Bytes AccessOperations() {
  const auto call = [](unsigned operation, unsigned handle, unsigned size) {
    return Join(U8(operation), U16(handle), U16(size), UINT8{4});
  };
  const Bytes value = Join(UINT16{121}, UINT8{4}, UINT32{0x00000001}, UINT8{0});  // where, how much, what, no fault
  const Bytes fetched(8);
  const Bytes record = Join(UINT32{0}, UINT32{16}, UINT8{0}, UINT8{1}, UINT8{0}, UINT8{1}, UINT8{0});
  return Join(call(0, 16, 100), fetched, call(1, 0, 0), Text("Fan"), call(2, 16, 300), call(3, 17, 300),
              call(4, 0, 600), call(5, 16, 100), value, value, call(0x80 | 6, 16, 13), record, UINT16{0x2000}, UINT8{0},
              UINT16{0x2000}, UINT8{0}, Bytes(1), value, call(8, 0, 40), Text("Asset"), value, call(0x80 | 9, 0, 0),
              Text("Asset"), Text("tag"), Bytes(8));
}

class Seeds {
 public:
  explicit Seeds(std::filesystem::path folder) : folder_(std::move(folder)) {}
  void Write(const std::string& target, const std::string& name, const Bytes& bytes) const {
    std::filesystem::create_directories(folder_ / target);
    std::ofstream(folder_ / target / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }

 private:
  std::filesystem::path folder_;
};

}  // namespace

int main(int count, char** arguments) {
  Require(count == 3, "usage: fuzz_seeds BOOT FOLDER");
  const std::filesystem::path boot(arguments[1]);
  const Seeds seeds(arguments[2]);
  auto records = ReadRecords(boot / "records.bin");
  auto variables = ReadVariables(boot / "vars.fd");
  auto names = ReadNames(records[TRANSPORT_RECORD_STRINGS]);

  Bytes stored(1, 0x0F);
  Bytes plain(1, 0);
  Bytes cut(1, 0);
  for (const char* const name : {"PldmString", "DispString", "HelpString", "AttributesData"}) {
    const Bytes& variable = variables[name];
    const Bytes content = ReferenceDecompress(variable);
    seeds.Write("DecompressFuzz", name, Join(U16(content.size()), Middle(variable, 8, 0)));
    seeds.Write("CompressFuzz", name, Join(UINT8{0}, Cut(content, 3000)));
    Append(stored, Block(variable));
    Append(plain, Block(Cut(content, 3000)));
    Append(cut, Block(Cut(content, 400)));
  }
  const Bytes rest = Join(Block(variables["AttributesCount"]), Bytes(64, 1), Text("tag"));
  seeds.Write("CacheFuzz", "stored", Join(stored, rest));
  seeds.Write("CacheFuzz", "plain", Join(plain, rest));
  seeds.Write("CacheFuzz", "cut", Join(cut, rest));

  Bytes tables;
  for (const int type : {TRANSPORT_RECORD_STRINGS, TRANSPORT_RECORD_ATTRIBUTES, TRANSPORT_RECORD_VALUES}) {
    Append(tables, Join(UINT8{0}, Block(Cut(records[U8(type)], 3000))));
  }
  const Bytes display = Join(UINT8{0}, Block(Cut(records[TRANSPORT_RECORD_DISPLAY], 2000)));
  const Bytes& help = records[TRANSPORT_RECORD_HELP];
  seeds.Write("AccessFuzz", "whole", Join(tables, UINT8{0}, Block(Cut(help, 2000)), display, AccessOperations()));
  seeds.Write("AccessFuzz", "chunked", Join(tables, UINT8{40}, Block(Cut(help, 2000)), display, AccessOperations()));

  seeds.Write("FormsFuzz", "setup", FormsOf(records[TRANSPORT_RECORD_ATTRIBUTES], names, 20));
  seeds.Write("FormsFuzz", "full", FullForms());
  seeds.Write("PlatformFuzz", "plain",
              Join(UINT8{0}, Block(Join("en-US", UINT8{0})), Text("1.2.3"), Block(BootOptions()), UINT8{2},
                   Text("CAM-A"), Text("CAM-B"), Bytes(200, 0x10)));
  seeds.Write("BootOptionsFuzz", "two", BootOptions());
  seeds.Write("SmbiosFuzz", "tokens", SmbiosTable());
  Bytes keywords;
  for (const auto& [handle, name] : names) {
    Append(keywords, Text(name));
  }
  seeds.Write("DependenciesFuzz", "names", keywords);
  return 0;
}
