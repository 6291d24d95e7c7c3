#include "expression/QueltEeLeaves.h"

#include "expression/QueltEeOperators.h"
#include "expression/QueltEeVisit.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <memory>
#include <utility>

template class QueltInTyped<QueltEeNodeLeaf, QueltEeNode>;
template class QueltInTyped<QueltEeTrue, QueltEeNodeLeaf>;
template class QueltInTyped<QueltEeFalse, QueltEeNodeLeaf>;
template class QueltInTyped<QueltEeNodeElementaryLeaf, QueltEeNodeLeaf>;
template class QueltInTyped<QueltEeEffLeaf, QueltEeNodeElementaryLeaf>;
template class QueltInTyped<QueltEeVarEffLeaf, QueltEeNodeElementaryLeaf>;
template class QueltInTyped<QueltEeRestrictionEffLeaf, QueltEeNodeElementaryLeaf>;

QueltEeNodeLeaf::~QueltEeNodeLeaf() = default;

namespace {

using OwnedTree = std::unique_ptr<QueltEeNodeRef>;

OwnedTree makeConstant(bool value) {
    QueltEeNode* const node = value ? static_cast<QueltEeNode*>(new QueltEeTrue) : new QueltEeFalse;
    return OwnedTree(node->getNodeRef());
}

/// How AND and OR differ where two leaves are combined.
struct Combination {
    bool isAnd;
    long (QueltEeNodeElementaryLeaf::*inPlace)(const QueltEeNodeElementaryLeaf&);

    [[nodiscard]] bool isDecidedBy(const QueltEeNodeElementaryLeaf& leaf) const {
        return (isAnd ? leaf.isEquivalentToFalse() : leaf.isEquivalentToTrue()) != 0;
    }
    [[nodiscard]] bool isIndifferentTo(const QueltEeNodeElementaryLeaf& leaf) const {
        return (isAnd ? leaf.isEquivalentToTrue() : leaf.isEquivalentToFalse()) != 0;
    }
};
constexpr Combination s_and{true, &QueltEeNodeElementaryLeaf::opAnd};
constexpr Combination s_or{false, &QueltEeNodeElementaryLeaf::opOr};

/// The tree that `reference` holds, or the constant that it is equivalent to.
OwnedTree shortest(OwnedTree tree) {
    if (QueltEeNodeElementaryLeaf* const leaf = QueltEeNodeElementaryLeaf::cast(tree->getNode());
        leaf != nullptr) {
        leaf->convertToTrueFalse();
    }
    return tree;
}

OwnedTree copyOf(const QueltEeNodeElementaryLeaf& leaf) {
    return OwnedTree(leaf.clone());
}

/// An operator over copies of both; null when one gives none.
OwnedTree makeGroup(const QueltEeNodeElementaryLeaf& left, const QueltEeNodeElementaryLeaf& right,
                    bool isAnd) {
    QueltEeGroupOp* const group = isAnd ? static_cast<QueltEeGroupOp*>(new QueltEeAndOp) : new QueltEeOrOp;
    OwnedTree tree(group->getNodeRef());
    for (const QueltEeNodeElementaryLeaf* const leaf : {&left, &right}) {
        OwnedTree copy = copyOf(*leaf);
        if (copy == nullptr || group->getChildren().PutBack(*copy) < 0) {
            return nullptr;
        }
        copy.release();
    }
    return tree;
}

/// True when one leaf holds exactly where the other does not, as effectivity leaves can say of each other.
bool areOpposite(const QueltEeNodeElementaryLeaf& left, const QueltEeNodeElementaryLeaf& right) {
    const QueltEeEffLeaf* const one = QueltEeEffLeaf::cast(&left);
    const QueltEeEffLeaf* const other = QueltEeEffLeaf::cast(&right);
    return one != nullptr && other != nullptr && one->isSameCriterion(*other) &&
           one->isNegated() != other->isNegated();
}

OwnedTree combine(const QueltEeNodeElementaryLeaf& left, const QueltEeNodeElementaryLeaf& right,
                  const Combination& combination) {
    if (combination.isDecidedBy(left) || combination.isDecidedBy(right) || areOpposite(left, right)) {
        return makeConstant(!combination.isAnd);
    }
    if (combination.isIndifferentTo(left)) {
        OwnedTree copy = copyOf(right);
        return copy != nullptr ? shortest(std::move(copy)) : nullptr;
    }
    OwnedTree copy = copyOf(left);
    if (copy == nullptr || combination.isIndifferentTo(right)) {
        return copy;
    }
    QueltEeNodeElementaryLeaf* const leaf = QueltEeNodeElementaryLeaf::cast(copy->getNode());
    if (leaf != nullptr && (leaf->*combination.inPlace)(right) >= 0) {
        return shortest(std::move(copy));
    }
    return makeGroup(left, right, combination.isAnd);
}

OwnedTree negate(const QueltEeNodeElementaryLeaf& leaf) {
    OwnedTree copy = copyOf(leaf);
    if (copy == nullptr) {
        return nullptr;
    }
    QueltEeNodeElementaryLeaf* const negated = QueltEeNodeElementaryLeaf::cast(copy->getNode());
    if (negated != nullptr && negated->opNot() >= 0) {
        return shortest(std::move(copy));
    }
    auto* const operation = new QueltEeNotOp;
    OwnedTree tree(operation->getNodeRef());
    if (operation->setChildRef(*copy) < 0) {
        return nullptr;
    }
    copy.release();
    return tree;
}

long handOut(OwnedTree tree, QueltEeNodeRef*& result) {
    result = tree.release();
    return result != nullptr ? S_OK : E_FAIL;
}

} // namespace

