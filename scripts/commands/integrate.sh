# @file
# Integrates CorvaneDxe into a platform: adds two include lines to copies of ArmVirtQemu's DSC and FDF, builds and boots.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

readonly INTEGRATION="$BUILD/integration"
readonly INTEGRATION_PLATFORM=CorvaneIntegration
readonly DRIVER_FILE_GUID=08157BB8-474F-4AE3-863E-26C03D080D9E

command_integrate() {
  no_arguments "$@"
  set_up build
  integrate_platform
}

# add_line FILE AFTER LINE: adds LINE after the first line that equals AFTER, or at the end if AFTER is empty. EDK II's files
# have carriage returns.
add_line() {
  local file=$1 after=$2 line=$3
  if [[ -z $after ]]; then
    printf '\r\n%s\r\n' "$line" >>"$file"
    return
  fi
  awk -v after="$after" -v line="$line" '
    { print; sub(/\r$/, "") }
    $0 == after && !found { printf "%s\r\n", line; found = 1 }
    END { exit !found }' "$file" >"$file.new" || die "$(basename "$file") has no line '$after'"
  mv "$file.new" "$file"
}

# The copies are in their own folder, with the include files that they name. Lines with the platform's FDF and output folder
# are changed to the copy's.
make_integration() {
  local folder="$INTEGRATION/$INTEGRATION_PLATFORM"
  rm -rf "$folder"
  mkdir -p "$folder"
  cp "$EDK2_DIR"/ArmVirtPkg/*.inc "$folder/"
  cp "$EDK2_DIR/ArmVirtPkg/ArmVirtQemu.fdf" "$folder/$INTEGRATION_PLATFORM.fdf"
  sed -e "s|ArmVirtPkg/ArmVirtQemu.fdf|$INTEGRATION_PLATFORM/$INTEGRATION_PLATFORM.fdf|" \
    -e "s|Build/ArmVirtQemu-|Build/$INTEGRATION_PLATFORM-|" \
    "$EDK2_DIR/ArmVirtPkg/ArmVirtQemu.dsc" >"$folder/$INTEGRATION_PLATFORM.dsc"
  add_line "$folder/$INTEGRATION_PLATFORM.dsc" '' '!include VaroFeaturesPkg/VaroFeatures.dsc.inc'
  add_line "$folder/$INTEGRATION_PLATFORM.fdf" '!include ArmVirtQemuFvMain.fdf.inc' \
    '!include VaroFeaturesPkg/VaroFeatures.fdf.inc'
  diff "$EDK2_DIR/ArmVirtPkg/ArmVirtQemu.dsc" "$folder/$INTEGRATION_PLATFORM.dsc" || true
  diff "$EDK2_DIR/ArmVirtPkg/ArmVirtQemu.fdf" "$folder/$INTEGRATION_PLATFORM.fdf" || true
}

build_integration() {
  INTEGRATION_PATH="$INTEGRATION" edk2_build -b DEBUG -D NETWORK_ENABLE=FALSE \
    -p "$INTEGRATION_PLATFORM/$INTEGRATION_PLATFORM.dsc"
}

# The platform lacks protocols that the driver requires. The DXE core finds the driver in the firmware volume, reports it as
# not loaded, and the boot goes on to the Shell.
integrate_platform() {
  local fv
  say '==> The lines that take CorvaneDxe into ArmVirtQemu'
  make_integration
  run_logged integration 'Building that platform (DEBUG)' build_integration
  fv="$FIRMWARE_WORKSPACE/Build/$INTEGRATION_PLATFORM-AARCH64/DEBUG_$(toolchain)/FV"
  say '==> Booting it'
  boot integration DEBUG --firmware "$fv/QEMU_EFI.fd" --vars "$fv/QEMU_VARS.fd" ||
    die 'the platform does not boot with the driver in its firmware volume'
  grep -aF "Driver $DRIVER_FILE_GUID was discovered but not loaded" "$OUT/integration/serial.log" ||
    die 'the DXE core did not find the driver in the firmware volume [log: out/integration/serial.log]'
  say 'The driver is in the firmware and waits for the protocols that the platform does not have; README lists them.'
}
