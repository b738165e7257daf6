# @file
# The formatter and the linters over the project's own sources; ./corvane test runs them.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

# Each is a function lint_NAME. clang-tidy takes minutes the first time and uses all processors itself.
# shellcheck disable=SC2034  # test.sh reads it
readonly LINTERS=(shellcheck clang-format licence package line-length subjects clang-tidy)
readonly TIDY_STAMPS="$STAMPS/tidy"

# Subjects of later commits have at most this many characters.
readonly SUBJECTS_SINCE=84a15ff SUBJECT_LENGTH=75

# For ./corvane test: job_lint NAME
job_lint() { check 'no findings' "lint_${1//-/_}"; }

# run_clang_tidy: as a long step, with its progress.
run_clang_tidy() {
  local status=0
  configure_host "$TIDY" -DCMAKE_BUILD_TYPE=Debug -DBUILD_TESTING=ON -DCORVANE_SANITIZE=OFF \
    -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON
  say '==> clang-tidy: driver and tools'
  start_child "$LOGS/clang-tidy.log" lint_clang_tidy
  show_progress "$(now_ms)" "$LOGS/clang-tidy.log"
  reap_child || status=$?
  check 'no findings' tidy_findings "$status"
}

# tidy_findings STATUS: of the run that ended with this status.
tidy_findings() {
  grep -E 'warning:|error:' "$LOGS/clang-tidy.log" || true
  return "$1"
}

cxx_sources() { find "$ROOT/VaroFeaturesPkg" "$ROOT/tools" -name "$1" -type f 2>/dev/null | sort; }

lint_shellcheck() { (cd "$ROOT" && shellcheck -x corvane .ci/run scripts/*.sh scripts/*/*.sh); }

lint_clang_format() { { cxx_sources '*.cpp'; cxx_sources '*.hpp'; } | xargs -r clang-format --dry-run --Werror; }

# All files of the project, except documents, LICENSE, binary files and files without comments.
lint_licence() {
  local unmarked
  unmarked=$(cd "$ROOT" && find . \( -path ./build -o -path ./out -o -path ./.git -o -name seeds \
    -o -name vectors \) -prune -o -type f \
    ! -name '*.md' ! -name '*.png' ! -path './scripts/scenarios/*.txt' ! -name LICENSE ! -name '.git*' \
    ! -name '*.options' ! -name .clang-format ! -name .clang-tidy -print0 |
    xargs -0 grep -L 'SPDX-License-Identifier: BSD-2-Clause-Patent') || true
  [[ -z $unmarked ]] || { say "without a licence line:" "$unmarked"; return 1; }
}

# The package against the rules in its .ci.yaml.
lint_package() { "$ROOT/scripts/python/check_package.py" "$ROOT/VaroFeaturesPkg"; }

# clang-format checks the lines of .cpp files.
lint_line_length() {
  (cd "$ROOT" && find VaroFeaturesPkg tools \( -name '*.h' -o -name '*.hpp' \) -print0 |
    xargs -0 awk 'length > 120 { print FILENAME ":" FNR ": " length " characters"; bad = 1 } END { exit bad }')
}

lint_subjects() {
  local long
  git -C "$ROOT" cat-file -e "$SUBJECTS_SINCE^{commit}" 2>/dev/null ||
    { printf 'no git history since %s' "$SUBJECTS_SINCE"; return "$STATUS_SKIPPED"; }
  long=$(git -C "$ROOT" log --no-merges --format=%s "$SUBJECTS_SINCE..HEAD" | awk -v most="$SUBJECT_LENGTH" 'length > most')
  [[ -z $long ]] || { say "longer than $SUBJECT_LENGTH characters:" "$long"; return 1; }
}

# What clang-tidy reads: the compile commands without precompiled headers, so that each source is seen with its own
# includes.
readonly TIDY="$BUILD/tidy"

# Each source that is due, and its stamp. A source is due when it, a header that it includes or the configuration has
# changed since it was found clean; the last host build knows the headers, and without one any header counts. Tests are
# left out: the compilers' warnings are errors there, and their frameworks would take longer than everything else. Sources
# outside the host build have no compile command and are left to the firmware's compiler.
sources_to_tidy() {
  local newest source included stamp
  local -A due=() built=()
  newest=$(cxx_sources '*.h*' | xargs ls -t | sed -n 1p)
  while read -r source included; do
    built[$source]=1
    stamp=$(tidy_stamp "$source")
    [[ $stamp -nt $included ]] || due[$source]=1
  done < <(included_files)
  while read -r source; do
    stamp=$(tidy_stamp "$source")
    if [[ $stamp -nt $source && $stamp -nt $ROOT/.clang-tidy && ! -v due[$source] ]]; then
      if [[ -v built[$source] || $stamp -nt $newest ]]; then continue; fi
    fi
    if grep -qF "\"$source\"" "$TIDY/compile_commands.json"; then printf '%s\0%s\0' "$source" "$stamp"; fi
  done < <(cxx_sources '*.cpp' | grep -vE '/Test/|Test\.cpp$')
}

tidy_stamp() {
  local name=${1#"$ROOT/"}
  printf '%s' "$TIDY_STAMPS/${name//\//_}"
}

# included_files: each source of the last host build with each file of ours that it includes.
included_files() {
  ninja -C "$HOST_TESTS" -t deps 2>/dev/null | awk -v root="$ROOT/" '
    /^ / {
      sub(/^ *(\.\.\/)+/, root)
      if (source == "") source = $1
      else if (index($1, root) == 1) print source, $1
      next
    }
    { source = "" }'
}

lint_clang_tidy() {
  mkdir -p "$TIDY_STAMPS"
  export TIDY
  # shellcheck disable=SC2016  # the inner shell expands it
  sources_to_tidy | xargs -0 -r -n 2 -P "$JOBS" bash -c \
    'clang-tidy --quiet --warnings-as-errors="*" -p "$TIDY" "$1" 2>/dev/null && touch "$2"' tidy
}
