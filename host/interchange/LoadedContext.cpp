#include "interchange/LoadedContext.h"

namespace quelt::host {

namespace {

bool isSameFeature(const QueltEeVariable& left, const QueltEeVariable& right) {
    return left.dType() == right.dType() && left.getGuid() == right.getGuid();
}

template <class Object>
Object* findIn(const std::unordered_map<std::string_view, Object*, KeyedTextHash>& map,
               std::string_view name) {
    const auto found = map.find(name);
    return found != map.end() ? found->second : nullptr;
}

} // namespace

bool LoadedContext::addDictionary(std::unique_ptr<QueltEeModelDico> dictionary) {
    QueltEeModelDico* taken = dictionary.get();
    if (m_context.AddModelDico(taken, 1) < 0) {
        return false;
    }
    taken = dictionary.release();
    m_dictionaries.push_back(taken);
    m_dictionaryByName.emplace(taken->getName().view(), taken);
    for (const std::unique_ptr<QueltEeVariable>& variable : taken->getVariables()) {
        noteBearer(*variable);
    }
    return true;
}

bool LoadedContext::addTopVariable(std::unique_ptr<QueltEeVariable> variable) {
    const QueltEeVariable& taken = *variable;
    if (!m_topVariableByName.emplace(taken.getName().view(), &taken).second) {
        return false;
    }
    m_context.adopt(std::move(variable));
    m_topVariables.push_back(&taken);
    noteBearer(taken);
    return true;
}

bool LoadedContext::addEffectivity(std::unique_ptr<QueltEeEffectivity> effectivity) {
    QueltEeEffectivity& taken = *effectivity;
    if (!m_effectivityByName.emplace(taken.getName().view(), &taken).second) {
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

const LoadedContext::Bearers* LoadedContext::findBearers(std::string_view name) const {
    const auto found = m_bearersByName.find(name);
    return found != m_bearersByName.end() ? &found->second : nullptr;
}

QueltEeEffectivity* LoadedContext::findEffectivity(std::string_view name) const {
    return findIn(m_effectivityByName, name);
}

void LoadedContext::noteBearer(const QueltEeVariable& variable) {
    Bearers& bearers = m_bearersByName[variable.getName().view()];
    if (bearers.first == nullptr) {
        bearers.first = &variable;
    } else if (bearers.other == nullptr && !isSameFeature(*bearers.first, variable)) {
        bearers.other = &variable;
    }
}

} // namespace quelt::host
