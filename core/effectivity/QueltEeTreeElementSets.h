#pragma once

#include "effectivity/QueltEeTreeSeriesSelection.h"
#include "effectivity/QueltEeValueSet.h"

namespace quelt {

/// The elements of all `selections` together, by index; their bounds must be elements of `variable`. Takes
/// time in the number of elements and bounds, however long the ways are.
[[nodiscard]] ValueSet elementsOf(const QueltEeTreeSeriesVar& variable,
                                  const QueltInVector<QueltEeTreeSeriesSelection>& selections);

/// Writes `elements` (indices of elements of `variable`) into `selections`, in the order of their uppermost
/// elements: whole branches down to the leaves, ways, and single elements; no element twice; what starts at
/// the root has no from-bound. E_OUTOFMEMORY, and `selections` as it was, when there would be more than
/// maxResultLength.
[[nodiscard]] long selectionsOf(const QueltEeTreeSeriesVar& variable, const ValueSet& elements,
                                QueltInVector<QueltEeTreeSeriesSelection>& selections);

} // namespace quelt
