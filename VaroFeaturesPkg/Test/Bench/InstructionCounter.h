/** @file
  What a benchmark and the instruction counter agree on.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#ifndef INSTRUCTION_COUNTER_H_
#define INSTRUCTION_COUNTER_H_

/// A system call of this number with a label begins a stretch, and with the same label ends it.
#define BENCH_SYSCALL 59999

/// With this label the first call of a pair pauses all counts, and the second one resumes them.
#define BENCH_PAUSE 0

/// Upper limit of labels, exclusive.
#define BENCH_LABELS 4096

#endif
