# @file
# ./corvane same-bytes REVISION: boots every scenario with the driver as it is and as it was at a revision, and prints which
# boots published or cached different bytes. For changes that must not change any output. After a change of the encoder,
# boots named *-flip differ: their one flipped bit hits a different code.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

readonly BEFORE="$BUILD/before"

command_same_bytes() {
  (($# == 1)) || wrong_usage 'same-bytes takes one git revision'
  git -C "$ROOT" cat-file -e "$1:VaroFeaturesPkg/Corvane" 2>/dev/null || die "same-bytes: $1 is no revision with a driver"
  set_up test
  copy_checkout "$BEFORE"
  rm -rf "$BEFORE/VaroFeaturesPkg/Corvane"
  git -C "$ROOT" archive "$1" VaroFeaturesPkg/Corvane | tar -x -C "$BEFORE"
  local checkout
  for checkout in "$ROOT" "$BEFORE"; do
    say "==> Every scenario, in $checkout"
    in_checkout "$checkout" build_firmware DEBUG
    in_checkout "$checkout" boot_scenarios
  done
  say '==> What differs'
  "$ROOT/scripts/python/same_bytes.py" "$EDK2_DIR/BaseTools/Source/C/bin/TianoCompress" "$BEFORE/out/debug" "$OUT/debug"
}

# Boots without their checks. access_secrets is left out because it boots another firmware.
boot_scenarios() {
  local name
  local -a jobs=()
  for name in $(all_scenarios); do
    if [[ $name == @(cold|access_secrets) || -v NEEDS[$name] ]]; then continue; fi
    jobs+=("scenario:$name")
  done
  rm -rf "$OUT/debug"/*/
  { run_side_by_side scenario:cold && run_side_by_side "${jobs[@]}"; } 2>/dev/null | grep --line-buffered "boot '"
}
