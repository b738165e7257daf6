/** @file
  AttrDependencies: the annotations of names by which one attribute forces another.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef ATTR_DEPENDENCIES_H_
#define ATTR_DEPENDENCIES_H_

#include "AttrTables.h"

//
// "X[ForceIf:A=B]", an attribute's own name: X stays as it is while A is B. "V[ForceIf:A=B]", the name of a value of X:
// X is forced to V while A is B. With "ForceIfNot", the dependency acts while A is anything but B.
//

/**
  Prints the dependencies of an attribute's own name and of the names of its values.

  @param[in]  Subject  NULL = print all dependencies of the attribute. Otherwise, the name of the attribute that is
                       described: print the dependencies on it.
**/
VOID
PutDependencies (
  IN AttributeAccessProtocol  *Access,
  IN CONST AttributeEntry     *Entry,
  IN CONST CHAR8              *Subject OPTIONAL
  );

/**
  Prints what forces an attribute right now, and to which value.

  @param[in]  Place  Place of the value that is about to be set; nothing is printed of what forces this value.
**/
VOID
PutForces (
  IN AttributeAccessProtocol  *Access,
  IN CONST AttributeEntry     *Entry,
  IN UINT64                   Place
  );

#endif
