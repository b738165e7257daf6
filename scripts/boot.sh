# @file
# Boots the virtual notebook once, as a named scenario, and gathers what the boot left in out/<boot>/.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

# Size of the two flash banks of QEMU's "virt" board, for code and variables. The code is passed as a BIOS, which fills the
# first bank. QEMU would read a flash device whole, and that costs a fifth of a boot.
readonly FLASH_BANK_SIZE=64M
readonly VARS_SIZE=768K

# Offset of the variables in an empty variable flash, and the bytes for them.
readonly STORE_OFFSET=$((0x64)) STORE_SIZE=$((0x3FF9C))

readonly DISK_SECTORS=65536

# What a firmware prints when it cannot go on.
readonly FATAL_LINES='^ASSERT |Synchronous Exception'

# The board's memory, as -m below has it.
readonly MEMORY_START=$((0x40000000)) MEMORY_SIZE=$((0x10000000))

# Virtual time counts instructions (shift=4: 16 ns each) and skips idle time. Two boots of one scenario execute the same
# instructions, and the notebook's clock does not depend on the load of the host.
readonly QEMU_MACHINE=(
  -machine 'virt,gic-version=2,dtb-randomness=off' -cpu cortex-a57 -m 256M -smp 1
  -icount 'shift=4,sleep=off' -rtc 'base=2026-01-01T00:00:00,clock=vm'
  -nodefaults -nographic -monitor none
)

