#pragma once

#include "dictionary/QueltEeDicoObject.h"
#include "dictionary/QueltEeVariable.h"
#include "infrastructure/QueltInHashIndex.h"
#include "infrastructure/QueltInKeyedHash.h"

#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

class QueltEeTreeSeriesVar;

class QueltEeModelDico;
extern template class QUELT_CORE_API QueltInTyped<QueltEeModelDico, QueltEeDicoObject>;

/// A model dictionary (MD): what one model of the product knows of features. It owns its variables. A
/// variable that it holds keeps the name and the GUID that it was added with.
class QUELT_CORE_API QueltEeModelDico : public QueltInTyped<QueltEeModelDico, QueltEeDicoObject> {
public:
    static constexpr const char* s_className = "QueltEeModelDico";

    /// A free-standing dictionary without variables.
    QueltEeModelDico(const QueltInString& name, const QueltInGuid& guid);
    ~QueltEeModelDico() override;
    QueltEeModelDico(const QueltEeModelDico&) = delete;
    QueltEeModelDico& operator=(const QueltEeModelDico&) = delete;

    /// Takes `variable` over, which becomes held by this dictionary. E_POINTER for null, E_ALREADYTHERE when
    /// the name is taken here (by the variable itself, too), E_INVALIDARG when another dictionary holds the
    /// variable; whoever had it before has it then, and nothing is changed.
    long addVariable(QueltEeVariable* variable);
    /// The variable with this name, or null.
    [[nodiscard]] QueltEeVariable* getVariable(std::string_view name) const;
    /// All variables in the order added.
    [[nodiscard]] const std::vector<std::unique_ptr<QueltEeVariable>>& getVariables() const noexcept {
        return m_variables;
    }
    /// True when the dictionary holds a variable with this GUID. Constant time.
    [[nodiscard]] bool containsFeature(const QueltInGuid& guid) const {
        return containsFeature(guid, guid.fullHash());
    }
    /// True when it holds a variable with the GUID of `feature`, whose hash is known. Constant time.
    [[nodiscard]] bool containsFeature(const QueltEeDicoObject& feature) const {
        return containsFeature(feature.getGuid(), feature.getGuidHash());
    }
    /// The first tree-series variable with this number, or null. Constant time.
    [[nodiscard]] virtual QueltEeTreeSeriesVar* getTreeSeriesVariable(unsigned int number) const;

private:
    void addFeature(const QueltEeDicoObject& feature);
    [[nodiscard]] bool containsFeature(const QueltInGuid& guid, std::uint64_t hash) const;

    std::vector<std::unique_ptr<QueltEeVariable>> m_variables;
    std::vector<QueltInName> m_names; // what the keys below are made of, even when a variable is renamed
    std::unordered_map<std::string_view, QueltEeVariable*, quelt::KeyedTextHash> m_byName;
    std::unordered_map<unsigned int, QueltEeTreeSeriesVar*, quelt::KeyedNumberHash> m_treeSeries;
    std::vector<QueltInGuid::Bytes> m_features; // each GUID once
    quelt::QueltInHashIndex m_featureIndex;     // finds them
};
