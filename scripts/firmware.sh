# @file
# Builds the virtual notebook's firmware with EDK II and the compiler that TOOLCHAIN names, and checks the driver's image.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

# A workspace for each EDK II tree: the project's own, or one that EDK2_DIR names.
if [[ $EDK2_DIR == "$EDK2_OWN" ]]; then
  EDK2_NAME=own
else
  EDK2_NAME=$(basename "$EDK2_DIR")-$(cksum <<<"$EDK2_DIR" | cut -d ' ' -f 1)
fi
readonly FIRMWARE_WORKSPACE="$BUILD/firmware/$EDK2_NAME"
readonly NOTEBOOK_DSC=VaroFeaturesPkg/VirtualNotebook/VirtualNotebook.dsc
readonly PACKAGE_DSC=VaroFeaturesPkg/VaroFeaturesPkg.dsc

# firmware_output TARGET: the folder of a build of the notebook.
firmware_output() { printf '%s/Build/VirtualNotebook/%s_%s' "$FIRMWARE_WORKSPACE" "$1" "$(toolchain)"; }

# driver_image TARGET: where the driver's image is published.
driver_image() { if [[ $1 == RELEASE ]]; then echo "$OUT/CorvaneDxe.efi"; else echo "$OUT/${1,,}/CorvaneDxe.efi"; fi; }

# The tree that TOOLCHAIN is a tag of.
TOOLCHAIN_OF=''

# Sets TOOLCHAIN to the tag that the tree has for it. GCC's tag is GCC5 up to EDK II 202302.
choose_toolchain() {
  [[ $TOOLCHAIN_OF != "$EDK2_DIR" ]] || return 0
  local wanted=${TOOLCHAIN:-GCC} tag
  local -a offered
  mapfile -t offered < <(TOOLCHAIN=CLANGDWARF edk2_configuration tools_def |
    sed -nE 's/^ *(\*|DEBUG)_(GCC5?|CLANGDWARF)_AARCH64_DLINK_FLAGS .*/\2/p' | sort -u)
  for tag in "${offered[@]}"; do
    if [[ $tag == "$wanted" || $wanted$tag == GCCGCC5 && " ${offered[*]} " != *' GCC '* ]]; then
      export TOOLCHAIN=$tag
      TOOLCHAIN_OF=$EDK2_DIR
      return
    fi
  done
  die "TOOLCHAIN=$wanted: the EDK II tree in $EDK2_DIR has ${offered[*]} for this project"
}

toolchain() {
  choose_toolchain
  echo "$TOOLCHAIN"
}

# The compiler's own name and version.
compiler() {
  local path=${GCC_AARCH64_PREFIX:-aarch64-linux-gnu-}gcc
  if [[ $TOOLCHAIN == CLANG* ]]; then path=${CLANGDWARF_BIN:-}clang; fi
  "$path" --version | head -n 1
}

# edk2_configuration build_rule|tools_def|target: a file of the workspace's Conf. Older trees lack what Clang needs.
edk2_configuration() {
  local template="$EDK2_DIR/BaseTools/Conf/$1.template" addition="$ROOT/VaroFeaturesPkg/Clang/$1.txt"
  cat "$template"
  [[ $TOOLCHAIN == CLANGDWARF && -f $addition ]] || return 0
  case $1 in
    build_rule) grep -q '^\[Cxx-Code-File\]' "$template" || cat "$addition" ;;
    tools_def)
      if grep -q '^\*_CLANGDWARF_' "$template" && ! grep -q '_CLANGDWARF_AARCH64_CC_' "$template"; then cat "$addition"; fi
      ;;
  esac
}

# The environment that edksetup.sh would make, without writing to the EDK II tree. Called in a process of its own.
enter_edk2_environment() {
  export WORKSPACE="$FIRMWARE_WORKSPACE"
  export PACKAGES_PATH="${INTEGRATION_PATH:+$INTEGRATION_PATH:}$ROOT:$EDK2_DIR"
  export EDK_TOOLS_PATH="$EDK2_DIR/BaseTools"
  export CONF_PATH="$FIRMWARE_WORKSPACE/Conf/$TOOLCHAIN"
  export PYTHON_COMMAND=/usr/bin/python3
  export PATH="$EDK_TOOLS_PATH/BinWrappers/PosixLike:$PATH"
  export GCC5_AARCH64_PREFIX=aarch64-linux-gnu- GCC_AARCH64_PREFIX=aarch64-linux-gnu-
  mkdir -p "$CONF_PATH"
  local name
  for name in build_rule tools_def target; do
    edk2_configuration "$name" >"$CONF_PATH/$name.new"
    cmp -s "$CONF_PATH/$name.new" "$CONF_PATH/$name.txt" || mv "$CONF_PATH/$name.new" "$CONF_PATH/$name.txt"
  done
}

