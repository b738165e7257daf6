#!/usr/bin/env bash
# @file
# Checks the ELF file of a DXE image for what firmware cannot run: static constructors, guards, exit handlers, exception
# unwinding, run-time type information, a C++ allocator. Prints the sizes, and the bytes left of BOUND.
#
# Usage: check-image.sh ELF [BOUND]
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
set -euo pipefail

readonly CONSTRUCTORS='_GLOBAL__sub_I|__static_initialization' GUARDS='__cxa_|_ZGV|atexit|__dso_handle'
readonly UNWINDING='__gxx_|_Unwind|__throw' TYPE_INFORMATION='_ZTI|_ZTS' ALLOCATOR='_Zn[wa]|_Zd[la]'
readonly SYMBOLS="$CONSTRUCTORS|$GUARDS|$UNWINDING|$TYPE_INFORMATION|$ALLOCATOR"
readonly SECTIONS='\.((preinit|init|fini)_array|[cd]tors|eh_frame|eh_frame_hdr|gcc_except_table)'

elf=$1 bound=${2:-0}
module=$(basename "$elf" .debug)
[[ -f $elf ]] || { printf 'check-image: %s: no such file\n' "$elf" >&2; exit 1; }
prefix=''
if readelf --file-header "$elf" 2>/dev/null | grep -q 'Machine:.*AArch64'; then prefix=aarch64-linux-gnu-; fi

# Only sections with content count, because the linker script may leave empty ones. readelf warns about a segment without
# sections, which lld writes.
bad_sections=$(readelf --wide --section-headers "$elf" 2>/dev/null | sed 's/^ *\[ *[0-9]*\] *//' |
  awk -v bad="^$SECTIONS" '$1 ~ bad && $5 !~ /^0+$/ { print $1 }')
bad_symbols=$("${prefix}nm" "$elf" | awk -v bad="$SYMBOLS" '$NF ~ bad { print $NF }' | sort -u)

if [[ -n $bad_sections$bad_symbols ]]; then
  printf 'corvane: %s: the image has what firmware cannot run: %s\n' "$module" \
    "$(tr '\n' ' ' <<<"$bad_sections $bad_symbols")" >&2
  exit 1
fi

"${prefix}size" "$elf" | awk -v module="$module" -v bound="$bound" '
  NR == 2 {
    printf "    %s: code %d + data %d + bss %d = %d bytes", module, $1, $2, $3, $4
    if (bound > 0) printf ($4 > bound ? ", %d more than %d" : ", %d left of %d"), ($4 > bound ? $4 - bound : bound - $4), bound
    print ""
  }'
