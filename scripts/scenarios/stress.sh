# @file
# Setups that exceed the tables or the store, and setups with less than a notebook has.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
# shellcheck shell=bash

# The driver's message for each table that overflows.
readonly -A CUTS=(
  [strings]='text table 0 cut before handle'
  [attributes]='attribute table cut before handle'
  [values]='value table cut before handle'
  [display]='text table 9 cut before handle'
  [help]='text table 10 cut before handle'
)

scenario_full_strings() { overfill strings; }
scenario_full_attributes() { overfill attributes; }
scenario_full_values() { overfill values; }
scenario_full_display_texts() { overfill display; }
scenario_full_help_texts() { overfill help; }

# A table is cut between two entries, the others are complete, and the cache has the unpublished entries too.
overfill() {
  local table=$1 boot="full-$1"
  scenario_boot "$boot" --set "stress=$table" || return
  check 'the tables are published' published "$boot"
  check 'this table is full, and no other' full_tables_are "$boot" "$table"
  check 'the driver says so once' says_once "$boot" "${CUTS[$table]}"
  after "$boot" "$boot-warm" --set "stress=$table" || return
  check 'from the cache, no form set is parsed' restored "$boot-warm"
  check 'from the cache, the tables are cut the same way' same_tables "$boot" "$boot-warm" --only "$TABLES_OF_CACHE"
}

# The inspector marks a full table after its checksum.
full_tables_are() {
  local full
  full=$("$INSPECT" show "$(records_of "$1")" 2>/dev/null | awk '/^table / { on = 1 } on && $7 ~ /^full/ { print $1 }')
  [[ $full == "$2" ]] || { say "full: ${full:-none}"; return 1; }
}

# One-of and checkbox questions above the limit are left out. Their form sets are not.
scenario_too_many_questions() {
  scenario_boot crowd --set stress=checkboxes || return
  check 'the tables are published' published crowd
  check 'questions above the limit are dropped with a message each' says crowd \
    'attribute ".*" dropped: more than 241 one-of and checkbox questions'
  after crowd crowd-warm || return
  check 'from the cache, no form set is parsed' restored crowd-warm
  check 'from the cache, the same attributes come out' same_tables crowd crowd-warm --only "$TABLES_OF_CACHE"
}

# As many attributes as the store can hold.
scenario_full_store() {
  scenario_boot brim --set without=setup --set stress=240 || return
  check 'the tables are published' published brim
  check 'nothing is dropped or cut' says_nothing_of brim 'dropped|cut'
  check 'the inspector has no findings' decodes brim
  after brim brim-warm --set without=setup --set stress=240 || return
  check 'from the cache, no form set is parsed' restored brim-warm
  check 'from the cache, the same attributes come out' same_tables brim brim-warm --only "$TABLES_OF_CACHE"
}

scenario_bad_form_set() {
  scenario_boot broken --set stress=bad-form-set || return
  check 'the driver reports once that it leaves the form set out' says_once broken 'form set '
  check 'the tables are those of the other form sets' same_tables cold broken
}

scenario_no_form_sets() {
  scenario_boot unset --set without=setup || return
  check 'the tables are published' published unset
  check 'the inspector has no findings' decodes unset
  check "the platform's own attributes are there" has unset '1 AdminPassword' MasterPasswordLockout AuxoraSupportLevel
  check 'there is no collection' no_collection unset
}

no_collection() { ! grep ' collection ' <<<"$(attributes "$1")"; }
