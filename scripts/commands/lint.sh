# @file
# The formatter and the linters over the project's own sources; ./corvane test runs them.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

# Each is a function lint_NAME. clang-tidy takes minutes the first time and uses all processors itself.
# shellcheck disable=SC2034  # test.sh reads it
readonly LINTERS=(shellcheck clang-format licence clang-tidy)
readonly TIDY_STAMPS="$STAMPS/tidy"

# For ./corvane test: job_lint NAME
job_lint() { check 'no findings' "lint_${1//-/_}"; }

# run_clang_tidy: as a long step, with its progress.
run_clang_tidy() {
  local status=0
  configure_host_tests
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

# Of the files that are part of the project all but texts for people, LICENSE itself, bytes and what has no comments.
lint_licence() {
  local unmarked
  unmarked=$(cd "$ROOT" && find . \( -path ./build -o -path ./out -o -path ./.git -o -name seeds \
    -o -name vectors \) -prune -o -type f \
    ! -name '*.md' ! -name '*.png' ! -path './scripts/scenarios/*.txt' ! -name LICENSE ! -name '.git*' \
    ! -name '*.options' ! -name .clang-format ! -name .clang-tidy -print0 |
    xargs -0 grep -L 'SPDX-License-Identifier: BSD-2-Clause-Patent') || true
  [[ -z $unmarked ]] || { say "without a licence line:" "$unmarked"; return 1; }
}

# Each due source and its stamp. What only tests is left out: its frameworks take the linter longer than all else together,
# and the compilers' warnings are errors there. A source is looked at again when it, a header or the configuration has
# changed since it was found clean. Sources outside the host build have no compile command and are left to the firmware's compiler.
sources_to_tidy() {
  local newest source stamp
  newest=$({ cxx_sources '*.h*'; echo "$ROOT/.clang-tidy"; } | xargs ls -t 2>/dev/null | head -n 1)
  cxx_sources '*.cpp' | grep -vE '/Test/|Test\.cpp$' | while read -r source; do
    stamp="$TIDY_STAMPS/$(tr / _ <<<"${source#"$ROOT/"}")"
    if [[ $stamp -nt $source && $stamp -nt $newest ]]; then continue; fi
    if grep -qF "\"$source\"" "$HOST_TESTS/compile_commands.json"; then printf '%s\0%s\0' "$source" "$stamp"; fi
  done
}

lint_clang_tidy() {
  mkdir -p "$TIDY_STAMPS"
  export HOST_TESTS
  # shellcheck disable=SC2016  # the inner shell expands it
  sources_to_tidy | xargs -0 -r -n 2 -P "$JOBS" bash -c \
    'clang-tidy --quiet --warnings-as-errors="*" -p "$HOST_TESTS" "$1" 2>/dev/null && touch "$2"' tidy
}
