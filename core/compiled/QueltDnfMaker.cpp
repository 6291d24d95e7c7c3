#include "compiled/QueltDnfMaker.h"

#include "compiled/QueltDnfForm.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeOperators.h"
#include "expression/QueltEeTreeRewriter.h"
#include "expression/QueltEeTreeWalk.h"
#include "infrastructure/QueltInMemory.h"
#include "infrastructure/QueltInResult.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quelt {

namespace {

using OwnedTree = std::unique_ptr<QueltEeNodeRef>;

/// How many nodes the tree may have, an aliased one counted wherever it stands. The tree is copied.
constexpr std::uint64_t s_maxNodes = 20'000'000;
/// What all forms that are being made at one time may take.
constexpr std::size_t s_maxWeight = 8 * QueltDnf::s_maxLiterals;

/// Whether a normal form of a tree can be made at all.
class TreeCheck {
public:
    /// The result for the first node, in the order of the tree, that has no place in a normal form;
    /// E_OUTOFMEMORY for too many nodes.
    [[nodiscard]] long run(const QueltEeNode& root) {
        long result = enter(root);
        while (result >= 0 && !m_levels.empty()) {
            Level& level = m_levels.back();
            const QueltEeNodeRef* const reference = level.children.at(level.next++);
            if (reference != nullptr) {
                result = reference->getNode() != nullptr ? enter(*reference->getNode()) : E_INVALIDARG;
            } else {
                result = leave();
            }
        }
        return result;
    }

private:
    struct Level {
        const QueltEeNode* node;
        NodeChildren children;
        std::uint32_t next;
        std::uint64_t count; // of nodes so far
    };

    long enter(const QueltEeNode& node) {
        const NodeChildren children(node);
        if (!children.isOperator()) {
            return checkLeaf(node) >= 0 ? add(1) : checkLeaf(node);
        }
        if (const auto known = m_counts.find(&node); node.hasAliases() && known != m_counts.end()) {
            return add(known->second);
        }
        m_levels.push_back({&node, children, 0, 1});
        return S_OK;
    }

    long leave() {
        const Level level = m_levels.back();
        if (level.children.single() != nullptr && level.children.at(0) == nullptr) {
            return E_INVALIDARG;
        }
        if (level.node->hasAliases()) {
            m_counts.emplace(level.node, level.count);
        }
        m_levels.pop_back();
        return add(level.count);
    }

    long add(std::uint64_t count) {
        if (!m_levels.empty()) {
            count = m_levels.back().count += count;
        }
        return count <= s_maxNodes ? S_OK : E_OUTOFMEMORY;
    }

    static long checkLeaf(const QueltEeNode& leaf) {
        if (QueltEeRestrictionEffLeaf::isObjectOfThisType(leaf) != 0) {
            return E_UNEXPECTED;
        }
        const bool isConstant =
            QueltEeTrue::isObjectOfThisType(leaf) != 0 || QueltEeFalse::isObjectOfThisType(leaf) != 0;
        return isConstant || sizeOfLiteral(&leaf) > 0 ? S_OK : E_INVALIDARG;
    }

    std::vector<Level> m_levels;
    std::unordered_map<const QueltEeNode*, std::uint64_t> m_counts; // of operators with aliases
};

/// Makes the form of a tree that has been simplified: no NOT is left in it, and constants only alone.
class FormMaker {
public:
    [[nodiscard]] long run(const QueltEeNode& root, DnfForm& form) {
        long result = enter(root);
        while (result >= 0 && !m_levels.empty()) {
            result = goOn();
        }
        form = std::move(m_form);
        return result;
    }

    [[nodiscard]] const DnfLiterals& literals() { return m_calculator.literals(); }

private:
    struct Level {
        const QueltEeGroupOp* group;
        unsigned int next;
        std::vector<DnfLiteral> literals; // of an AND: from its leaves
        std::vector<DnfForm> factors;     // of an AND: from its other children
        DnfForm sum;                      // of an OR
        std::size_t weight;               // of all that
    };

    /// Comes to a node: either m_form has its form, or a level has been opened.
    long enter(const QueltEeNode& node) {
        if (const QueltEeGroupOp* const group = QueltEeGroupOp::cast(&node)) {
            m_levels.push_back({group, 0, {}, {}, {}, 0});
            return S_OK;
        }
        m_form.conjunctions.clear();
        if (QueltEeFalse::isObjectOfThisType(node) != 0) {
            return S_OK;
        }
        if (QueltEeTrue::isObjectOfThisType(node) != 0) {
            m_form.conjunctions.emplace_back();
            return S_OK;
        }
        DnfLiteral literal{};
        const long result = m_calculator.literals().enter(node, literal);
        m_form.conjunctions.emplace_back(std::vector{literal});
        return result;
    }

