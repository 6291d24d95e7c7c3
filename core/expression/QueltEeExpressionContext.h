#pragma once

#include "dictionary/QueltEeModelDico.h"
#include "effectivity/QueltEeEffectivity.h"
#include "infrastructure/QueltInMap.h"
#include "infrastructure/QueltInSet.h"

#include <memory>
#include <unordered_map>
#include <vector>

class QueltEeExpressionContext;
extern template class QUELT_CORE_API QueltInTyped<QueltEeExpressionContext, QueltInObject>;

/// The dictionaries that an expression may refer to, and in which of them basic effectivities are inherited.
/// Once it is filled, any number of threads may read it. Whatever it takes over must come from the heap, and
/// it is filled outside of arenas.
class QUELT_CORE_API QueltEeExpressionContext : public QueltInTyped<QueltEeExpressionContext, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltEeExpressionContext";

    /// An empty context.
    QueltEeExpressionContext();
    /// Deletes what was handed over to it.
    ~QueltEeExpressionContext() override;
    QueltEeExpressionContext(const QueltEeExpressionContext&) = delete;
    QueltEeExpressionContext& operator=(const QueltEeExpressionContext&) = delete;

    /// Adds `dictionary`; with `takeOver` 1 the context deletes it with itself. E_POINTER for null,
    /// E_ALREADYTHERE when the name is taken; what was refused stays the caller's.
    virtual long AddModelDico(QueltEeModelDico*& dictionary, unsigned char takeOver);
    /// The dictionary with this name; null and E_FAIL when there is none.
    virtual long GetModelDico(const QueltInString& name, QueltEeModelDico*& dictionary) const;
    /// A map from dictionary name (QueltInString) to QueltEeModelDico, in the order added; it stays the
    /// context's. S_OK always, with an empty map for an empty context.
    virtual long GetAllDictionariesByName(const QueltInMap*& dictionaries) const;
    /// The same for the dictionaries in which the inherited effectivity of `effectivity` applies; an empty
    /// map when nothing was said of it. What was said of an effectivity holds for those that stand for it,
    /// too (QueltEeEffectivity::getOrigin). S_OK always.
    virtual long GetAllDictionariesForInheritedEffectivity(const QueltEeBasicEff& effectivity,
                                                           const QueltInMap*& dictionaries) const;
    /// Moves every dictionary of `possible` that does not hold a variable with the GUID of `feature` to
    /// `rejected`; the others keep their order. A null set is made first, and is the caller's: `possible`
    /// with every candidate (all dictionaries of the context, or those of `inherited` when it is not null),
    /// `rejected` empty. Returns 1 when no possible dictionary is left, else 0.
    virtual long GetSetOfMDsContainingFeature(const QueltEeDicoObject& feature, QueltInSet*& possible,
                                              QueltInSet*& rejected, const QueltEeBasicEff* inherited) const;

    /// Says that the inherited effectivity of `effectivity` applies in `dictionary`. E_INVALIDARG when the
    /// dictionary is not in the context; E_ALREADYTHERE when it was said before. Said of an effectivity that
    /// stands for another one, it is said of that.
    long addInheritedDictionary(const QueltEeBasicEff& effectivity, QueltEeModelDico& dictionary);
    /// Takes over an object that must live as long as the context: an effectivity, a variable that no
    /// dictionary holds.
    void adopt(std::unique_ptr<QueltInObject> object);

    /// "context(Truck, Van)".
    [[nodiscard]] QueltInString toString() const override;

private:
    struct MapDeleter {
        void operator()(QueltInMap* map) const;
    };
    using MapPointer = std::unique_ptr<QueltInMap>;

    MapPointer m_pDictionaries;
    MapPointer m_pNone;
    std::unordered_map<const QueltEeEffectivity*, MapPointer> m_inherited; // by origin
    std::vector<std::unique_ptr<QueltEeModelDico>> m_owned;
    std::vector<std::unique_ptr<QueltInObject>> m_adopted;
};
