#include "expression/QueltEeExpressionContext.h"

#include "infrastructure/QueltInMemory.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <typeinfo>
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

/// Asks the elements of a set about one feature.
class FeatureSearch {
public:
    FeatureSearch(const QueltInSet& dictionaries, const QueltEeDicoObject& feature)
        : m_feature(feature), m_areDictionaries(typeid(dictionaries) == typeid(QueltInSet) &&
                                                dictionaries.getElementType() == QueltEeModelDico::sType()) {}

    [[nodiscard]] bool isIn(const QueltInObject& dictionary) const {
        const QueltEeModelDico* const model = m_areDictionaries
                                                  ? static_cast<const QueltEeModelDico*>(&dictionary)
                                                  : QueltEeModelDico::cast(&dictionary);
        return model != nullptr && model->containsFeature(m_feature);
    }

private:
    const QueltEeDicoObject& m_feature;
    bool m_areDictionaries; // known without a look at each, as nearly always
};

bool isInAll(const QueltInSet& dictionaries, const FeatureSearch& search) {
    for (const QueltInObject* const dictionary : dictionaries.elements()) {
        if (dictionary == nullptr) {
            break;
        }
        if (!search.isIn(*dictionary)) {
            return false;
        }
    }
    return true;
}

/// Moves what does not contain the feature from `possible` to `rejected`; the others keep their order. Not
/// inlined: most features of an expression leave all where they are.
[[gnu::noinline]] void sortOut(const FeatureSearch& search, QueltInSet& possible, QueltInSet& rejected) {
    QueltInSmallVector<QueltInObject*, 8> kept;
    for (QueltInObject* const dictionary : possible.elements()) {
        if (dictionary == nullptr) {
            break;
        }
        if (search.isIn(*dictionary)) {
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
    const FeatureSearch search(*possible, feature);
    if (!isInAll(*possible, search)) {
        sortOut(search, *possible, *rejected);
    }
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