# edk2_build OPTION OF build...: for AArch64 unless -a names another architecture.
edk2_build() {
  [[ " $* " == *' -a '* ]] || set -- -a AARCH64 "$@"
  choose_toolchain
  enter_edk2_environment
  cd "$WORKSPACE" || return
  local -a defines
  mapfile -t defines < <(tree_defines)
  build -t "$TOOLCHAIN" -n "$JOBS" "${defines[@]}" "$@"
}

# Options for the package's platforms on an older tree: EDK II 202408 has another first module, 202411 moved libraries.
tree_defines() {
  [[ -f $EDK2_DIR/ArmPlatformPkg/Sec/Sec.inf ]] ||
    printf '%s\n' -D NOTEBOOK_SEC=ArmPlatformPkg/PrePeiCore/PrePeiCoreUniCore.inf
  [[ -f $EDK2_DIR/MdePkg/Library/CompilerIntrinsicsLib/CompilerIntrinsicsLib.inf ]] ||
    printf '%s\n' -D INTRINSICS_IN_ARMPKG=TRUE
}

# build_current STAMP FILE: whether FILE is there and no source has changed since. The build tool needs half a minute for
# the same answer.
build_current() {
  local stamp="$STAMPS/$1" package="$ROOT/VaroFeaturesPkg"
  stamp_is "$1" "$(compiler)" && [[ -f $2 ]] &&
    [[ -z $(find "$package" -path "$package/Test" -prune -o -newer "$stamp" -print -quit) ]] &&
    [[ -z $(find "$EDK2_DIR" -type f -cnewer "$stamp" -not -name '*.pyc' -print -quit) ]]
}

# build_logged STAMP FOLDER TITLE COMMAND...: a build whose output goes to FOLDER. Each tree and toolchain has a stamp with
# the compiler's version, because the build tool would use objects of another compiler.
build_logged() {
  local stamp=$1 folder=$2 title=$3 started
  shift 3
  stamp_is "$stamp" "$(compiler)" || rm -rf "$folder"
  mkdir -p "$STAMPS"
  started=$(mktemp "$STAMPS/started.XXXXXX")  # what changes while the build runs is newer than its stamp
  run_logged "${stamp%%-"$TOOLCHAIN"*}" "Building $title ($TOOLCHAIN)" "$@"
  set_stamp "$stamp" "$(compiler)"
  touch -r "$started" "$STAMPS/$stamp"
  rm -f "$started"
}

# build_firmware RELEASE|DEBUG|NOOPT
build_firmware() {
  local target=$1 stamp output
  choose_toolchain
  stamp="firmware-$1-$TOOLCHAIN-$EDK2_NAME"
  output=$(firmware_output "$target")
  if build_current "$stamp" "$output/FV/QEMU_EFI.fd"; then
    say "==> $target firmware: up to date"
  else
    build_logged "$stamp" "$output" "the $target firmware of the virtual notebook" \
      edk2_build -b "$target" -p "$NOTEBOOK_DSC"
  fi
  check_image "$target"
  publish_driver "$target"
}

# Builds the package without a platform. The notebook's builds cover most of it. New are its own DSC with one program,
# NOOPT, and the driver for X64.
build_package() {
  local stamp="package-NOOPT-$TOOLCHAIN-$EDK2_NAME" output
  output="$FIRMWARE_WORKSPACE/Build/VaroFeatures/NOOPT_$TOOLCHAIN"
  if build_current "$stamp" "$output/X64/CorvaneDxe.efi"; then
    say '==> The package on its own: up to date'
  else
    build_logged "$stamp" "$output" 'the package on its own' package_build
  fi
  "$ROOT/scripts/check-image.sh" "$output/X64/CorvaneDxe.debug"
}

package_build() {
  edk2_build -b NOOPT -p "$PACKAGE_DSC" -m VaroFeaturesPkg/Application/Attr/Attr.inf &&
    edk2_build -a X64 -b NOOPT -p "$PACKAGE_DSC"
}

# check_image TARGET: checks the notebook's driver. RELEASE has a bound for its size.
check_image() {
  local -a bound=()
  if [[ $1 == RELEASE ]]; then bound=("$(image_bound)"); fi
  "$ROOT/scripts/check-image.sh" "$(driver_elf "$1")" "${bound[@]}"
}

driver_elf() { printf '%s/AARCH64/CorvaneDxe.debug' "$(firmware_output "$1")"; }

# Upper limit for the RELEASE image in bytes. ./corvane test checks GCC's, with the first supported release of EDK II.
image_bound() {
  case $TOOLCHAIN in
    GCC*) echo 40960 ;;
    *) echo 45056 ;;
  esac
}

publish_driver() {
  local image
  image=$(driver_image "$1")
  mkdir -p "$(dirname "$image")"
  cp -p "$(firmware_output "$1")/AARCH64/CorvaneDxe.efi" "$image"
}