long QueltEeTrue::acceptVisitor(QueltEeNodeVisitor& visitor) {
    return quelt::visit(*this, visitor, &QueltEeNodeVisitor::visitTrue);
}

QueltEeNodeRef* QueltEeTrue::clone() const {
    return (new QueltEeTrue)->getNodeRef();
}

QueltInString QueltEeTrue::toString() const {
    return "TRUE";
}

long QueltEeFalse::acceptVisitor(QueltEeNodeVisitor& visitor) {
    return quelt::visit(*this, visitor, &QueltEeNodeVisitor::visitFalse);
}

QueltEeNodeRef* QueltEeFalse::clone() const {
    return (new QueltEeFalse)->getNodeRef();
}

QueltInString QueltEeFalse::toString() const {
    return "FALSE";
}

long QueltEeNodeElementaryLeaf::opAnd(const QueltEeNodeElementaryLeaf& other, QueltEeNodeRef*& result) const {
    return handOut(combine(*this, other, s_and), result);
}

long QueltEeNodeElementaryLeaf::opOr(const QueltEeNodeElementaryLeaf& other, QueltEeNodeRef*& result) const {
    return handOut(combine(*this, other, s_or), result);
}

long QueltEeNodeElementaryLeaf::opNot(QueltEeNodeRef*& result) const {
    return handOut(negate(*this), result);
}

unsigned char QueltEeNodeElementaryLeaf::isEquivalentToTrue() const {
    return 0;
}

unsigned char QueltEeNodeElementaryLeaf::isEquivalentToFalse() const {
    return 0;
}

unsigned char QueltEeNodeElementaryLeaf::convertToTrueFalse() {
    if (!hasNodeRef()) {
        return 0;
    }
    if (isEquivalentToTrue() != 0) {
        return giveWayTo(makeConstant(true).release()) ? 1 : 0;
    }
    if (isEquivalentToFalse() != 0) {
        return giveWayTo(makeConstant(false).release()) ? 1 : 0;
    }
    return 0;
}

long QueltEeNodeElementaryLeaf::opAnd(const QueltEeNodeElementaryLeaf& /*other*/) {
    return E_INVALIDARG;
}

long QueltEeNodeElementaryLeaf::opOr(const QueltEeNodeElementaryLeaf& /*other*/) {
    return E_INVALIDARG;
}

long QueltEeNodeElementaryLeaf::opNot() {
    return E_INVALIDARG;
}

const QueltInObject* QueltEeNodeElementaryLeaf::getConstraintCriterion() const {
    return nullptr;
}

QueltEeEffLeaf::QueltEeEffLeaf(QueltEeEffectivity* effectivity, const QueltEeModelDico* dictionary) noexcept
    : m_pEffectivity(effectivity), m_pDictionary(dictionary) {}

long QueltEeEffLeaf::acceptVisitor(QueltEeNodeVisitor& visitor) {
    return quelt::visit(*this, visitor, &QueltEeNodeVisitor::visitEffLeaf);
}

QueltEeNodeRef* QueltEeEffLeaf::clone() const {
    auto* const copy = new QueltEeEffLeaf(m_pEffectivity, m_pDictionary);
    copy->m_negated = m_negated;
    return copy->getNodeRef();
}

QueltInString QueltEeEffLeaf::toString() const {
    quelt::TextBuilder text;
    text << (m_negated ? "not (eff(" : "eff(");
    if (m_pEffectivity != nullptr) {
        text.name(m_pEffectivity->getName().view());
    } else {
        text << "null";
    }
    if (m_pDictionary != nullptr) {
        (text << ", ").name(m_pDictionary->getName().view());
    }
    text << (m_negated ? "))" : ")");
    return text.take();
}

bool QueltEeEffLeaf::isSameCriterion(const QueltEeEffLeaf& other) const noexcept {
    return m_pEffectivity != nullptr && m_pEffectivity == other.m_pEffectivity &&
           m_pDictionary == other.m_pDictionary;
}

long QueltEeEffLeaf::combineWithSame(const QueltEeNodeElementaryLeaf& other) const {
    const QueltEeEffLeaf* const leaf = QueltEeEffLeaf::cast(&other);
    return leaf != nullptr && isSameCriterion(*leaf) && m_negated == leaf->m_negated ? S_OK : E_INVALIDARG;
}

