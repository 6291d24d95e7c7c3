#pragma once

#include "dictionary/QueltEeModelDico.h"
#include "effectivity/QueltEeEffectivity.h"
#include "expression/QueltEeExpressionContext.h"
#include "interchange/Feature.h"

#include <deque>
#include <memory>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quelt::host {

/// What a context file describes: dictionaries, variables that no dictionary holds, and effectivities, with
/// fast look-ups by name. It owns everything. Once it is filled, any number of threads may read it.
class LoadedContext {
public:
    /// Who bears a variable's name.
    struct Bearers {
        /// The first in the order of the file, dictionaries before the top.
        const QueltEeVariable* first = nullptr;
        /// What criteria need of it.
        const Feature* feature = nullptr;
        /// One of another kind or with another GUID, if there is any: the name alone says too little then.
        const QueltEeVariable* other = nullptr;
    };

    LoadedContext() = default;
    LoadedContext(const LoadedContext&) = delete;
    LoadedContext& operator=(const LoadedContext&) = delete;

    // Filling. Each takes its argument over, or answers false, when the name is taken. Dictionaries come
    // before variables of the top, and with all their variables.
    bool addDictionary(std::unique_ptr<QueltEeModelDico> dictionary);
    bool addTopVariable(std::unique_ptr<QueltEeVariable> variable);
    bool addEffectivity(std::unique_ptr<QueltEeEffectivity> effectivity);
    /// Says that the inherited effectivity of `effectivity` applies in `dictionary`; false when that was said
    /// before.
    bool addInheritance(const QueltEeBasicEff& effectivity, QueltEeModelDico& dictionary);

    // Look-ups; null when there is none.
    [[nodiscard]] QueltEeModelDico* findDictionary(std::string_view name) const;
    [[nodiscard]] const QueltEeVariable* findTopVariable(std::string_view name) const;
    [[nodiscard]] const Bearers* findBearers(std::string_view name) const {
        return m_bearersByName.find(name);
    }
    /// What criteria need of a variable of the dictionary, or of one at the top where that is null.
    [[nodiscard]] const Feature* findFeature(const QueltEeModelDico* dictionary, std::string_view name) const;
    /// What criteria need of `variable`; null when it is none of the context's.
    [[nodiscard]] const Feature* featureOf(const QueltEeDicoObject* variable) const {
        const auto found = m_featureOf.find(variable);
        return found != m_featureOf.end() ? found->second : nullptr;
    }
    [[nodiscard]] QueltEeEffectivity* findEffectivity(std::string_view name) const;

    // Everything in the order of the file.
    [[nodiscard]] std::span<QueltEeModelDico* const> dictionaries() const noexcept { return m_dictionaries; }
    [[nodiscard]] std::span<const QueltEeVariable* const> topVariables() const noexcept {
        return m_topVariables;
    }
    [[nodiscard]] std::span<QueltEeEffectivity* const> effectivities() const noexcept {
        return m_effectivities;
    }

    /// The same as the conversion services see it.
    [[nodiscard]] const QueltEeExpressionContext& expressionContext() const noexcept { return m_context; }

private:
    void noteBearer(const QueltEeVariable& variable);

    QueltEeExpressionContext m_context; // owns everything
    std::vector<QueltEeModelDico*> m_dictionaries;
    std::vector<const QueltEeVariable*> m_topVariables;
    std::vector<QueltEeEffectivity*> m_effectivities;
    std::deque<Feature> m_features;
    std::unordered_map<const QueltEeDicoObject*, const Feature*> m_featureOf;
    NameTable<QueltEeModelDico*> m_dictionaryByName; // the names are the objects' own
    NameTable<const QueltEeVariable*> m_topVariableByName;
    NameTable<QueltEeEffectivity*> m_effectivityByName;
    NameTable<Bearers> m_bearersByName;
};

} // namespace quelt::host
