#pragma once

#include "effectivity/QueltEeEffectivity.h"
#include "infrastructure/QueltInMemory.h"

#include <functional>
#include <unordered_map>

namespace quelt::host {

/// The effectivities that one record works on, each standing for one of the context that all records share.
///
/// They are made when they are asked for, in the memory that is current on the thread, and show the context's
/// expression until somebody takes it out: what is taken then is a copy, whose leaves and lists refer to
/// working effectivities in turn. So a record pays for what it reaches, and whatever happens to expressions
/// that were taken out, also when they are not given back, the context stays as it is.
class WorkingEffectivities {
public:
    WorkingEffectivities() = default;
    WorkingEffectivities(const WorkingEffectivities&) = delete;
    WorkingEffectivities& operator=(const WorkingEffectivities&) = delete;
    /// Deletes them; nothing that refers to them must be used any more.
    ~WorkingEffectivities();

    /// The one that stands for `effectivity`, which must outlive it; always the same. It belongs to this
    /// object.
    [[nodiscard]] QueltEeEffectivity& of(QueltEeEffectivity& effectivity);

private:
    using Map =
        std::unordered_map<const QueltEeEffectivity*, QueltEeEffectivity*,
                           std::hash<const QueltEeEffectivity*>, std::equal_to<>,
                           QueltInAllocator<std::pair<const QueltEeEffectivity* const, QueltEeEffectivity*>>>;
    Map m_byOrigin;
};

} // namespace quelt::host
