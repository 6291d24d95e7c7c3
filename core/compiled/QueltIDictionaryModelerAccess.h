#pragma once

#include "infrastructure/QueltCoreExport.h"

class QueltEeCatOptionVar;
class QueltEeEffectivity;
class QueltInGuid;

/// What a host that has the dictionaries' modeler at hand lets the core look up there. What it hands out is
/// not the caller's and must outlive what is made from it.
class QUELT_CORE_API QueltIDictionaryModelerAccess {
public:
    virtual ~QueltIDictionaryModelerAccess();

    /// The effectivity with this GUID; null when the modeler does not know it.
    [[nodiscard]] virtual QueltEeEffectivity* findEffectivity(const QueltInGuid& guid) const = 0;
    /// The option with this GUID; null when the modeler does not know it.
    [[nodiscard]] virtual const QueltEeCatOptionVar* findOption(const QueltInGuid& guid) const = 0;

protected:
    /// For derived classes; there is nothing to set up, and nothing to copy.
    QueltIDictionaryModelerAccess() = default;
    /// Copies nothing.
    QueltIDictionaryModelerAccess(const QueltIDictionaryModelerAccess&) = default;
    /// Copies nothing.
    QueltIDictionaryModelerAccess& operator=(const QueltIDictionaryModelerAccess&) = default;
};
