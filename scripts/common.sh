# @file
# What every part of ./corvane shares: places, messages, progress, stamps.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
BUILD="$ROOT/build"
OUT="$ROOT/out"
LOGS="$BUILD/logs"
STAMPS="$BUILD/stamps"
JOBS=$(nproc)
# shellcheck disable=SC2034  # read by the parts that source this file
readonly ROOT BUILD OUT LOGS STAMPS JOBS

# Python would write its byte code beside the sources.
export PYTHONDONTWRITEBYTECODE=1

# Seconds between the progress messages of a long step, on a terminal and in a log.
readonly TICK_TERMINAL=1 TICK_LOG=20

say() { printf '%s\n' "$*"; }

# Both print one line about a failure; die also ends.
complain() { printf 'corvane: %s\n' "$*" >&2; }

die() {
  complain "$*"
  exit 1
}

now_ms() { date +%s%3N; }

seconds_since() { printf '%d.%d' $((($(now_ms) - $1) / 1000)) $((($(now_ms) - $1) / 100 % 10)); }

# A long step runs in its own process group, so that an interrupted ./corvane stops all of it.
CHILD=''

# start_child LOG COMMAND...: starts a command in the background and sets CHILD to its process.
start_child() {
  local log=$1
  shift
  set -m
  "$@" >"$log" 2>&1 </dev/null &
  set +m
  CHILD=$!
}

child_runs() { kill -0 "$CHILD" 2>/dev/null; }

# Waits for the child and returns its exit status.
reap_child() {
  local status=0
  wait "$CHILD" || status=$?
  CHILD=''
  return "$status"
}

stop_child() {
  [[ -n $CHILD ]] || return 0
  kill -- "-$CHILD" 2>/dev/null || true
  wait "$CHILD" 2>/dev/null || true
  CHILD=''
}

trap 'exit 130' INT
trap 'exit 143' TERM

# cause_in_log LOG: the cause of a failed step in one line. Causes that a user can fix come first.
cause_in_log() {
  local log=$1
  local -a causes=(
    'No space left on device:the disk is full'
    "don't have enough free space:the disk is full"
    'Temporary failure resolving|Could not (resolve|connect)|Network is unreachable:the package registry cannot be reached'
    'Unable to (locate|find a source) package|has no installation candidate:a package is missing from the registry'
    'are you root|Permission denied:permission denied'
  )
  local entry line
  for entry in "${causes[@]}"; do
    line=$(grep -m1 -E "${entry%:*}" "$log" | tr -d '\r') || continue
    printf '%s (%s)' "${entry##*:}" "${line#"${line%%[![:space:]]*}"}"
    return
  done
  line=$(grep -m1 -E ': (fatal )?error:|undefined reference|run time; make it|: error [0-9A-F]+:|^E: ' "$log" |
    grep -v 'ld returned') || line=$(tail -n 1 "$log")
  printf '%s' "$line"
}

# run_logged NAME TITLE COMMAND...: runs a long step with its output in build/logs/NAME.log and shows its progress. If the
# step fails, prints the cause in one line and ends.
run_logged() {
  local title=$2 log="$LOGS/$1.log" start
  shift 2
  mkdir -p "$LOGS" || die "cannot write to $BUILD"
  start=$(now_ms)
  say "==> $title"
  start_child "$log" "$@"
  show_progress "$start" "$log"
  reap_child || die "$title: failed: $(cause_in_log "$log") [log: ${log#"$ROOT/"}]"
  say "    done in $(seconds_since "$start") s"
}

# show_progress START LOG: prints the elapsed time and the newest line of the log until the child ends.
show_progress() {
  local start=$1 log=$2 tick=$TICK_LOG shown=0 elapsed last
  if [[ -t 1 ]]; then tick=$TICK_TERMINAL; fi
  while child_runs; do
    sleep 0.1
    elapsed=$((($(now_ms) - start) / 1000))
    ((elapsed >= shown + tick)) || continue
    shown=$elapsed
    last=$(tail -n 1 "$log" | tr -cd '[:print:]')
    last=$(cut -c -60 <<<"${last##*/}")
    if [[ -t 1 ]]; then printf '\r\033[K    %4d s  %s' "$elapsed" "$last"; else say "    ... $elapsed s  $last"; fi
  done
  if [[ -t 1 ]]; then printf '\r\033[K'; fi
}

# A stamp holds the key of the last run of a step. The step is due if the key differs.
stamp_is() { [[ -f "$STAMPS/$1" && "$(<"$STAMPS/$1")" == "$2" ]]; }

set_stamp() {
  mkdir -p "$STAMPS"
  printf '%s\n' "$2" >"$STAMPS/$1"
}

# need_space FOLDER MEGABYTES PURPOSE: ends before a step that would fill the disk.
need_space() {
  local folder=$1 megabytes=$2 purpose=$3 free
  free=$(df -Pm "$folder" | awk 'NR == 2 { print $4 }')
  ((free >= megabytes)) || die "not enough disk space for $purpose: $megabytes MB needed, $free MB free under $folder"
}

# Two commands at once would build over each other.
lock_checkout() {
  exec 9>"$BUILD/.lock"
  flock -n 9 && return
  say 'waiting for another ./corvane of this checkout to end'
  flock 9
}

# wrong_usage MESSAGE: ends with the status of a wrong command line.
wrong_usage() {
  complain "$1"
  exit 2
}

# no_arguments "$@": for commands without arguments.
no_arguments() { (($# == 0)) || wrong_usage "unexpected argument: $1"; }

# set_up build|bench|test|coverage: packages and EDK II.
set_up() {
  mkdir -p "$BUILD" "$OUT" 2>/dev/null || die "cannot write to $ROOT"
  lock_checkout
  install_packages "$1"
  prepare_edk2
}

# copy_checkout FOLDER: copies the sources of firmware and scripts, to build them with changes. Earlier build results stay.
copy_checkout() {
  local folder=$1
  mkdir -p "$folder"
  rm -rf "$folder"/{VaroFeaturesPkg,scripts}
  cp -r "$ROOT"/{VaroFeaturesPkg,scripts} "$folder/"
}

# in_checkout FOLDER FUNCTION [ARGUMENT]...: calls a function with ROOT, BUILD and OUT of a copy. They are constants, so
# the call needs its own process.
in_checkout() {
  # shellcheck disable=SC2016  # the inner shell expands it
  bash -c 'set -euo pipefail; source "$0/scripts/parts.sh"; mkdir -p "$BUILD" "$OUT"; "$@"' "$@"
}
