#pragma once

#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltQmSpecList.h"
#include "interchange/LoadedContext.h"

#include <memory>
#include <random>
#include <string>

namespace quelt::host::test {

/// A context full of what is hard to write down: names of all kinds, names borne by several variables, every
/// kind of variable, and effectivities whose expressions name each other. The same seed makes the same, on
/// every platform: draws never stand beside each other in one call, where their order would be the
/// compiler's.
class RandomContext {
public:
    explicit RandomContext(unsigned seed);

    [[nodiscard]] const LoadedContext& context() const { return *m_context; }
    /// Random expressions on the context.
    [[nodiscard]] std::unique_ptr<QueltEeGenericExpression> genericExpression();
    [[nodiscard]] std::unique_ptr<QueltEeExpression> multiModelExpression();
    /// A record with a random generic expression, as a line of the input has it.
    [[nodiscard]] std::string record(unsigned id, bool isChange, bool isBranched);

private:
    using OwnedReference = std::unique_ptr<QueltEeNodeRef>;

    unsigned below(std::size_t limit) { return static_cast<unsigned>(m_random() % limit); }
    bool onceIn(unsigned often) { return below(often) == 0; }
    std::string name();
    std::string freshName(unsigned number);
    QueltInGuid guid();
    int bound();

    void makeDictionary(unsigned number);
    void makeEffectivities();
    std::unique_ptr<QueltEeVariable> variable(const std::string& name);
    std::unique_ptr<QueltEeVariable> treeSeriesVariable(const std::string& name);

    std::unique_ptr<QueltEeVarEff> criterion();
    std::unique_ptr<QueltEeVarEff> criterionOn(const QueltEeVariable& variable);
    std::unique_ptr<QueltEeVarEff> treeSeriesCriterion(const QueltEeTreeSeriesVar& variable);
    std::unique_ptr<QueltEeVarEff> withoutVariable();
    std::unique_ptr<QueltEeVarEff> dates();
    OwnedReference node(unsigned depth);
    OwnedReference group(unsigned depth);
    OwnedReference leaf();
    std::unique_ptr<QueltQmSpecList> list();
    void fill(QueltEeMultiModelExpression& expression);

    std::mt19937 m_random;
    std::unique_ptr<LoadedContext> m_context = std::make_unique<LoadedContext>();
    std::vector<const QueltEeVariable*> m_variables;
};

} // namespace quelt::host::test
