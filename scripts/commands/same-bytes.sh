#!/usr/bin/env bash
# @file
# same-bytes.sh REVISION: boots every scenario with the driver as it is and as it was at a revision, and tells which
# boots published or cached other bytes. For changes that are to be faster or smaller and nothing else. Where the encoder
# has changed, boots named *-flip differ: their one wrong bit hits another code. Not part of ./corvane test: it takes a
# quarter of an hour.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
set -euo pipefail

SCRIPTS=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
for part in common results packages edk2 firmware; do
  # shellcheck source=/dev/null
  source "$SCRIPTS/$part.sh"
done

readonly COPY="$BUILD/before"
readonly USAGE='Usage: scripts/commands/same-bytes.sh REVISION
  boots every scenario with the driver as it is and as it was, and tells which published or cached other bytes
Exit code: 0 none did, 1 some did or a build failed, 2 wrong usage'
if [[ ${1:-} == @(-h|--help) ]]; then say "$USAGE"; exit; fi
(($# == 1)) || { complain "$USAGE"; exit 2; }
git -C "$ROOT" cat-file -e "$1:VaroFeaturesPkg/Corvane" 2>/dev/null || die "same-bytes: $1 is no revision with a driver"

# Builds and boots in a checkout: boot_in FOLDER. What the scenarios check is for ./corvane test, and the search for
# passwords is another firmware's.
boot_in() {
  (
    # shellcheck source=/dev/null
    for part in common results packages edk2 firmware host boot workers scenarios; do source "$1/scripts/$part.sh"; done
    prepare_edk2
    build_firmware DEBUG
    rm -rf "$OUT/debug"/*/
    mapfile -t names < <(printf "%s\n" "${SCENARIOS[@]}" | grep -vx access_secrets)
    { run_side_by_side "${COLD_SCENARIOS[@]}"; run_side_by_side "${names[@]}"; } 2>/dev/null | grep --line-buffered "boot '"
  )
}

mkdir -p "$BUILD" "$OUT"
lock_checkout
install_packages test
prepare_edk2
rm -rf "$COPY/VaroFeaturesPkg" "$COPY/scripts"
mkdir -p "$COPY"
cp -r "$ROOT/VaroFeaturesPkg" "$SCRIPTS" "$COPY/"
rm -rf "$COPY/VaroFeaturesPkg/Corvane"
git -C "$ROOT" archive "$1" VaroFeaturesPkg/Corvane | tar -x -C "$COPY"
# `readonly` places of a checkout are fixed once a process, so each one is built by a process of its own.
for folder in "$ROOT" "$COPY"; do
  say "==> Every scenario, in $folder"
  bash -c "set -euo pipefail; $(declare -f boot_in); boot_in \"\$1\"" same-bytes "$folder"
done
say '==> What differs'
"$SCRIPTS/python/same_bytes.py" "$EDK2_DIR/BaseTools/Source/C/bin/TianoCompress" "$COPY/out/debug" "$OUT/debug"