# boot NAME TARGET [--firmware FILE] [--loader FILE] [--vars FILE] [--store BYTES] [--set KEY=VALUE]...
#      [--file PATH]... [--command LINE]... [--keys TEXT]... [--memory yes] [--flash-log yes]
#      [--qemu OPTION]... [--limit SECONDS]
#   NAME       folder of the boot under out/
#   TARGET     RELEASE or DEBUG firmware
#   --firmware other firmware than the notebook's
#   --vars     variable flash to start from, such as an earlier boot's vars.fd; an empty one otherwise
#   --store    an empty variable store of that many bytes, headers of variables included
#   --set      a scenario setting: the guest reads it from fw_cfg as opt/corvane/KEY
#   --loader   boot loader on the disk, for firmware without a Shell
#   --file     a file for the disk that the Shell finds as FS0:
#   --command  a line of startup.nsh, which ends with the power-off
#   --keys     keys for a password prompt: the first option for the first prompt, and so on
#   --memory   save the guest's memory in memory.bin before the last keys
#   --flash-log
#              log every write to the variable flash in flash.log
#   --qemu     a further option of QEMU
#   --limit    seconds after which a boot that does not power off has failed
# Leaves serial.log, vars.fd and every file that the guest wrote to its disk; fails when the boot does not power off.
boot() {
  local name=$1 target=$2 code='' loader='' vars='' store='' memory='' log='' limit=180 setting value
  local -a settings=() files=() commands=() keys=() further=()
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
      --keys) keys+=("$2") ;;
      --memory) memory=$2 ;;
      --flash-log) log=$2 ;;
      --limit) limit=$2 ;;
      --qemu) further+=("$2") ;;
      *) die "boot: unknown option $1" ;;
    esac
    shift 2
  done

  local folder="$OUT/$name" work="$BUILD/boot/$name" firmware start typist='' status=0
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
  # Each pipe of QEMU has two ends: output to a file, input from a queue.
  mkfifo "$work/console.in" "$work/monitor.in"
  : >"$folder/serial.log"
  ln -s "$folder/serial.log" "$work/console.out"
  ln -s /dev/null "$work/monitor.out"

  local -a qemu=(
    qemu-system-aarch64 "${QEMU_MACHINE[@]}"
    -bios "${code:-$firmware/QEMU_EFI.fd}"
    -drive "if=pflash,unit=1,cache=unsafe,$(flash_drive "$work/vars.fd" "${log:+$folder/flash.log}")"
    -drive "if=none,id=disk,format=raw,cache=unsafe,file=$work/disk.img" -device 'virtio-blk-pci,drive=disk'
    -chardev "pipe,id=console,path=$work/console" -serial chardev:console
    -chardev "pipe,id=monitor,path=$work/monitor" -mon chardev=monitor "${further[@]}"
  )
  for setting in "${settings[@]}"; do
    value=${setting#*=}  # QEMU options double a comma
    qemu+=(-fw_cfg "name=opt/corvane/${setting%%=*},string=${value//,/,,}")
  done

  start=$(now_ms)
  if ((${#keys[@]} > 0)); then
    type_when_asked "$folder/serial.log" "$work" "${memory:+$folder/memory.bin}" "${keys[@]}" &
    typist=$!
  fi
  run_until_power_off "$name" "$limit" "$folder/serial.log" "${qemu[@]}" || status=$?
  [[ -z $typist ]] || kill "$typist" 2>/dev/null || true
  ((status == 0)) || return "$status"
  truncate -s "$VARS_SIZE" "$work/vars.fd"
  mv "$work/vars.fd" "$folder/vars.fd"
  copy_from_disk "$work/disk.img" "$folder" "${files[@]}"
  rm -rf "$work"
  say "    boot '$name': powered off after $(seconds_since "$start") s"
}

# shrink_store FILE BYTES: fills the empty store of a variable flash with one variable, except for BYTES. Erased flash is
# its content. Only its header (MdeModulePkg, AUTHENTICATED_VARIABLE_HEADER: start id, state, attributes, count, time, key,
# sizes of name and data, vendor) and its name are written.
shrink_store() {
  local size=$((STORE_SIZE - 60 - 4 - $2)) header
  header='\xAA\x55\x3F\0\x03\0\0\0'
  header+=$(printf '\\0%.0s' {1..28})
  header+="\\x04\\0\\0\\0$(printf '\\x%02x' $((size & 255)) $((size >> 8 & 255)) $((size >> 16)) 0)"
  header+='NotebookFiller\x01\0F\0\0\0'
  printf '%b' "$header" | dd of="$1" bs=1 seek="$STORE_OFFSET" conv=notrunc status=none
}

# flash_drive FILE [LOG]: the options for QEMU's drive.
flash_drive() {
  if [[ -z ${2:-} ]]; then
    printf 'format=raw,file=%s' "$1"
  else
    : >"$2"
    printf 'driver=blklogwrites,file.driver=file,file.filename=%s,log.driver=file,log.filename=%s' "$1" "$2"
  fi
}

# make_disk FOLDER FILE...: a FAT disk with the files. Serial number and dates are fixed, because the console shows them.
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

# copy_from_disk IMAGE FOLDER FILE...: copies what the guest wrote, but not the FILEs that the host put on the disk.
copy_from_disk() {
  local image=$1 folder=$2 file
  shift 2
  mdel -i "$image" ::startup.nsh
  for file in "$@"; do mdel -i "$image" "::$(basename "$file")"; done
  mdeltree -i "$image" ::EFI 2>/dev/null || true
  if [[ -n $(mdir -b -i "$image" :: 2>/dev/null) ]]; then mcopy -s -n -i "$image" '::*' "$folder/"; fi
}

# A failed assertion stops DEBUG firmware for good, so the boot ends at once.
run_until_power_off() {
  local name=$1 limit=$2 log=$3 deadline=$((SECONDS + $2)) problem=''
  shift 3
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

# type_when_asked LOG FOLDER MEMORY KEYS...: types the next KEYS at each "Password: " on the console. Saves the memory of
# the guest to the file MEMORY, if one is given, before the last KEYS. FOLDER has the pipes to QEMU.
type_when_asked() {
  local log=$1 folder=$2 memory=$3 asked=0
  shift 3
  while (($# > 0)); do
    sleep 0.1
    (($(grep -ao 'Password: ' "$log" | wc -l) > asked)) || continue
    asked=$((asked + 1))
    if [[ -n $memory ]] && (($# == 1)); then save_memory "$memory" "$folder/monitor.in"; fi
    printf '%s' "$1" >"$folder/console.in"
    shift
  done
}

# save_memory FILE MONITOR: saves the memory of the paused guest. The answers of the monitor are not read: the size of the
# file shows when the memory is complete.
save_memory() {
  local left=300
  printf 'stop\npmemsave %s %s "%s"\n' "$MEMORY_START" "$MEMORY_SIZE" "$1" >"$2"
  while [[ ! -f $1 ]] || (($(stat -c %s "$1") < MEMORY_SIZE)); do
    ((left-- > 0)) || return
    sleep 0.1
  done
  printf 'cont\n' >"$2"
}

last_line() { tr -d '\r\0' <"$1" | grep -a '[[:graph:]]' | tail -n 1; }
