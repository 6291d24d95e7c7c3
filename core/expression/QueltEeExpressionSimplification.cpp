#include "expression/QueltEeCriteria.h"
#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeTreeRewriter.h"
#include "infrastructure/QueltInResult.h"

#include <memory>
#include <vector>

namespace {

using quelt::Joining;

/// The criteria of a specification list while they are being combined.
class ListSimplification {
public:
    ListSimplification(const QueltQmSpecList& list, Joining joining) : m_list(list), m_joining(joining) {}

    /// A new list that means the same, in `simplified`; null when it would be the same list. E_FAIL when a
    /// criterion gives no copy.
    long run(std::unique_ptr<QueltQmSpecList>& simplified) {
        if (!copyCriteria()) {
            return E_FAIL;
        }
        joinCriteria();
        simplified = makeList();
        return S_OK;
    }

private:
    // Combining criteria takes their length times the logarithm of their number; what is allowed is far above
    // that.
    static constexpr quelt::JoiningBudget s_leastBudget = 10'000'000;
    static constexpr quelt::JoiningBudget s_budgetPerValue = 64;

    using Effectivity = std::unique_ptr<QueltEeVarEff>;

    bool copyCriteria() {
        QueltInMap::const_iterator criteria = m_list.getVarEffs().cBegin();
        while (const QueltEeVarEff* const criterion = QueltEeVarEff::cast(criteria.GetValGoToNext())) {
            m_criteria.emplace_back(criterion->createVarEffClone());
            if (m_criteria.back() == nullptr) {
                return false;
            }
            m_index.add(quelt::CriterionKey(*criterion), static_cast<std::uint32_t>(m_criteria.size() - 1));
            m_budget += s_budgetPerValue * static_cast<quelt::JoiningBudget>(quelt::sizeOf(*criterion));
        }
        return true;
    }

    void joinCriteria() {
        m_index.joinNew([this](const std::vector<std::uint32_t>& numbers) {
            std::vector<QueltEeVarEff*> effectivities;
            effectivities.reserve(numbers.size());
            for (const std::uint32_t number : numbers) {
                effectivities.push_back(m_criteria[number].get());
            }
            quelt::joinEffectivities(effectivities, m_joining, m_budget);
            for (std::size_t position = 0; position < numbers.size(); ++position) {
                if (effectivities[position] == nullptr) {
                    m_criteria[numbers[position]].reset();
                }
            }
        });
    }

    /// The list of what is left: one criterion that decides alone, else all those that do not decide nothing.
    std::unique_ptr<QueltQmSpecList> makeList() {
        const bool all = m_joining == Joining::all;
        auto list = std::make_unique<QueltQmSpecList>();
        for (Effectivity& criterion : m_criteria) {
            if (criterion != nullptr && (all ? criterion->isAllFalse() : criterion->isAllTrue()) != 0) {
                list = std::make_unique<QueltQmSpecList>();
                add(*list, std::move(criterion));
                return isAsBefore(*list) ? nullptr : std::move(list);
            }
            if (criterion != nullptr && (all ? criterion->isAllTrue() : criterion->isAllFalse()) == 0) {
                add(*list, std::move(criterion));
            }
        }
        list->getNamedEffectivities().PutSet(m_list.getNamedEffectivities());
        return isAsBefore(*list) ? nullptr : std::move(list);
    }

    static void add(QueltQmSpecList& list, Effectivity criterion) {
        QueltEeVarEff* effectivity = criterion.release();
        list.addVarEff(effectivity);
    }

    /// Whatever the simplification does takes a criterion away.
    [[nodiscard]] bool isAsBefore(const QueltQmSpecList& list) const {
        return list.getVarEffs().GetLength() == m_list.getVarEffs().GetLength() &&
               list.getNamedEffectivities().GetLength() == m_list.getNamedEffectivities().GetLength();
    }

    const QueltQmSpecList& m_list;
    Joining m_joining;
    std::vector<Effectivity> m_criteria;
    quelt::CriterionIndex m_index;
    quelt::JoiningBudget m_budget = s_leastBudget;
};

bool simplifyPart(QueltEeNodeRef* part) {
    return part != nullptr && quelt::simplifyTree(*part);
}

} // namespace

long QueltEeFilterExpression::simplify() {
    if (m_pList == nullptr) {
        return S_OK;
    }
    std::unique_ptr<QueltQmSpecList> simplified;
    const Joining joining = m_listMode == 0 ? Joining::all : Joining::atLeastOne;
    const long result = ListSimplification(*m_pList, joining).run(simplified);
    if (result < 0 || simplified == nullptr) {
        return result;
    }
    setSpecList(simplified.release());
    return 1;
}

long QueltEeMultiModelExpression::simplify() {
    bool isChanged = simplifyPart(m_pGlobal);
    for (const Filed& filed : m_filed) {
        isChanged = simplifyPart(filed.criteria->getInherited()) || isChanged;
        isChanged = simplifyPart(filed.criteria->getOwn()) || isChanged;
    }
    return isChanged ? 1 : S_OK;
}
