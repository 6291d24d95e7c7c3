#include "expression/QueltEeTreeRewriter.h"

#include "expression/QueltEeDraftRewriter.h"
#include "expression/QueltEeFixedNodes.h"

#include <optional>
#include <utility>

namespace quelt {

namespace {

QueltEeNodeRef* asReference(QueltInObject* child) {
    return static_cast<QueltEeNodeRef*>(child); // lists of children accept nothing else
}

/// Rewrites one tree: goes down to the leaves with negations, and comes back with what each part has come to.
class TreeRewriter {
public:
    explicit TreeRewriter(QueltEeNodeRef& root)
        : m_root(root), m_fixed(*root.getNode()), m_drafts(root, m_fixed.size()) {}

    bool run() {
        if (m_fixed.isFixed(*m_root.getNode())) {
            return false;
        }
        descend(m_root, {}, false);
        while (!m_levels.empty()) {
            goOn();
        }
        putInPlace(takeResult());
        m_drafts.deleteLeftOver();
        return m_drafts.isChanged();
    }

private:
    /// Something whose inside is being rewritten: a group, or what operators that must stay stand above.
    struct Level {
        std::unique_ptr<GroupDraft> draft; // null for such operators
        const QueltEeGroupOp* group = nullptr;
        std::uint32_t next = 0;
        Negations negations; // on their way down to the leaves
        bool isInDomain = false;
        NegationChain chain;
    };

    // Walking

    /// Comes to a reference: either there is a result, or a level has been opened. NOT and NOT-domain are
    /// never handed down to nodes that must stay.
    void descend(QueltEeNodeRef& reference, Negations negations, bool isInDomain) {
        QueltEeNode& node = *reference.getNode();
        if (m_fixed.isFixed(node)) {
            m_result = Rewritten::node(reference, true);
        } else if (QueltEeSingleOp::isObjectOfThisType(node) != 0) {
            descendChain(chainFrom(reference), negations, isInDomain);
        } else if (const QueltEeGroupOp* const group = QueltEeGroupOp::cast(&node)) {
            Level level;
            level.draft = std::make_unique<GroupDraft>(group->isAnd() != negations.turnRound(), &reference);
            level.group = group;
            level.negations = negations;
            level.isInDomain = isInDomain;
            m_levels.push_back(std::move(level));
        } else {
            m_result = rewriteLeaf(reference, negations, isInDomain);
        }
    }

    void goOn() {
        Level& level = m_levels.back();
        if (level.draft == nullptr) {
            const Level closed = std::move(level);
            m_levels.pop_back();
            m_result = m_drafts.negateFixed(closed.chain, takeResult());
            return;
        }
        if (m_result) {
            m_drafts.absorb(*level.draft, takeResult());
        }
        if (QueltEeNodeRef* const child = asReference(level.group->getChildren().Get(level.next))) {
            ++level.next;
            descend(*child, level.negations, level.isInDomain);
            return;
        }
        Level closed = std::move(level);
        m_levels.pop_back();
        // Into a group of the same kind the children go as they are; they are combined with those there.
        const bool goesOn = !m_levels.empty() && m_levels.back().draft != nullptr &&
                            m_levels.back().draft->isAnd == closed.draft->isAnd;
        m_result = goesOn ? Rewritten::group(std::move(closed.draft))
                          : m_drafts.close(std::move(closed.draft), closed.isInDomain);
    }

    [[nodiscard]] Rewritten takeResult() { return *std::exchange(m_result, std::nullopt); }

    // NOT and NOT-domain

    [[nodiscard]] NegationChain chainFrom(QueltEeNodeRef& top) const {
        NegationChain chain{&top, &top, nullptr, {}, 0};
        while (QueltEeSingleOp* const single = QueltEeSingleOp::cast(chain.target->getNode())) {
            if (m_fixed.isFixed(*single)) {
                break;
            }
            const bool isDomain = QueltEeNotDomainOp::isObjectOfThisType(*single) != 0;
            chain.negations = chain.negations.with({!isDomain, isDomain});
            chain.last = single;
            chain.target = single->getChildRef();
            ++chain.length;
        }
        return chain;
    }

    void descendChain(NegationChain chain, Negations negations, bool isInDomain) {
        const bool staysAbove = m_fixed.holdsFixed(*chain.target->getNode());
        if (!staysAbove || chain.length > chain.negations.count()) {
            m_drafts.takeOut(chain);
        }
        if (!staysAbove) {
            descend(*chain.target, negations.with(chain.negations), isInDomain);
            return;
        }
        if (chain.negations.count() > 0) {
            Level level;
            level.chain = chain;
            m_levels.push_back(std::move(level));
        }
        descend(*chain.target, {}, isInDomain != chain.negations.domainNegated);
    }

    // Leaves

    Rewritten rewriteLeaf(QueltEeNodeRef& reference, Negations negations, bool isInDomain) {
        QueltEeNode& node = *reference.getNode();
        if (const QueltEeVarEffLeaf* const leaf = QueltEeVarEffLeaf::cast(&node)) {
            return rewriteVarEff(reference, *leaf->getVarEff(), negations, isInDomain);
        }
        if (QueltEeEffLeaf* const leaf = QueltEeEffLeaf::cast(&node)) {
            if (negations.turnRound()) {
                leaf->opNot();
                m_drafts.noteChange();
            }
            return Rewritten::node(reference, false);
        }
        const bool value = QueltEeTrue::isObjectOfThisType(node) != 0;
        if (!negations.turnRound()) {
            return Rewritten::constant(value, &reference);
        }
        m_drafts.leaveOver(reference);
        return Rewritten::constant(!value, nullptr);
    }

    Rewritten rewriteVarEff(QueltEeNodeRef& reference, QueltEeVarEff& effectivity, Negations negations,
                            bool isInDomain) {
        if (negations.negated) {
            effectivity.opNot();
        }
        if (negations.domainNegated) {
            effectivity.opNotDom();
        }
        if (negations.count() > 0) {
            m_drafts.noteChange();
        }
        const std::optional<bool> constant = constantOf(effectivity, isInDomain);
        if (!constant) {
            return Rewritten::node(reference, false);
        }
        m_drafts.leaveOver(reference);
        return Rewritten::constant(*constant, nullptr);
    }

    void putInPlace(Rewritten rewritten) {
        QueltEeNodeRef* const reference = m_drafts.materialize(rewritten);
        if (reference != &m_root) {
            m_drafts.noteChange();
            m_root.getNode()->giveWayTo(reference);
        }
    }

    QueltEeNodeRef& m_root;
    FixedNodes m_fixed;
    DraftRewriter m_drafts;
    std::vector<Level> m_levels;
    std::optional<Rewritten> m_result;
};

} // namespace

bool simplifyTree(QueltEeNodeRef& root) {
    return root.getNode() != nullptr && root.ownsNode() && TreeRewriter(root).run();
}

} // namespace quelt
