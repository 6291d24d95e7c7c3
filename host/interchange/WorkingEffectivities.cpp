#include "interchange/WorkingEffectivities.h"

#include "expression/QueltEeExpression.h"
#include "interchange/ExpressionCopy.h"

namespace quelt::host {

namespace {

/// Stands for an effectivity of the class `Kind`.
template <class Kind>
class Working : public Kind {
public:
    Working(const Kind& origin, WorkingEffectivities& all)
        : Kind(origin.getName(), origin.getGuid()), m_origin(origin), m_all(all) {}

    [[nodiscard]] const QueltEeEffectivity& getOrigin() const override { return m_origin; }
    long getExpr(QueltEeExpression*& expression) const override {
        return m_hasTaken ? Kind::getExpr(expression) : m_origin.getExpr(expression);
    }
    void setExpr(QueltEeExpression*& expression) override {
        if (!isContexts(expression)) {
            m_hasTaken = true;
            Kind::setExpr(expression);
        }
    }
    long removeExpr(QueltEeExpression*& expression) override {
        if (!m_hasTaken) {
            takeCopy();
        }
        return Kind::removeExpr(expression);
    }

protected:
    [[nodiscard]] const Kind& origin() const { return m_origin; }
    [[nodiscard]] bool hasTaken() const { return m_hasTaken; }

private:
    /// The expression that is shown as long as nothing was taken; it stays the context's.
    [[nodiscard]] QueltEeExpression* contextsExpression() const {
        QueltEeExpression* expression = nullptr;
        m_origin.getExpr(expression);
        return expression;
    }
    [[nodiscard]] bool isContexts(const QueltEeExpression* expression) const {
        return expression != nullptr && expression == contextsExpression();
    }
    void takeCopy() {
        QueltEeExpression* copy = nullptr;
        if (const QueltEeExpression* const original = contextsExpression()) {
            copy = copyExpression(*original, [this](QueltEeEffectivity& effectivity) -> QueltEeEffectivity& {
                       return m_all.of(effectivity);
                   }).release();
        }
        setExpr(copy);
    }

    const Kind& m_origin;
    WorkingEffectivities& m_all;
    bool m_hasTaken = false; // the expression is this one's own from then on, also when it has none
};

class WorkingBasic : public Working<QueltEeBasicEff> {
public:
    using Working::Working;
    [[nodiscard]] QueltEeNodeRef* getOwnNodeRef() const override {
        return hasTaken() ? QueltEeBasicEff::getOwnNodeRef() : origin().getOwnNodeRef();
    }
};

QueltEeEffectivity* makeWorking(const QueltEeEffectivity& origin, WorkingEffectivities& all) {
    if (const auto* const basic = QueltEeBasicEff::cast(&origin)) {
        return new WorkingBasic(*basic, all);
    }
    if (const auto* const predefined = QueltEePredefEff::cast(&origin)) {
        return new Working<QueltEePredefEff>(*predefined, all);
    }
    return new Working<QueltEeEffectivity>(origin, all);
}

} // namespace

WorkingEffectivities::~WorkingEffectivities() {
    for (const auto& [origin, working] : m_byOrigin) {
        delete working;
    }
}

QueltEeEffectivity& WorkingEffectivities::of(QueltEeEffectivity& effectivity) {
    QueltEeEffectivity*& working = m_byOrigin[&effectivity];
    if (working == nullptr) {
        working = makeWorking(effectivity, *this);
    }
    return *working;
}

} // namespace quelt::host
