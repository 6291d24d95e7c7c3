#pragma once

#include "MigrationTrace.h"

#include "expression/QueltEeGenericExpression.h"

class QueltEeDicoObject;
class QueltEeEffectivity;
class QueltEeExpressionContext;
class QueltEeFilterExpression;
class QueltEeModelDico;
class QueltEeVarEff;
class QueltInMap;
class QueltInObject;
class QueltInSet;
class QueltQmSpecList;

namespace quelt {

/// Turns the specification list of a generic expression into filters: one for its dates, one, in a single
/// dictionary, for everything else. Used once.
class FilterGenerator {
public:
    /// The key of the date filter, and of the filter of all other criteria.
    static constexpr unsigned int s_dateDomain = 1;
    static constexpr unsigned int s_criteriaDomain = 2;

    /// @param trace the lines are written through it.
    /// @param renumbers whether serial bounds are translated through model years.
    /// @param genericExpr the list form; its serial effectivities are rewritten in place.
    FilterGenerator(const MigrationTrace& trace, bool renumbers, const QueltEeGenericExpression& genericExpr,
                    const QueltEeExpressionContext& context) noexcept
        : m_trace(trace), m_renumbers(renumbers), m_genericExpr(genericExpr), m_context(context) {}

    /// Generates the filters and files them in `output`. The result of the last core call, E_FAIL for a
    /// failed check of its own. On failure nothing that was built is released, and `output` holds what was
    /// filed.
    long run(QueltInMap& output);

private:
    long addVarEffs(const QueltQmSpecList& list);
    long addVarEff(QueltInObject* value);
    long addDate(const QueltEeVarEff& date);
    long addNamedEffectivities(const QueltQmSpecList& list);
    long takeDictionariesOf(const QueltEeEffectivity& named);

    long makeFilter(QueltEeFilterExpression*& filter, const char* modeFailure) const;
    long makeCriteriaFilter();
    long putAllDictionaries();
    long addToCriteria(const QueltEeVarEff& criterion, const char* failure);

    long addSerial(QueltEeVarEff& criterion);
    long addTreeSeries(const QueltEeVarEff& criterion);
    template <class Variable>
    long addFeature(const QueltEeVarEff& criterion, const char* notFound, const char* addFailed);
    template <class Variable>
    long castVariable(const QueltEeVarEff& criterion, const Variable*& variable) const;

    long narrowToHolder(QueltEeModelDico* holder, const char* notPossible);
    long narrowToFeature(const QueltEeDicoObject& variable, const char* notFound);

    long chooseDictionary();
    long file(QueltInMap& output);

    const MigrationTrace& m_trace;
    bool m_renumbers;
    const QueltEeGenericExpression& m_genericExpr;
    const QueltEeExpressionContext& m_context;
    int m_countVarEffs = 0; // of the list, which no filter holds more of
    QueltEeFilterExpression* m_pDateFilter = nullptr;
    QueltEeFilterExpression* m_pCriteriaFilter = nullptr;
    QueltInSet* m_pPossibleMDs = nullptr;
    QueltInSet* m_pRejectedMDs = nullptr;
};

} // namespace quelt
