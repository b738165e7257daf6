# @file
# The EDK II tree that firmware and host builds stand on: the distribution's source package, patched, with its build
# tools; or the tree that EDK2_DIR names.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

# With this patch the Shell's library classes resolve only when Secure Boot is built in, and the notebook has no Secure
# Boot.
readonly EDK2_PATCH_LEFT_OUT=Disable-the-Shell-when-SecureBoot-is-enabled.patch

EDK2_OWN="$BUILD/edk2"
EDK2_DIR=${EDK2_DIR:-$EDK2_OWN}
EDK2_DIR=$(realpath -m "$EDK2_DIR")
export EDK2_DIR

# Megabytes: sources 165, BaseTools 50, both firmware builds 700, host build.
readonly EDK2_SPACE=2000

prepare_edk2() {
  if [[ $EDK2_DIR == "$EDK2_OWN" ]]; then
    unpack_edk2_once
  else
    [[ -f $EDK2_DIR/MdePkg/MdePkg.dec ]] || die "EDK2_DIR=$EDK2_DIR is no EDK II tree (MdePkg/MdePkg.dec is missing)"
  fi
  build_base_tools
  assemble_liblto
}

unpack_edk2_once() {
  if stamp_is edk2 unpacked && [[ -f $EDK2_OWN/MdePkg/MdePkg.dec ]]; then return; fi
  need_space "$ROOT" "$EDK2_SPACE" 'EDK II and the builds'
  run_logged edk2-source 'Fetching and unpacking the EDK II source package' fetch_and_unpack_edk2
  set_stamp edk2 unpacked
}

fetch_and_unpack_edk2() {
  set -e
  local work="$BUILD/edk2-source" dsc
  make_private_apt "$work/apt"
  mkdir -p "$work/download"
  cd "$work/download"
  APT_CONFIG="$work/apt/apt.conf" apt-get update
  APT_CONFIG="$work/apt/apt.conf" apt-get source --download-only --only-source edk2
  dsc=$(find . -name 'edk2_*.dsc' | sort -V | tail -n 1)
  rm -rf "$EDK2_OWN" "$work/tree"
  dpkg-source --no-check --skip-patches -x "$dsc" "$work/tree"
  apply_patch_series "$work/tree"
  mv "$work/tree" "$EDK2_OWN"
  rm -rf "$work"
}

# An apt of our own whose lists are the machine's with binary packages switched to sources, so that nothing outside
# build/ changes and nobody need be root.
make_private_apt() {
  local apt=$1 list
  mkdir -p "$apt"/{parts,lists/partial,cache/archives/partial}
  for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [[ -f $list ]] || continue
    sed -n -E 's/^[[:space:]]*deb[[:space:]]/deb-src /p' "$list" >"$apt/parts/$(basename "$list" .list)-one-line.list"
  done
  for list in /etc/apt/sources.list.d/*.sources; do
    [[ -f $list ]] || continue
    sed -E 's/^Types:.*/Types: deb-src/I' "$list" >"$apt/parts/$(basename "$list")"
  done
  cat >"$apt/apt.conf" <<CONF
Dir::Etc::sourcelist "/dev/null";
Dir::Etc::sourceparts "$apt/parts";
Dir::State::lists "$apt/lists";
Dir::Cache "$apt/cache";
APT::Sandbox::User "root";
Acquire::Retries "2";
CONF
}

apply_patch_series() {
  local tree=$1 patch
  while read -r patch; do
    [[ -n $patch && $patch != \#* && $patch != "$EDK2_PATCH_LEFT_OUT" ]] || continue
    say "applying $patch"
    patch --directory="$tree" --strip=1 --forward --silent --input="$tree/debian/patches/${patch%% *}"
  done <"$tree/debian/patches/series"
}

build_base_tools() {
  if stamp_is base-tools "$EDK2_DIR" && [[ -x $EDK2_DIR/BaseTools/Source/C/bin/GenFw ]]; then return; fi
  run_logged base-tools 'Building the EDK II BaseTools' \
    make -C "$EDK2_DIR/BaseTools/Source/C" -j "$JOBS" PYTHON_COMMAND=python3
  set_stamp base-tools "$EDK2_DIR"
}

# GCC5's link line for AArch64 names this file, and the source package ships only its assembler text. It must be an
# object under an archive's name: as it defines nothing, the linker would never take it out of an archive.
assemble_liblto() {
  local lto="$EDK2_DIR/ArmPkg/Library/GccLto"
  [[ -f $lto/liblto-aarch64.s && ! -f $lto/liblto-aarch64.a ]] || return 0
  aarch64-linux-gnu-gcc -c -fpic -o "$lto/liblto-aarch64.a" "$lto/liblto-aarch64.s"
}
