#pragma once

#include "infrastructure/QueltInGuid.h"
#include "infrastructure/QueltInNamePool.h"

#include <cstdint>

class QueltEeDicoObject;
extern template class QUELT_CORE_API QueltInTyped<QueltEeDicoObject, QueltInObject>;

/// What bears a name and a GUID: dictionaries, variables, effectivities.
class QUELT_CORE_API QueltEeDicoObject : public QueltInTyped<QueltEeDicoObject, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltEeDicoObject";

    /// Nameless, with the empty GUID, until one of the init operations gives it both.
    QueltEeDicoObject();
    /// With this name and this GUID.
    QueltEeDicoObject(const QueltInString& name, const QueltInGuid& guid);

    /// The name. Equal names share one text.
    [[nodiscard]] const QueltInString& getName() const noexcept { return m_name.text(); }
    /// The name, as what can be compared by address.
    [[nodiscard]] const QueltInName& getSharedName() const noexcept { return m_name; }
    /// The GUID.
    [[nodiscard]] const QueltInGuid& getGuid() const noexcept { return m_guid; }
    /// The GUID's full hash.
    [[nodiscard]] std::uint64_t getGuidHash() const noexcept { return m_guidHash; }

    /// Gives an object that is only known by its GUID a name made from it, "GUID-" and the GUID's text. S_OK
    /// always.
    long initFakeName();
    /// Sets both, for an object that stands for one which is not at hand. S_OK always.
    long initFakeNameAndGuid(const QueltInString& name, const QueltInGuid& guid);

    /// The name, quoted where needed.
    [[nodiscard]] QueltInString toString() const override;

private:
    QueltInName m_name;
    QueltInGuid m_guid;
    std::uint64_t m_guidHash; // every leaf of an expression asks every dictionary for its variable
};
