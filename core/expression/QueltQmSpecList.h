#pragma once

#include "effectivity/QueltEeEffectivity.h"
#include "effectivity/QueltEeVarEff.h"
#include "infrastructure/QueltInMap.h"
#include "infrastructure/QueltInSet.h"

class QueltQmSpecList;
extern template class QUELT_CORE_API QueltInTyped<QueltQmSpecList, QueltInObject>;

/// A specification list: variable effectivities in order (the same variable may come twice), and named
/// effectivities.
class QUELT_CORE_API QueltQmSpecList : public QueltInTyped<QueltQmSpecList, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltQmSpecList";

    /// An empty list, with room made ahead for `capacity` variable effectivities (0 or less: none; at most
    /// 65536).
    explicit QueltQmSpecList(int capacity = 0);
    /// Deletes the variable effectivities; the named ones are nobody's here.
    ~QueltQmSpecList() override;
    QueltQmSpecList(const QueltQmSpecList&) = delete;
    QueltQmSpecList& operator=(const QueltQmSpecList&) = delete;

    /// Appends `effectivity`, which the list takes over. E_POINTER for null.
    virtual long addVarEff(QueltEeVarEff*& effectivity);
    /// The variable effectivities by their position (QueltInIntHolder 0, 1, 2, ...), in order. They are the
    /// list's, and may be changed in place.
    [[nodiscard]] virtual const QueltInMap& getVarEffs() const;
    /// Puts `effectivity`, which the list takes over, in the place of the one at `position`, which is deleted
    /// (unless it is the same). E_INVALIDARG past the end.
    long replaceVarEff(unsigned int position, QueltEeVarEff& effectivity);
    /// The named effectivities (QueltEeEffectivity, not owned), read and filled directly.
    [[nodiscard]] virtual QueltInSet& getNamedEffectivities();
    /// The named effectivities, for reading.
    [[nodiscard]] virtual const QueltInSet& getNamedEffectivities() const;
    /// A copy: variable effectivities are copied, named ones shared. The caller owns it.
    [[nodiscard]] QueltQmSpecList* clone() const;
    /// "Engine in {V6}, Unit in [10, 20], eff(ECO-1)".
    [[nodiscard]] QueltInString toString() const override;

private:
    QueltInMap m_varEffs;
    QueltInSet m_named;
};
