#include "expression/QueltEeExpressionContext.h"

#include "infrastructure/QueltInMemory.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <utility>

template class QueltInTyped<QueltEeExpressionContext, QueltInObject>;

namespace {

/// A map from dictionary name to dictionary. It lives as long as the context, hence on the heap.
QueltInMap* makeMap() {
    const QueltInHeapScope heap;
    return new QueltInMap(QueltInString::sType(), QueltEeModelDico::sType());
}

long file(QueltInMap& dictionaries, const QueltEeModelDico& dictionary) {
    const QueltInHeapScope heap;
    if (dictionaries.Get(dictionary.getName()) != nullptr) {
        return E_ALREADYTHERE;
    }
    return dictionaries.Put(dictionary.getName(), dictionary);
}

QueltInSet* makeSet() {
    return new QueltInSet(QueltEeModelDico::sType());
}

void fill(QueltInSet& set, const QueltInMap& dictionaries) {
    for (QueltInMap::const_iterator iterator = dictionaries.cBegin(); iterator.IsEnd() == 0;) {
        set.Put(*iterator.GetValGoToNext());
    }
}

bool contains(const QueltInObject& dictionary, const QueltEeDicoObject& feature) {
    const QueltEeModelDico* const model = QueltEeModelDico::cast(&dictionary);
    return model != nullptr && model->containsFeature(feature);
}

bool allContain(const QueltInSet& dictionaries, const QueltEeDicoObject& feature) {
    for (const QueltInObject* const dictionary : dictionaries.elements()) {
        if (dictionary == nullptr) {
            break;
        }
        if (!contains(*dictionary, feature)) {
            return false;
        }
    }
    return true;
}

/// Moves what does not contain `feature` from `possible` to `rejected`; the others keep their order.
void sortOut(const QueltEeDicoObject& feature, QueltInSet& possible, QueltInSet& rejected) {
    if (allContain(possible, feature)) {
        return; // as most features of an expression leave it
    }
    QueltInSmallVector<QueltInObject*, 8> kept;
    for (QueltInObject* const dictionary : possible.elements()) {
        if (dictionary == nullptr) {
            break;
        }
        if (contains(*dictionary, feature)) {
            kept.push_back(dictionary);
        } else {
            rejected.Put(*dictionary);
        }
    }
    possible.Clear();
    for (QueltInObject* const dictionary : kept) {
        possible.Put(*dictionary);
    }
}

} // namespace

void QueltEeExpressionContext::MapDeleter::operator()(QueltInMap* map) const {
    delete map;
}

QueltEeExpressionContext::QueltEeExpressionContext() : m_pDictionaries(makeMap()), m_pNone(makeMap()) {}

QueltEeExpressionContext::~QueltEeExpressionContext() = default;

long QueltEeExpressionContext::AddModelDico(QueltEeModelDico*& dictionary, unsigned char takeOver) {
    if (dictionary == nullptr) {
        return E_POINTER;
    }
    m_owned.reserve(m_owned.size() + 1);
    const long result = file(*m_pDictionaries, *dictionary);
    if (result >= 0 && takeOver != 0) {
        m_owned.emplace_back(dictionary);
    }
    return result;
}

long QueltEeExpressionContext::GetModelDico(const QueltInString& name, QueltEeModelDico*& dictionary) const {
    dictionary = static_cast<QueltEeModelDico*>(m_pDictionaries->Get(name));
    return dictionary != nullptr ? S_OK : E_FAIL;
}

long QueltEeExpressionContext::GetAllDictionariesByName(const QueltInMap*& dictionaries) const {
    dictionaries = m_pDictionaries.get();
    return S_OK;
}

long QueltEeExpressionContext::GetAllDictionariesForInheritedEffectivity(
    const QueltEeBasicEff& effectivity, const QueltInMap*& dictionaries) const {
    const auto found = m_inherited.find(&effectivity.getOrigin());
    dictionaries = found != m_inherited.end() ? found->second.get() : m_pNone.get();
    return S_OK;
}

long QueltEeExpressionContext::GetSetOfMDsContainingFeature(const QueltEeDicoObject& feature,
                                                            QueltInSet*& possible, QueltInSet*& rejected,
                                                            const QueltEeBasicEff* inherited) const {
    if (possible == nullptr) {
        const QueltInMap* candidates = m_pDictionaries.get();
        if (inherited != nullptr) {
            GetAllDictionariesForInheritedEffectivity(*inherited, candidates);
        }
        possible = makeSet();
        fill(*possible, *candidates);
    }
    if (rejected == nullptr) {
        rejected = makeSet();
    }
    sortOut(feature, *possible, *rejected);
    return possible->IsEmpty() != 0 ? 1 : 0;
}

long QueltEeExpressionContext::addInheritedDictionary(const QueltEeBasicEff& effectivity,
                                                      QueltEeModelDico& dictionary) {
    if (m_pDictionaries->Get(dictionary.getName()) != &dictionary) {
        return E_INVALIDARG;
    }
    MapPointer& dictionaries = m_inherited[&effectivity.getOrigin()];
    if (dictionaries == nullptr) {
        dictionaries.reset(makeMap());
    }
    return file(*dictionaries, dictionary);
}

void QueltEeExpressionContext::adopt(std::unique_ptr<QueltInObject> object) {
    m_adopted.push_back(std::move(object));
}

QueltInString QueltEeExpressionContext::toString() const {
    quelt::TextBuilder text;
    text << "context(";
    const char* separator = "";
    for (QueltInMap::const_iterator iterator = m_pDictionaries->cBegin(); iterator.IsEnd() == 0;) {
        text << std::exchange(separator, ", ");
        text.name(static_cast<QueltEeModelDico*>(iterator.GetValGoToNext())->getName().view());
    }
    text << ")";
    return text.take();
}