    long goOn() {
        Level& level = m_levels.back();
        const auto* const child =
            static_cast<const QueltEeNodeRef*>(level.group->getChildren().Get(level.next++));
        if (child == nullptr) {
            return leave();
        }
        const std::size_t depth = m_levels.size();
        const long result = enter(*child->getNode());
        return result >= 0 && m_levels.size() == depth ? take() : result;
    }

    long leave() {
        Level level = std::move(m_levels.back());
        m_levels.pop_back();
        m_weight -= level.weight;
        const long result = level.group->isAnd() ? multiply(level) : add(level);
        return result >= 0 && !m_levels.empty() ? take() : result;
    }

    /// Puts m_form where the innermost level keeps its children's forms.
    long take() {
        Level& level = m_levels.back();
        const std::size_t weight = m_form.weight();
        level.weight += weight;
        m_weight += weight;
        std::vector<DnfConjunction>& conjunctions = m_form.conjunctions;
        if (!level.group->isAnd()) {
            std::vector<DnfConjunction>& sum = level.sum.conjunctions;
            sum.insert(sum.end(), std::move_iterator(conjunctions.begin()),
                       std::move_iterator(conjunctions.end()));
        } else if (conjunctions.size() == 1) {
            const std::vector<DnfLiteral>& literals = conjunctions.front().literals();
            level.literals.insert(level.literals.end(), literals.begin(), literals.end());
        } else {
            level.factors.push_back(std::move(m_form));
        }
        m_form.conjunctions.clear();
        return m_weight <= s_maxWeight ? S_OK : E_OUTOFMEMORY;
    }

    long add(Level& level) {
        m_form = std::move(level.sum);
        return m_calculator.reduce(m_form);
    }

    long multiply(Level& level) {
        m_form.conjunctions.clear();
        std::optional<DnfConjunction> common;
        long result = m_calculator.conjoin(std::move(level.literals), common);
        if (result < 0 || !common) {
            return result;
        }
        m_form.conjunctions.push_back(*std::move(common));
        for (std::size_t at = 0; result >= 0 && at < level.factors.size(); ++at) {
            result = m_calculator.multiply(m_form, level.factors[at]);
        }
        return result;
    }

    DnfCalculator m_calculator;
    std::vector<Level> m_levels;
    DnfForm m_form; // of the node that was left last
    std::size_t m_weight = 0;
};

/// A copy of the tree, or of its negation, in its shortest form.
OwnedTree makeSimplifiedCopy(const QueltEeNode& node, bool negated) {
    OwnedTree tree(node.clone());
    if (tree != nullptr && negated) {
        auto* const operation = new QueltEeNotOp;
        operation->setChildRef(*tree.release());
        tree.reset(operation->getNodeRef());
    }
    if (tree != nullptr) {
        simplifyTree(*tree);
    }
    return tree;
}

long addLiteral(QueltDnf& dnf, const QueltEeNode& leaf) {
    OwnedTree copy(leaf.clone());
    const long result = copy != nullptr ? dnf.addLiteral(copy.get()) : E_FAIL;
    if (result >= 0) {
        static_cast<void>(copy.release());
    }
    return result;
}

long fill(QueltDnf& dnf, const DnfForm& form, const DnfLiterals& literals) {
    for (const DnfConjunction& conjunction : form.conjunctions) {
        std::vector<DnfLiteral> inOrder = conjunction.literals();
        std::ranges::sort(inOrder, {}, &DnfLiteral::place);
        long result = dnf.addConjunction();
        for (std::size_t at = 0; result >= 0 && at < inOrder.size(); ++at) {
            result = addLiteral(dnf, literals.leafOf(inOrder[at]));
        }
        if (result < 0) {
            return result;
        }
    }
    return S_OK;
}

} // namespace

long DnfMaker::run(QueltDnf*& dnf) const {
    dnf = nullptr;
    long result = TreeCheck().run(m_node);
    if (result < 0) {
        return result;
    }
    DnfForm form;
    FormMaker maker;
    {
        const QueltInHeapScope scratch;
        const OwnedTree tree = makeSimplifiedCopy(m_node, m_negated);
        result = tree != nullptr ? maker.run(*tree->getNode(), form) : E_FAIL;
    }
    if (result < 0) {
        return result;
    }
    auto made = std::make_unique<QueltDnf>();
    result = fill(*made, form, maker.literals());
    if (result >= 0) {
        dnf = made.release();
    }
    return result;
}

} // namespace quelt

long QueltDnf::make(const QueltEeNode& node, bool negated, QueltDnf*& dnf) {
    return quelt::DnfMaker(node, negated).run(dnf);
}
