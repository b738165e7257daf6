# @file
# ./corvane build: everything that the other commands run.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

command_build() {
  no_arguments "$@"
  set_up test
  build_firmware RELEASE
  build_firmware DEBUG
  build_firmware NOOPT
  build_package
  build_inspector
  build_host_tests
}
