# @file
# Benchmarks: the database's routines against references out of EDK II, and the driver's own work in a boot. Instructions
# are counted by QEMU, so that they repeat.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

readonly BENCH="$BUILD/bench"
readonly BENCH_COUNTER="$BENCH/host/libinstruction_counter.so"

# The processor whose instructions are counted, in user mode and in the notebook.
readonly BENCH_PROCESSOR=cortex-a57

command_bench() {
  (($# <= 1)) || wrong_usage 'bench takes at most one folder'
  (($# == 0)) || [[ -d $1 ]] || wrong_usage "$1: no such folder"
  set_up bench
  build_firmware RELEASE
  build_bench
  say '==> Booting the virtual notebook, cold and warm, with its instructions counted'
  measure_boots
  measure_database "$OUT/bench/cold/vars.fd" "$@"
  report_bench --boots "$OUT"
}

build_bench() {
  local source="$ROOT/VaroFeaturesPkg/Test/Bench" name
  local -a cross=(-DCMAKE_SYSTEM_NAME=Linux -DCMAKE_SYSTEM_PROCESSOR=aarch64
    -DCMAKE_C_COMPILER=aarch64-linux-gnu-gcc -DCMAKE_CXX_COMPILER=aarch64-linux-gnu-g++)
  for name in aarch64 host; do
    [[ $name == aarch64 ]] || cross=()
    if ! stamp_is "bench-$name" "$EDK2_DIR" || [[ ! -f $BENCH/$name/build.ninja ]]; then
      run_logged "bench-cmake-$name" "Configuring the benchmarks ($name)" \
        cmake -S "$source" -B "$BENCH/$name" -G Ninja -DEDK2_DIR="$EDK2_DIR" "${cross[@]}"
      set_stamp "bench-$name" "$EDK2_DIR"
    fi
    run_logged "bench-$name" "Building the benchmarks ($name)" cmake --build "$BENCH/$name"
  done
}

# measure_database VARS [FOLDER]: on the cache that a boot left in its variable flash, on the form sets in the EDK II tree,
# on the boots under a folder, and on generated stores.
measure_database() {
  local name path boots=''
  rm -rf "$BENCH/stores"
  make_store boot "$1" notebook
  make_store edk2 "$EDK2_DIR" edk2
  BENCH_STORES=(notebook edk2)
  if [[ -n ${2:-} ]]; then
    boots=$(python3 "$ROOT/scripts/python/bench_stores.py" find "$2")
    [[ -n $boots ]] || die "$2: no vars.fd and no records.bin"
    while read -r name path; do
      make_store boot "$path" "outside-$name"
      BENCH_STORES+=("outside-$name")
    done <<<"$boots"
  fi
  run_counted aarch64 qemu-aarch64 -cpu "$BENCH_PROCESSOR"
  run_counted host qemu-x86_64
}

# make_store KIND SOURCE NAME
make_store() {
  python3 "$ROOT/scripts/python/bench_stores.py" "$1" "$2" "$BENCH/stores/$3" || die "$2: no store to measure"
}

# Environment and folder would change the alignment of the stack, and so the counts.
run_counted() {
  local name=$1
  shift
  (cd "$BENCH/stores" && env -i PATH=/usr/bin:/bin "$@" -plugin "$BENCH_COUNTER,output=$BENCH/$name.counts" \
    "../$name/corvane_bench" "${BENCH_STORES[@]}" >"$BENCH/$name.labels") || die "the benchmarks ($name) failed"
}

# measure_boots: instructions on each page of memory, from power-on to power-off.
measure_boots() {
  local boot=cold
  local -a options=()
  for boot in cold warm; do
    boot "bench/$boot" RELEASE "${options[@]}" --file "$(firmware_output RELEASE)/AARCH64/AttributeDump.efi" \
      --command 'AttributeDump -i >a driver.txt' --qemu -plugin --qemu "$BENCH_COUNTER,output=$BENCH/$boot.pages"
    options=(--vars "$OUT/bench/cold/vars.fd")
  done
}

# For ./corvane test: the limits of the database and of the image's size. They need the cold boot of the scenarios, but
# no boot of their own.
job_bench() {
  mkdir -p "$OUT/bench"
  measure_database "$(vars_of cold)"
  check 'all measures are within their limits' report_bench
}

# report_bench [OPTION OF bench.py]...: the limit for the image's size is that of the first supported toolchain alone.
report_bench() {
  if [[ $TOOLCHAIN == GCC5 ]]; then set -- --image "$(driver_elf RELEASE)" "$@"; fi
  python3 "$ROOT/scripts/python/bench.py" "$BENCH" "$OUT/bench.json" "$@"
}
