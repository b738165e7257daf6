/** @file
  The memory routines that C++'s header-only library calls by their C names, for the firmware build alone.

  EDK II's CompilerIntrinsicsLib has memcpy and memset, which GCC calls of its own accord; std::copy and std::equal end in
  these two. "used" keeps them for calls that appear only when link-time optimisation is done.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Base.h>
#include <Library/BaseMemoryLib.h>

__attribute__ ((used))
void *
memmove (
  void        *Destination,
  const void  *Source,
  UINTN       Size
  )
{
  return CopyMem (Destination, Source, Size);
}

__attribute__ ((used))
int
memcmp (
  const void  *First,
  const void  *Second,
  UINTN       Size
  )
{
  return (int)CompareMem (First, Second, Size);
}
