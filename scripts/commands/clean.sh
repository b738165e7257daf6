# @file
# ./corvane clean: removes everything generated.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

command_clean() {
  no_arguments "$@"
  rm -rf "$BUILD" "$OUT"
}
