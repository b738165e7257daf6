# @file
# Reads every part that ./corvane is made of. A part defines functions and constants; reading it runs nothing.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

for part in "$(dirname "${BASH_SOURCE[0]}")"/{common,results,packages,edk2,firmware,host,boot,workers,scenarios}.sh \
  "$(dirname "${BASH_SOURCE[0]}")"/commands/*.sh; do
  # shellcheck source=/dev/null
  source "$part"
done
