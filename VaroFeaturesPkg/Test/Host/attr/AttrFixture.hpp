/** @file
  Fixture of tests that run attr's command lines: the driver, a service for it, and a console whose output is kept.

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

  /// Runs a command line. Gives its status and its output, with "\n" at the ends of lines.
  std::string Run(const std::vector<std::u16string>& words);
  /// Stores a value that was sent, so that the service gives it from then on: by handle, or `namedPart` as the value of
  /// `namedHandle` when it was sent by name.
  EFI_STATUS Apply(RequestBlock& request);

  /// Gives a name's string handle. A new name is added at the end of the string table.
  UINT16 Name(std::string_view name);
  /// Adds an attribute at the end of the attribute table.
  void Add(UINT16 handle, unsigned type, std::string_view name, const Bytes& part, const Bytes& value);

  UINT16 namedHandle = 0;
  Bytes namedPart;
  std::u16string keys;           ///< keys that are typed
  std::string prompted;          ///< output on the console that is never redirected
  size_t linesTaken = SIZE_MAX;  ///< lines before the user leaves the page
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
