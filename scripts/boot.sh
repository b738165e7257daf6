# @file
# Boots the virtual notebook once, as a named scenario, and gathers what the boot left in out/<boot>/.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

# QEMU's "virt" board maps two flash banks of this size, the code and the variables. The code is given as a BIOS, which
# fills the first: as a flash device, QEMU would read the whole bank first, a fifth of what a boot costs.
readonly FLASH_BANK_SIZE=64M
readonly VARS_SIZE=768K

# Where the variables begin in an empty variable flash, and how many bytes there are for them.
readonly STORE_OFFSET=$((0x64)) STORE_SIZE=$((0x3FF9C))

readonly DISK_SECTORS=65536

# What a firmware prints when it cannot go on.
readonly FATAL_LINES='^ASSERT |Synchronous Exception'

# Virtual time is counted in instructions (shift=4: 16 ns each) and idle time is skipped, so that two boots of one
# scenario run alike to the instruction and the notebook's clock compares work, not the host's mood.
readonly QEMU_MACHINE=(
  -machine 'virt,gic-version=2,dtb-randomness=off' -cpu cortex-a57 -m 256M -smp 1
  -icount 'shift=4,sleep=off' -rtc 'base=2026-01-01T00:00:00,clock=vm'
  -nodefaults -nographic -monitor none
)

# boot NAME TARGET [--firmware FILE] [--loader FILE] [--vars FILE] [--store BYTES] [--set KEY=VALUE]...
#      [--file PATH]... [--command LINE]... [--limit SECONDS] [--qemu OPTION]...
#   NAME       folder of the boot under out/
#   TARGET     RELEASE or DEBUG firmware
#   --firmware other firmware than the notebook's
#   --vars     variable flash to start from, such as an earlier boot's vars.fd; an empty one otherwise
#   --store    an empty variable store of that many bytes, headers of variables included
#   --set      a scenario setting: the guest reads it from fw_cfg as opt/corvane/KEY
#   --loader   what firmware that starts no Shell by itself boots from the disk
#   --file     a file for the disk that the Shell finds as FS0:
#   --command  a line of startup.nsh, which ends with the power-off
#   --qemu     a further option of QEMU
#   --limit    seconds after which a boot that does not power off has failed
# Leaves serial.log, vars.fd and every file that the guest wrote to its disk; fails when the boot does not power off.
boot() {
  local name=$1 target=$2 code='' loader='' vars='' store='' limit=180 setting value
  local -a settings=() files=() commands=() further=()
  shift 2
  while (($# > 0)); do
    case $1 in
      --firmware) code=$2 ;;
      --loader) loader=$2 ;;
      --vars) vars=$2 ;;
      --store) store=$2 ;;
      --set) settings+=("$2") ;;
      --file) files+=("$2") ;;
      --command) commands+=("$2") ;;
      --limit) limit=$2 ;;
      --qemu) further+=("$2") ;;
      *) die "boot: unknown option $1" ;;
    esac
    shift 2
  done

  local folder="$OUT/$name" work="$BUILD/boot/$name" firmware start
  firmware=$(firmware_output "$target")/FV
  rm -rf "$folder" "$work.new"
  mkdir -p "$folder" "$work.new"
  cp "${vars:-$firmware/QEMU_VARS.fd}" "$work.new/vars.fd"
  rm -rf "$work"
  mv "$work.new" "$work"
  [[ -z $store ]] || shrink_store "$work/vars.fd" "$store"
  truncate -s "$FLASH_BANK_SIZE" "$work/vars.fd"
  printf '%s\r\n' fs0: "${commands[@]}" 'reset -s' >"$work/startup.nsh"
  make_disk "$work" "$work/startup.nsh" "${files[@]}"
  [[ -z $loader ]] || add_loader "$work/disk.img" "$loader"

  local -a qemu=(
    qemu-system-aarch64 "${QEMU_MACHINE[@]}"
    -bios "${code:-$firmware/QEMU_EFI.fd}"
    -drive "if=pflash,unit=1,format=raw,cache=unsafe,file=$work/vars.fd"
    -drive "if=none,id=disk,format=raw,cache=unsafe,file=$work/disk.img" -device 'virtio-blk-pci,drive=disk'
    -serial "file:$folder/serial.log" "${further[@]}"
  )
  for setting in "${settings[@]}"; do
    value=${setting#*=}  # where a comma is written twice in a QEMU option
    qemu+=(-fw_cfg "name=opt/corvane/${setting%%=*},string=${value//,/,,}")
  done

  start=$(now_ms)
  run_until_power_off "$name" "$limit" "$folder/serial.log" "${qemu[@]}" || return
  truncate -s "$VARS_SIZE" "$work/vars.fd"
  mv "$work/vars.fd" "$folder/vars.fd"
  copy_from_disk "$work/disk.img" "$folder" "${files[@]}"
  rm -rf "$work"
  say "    boot '$name': powered off after $(seconds_since "$start") s"
}

