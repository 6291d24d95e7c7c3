#pragma once

#include "QueltEeGenExprToEeMMExprVisitor.h"

#include "infrastructure/QueltInLinkList.h"
#include "infrastructure/QueltInSmallVector.h"

class QueltEVCClassification;
class QueltEeEffLeaf;
class QueltEeGetApplyingMDsVisitor;
class QueltEeMultiModelExpression;
class QueltEeOperator;
class QueltEePredefEff;
class QueltEeSerialEff;
class QueltEeVarEff;
class QueltInObject;

/// What the visits and the analyses are made of. A class of its own, because a DLL gives out every member of
/// the visitor. It works on the state of one visitor and has none itself: it is made where it is needed.
class QueltEeGenExprToEeMMExprVisitor::Steps {
public:
    /// What a failure to file a copy under a dictionary is called.
    struct FilingErrors {
        const char* unexpected; ///< what should be a dictionary is none, or the copy is empty
        const char* noCopy;
    };

    explicit Steps(QueltEeGenExprToEeMMExprVisitor& visitor) noexcept : m_visitor(visitor) {}

    template <class Constant>
    long convertConstant(Constant& node, const char* method);

    // What AND, OR and NOT share.
    long classify(QueltEeOperator& node, QueltEVCClassification& classification) const;
    template <class ConvertChange>
    long convertWithoutHistory(QueltEeNode& node, const QueltEVCClassification& classification,
                               const ConvertChange& convertChange);
    long analyzeStackOfChanges(QueltEeGroupOp& group);
    long convertNegatedChange(QueltEeNotOp& node);
    long convertWithInherited(QueltEeAndOp& node);

    // AND, OR and NOT with dates.
    long convertHistory(QueltEeAndOp& node);
    long convertHistory(QueltEeOrOp& node);
    long convertHistory(QueltEeNotOp& node);

    // Changes.
    long accumulate(QueltEeNodeRef*& accumulated, bool& isGroupCreated, QueltEeGroupOp& group);
    long fileCurrentOperation(bool isAlternative);

    // Evolution/variant parts.
    long findApplyingDictionaries(QueltEeNode& node, QueltEeGetApplyingMDsVisitor& finder,
                                  QueltInSet*& related, QueltInSet*& notRelated) const;
    long fileUnderEach(const QueltInSet& dictionaries, QueltEeNode& node, unsigned char clone,
                       const FilingErrors& errors);

    // Leaves with effectivities, and inherited effectivities.
    long convertChange(QueltEePredefEff& effectivity);
    long convertBasicEff(QueltEeBasicEff& effectivity);
    long listBasicEff(QueltEeEffLeaf& leaf, const char* wrongTarget);
    long addInheritedLeaves(QueltEeBasicEff& effectivity, const QueltEeModelDico& dico,
                            QueltEeOrOp& leaves) const;

    // Leaves with variable effectivities.
    long collect(QueltEeVarEffLeaf& leaf);
    template <class Variable>
    long convertFeature(QueltEeVarEffLeaf& leaf, const QueltEeVarEff& effectivity);
    long convertSerial(QueltEeVarEffLeaf& leaf, QueltEeSerialEff& effectivity);
    long convertTreeSeries(QueltEeVarEffLeaf& leaf, const QueltEeVarEff& effectivity);
    long convertDate(QueltEeVarEffLeaf& leaf);

private:
    /// Children of an AND with their places in it.
    using TakenChildren = QueltInSmallVector<QueltInLinkList::Placed, 2>;

    // The visitor's outputs, made when they are first asked for.
    QueltEeEffectivityExpression& history();
    QueltEeEffectivityExpression& evolutionVariant();
    QueltEeMultiModelExpression& makeTarget();

    // What AND, OR and NOT share.
    long takeEvolutionVariant(QueltEeNode& node);
    long analyzeEvolutionVariant(QueltEeNode& node, QueltEeGroupOp* joined = nullptr);
    long refuseChangeInChange();

    // AND with inherited effectivities.
    long expandInherited(QueltEeAndOp& node, TakenChildren& inherited);
    static long takeOut(QueltEeAndOp& node, const TakenChildren& taken);
    static void putBack(QueltEeAndOp& node, const TakenChildren& taken);

    // Dates.
    long enterHistory(bool& wasAtRoot);
    static long findHistoryChild(QueltInObject* element, QueltEeNode*& child);
    long takeHistoryChild(QueltEeNode& child);
    template <class Group, class Join>
    long collectHistory(Group& node, const Join& join);
    void joinForAnd(QueltEeNodeRef* previousEV, QueltEeGroupOp*& created);
    void joinForOr(QueltEeNodeRef* previousEV);
    long fileHistoryWithEvolutionVariant();
    long fileDatesAtRoot();
    long fileHistoryAtRoot();

    // Criteria.
    long fileCriterion(const QueltEeModelDico& dictionary, QueltEeNodeRef* own, const char* emptyOwn);
    long fileUnderHolder(const QueltEeModelDico& holder, QueltEeVarEffLeaf& leaf);

    // Inherited effectivities.
    long fileInherited(const QueltEeBasicEff& effectivity, const QueltEeNode* constant);
    long findInheritingDictionaries(const QueltEeBasicEff& effectivity,
                                    const QueltInMap*& dictionaries) const;

    // Variables of leaves.
    template <class Variable>
    static long findVariable(const QueltEeVarEff& effectivity, const Variable*& variable);
    template <class Variable>
    static long findSeries(const QueltEeVarEff& effectivity, const Variable*& variable,
                           const QueltEeModelDico*& holder);

    QueltEeGenExprToEeMMExprVisitor& m_visitor;
};
