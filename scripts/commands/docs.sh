# @file
# Renders the documentation of the public headers.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

command_docs() {
  no_arguments "$@"
  mkdir -p "$BUILD" "$OUT" 2>/dev/null || die "cannot write to $ROOT"
  lock_checkout
  install_packages docs
  run_logged docs 'Rendering the documentation of the public headers' render_docs
  say '    out/docs/html/index.html'
}

# Fails for a comment that does not render or names an unknown parameter.
render_docs() {
  mkdir -p "$OUT/docs"
  cd "$ROOT" || return
  doxygen - <<CONFIG
PROJECT_NAME           = CorvaneDxe
PROJECT_BRIEF          = "Public headers of VaroFeaturesPkg"
OUTPUT_DIRECTORY       = $OUT/docs
INPUT                  = VaroFeaturesPkg/Include
RECURSIVE              = YES
STRIP_FROM_PATH        = VaroFeaturesPkg/Include
OPTIMIZE_OUTPUT_FOR_C  = YES
JAVADOC_AUTOBRIEF      = YES
EXTRACT_ALL            = YES
GENERATE_LATEX         = NO
HAVE_DOT               = NO
ENABLE_PREPROCESSING   = YES
MACRO_EXPANSION        = YES
EXPAND_ONLY_PREDEF     = YES
PREDEFINED             = IN= OUT= OPTIONAL= EFIAPI= CORVANE_PACKED= CONST=const VOID=void
WARN_NO_PARAMDOC       = YES
WARN_IF_UNDOCUMENTED   = NO
WARN_AS_ERROR          = FAIL_ON_WARNINGS
QUIET                  = YES
CONFIG
}
