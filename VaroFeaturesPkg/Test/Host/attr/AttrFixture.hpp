/** @file
  Fixture of tests that type attr's command lines: the driver and a service behind it, a console that is kept as text.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "Host/access/AccessFixture.hpp"

extern "C" {
#include <Attr/Attr.h>
}

class AttrFixture : public AccessFixture {
 protected:
  AttrFixture();

  /// What a command line leaves: its status, then what it printed, lines ended by "\n".
  std::string Run(const std::vector<std::u16string>& words);
  /// Has the service answer value requests with what it was sent by handle, or with `namedPart` for `namedHandle` when
  /// it was sent by name.
  EFI_STATUS Apply(RequestBlock& request);

  /// A name's string handle; it is entered at the end of the string table when it is new.
  UINT16 Name(std::string_view name);
  /// Adds an attribute at the end of the attribute table.
  void Add(UINT16 handle, unsigned type, std::string_view name, const Bytes& part, const Bytes& value);

  UINT16 namedHandle = 0;
  Bytes namedPart;
  std::u16string keys;           ///< what is typed when a key is waited for
  std::string prompted;          ///< on the console that no redirection takes away
  size_t linesTaken = SIZE_MAX;  ///< before the reader leaves the page
  bool breakPressed = false;

 private:
  static AttrFixture* current_;
  EFI_SIMPLE_TEXT_OUTPUT_PROTOCOL out_{};
  EFI_SIMPLE_TEXT_OUTPUT_PROTOCOL error_{};
  EFI_SIMPLE_TEXT_INPUT_PROTOCOL in_{};
  EFI_SHELL_PROTOCOL shell_{};
  std::string printed_;
  std::string variable_;
  std::vector<std::string> names_;
};