long QueltEeEffLeaf::opAnd(const QueltEeNodeElementaryLeaf& other) {
    return combineWithSame(other);
}

long QueltEeEffLeaf::opOr(const QueltEeNodeElementaryLeaf& other) {
    return combineWithSame(other);
}

long QueltEeEffLeaf::opNot() {
    m_negated = !m_negated;
    return S_OK;
}

const QueltInObject* QueltEeEffLeaf::getConstraintCriterion() const {
    return m_pEffectivity;
}

QueltEeEffectivity* QueltEeEffLeaf::getTargetEff() const {
    return m_pEffectivity;
}

const QueltEeModelDico* QueltEeEffLeaf::getReferencedContext() const {
    return m_pDictionary;
}

void QueltEeEffLeaf::setReferencedContext(const QueltEeModelDico* dictionary) {
    m_pDictionary = dictionary;
}

unsigned char QueltEeEffLeaf::isNegated() const {
    return m_negated ? 1 : 0;
}

QueltEeVarEffLeaf::QueltEeVarEffLeaf(QueltEeVarEff* effectivity) noexcept : m_pEffectivity(effectivity) {}

QueltEeVarEffLeaf::~QueltEeVarEffLeaf() {
    delete m_pEffectivity;
}

long QueltEeVarEffLeaf::acceptVisitor(QueltEeNodeVisitor& visitor) {
    return quelt::visit(*this, visitor, &QueltEeNodeVisitor::visitVarEffLeaf);
}

QueltEeNodeRef* QueltEeVarEffLeaf::clone() const {
    if (m_pEffectivity == nullptr) {
        return (new QueltEeVarEffLeaf)->getNodeRef();
    }
    std::unique_ptr<QueltEeVarEff> effectivity(m_pEffectivity->createVarEffClone());
    if (effectivity == nullptr) {
        return nullptr;
    }
    auto* const copy = new QueltEeVarEffLeaf(effectivity.get());
    effectivity.release();
    return copy->getNodeRef();
}

QueltInString QueltEeVarEffLeaf::toString() const {
    return m_pEffectivity != nullptr ? m_pEffectivity->toString() : QueltInString("empty");
}

unsigned char QueltEeVarEffLeaf::isEquivalentToTrue() const {
    return m_pEffectivity != nullptr ? m_pEffectivity->isAllTrue() : 0;
}

unsigned char QueltEeVarEffLeaf::isEquivalentToFalse() const {
    return m_pEffectivity != nullptr ? m_pEffectivity->isAllFalse() : 0;
}

const QueltEeVarEff* QueltEeVarEffLeaf::partnerIn(const QueltEeNodeElementaryLeaf& other) const {
    const QueltEeVarEffLeaf* const leaf = QueltEeVarEffLeaf::cast(&other);
    return leaf != nullptr && m_pEffectivity != nullptr ? leaf->m_pEffectivity : nullptr;
}

long QueltEeVarEffLeaf::opAnd(const QueltEeNodeElementaryLeaf& other) {
    const QueltEeVarEff* const partner = partnerIn(other);
    return partner != nullptr ? m_pEffectivity->opAnd(*partner) : E_INVALIDARG;
}

long QueltEeVarEffLeaf::opOr(const QueltEeNodeElementaryLeaf& other) {
    const QueltEeVarEff* const partner = partnerIn(other);
    return partner != nullptr ? m_pEffectivity->opOr(*partner) : E_INVALIDARG;
}

long QueltEeVarEffLeaf::opNot() {
    return m_pEffectivity != nullptr ? m_pEffectivity->opNot() : E_INVALIDARG;
}

const QueltInObject* QueltEeVarEffLeaf::getConstraintCriterion() const {
    return m_pEffectivity != nullptr ? m_pEffectivity->getVar() : nullptr;
}

QueltEeVarEff* QueltEeVarEffLeaf::getVarEff() const {
    return m_pEffectivity;
}

void QueltEeVarEffLeaf::setVarEff(QueltEeVarEff& effectivity) {
    if (&effectivity != m_pEffectivity) {
        delete std::exchange(m_pEffectivity, &effectivity);
        contentsChanged();
    }
}

QueltEeVarEff* QueltEeVarEffLeaf::releaseVarEff() noexcept {
    contentsChanged();
    return std::exchange(m_pEffectivity, nullptr);
}

QueltEeRestrictionEffLeaf::QueltEeRestrictionEffLeaf(const QueltInString& text) : m_text(text) {}

long QueltEeRestrictionEffLeaf::acceptVisitor(QueltEeNodeVisitor& visitor) {
    return quelt::visit(*this, visitor, &QueltEeNodeVisitor::visitRestrictionEffLeaf);
}

QueltEeNodeRef* QueltEeRestrictionEffLeaf::clone() const {
    return (new QueltEeRestrictionEffLeaf(m_text))->getNodeRef();
}

QueltInString QueltEeRestrictionEffLeaf::toString() const {
    quelt::TextBuilder text;
    (text << "restriction(").name(m_text.view()) << ")";
    return text.take();
}
