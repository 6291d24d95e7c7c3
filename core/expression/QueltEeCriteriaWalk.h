#pragma once

#include <string_view>

class QueltEeEffectivity;
class QueltEeModelDico;
class QueltEeNodeVisitor;
class QueltInString;
class QueltQmSpecList;

namespace quelt {

/// Shows the criteria of `list` (may be null) to `visitor` as leaves, each for the time of its visit: the
/// variable effectivities as copies, then the named effectivities in `dictionary` (may be null). The first
/// negative result ends the walk and is returned, else the last one; E_FAIL when a criterion gives no copy.
[[nodiscard]] long showCriteria(const QueltQmSpecList* list, const QueltEeModelDico* dictionary,
                                QueltEeNodeVisitor& visitor);

/// As showCriteria; what the leaf of a variable effectivity holds after a visit that went well replaces the
/// criterion.
[[nodiscard]] long showAndStoreCriteria(QueltQmSpecList* list, const QueltEeModelDico* dictionary,
                                        QueltEeNodeVisitor& visitor);

/// Shows `effectivity` (may be null) to `visitor` as a leaf in `dictionary` (may be null) that lasts for the
/// visit.
[[nodiscard]] long showEffectivity(QueltEeEffectivity* effectivity, const QueltEeModelDico* dictionary,
                                   QueltEeNodeVisitor& visitor);

/// "`mode`: Engine in {V6}, eff(ECO-1)", or only the mode when `list` is null or empty.
[[nodiscard]] QueltInString describeCriteria(std::string_view mode, const QueltQmSpecList* list);

} // namespace quelt
