#pragma once

#include <string>

#include "iso/BoxTree.h"

namespace mp4 {

/// Looks through all bytes of a sample entry whose layout may be unknown, or in which a box may
/// cover others: what protects it would stand there all the same. Returns the characters found of
/// a scheme, or of an entry for protected media; empty when there are none. `knownSchemes`: that
/// the entry has boxes laid out like a scheme which are none.
std::string FindHiddenScheme(BoxTree* tree, BoxId entry, bool knownSchemes);

/// Whether this is a part of a scheme (a box of "sinf" or "schi"), which nothing else has.
bool IsPartOfScheme(BoxTree* tree, BoxId box);

}  // namespace mp4
