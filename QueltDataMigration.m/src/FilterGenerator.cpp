#include "FilterGenerator.h"

#include "DictionarySets.h"
#include "SerialRenumbering.h"

#include "dictionary/QueltEeNamedValueVar.h"
#include "dictionary/QueltEeSerialVar.h"
#include "dictionary/QueltEeTreeSeriesVar.h"
#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "effectivity/QueltEeTreeSeriesEff.h"
#include "expression/QueltEeExpressionContext.h"
#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInMap.h"
#include "infrastructure/QueltInSet.h"

namespace quelt {

namespace {

constexpr auto s_presetMode = QueltEeGenericExpression::ListMode::all;
// What getSetOfMDsContainingFeature answers when no dictionary is left.
constexpr long s_noDictionary = 1;

// Each kind of criterion names the serial effectivity here, as the logs of older migrations do.
constexpr const char* s_addFailed = "ERROR : Add SerialEff to QmSelectionList Failed.";
constexpr const char* s_addSelectionFailed = "ERROR : add SerialEff to QmSelectionList Failed.";

} // namespace

long FilterGenerator::run(QueltInMap& output) {
    const QueltQmSpecList* list = nullptr;
    long result = m_genericExpr.GetList(list);
    if (result < 0) {
        return m_trace.fail("ERROR : getList on EeGenericExpression FAILED.", result);
    }
    if (list == nullptr) {
        return m_trace.fail("ERROR : list is null, cannot work out anything. Sorry.");
    }
    m_countVarEffs = list->getVarEffs().GetLength();
    result = addVarEffs(*list);
    if (result >= 0) {
        result = addNamedEffectivities(*list);
    }
    if (result >= 0 && m_pCriteriaFilter != nullptr) {
        result = chooseDictionary();
    }
    return result < 0 ? result : file(output);
}

long FilterGenerator::addVarEffs(const QueltQmSpecList& list) {
    auto criteria = list.getVarEffs().cBegin();
    while (const QueltInMapEntry* const entry = criteria.GetEntryGoToNext()) {
        const long result = addVarEff(entry->value);
        if (result < 0) {
            return result;
        }
    }
    return S_OK;
}

long FilterGenerator::addVarEff(QueltInObject* value) {
    m_trace.inform("There is at least one evolution/variant criteria");
    const QueltInObjectTypeClass* const type = value != nullptr ? quelt::typeOf(*value) : nullptr;
    auto* const criterion = QueltEeVarEff::isOfThisType(type) ? static_cast<QueltEeVarEff*>(value) : nullptr;
    if (QueltEeDateEff::isOfThisType(type)) {
        return addDate(*criterion);
    }
    if (m_pCriteriaFilter == nullptr) {
        const long result = makeCriteriaFilter();
        if (result < 0) {
            return result;
        }
    }
    if (criterion == nullptr) {
        return m_trace.fail("ERROR : Unexpected type of QueltEeVarEff into Filter.");
    }
    if (QueltEeSerialEff::isOfThisType(type)) {
        return addSerial(*criterion);
    }
    if (QueltEeTreeSeriesEff::isOfThisType(type)) {
        return addTreeSeries(*criterion);
    }
    if (QueltEeOptionEff::isOfThisType(type)) {
        return addFeature<QueltEeCatOptionVar>(
            *criterion, "ERROR : Unable to find one MD containing current QueltEeCatOptionVar.", s_addFailed);
    }
    if (QueltEeSelectionEff::isOfThisType(type)) {
        return addFeature<QueltEeSelectionVar>(
            *criterion, "ERROR : Unable to find one MD containing current QueltEeSelectionVar.",
            s_addSelectionFailed);
    }
    return m_trace.fail("ERROR : Unexpected type of QueltEeVarEff into Filter.");
}

long FilterGenerator::addDate(const QueltEeVarEff& date) {
    if (m_pDateFilter == nullptr) {
        const long result = makeFilter(m_pDateFilter, "ERROR, GetMode on EeGenericExpr Failed");
        if (result < 0) {
            return result;
        }
    }
    QueltEeVarEff* clone = date.createVarEffClone();
    const long result = m_pDateFilter->getSpecList()->addVarEff(clone);
    if (result < 0) {
        return m_trace.fail("ERROR : add DateEff to QmSelectionList Failed.", result);
    }
    return result;
}

long FilterGenerator::makeFilter(QueltEeFilterExpression*& filter, const char* modeFailure) const {
    filter = new QueltEeFilterExpression(nullptr, nullptr);
    filter->setSpecList(new QueltQmSpecList(m_countVarEffs));
    auto mode = s_presetMode;
    const long result = m_genericExpr.GetMode(mode);
    if (result < 0) {
        return m_trace.fail(modeFailure, result);
    }
    filter->setListMode(mode != s_presetMode ? 1 : 0);
    return result;
}

long FilterGenerator::makeCriteriaFilter() {
    const long result = makeFilter(m_pCriteriaFilter, "ERROR : GetMode on EeGenericExpr Failed");
    if (result < 0) {
        return result;
    }
    m_pPossibleMDs = new QueltInSet(QueltEeModelDico::sType(), 0, 0.0F);
    m_pRejectedMDs = new QueltInSet(QueltEeModelDico::sType(), 0, 0.0F);
    return putAllDictionaries();
}

long FilterGenerator::putAllDictionaries() {
    const QueltInMap* dictionaries = nullptr;
    const long result = m_context.GetAllDictionariesByName(dictionaries);
    if (result < 0) {
        return m_trace.fail(
            "ERROR : Call to QueltEeExpressionContext::GetAllDictionariesByName() has failed.", result);
    }
    if (dictionaries == nullptr) {
        return m_trace.fail("ERROR : Null pointer on Dictionaries map.");
    }
    auto values = dictionaries->cBegin();
    while (values.IsEnd() == 0) {
        QueltEeModelDico* const dictionary = QueltEeModelDico::cast(values.GetValGoToNext());
        if (dictionary == nullptr) {
            return m_trace.fail("ERROR");
        }
        if (m_pPossibleMDs->Put(*dictionary) == 0) {
            return m_trace.fail("ERROR : unexpected");
        }
    }
    return result;
}

long FilterGenerator::addToCriteria(const QueltEeVarEff& criterion, const char* failure) {
    QueltEeVarEff* clone = criterion.createVarEffClone();
    const long result = m_pCriteriaFilter->getSpecList()->addVarEff(clone);
    return result < 0 ? m_trace.fail(failure, result) : result;
}

template <class Variable>
long FilterGenerator::castVariable(const QueltEeVarEff& criterion, const Variable*& variable) const {
    const QueltEeDicoObject* const associated = criterion.getVar();
    if (associated == nullptr) {
        return m_trace.fail("ERROR : associated Var is NULL");
    }
    variable = Variable::cast(associated);
    return variable == nullptr ? m_trace.fail("ERROR : unexpected result for cast") : S_OK;
}

long FilterGenerator::addSerial(QueltEeVarEff& criterion) {
    const QueltEeSerialVar* variable = nullptr;
    long result = castVariable(criterion, variable);
    if (result < 0) {
        return result;
    }
    result = rewriteSerialIntervals(static_cast<QueltEeSerialEff&>(criterion), *variable,
                                    {.trace = m_trace,
                                     .where = std::source_location::current(),
                                     .renumbers = m_renumbers,
                                     .tracesShiftedBounds = false,
                                     .comparesUpperBoundUnshifted = true});
    if (result < 0) {
        return result;
    }
    QueltEeModelDico* const holder = variable->getHolderDico();
    if (holder == nullptr) {
        return m_trace.fail("ERROR : Call to getHolderDico() returns a null pointer on QueltEeModelDico.");
    }
    result = narrowToHolder(holder, "ERROR: No dico compatible with the QueltEeSerialVar.");
    return result < 0 ? result : addToCriteria(criterion, s_addFailed);
}

long FilterGenerator::addTreeSeries(const QueltEeVarEff& criterion) {
    const QueltEeTreeSeriesVar* variable = nullptr;
    long result = castVariable(criterion, variable);
    if (result < 0) {
        return result;
    }
    result = narrowToHolder(variable->getHolderDico(),
                            "ERROR : No dico compatible with the QueltEeTreeSeriesVar.");
    return result < 0 ? result : addToCriteria(criterion, s_addFailed);
}

template <class Variable>
long FilterGenerator::addFeature(const QueltEeVarEff& criterion, const char* notFound,
                                 const char* addFailed) {
    const Variable* variable = nullptr;
    long result = castVariable(criterion, variable);
    if (result < 0) {
        return result;
    }
    result = narrowToFeature(*variable, notFound);
    return result < 0 ? result : addToCriteria(criterion, addFailed);
}

long FilterGenerator::narrowToHolder(QueltEeModelDico* holder, const char* notPossible) {
    if (holder == nullptr || m_pPossibleMDs->Find(*holder) == 0) {
        return m_trace.fail(notPossible);
    }
    return keepOnly(*holder, *m_pPossibleMDs, *m_pRejectedMDs, m_trace);
}

long FilterGenerator::narrowToFeature(const QueltEeDicoObject& variable, const char* notFound) {
    const long result =
        m_context.GetSetOfMDsContainingFeature(variable, m_pPossibleMDs, m_pRejectedMDs, nullptr);
    if (result < 0) {
        return m_trace.fail(
            "ERROR : Call to QueltEeExpressionContext::GetSetOfMDsContainingFeature() has failed.", result);
    }
    if (m_pPossibleMDs == nullptr) {
        return m_trace.fail("ERROR : Null pointer on PossibleMDs has been returned.");
    }
    if (m_pRejectedMDs == nullptr) {
        return m_trace.fail("ERROR : Null pointer on RejectedMDs has been returned.");
    }
    return result == s_noDictionary ? m_trace.fail(notFound) : result;
}

long FilterGenerator::addNamedEffectivities(const QueltQmSpecList& list) {
    const QueltInSet& namedEffectivities = list.getNamedEffectivities();
    if (namedEffectivities.IsEmpty() != 0) {
        return S_OK;
    }
    m_trace.inform("There is at least one named effectivity criteria");
    if (m_pCriteriaFilter == nullptr) {
        m_trace.inform("There is only named effectivity criterias");
        const long result = makeFilter(m_pCriteriaFilter, "ERROR, GetMode on EeGenericExpr Failed");
        if (result < 0) {
            return result;
        }
        m_pPossibleMDs = new QueltInSet(QueltEeModelDico::sType(), 0, 0.0F);
        m_pRejectedMDs = new QueltInSet(QueltEeModelDico::sType(), 0, 0.0F);
    }
    auto elements = namedEffectivities.cBegin();
    for (int left = namedEffectivities.GetLength(); left > 0; --left) {
        QueltEeEffectivity* const named = QueltEeEffectivity::cast(elements.GetGoToNext());
        if (named == nullptr) {
            return m_trace.fail("ERROR : unexpected type");
        }
        if (m_pCriteriaFilter->getSpecList()->getNamedEffectivities().Put(*named) == 0) {
            return m_trace.fail("ERROR : unexpected");
        }
        if (m_pPossibleMDs->IsEmpty() == 0) {
            continue;
        }
        const long result = takeDictionariesOf(*named);
        if (result < 0) {
            return result;
        }
    }
    return S_OK;
}

long FilterGenerator::takeDictionariesOf(const QueltEeEffectivity& named) {
    m_trace.inform("There is only named effectivity criteria, searching MDs to set them");
    m_trace.writeMessage(
        "WARNING : Case of a filter with pure changes, all dictionaries of the first change will be "
        "assigned to the possible list of MD for the filter.");
    QueltEeExpression* expression = nullptr;
    long result = named.getExpr(expression);
    if (result < 0) {
        return m_trace.fail("ERROR : Call to getExpr() on QueltEeEffectivity has failed.", result);
    }
    if (expression == nullptr) {
        return m_trace.fail("ERROR : Null pointer on returned QueltEeExpression.");
    }
    if (m_trace.isActivated()) {
        m_trace.inform("Change examined applicability : ", expression->toString().ConvertToChar());
    }
    const auto* const applicability = QueltEeMultiModelExpression::cast(expression);
    if (applicability == nullptr) {
        return m_trace.fail(
            "ERROR : Unable to cast QueltEeExpression into QueltEeMultiModelExpression for current change.");
    }
    result = applicability->getContextDictionaries(*m_pPossibleMDs);
    if (result < 0) {
        return m_trace.fail("ERROR : Unable to get dictionaries for current change.", result);
    }
    m_trace.inform("Nb of MDs applying for first named eff : ", m_pPossibleMDs->GetLength());
    return result;
}

long FilterGenerator::chooseDictionary() {
    if (m_pPossibleMDs->IsEmpty() != 0) {
        return m_trace.fail(
            "ERROR : Set of PossibleMDs is empty, unable to assign one MD to QueltEeFilterExpression.");
    }
    if (m_pPossibleMDs->GetLength() > 1) {
        m_trace.writeMessage(
            "WARNING : Unable to find a single MD for a QueltEeFilterExpression because set of "
            "PossibleMDs contains more than one MD, first MD will be assigned by default.");
    }
    const QueltInObject* const first = m_pPossibleMDs->cBegin().Get();
    if (first == nullptr) {
        return m_trace.fail("ERROR : Unable to get element from PossibleMDs set.");
    }
    const QueltEeModelDico* const dictionary = QueltEeModelDico::cast(first);
    if (dictionary == nullptr) {
        return m_trace.fail("ERROR : Unable to cast QueltInObject into QueltEeModelDico.");
    }
    m_pCriteriaFilter->setDictionary(dictionary);
    return S_OK;
}

long FilterGenerator::file(QueltInMap& output) {
    delete m_pPossibleMDs;
    delete m_pRejectedMDs;
    long result = S_OK;
    if (m_pDateFilter != nullptr) {
        result = output.Put(QueltInIntHolder(s_dateDomain), *m_pDateFilter);
    }
    if (result >= 0 && m_pCriteriaFilter != nullptr) {
        result = output.Put(QueltInIntHolder(s_criteriaDomain), *m_pCriteriaFilter);
    }
    return result < 0 ? m_trace.fail("ERROR : Put QueltEeFilterExpression in map failed.", result) : result;
}

} // namespace quelt
