/** @file
  CacheDamage: damages variables of the attribute cache, as the scenario asks.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef CACHE_DAMAGE_H_
#define CACHE_DAMAGE_H_

/**
  Damages the driver's variables that the scenario item "damage" names ("NAME:HOW;NAME:HOW").

    truncate      the first half stays
    flip          the lowest bit of the byte in the middle is inverted
    flip=N        one bit is inverted: bit N % 8 of byte N / 8; N counts from the end when it begins with "-"
    garbage       as many bytes, none of which was there for a reason
    delete        the variable is gone
    attributes=N  the same content under other attributes
    count=I,N     the UINT16 at byte I becomes N
**/
VOID
DamageCache (
  VOID
  );

#endif
