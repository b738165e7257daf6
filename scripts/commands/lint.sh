# @file
# Formatter and linters over the project's own sources.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

readonly TIDY_STAMPS="$STAMPS/tidy"

run_linters() {
  local before=$FAILED status=0
  say '==> Formatter and linters'
  check 'shellcheck: scripts' lint_scripts
  check 'clang-format: C++ sources' lint_format
  check 'licence: every source names it' lint_licence
  # It takes minutes the first time, so it runs as a long step does.
  start_child "$LOGS/clang-tidy.log" lint_tidy
  show_progress "$(now_ms)" "$LOGS/clang-tidy.log"
  reap_child || status=$?
  check 'clang-tidy: driver and tools' result_of "$status" "$LOGS/clang-tidy.log"
  ((FAILED == before))
}

# What a command left that ran before: result_of STATUS LOG
result_of() {
  grep -E 'warning:|error:' "$2" || true
  return "$1"
}

cxx_sources() { find "$ROOT/VaroFeaturesPkg" "$ROOT/tools" -name "$1" -type f 2>/dev/null | sort; }

lint_scripts() { (cd "$ROOT" && shellcheck -x corvane .ci/run scripts/*.sh scripts/*/*.sh); }

lint_format() { { cxx_sources '*.cpp'; cxx_sources '*.hpp'; } | xargs -r clang-format --dry-run --Werror; }

# Of the files that are part of the project all but texts for people, LICENSE itself, bytes and what has no comments.
lint_licence() {
  local unmarked
  unmarked=$(cd "$ROOT" && find . \( -path ./build -o -path ./out -o -path ./.git -o -name seeds \) -prune -o -type f \
    ! -name '*.md' ! -name '*.png' ! -path './scripts/scenarios/*.txt' ! -name LICENSE ! -name '.git*' \
    ! -name .clang-format ! -name .clang-tidy -print0 |
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

lint_tidy() {
  mkdir -p "$TIDY_STAMPS"
  export HOST_TESTS
  # shellcheck disable=SC2016  # the inner shell expands it
  sources_to_tidy | xargs -0 -r -n 2 -P "$JOBS" bash -c \
    'clang-tidy --quiet --warnings-as-errors="*" -p "$HOST_TESTS" "$1" 2>/dev/null && touch "$2"' tidy
}