# shrink_store FILE BYTES: the empty store of a variable flash gets one variable that takes all but so many bytes. Its
# content is flash as it was erased; what has to be written is its header (MdeModulePkg, AUTHENTICATED_VARIABLE_HEADER:
# start id, state, attributes, count, time, key, sizes of name and data, vendor) and its name.
shrink_store() {
  local size=$((STORE_SIZE - 60 - 4 - $2)) header
  header='\xAA\x55\x3F\0\x03\0\0\0'
  header+=$(printf '\\0%.0s' {1..28})
  header+="\\x04\\0\\0\\0$(printf '\\x%02x' $((size & 255)) $((size >> 8 & 255)) $((size >> 16)) 0)"
  header+='NotebookFiller\x01\0F\0\0\0'
  printf '%b' "$header" | dd of="$1" bs=1 seek="$STORE_OFFSET" conv=notrunc status=none
}

# A FAT disk with the given files. Serial number and dates are fixed: they would show in the console log.
make_disk() {
  local work=$1 file
  shift
  local -x SOURCE_DATE_EPOCH=1767225600 TZ=UTC
  mformat -C -i "$work/disk.img" -T "$DISK_SECTORS" -h 16 -s 63 -N 20260101 -v CORVANE ::
  for file in "$@"; do
    [[ -f $file ]] || die "boot: $file: no such file"
    mcopy -i "$work/disk.img" "$file" ::
  done
}

add_loader() {
  mmd -i "$1" ::EFI ::EFI/BOOT
  mcopy -i "$1" "$2" ::EFI/BOOT/BOOTAA64.EFI
}

# Every file that the guest wrote; what was put on the disk for it stays behind.
copy_from_disk() {
  local image=$1 folder=$2 file
  shift 2
  mdel -i "$image" ::startup.nsh
  for file in "$@"; do mdel -i "$image" "::$(basename "$file")"; done
  mdeltree -i "$image" ::EFI 2>/dev/null || true
  if [[ -n $(mdir -b -i "$image" :: 2>/dev/null) ]]; then mcopy -s -n -i "$image" '::*' "$folder/"; fi
}

# A DEBUG firmware that fails an assertion stops for good: no use waiting for the limit.
run_until_power_off() {
  local name=$1 limit=$2 log=$3 deadline=$((SECONDS + $2)) problem=''
  shift 3
  : >"$log"
  start_child "$log.qemu" "$@"
  while [[ -z $problem ]] && child_runs; do
    sleep 0.1
    if grep -aqE "$FATAL_LINES" "$log"; then
      problem="stopped: $(grep -aE -m1 "$FATAL_LINES" "$log" | tr -d '\r')"
    elif ((SECONDS >= deadline)); then
      problem="did not power off within $limit s; its last line: $(last_line "$log")"
    fi
  done
  if [[ -n $problem ]]; then
    stop_child
  else
    reap_child || problem="QEMU failed: $(tail -n 1 "$log.qemu")"
  fi
  rm -f "$log.qemu"
  [[ -z $problem ]] || { complain "boot '$name' $problem [log: ${log#"$ROOT/"}]"; return 1; }
}

last_line() { tr -d '\r\0' <"$1" | grep -a '[[:graph:]]' | tail -n 1; }
