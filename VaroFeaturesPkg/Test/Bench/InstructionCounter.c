/** @file
  InstructionCounter: a QEMU plugin that counts the instructions of a guest.

  A program that runs in user mode marks a stretch by two system calls of a number that no kernel knows, with the same
  label; the plugin prints a line "count LABEL INSTRUCTIONS" for it. Instructions between two calls with the label of a
  pause do not count. For a machine, the plugin prints at the end how many instructions ran on each page of 4 KiB: "page
  ADDRESS INSTRUCTIONS".

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <inttypes.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "InstructionCounter.h"

// The part of QEMU's plugin interface, version 1, that is used here. The distribution has no header for it.
typedef uint64_t qemu_plugin_id_t;
struct qemu_plugin_tb;
struct qemu_plugin_insn;
typedef struct {
  const char* target_name;
  struct {
    int min, cur;
  } version;
  bool system_emulation;
  union {
    struct {
      int smp_vcpus, max_vcpus;
    } system;
  };
} qemu_info_t;
enum { QEMU_PLUGIN_INLINE_ADD_U64 = 0 };

typedef void (*syscall_cb_t)(qemu_plugin_id_t, unsigned, int64_t, uint64_t, uint64_t, uint64_t, uint64_t, uint64_t,
                             uint64_t, uint64_t, uint64_t);
void qemu_plugin_register_vcpu_syscall_cb(qemu_plugin_id_t, syscall_cb_t);
void qemu_plugin_register_vcpu_tb_trans_cb(qemu_plugin_id_t, void (*)(qemu_plugin_id_t, struct qemu_plugin_tb*));
void qemu_plugin_register_vcpu_tb_exec_inline(struct qemu_plugin_tb*, int, void*, uint64_t);
void qemu_plugin_register_atexit_cb(qemu_plugin_id_t, void (*)(qemu_plugin_id_t, void*), void*);
size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb*);
uint64_t qemu_plugin_tb_vaddr(const struct qemu_plugin_tb*);

__attribute__((visibility("default"))) int qemu_plugin_version = 1;

static uint64_t gAll;
static uint64_t gAtPause;
static bool gPaused;
static uint64_t gBegun[BENCH_LABELS];
static bool gRunning[BENCH_LABELS];

#define PAGE_SHIFT 12
#define PAGES (1u << (32 - PAGE_SHIFT))
static uint64_t* gPages;  // of the first 4 GiB; no guest here has more
static FILE* gOutput;

static void OnSyscall(qemu_plugin_id_t id, unsigned vcpu, int64_t number, uint64_t label, uint64_t a2, uint64_t a3,
                      uint64_t a4, uint64_t a5, uint64_t a6, uint64_t a7, uint64_t a8) {
  if (number != BENCH_SYSCALL || label >= BENCH_LABELS) {
    return;
  }
  if (label == BENCH_PAUSE) {
    if (gPaused) {
      gAll = gAtPause;
    }
    gAtPause = gAll;
    gPaused = !gPaused;
    return;
  }
  if (gRunning[label]) {
    fprintf(gOutput, "count %" PRIu64 " %" PRIu64 "\n", label, gAll - gBegun[label]);
  }
  gRunning[label] = !gRunning[label];
  gBegun[label] = gAll;
}

static void OnTranslation(qemu_plugin_id_t id, struct qemu_plugin_tb* block) {
  uint64_t* counter = &gAll;
  if (gPages != NULL) {
    const uint64_t page = qemu_plugin_tb_vaddr(block) >> PAGE_SHIFT;
    counter = &gPages[page < PAGES ? page : 0];
  }
  qemu_plugin_register_vcpu_tb_exec_inline(block, QEMU_PLUGIN_INLINE_ADD_U64, counter, qemu_plugin_tb_n_insns(block));
}

static void OnExit(qemu_plugin_id_t id, void* context) {
  for (uint64_t page = 0; gPages != NULL && page < PAGES; ++page) {
    if (gPages[page] != 0) {
      fprintf(gOutput, "page %" PRIx64 " %" PRIu64 "\n", page << PAGE_SHIFT, gPages[page]);
    }
  }
  fclose(gOutput);
}

__attribute__((visibility("default"))) int qemu_plugin_install(qemu_plugin_id_t id, const qemu_info_t* info, int argc,
                                                               char** argv) {
  if (argc != 1 || strncmp(argv[0], "output=", 7) != 0 || (gOutput = fopen(argv[0] + 7, "w")) == NULL) {
    fprintf(stderr, "InstructionCounter: output=FILE is missing, or cannot be written\n");
    return -1;
  }
  if (info->system_emulation && (gPages = calloc(PAGES, sizeof(*gPages))) == NULL) {
    return -1;
  }
  qemu_plugin_register_vcpu_tb_trans_cb(id, OnTranslation);
  if (!info->system_emulation) {
    qemu_plugin_register_vcpu_syscall_cb(id, OnSyscall);
  }
  qemu_plugin_register_atexit_cb(id, OnExit, NULL);
  return 0;
}
