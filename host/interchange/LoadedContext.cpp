#include "interchange/LoadedContext.h"

namespace quelt::host {

namespace {

bool isSameFeature(const QueltEeVariable& left, const QueltEeVariable& right) {
    return left.dType() == right.dType() && left.getGuid() == right.getGuid();
}

/// What `table` holds under `name`, null when that is nothing.
template <class Object>
Object* findIn(const NameTable<Object*>& table, std::string_view name) {
    Object* const* const found = table.find(name);
    return found != nullptr ? *found : nullptr;
}

} // namespace

bool LoadedContext::addDictionary(std::unique_ptr<QueltEeModelDico> dictionary) {
    QueltEeModelDico* taken = dictionary.get();
    if (m_context.AddModelDico(taken, 1) < 0) {
        return false;
    }
    taken = dictionary.release();
    m_dictionaries.push_back(taken);
    m_dictionaryByName.add(taken->getName().view(), taken);
    for (const std::unique_ptr<QueltEeVariable>& variable : taken->getVariables()) {
        noteBearer(*variable);
    }
    return true;
}

bool LoadedContext::addTopVariable(std::unique_ptr<QueltEeVariable> variable) {
    const QueltEeVariable& taken = *variable;
    if (!m_topVariableByName.add(taken.getName().view(), &taken)) {
        return false;
    }
    m_context.adopt(std::move(variable));
    m_topVariables.push_back(&taken);
    noteBearer(taken);
    return true;
}

bool LoadedContext::addEffectivity(std::unique_ptr<QueltEeEffectivity> effectivity) {
    QueltEeEffectivity& taken = *effectivity;
    if (!m_effectivityByName.add(taken.getName().view(), &taken)) {
        return false;
    }
    m_context.adopt(std::move(effectivity));
    m_effectivities.push_back(&taken);
    return true;
}

bool LoadedContext::addInheritance(const QueltEeBasicEff& effectivity, QueltEeModelDico& dictionary) {
    return m_context.addInheritedDictionary(effectivity, dictionary) >= 0;
}

QueltEeModelDico* LoadedContext::findDictionary(std::string_view name) const {
    return findIn(m_dictionaryByName, name);
}

const QueltEeVariable* LoadedContext::findTopVariable(std::string_view name) const {
    return findIn(m_topVariableByName, name);
}

const Feature* LoadedContext::findFeature(const QueltEeModelDico* dictionary, std::string_view name) const {
    const QueltEeVariable* const variable =
        dictionary != nullptr ? dictionary->getVariable(name) : findTopVariable(name);
    return variable != nullptr ? featureOf(variable) : nullptr;
}

QueltEeEffectivity* LoadedContext::findEffectivity(std::string_view name) const {
    return findIn(m_effectivityByName, name);
}

void LoadedContext::noteBearer(const QueltEeVariable& variable) {
    const std::string_view name = variable.getName().view();
    m_bearersByName.add(name, {});
    Bearers& bearers = *m_bearersByName.find(name);
    const bool isFirst = bearers.first == nullptr;
    const Feature& feature = m_features.emplace_back(variable, isFirst);
    m_featureOf.emplace(&variable, &feature);
    if (isFirst) {
        bearers.first = &variable;
        bearers.feature = &feature;
    } else if (bearers.other == nullptr && !isSameFeature(*bearers.first, variable)) {
        bearers.other = &variable;
    }
}

} // namespace quelt::host
