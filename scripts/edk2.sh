# @file
# The EDK II tree that firmware and host builds use: the distribution's source package, patched, with its build tools; or
# the tree that EDK2_DIR names, with its empty submodules filled.
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

# Megabytes for the source packages of EDK2_PARTS, unpacked in part.
readonly EDK2_PARTS_SPACE=500

# Submodules of EDK II that a build of the notebook needs. A snapshot has empty folders in their place. Debian's EDK II
# source package has all of them, but OpenSSL in another version than newer trees need.
readonly OPENSSL_PART=CryptoPkg/Library/OpensslLib/openssl
readonly EDK2_PARTS=(
  "$OPENSSL_PART" CryptoPkg/Library/MbedTlsLib/mbedtls MdeModulePkg/Library/BrotliCustomDecompressLib/brotli
  MdePkg/Library/BaseFdtLib/libfdt MdePkg/Library/MipiSysTLib/mipisyst SecurityPkg/DeviceSecurity/SpdmLib/libspdm
)

# The Debian release whose source packages have these parts.
readonly EDK2_PARTS_RELEASE=trixie

prepare_edk2() {
  if [[ $EDK2_DIR == "$EDK2_OWN" ]]; then
    unpack_edk2_once
  else
    [[ -f $EDK2_DIR/MdePkg/MdePkg.dec ]] || die "EDK2_DIR=$EDK2_DIR is not an EDK II tree (MdePkg/MdePkg.dec is missing)"
    complete_edk2
  fi
  choose_toolchain
  install_distutils
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
  local work="$BUILD/edk2-source"
  make_private_apt "$work/apt"
  fetch_source "$work" edk2 --tar-only --diff-only
  rm -rf "$EDK2_OWN" "$work/tree"
  mkdir "$work/tree"
  tar -xf "$work"/edk2_*.orig.tar.* -C "$work/tree" --strip-components=1
  tar -xf "$work"/edk2_*.debian.tar.* -C "$work/tree"
  apply_patch_series "$work/tree"
  mv "$work/tree" "$EDK2_OWN"
  rm -rf "$work"
}

# fetch_source FOLDER PACKAGE OPTION...: downloads the files of a source package that each option of `apt-get source`
# selects. The private apt is in FOLDER/apt.
fetch_source() {
  local folder=$1 package=$2 option
  shift 2
  cd "$folder"
  APT_CONFIG="$folder/apt/apt.conf" apt-get update
  for option in "$@"; do
    APT_CONFIG="$folder/apt/apt.conf" apt-get source --download-only --only-source "$option" "$package"
  done
}

