# @file
# Builds the virtual notebook's firmware, RELEASE or DEBUG, with EDK II, and checks the driver's image.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

readonly FIRMWARE_WORKSPACE="$BUILD/firmware"
readonly NOTEBOOK_DSC=VaroFeaturesPkg/VirtualNotebook/VirtualNotebook.dsc

# Where a build of the notebook leaves its files: firmware_output TARGET
firmware_output() { printf '%s/Build/VirtualNotebook/%s_%s' "$FIRMWARE_WORKSPACE" "$1" "$(toolchain)"; }

# Where the driver's image of a build is put: driver_image TARGET
driver_image() { if [[ $1 == RELEASE ]]; then echo "$OUT/CorvaneDxe.efi"; else echo "$OUT/debug/CorvaneDxe.efi"; fi; }

# EDK II calls the tag of GCC with link-time optimisation GCC5 up to 2023 and GCC since.
toolchain() {
  if grep -q '^\*_GCC5_AARCH64_CC_PATH' "$EDK2_DIR/BaseTools/Conf/tools_def.template"; then echo GCC5; else echo GCC; fi
}

# The environment that edksetup.sh would make, without writing to the EDK II tree. Called in a process of its own.
enter_edk2_environment() {
  export WORKSPACE="$FIRMWARE_WORKSPACE"
  export PACKAGES_PATH="${INTEGRATION_PATH:+$INTEGRATION_PATH:}$ROOT:$EDK2_DIR"
  export EDK_TOOLS_PATH="$EDK2_DIR/BaseTools"
  export CONF_PATH="$FIRMWARE_WORKSPACE/Conf"
  export PYTHON_COMMAND=/usr/bin/python3
  export PATH="$EDK_TOOLS_PATH/BinWrappers/PosixLike:$PATH"
  export GCC5_AARCH64_PREFIX=aarch64-linux-gnu- GCC_AARCH64_PREFIX=aarch64-linux-gnu-
  mkdir -p "$CONF_PATH"
  local name
  for name in build_rule tools_def target; do
    cmp -s "$EDK_TOOLS_PATH/Conf/$name.template" "$CONF_PATH/$name.txt" ||
      cp "$EDK_TOOLS_PATH/Conf/$name.template" "$CONF_PATH/$name.txt"
  done
}

edk2_build() {
  enter_edk2_environment
  cd "$WORKSPACE" || return
  build -a AARCH64 -t "$(toolchain)" -n "$JOBS" "$@"
}

# All that the notebook's image is made of; when nothing of it is newer than the last build there is nothing to do, and
# the build tool's own look at it would take half a minute.
firmware_is_current() {
  local stamp="$STAMPS/firmware-$1" package="$ROOT/VaroFeaturesPkg"
  stamp_is "firmware-$1" "$EDK2_DIR" && [[ -f $(firmware_output "$1")/FV/QEMU_EFI.fd && -f $(driver_image "$1") ]] &&
    [[ -z $(find "$package" -path "$package/Test" -prune -o -newer "$stamp" -print -quit) ]]
}

# build_firmware RELEASE|DEBUG
build_firmware() {
  local target=$1 started
  if firmware_is_current "$target"; then
    say "==> $target firmware: up to date"
    return
  fi
  mkdir -p "$STAMPS"
  started=$(mktemp "$STAMPS/started.XXXXXX")  # what changes while the build runs is newer than its stamp
  run_logged "firmware-$target" "Building the $target firmware of the virtual notebook" \
    edk2_build -b "$target" -p "$NOTEBOOK_DSC"
  "$ROOT/scripts/check-image.sh" "$(firmware_output "$target")/AARCH64/CorvaneDxe.debug"
  publish_driver "$target"
  set_stamp "firmware-$target" "$EDK2_DIR"
  touch -r "$started" "$STAMPS/firmware-$target"
  rm -f "$started"
}

# The driver alone, as the RELEASE firmware has it: where its size is all that is asked for.
build_release_driver() {
  local image
  image="$(firmware_output RELEASE)/AARCH64/CorvaneDxe.debug"
  if firmware_is_current RELEASE; then return; fi
  run_logged driver-RELEASE 'Building the RELEASE driver' \
    edk2_build -b RELEASE -p "$NOTEBOOK_DSC" -m VaroFeaturesPkg/Corvane/CorvaneDxe/CorvaneDxe.inf
  "$ROOT/scripts/check-image.sh" "$image"
}

publish_driver() {
  mkdir -p "$(dirname "$(driver_image "$1")")"
  cp "$(firmware_output "$1")/AARCH64/CorvaneDxe.efi" "$(driver_image "$1")"
}
