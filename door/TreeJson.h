#pragma once

#include <functional>
#include <string>

#include "door/BoxView.h"
#include "door/JsonWriter.h"

namespace mp4 {

/// Shows the boxes of a listing in file order until `visit` answers false. May throw bad_alloc.
void VisitListing(BoxTree* tree, const BoxListing& listing,
                  const std::function<bool(const ShownBox&)>& visit);

/// A listing as JSON, as mp4judge/look.h has it. May throw bad_alloc.
std::string TreeJson(BoxTree* tree, const BoxListing& listing, JsonWriter::Form form);

/// The members of a box as far as they do not depend on others.
void WriteFields(const std::vector<BoxField>& fields, JsonWriter* json);

}  // namespace mp4