# make_private_apt FOLDER [RELEASE]: an apt with the machine's lists, switched from binary packages to sources. It changes
# nothing outside build/ and does not need root. With RELEASE, lists of the machine's Debian release name RELEASE instead,
# and other lists are left out.
make_private_apt() {
  local apt=$1 list own
  own=$(. /etc/os-release && printf '%s' "${VERSION_CODENAME:-unknown}")
  rm -rf "$apt"
  mkdir -p "$apt"/{parts,lists/partial,cache/archives/partial}
  for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [[ -f $list ]] || continue
    sed -n -E 's/^[[:space:]]*deb[[:space:]]/deb-src /p' "$list" >"$apt/parts/$(basename "$list" .list)-one-line.list"
  done
  for list in /etc/apt/sources.list.d/*.sources; do
    [[ -f $list ]] || continue
    sed -E 's/^Types:.*/Types: deb-src/I' "$list" >"$apt/parts/$(basename "$list")"
  done
  for list in "$apt/parts"/*; do
    [[ -n ${2:-} && -f $list ]] || continue
    if grep -qE "[[:space:]]$own([-[:space:]]|\$)" "$list"; then
      sed -i -E ":next; s/([[:space:]])$own([-[:space:]]|\$)/\1$2\2/; t next" "$list"
    else
      rm "$list"
    fi
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

# Fills the empty submodules of a snapshot, once.
complete_edk2() {
  local part
  local -a lacking=()
  for part in "${EDK2_PARTS[@]}"; do
    [[ ! -d $EDK2_DIR/$part || -n $(ls -A "$EDK2_DIR/$part") ]] || lacking+=("$part")
  done
  ((${#lacking[@]} > 0)) || return 0
  [[ -w $EDK2_DIR/${lacking[0]} ]] ||
    die "EDK2_DIR=$EDK2_DIR has empty submodules and cannot be written to (${lacking[*]})"
  need_space "$ROOT" "$EDK2_PARTS_SPACE" 'the submodules that the EDK II tree lacks'
  run_logged edk2-parts "Fetching ${#lacking[@]} submodules that the EDK II tree lacks" fetch_parts "${lacking[@]}"
}

fetch_parts() {
  set -e
  local work="$BUILD/edk2-parts" part from
  make_private_apt "$work/apt" "$EDK2_PARTS_RELEASE"
  fetch_source "$work" edk2 --tar-only
  mkdir -p "$work/edk2"
  tar -xf "$(newest "$work"/edk2_*.orig.tar.?z)" -C "$work/edk2" --strip-components=1
  for part in "$@"; do
    from=$work/edk2/$part
    if [[ $part == "$OPENSSL_PART" ]]; then
      from=$work/openssl
      fetch_source "$work" openssl --tar-only
      mkdir -p "$from"
      tar -xf "$(newest "$work"/openssl_*.orig.tar.?z)" -C "$from" --strip-components=1
      require_openssl "$from"
    fi
    cp -r "$from/." "$EDK2_DIR/$part/"
  done
  rm -rf "$work"
}

newest() { printf '%s\n' "$@" | sort -V | tail -n 1; }

# For fetch_parts: the tree has files that OpenSSL's configuration generates. They fit one release line of OpenSSL.
require_openssl() {
  local header=CryptoPkg/Library/OpensslLib/OpensslGen/include/openssl/opensslv.h wanted found
  wanted=$(sed -nE 's/^# *define OPENSSL_VERSION_(MAJOR|MINOR) +//p' "$EDK2_DIR/$header" | tr -d '\r' | paste -sd.)
  found=$(sed -nE 's/^(MAJOR|MINOR)=//p' "$1/VERSION.dat" | paste -sd.)
  [[ $wanted == "$found" ]] || {
    say "E: the tree needs OpenSSL $wanted, but the source package has $found; fill $OPENSSL_PART by hand"
    return 1
  }
}

apply_patch_series() {
  local tree=$1 patch
  while read -r patch; do
    [[ -n $patch && $patch != \#* && $patch != "$EDK2_PATCH_LEFT_OUT" ]] || continue
    say "applying $patch"
    patch --directory="$tree" --strip=1 --forward --silent --input="$tree/debian/patches/${patch%% *}"
  done <"$tree/debian/patches/series"
}

# The programs that the builds here use. Others need submodules that the tree may lack.
readonly BASE_TOOLS=(
  DevicePath EfiRom GenCrc32 GenFfs GenFv GenFw GenSec LzmaCompress TianoCompress VfrCompile
)

build_base_tools() {
  if stamp_is base-tools "$EDK2_DIR" && [[ -x $EDK2_DIR/BaseTools/Source/C/bin/GenFw ]]; then return; fi
  run_logged base-tools 'Building the EDK II BaseTools' \
    make -C "$EDK2_DIR/BaseTools/Source/C" -j "$JOBS" PYTHON_COMMAND=python3 "${BASE_TOOLS[@]}"
  set_stamp base-tools "$EDK2_DIR"
}

# The link line for AArch64 names liblto-aarch64.a. Debian's source packages have only its assembler source; EDK II moved
# both in 2024. The file must be an object with an archive's name: it defines no symbol, so the linker would not take it out
# of an archive.
assemble_liblto() {
  local lto
  for lto in "$EDK2_DIR"/{BaseTools/Bin,ArmPkg/Library}/GccLto/liblto-aarch64; do
    [[ -f $lto.s && ! -f $lto.a ]] || continue
    aarch64-linux-gnu-gcc -c -fpic -o "$lto.a" "$lto.s"
  done
}

# The build tools of releases up to 2023 use the Python module distutils. Debian 12 has it in its own package, later
# releases in setuptools.
install_distutils() {
  grep -rqsE '(import|from) distutils' --include='*.py' "$EDK2_DIR/BaseTools/Source/Python" || return 0
  /usr/bin/python3 -W ignore -c 'import distutils.util' 2>/dev/null && return
  if index_has python3-distutils; then
    install_missing 20 python3-distutils
  else
    install_missing 20 python3-setuptools
  fi
}
