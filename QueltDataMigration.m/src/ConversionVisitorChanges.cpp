// Operators over changes, and evolution/variant parts, which become criteria.

#include "ConversionVisitorParts.h"
#include "QueltEeGetApplyingMDsVisitor.h"

#include "dictionary/QueltEeModelDico.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeOperators.h"
#include "infrastructure/QueltInSet.h"

using quelt::conversion::findChildNode;
using quelt::conversion::isEmpty;
using quelt::conversion::s_isRenumbering;
using quelt::conversion::s_trace;
using OperationKind = QueltEeExpressionOperation::OperationKind;

long QueltEeGenExprToEeMMExprVisitor::analyzeToFindOutOperationsStack(QueltEeGroupOp& group) {
    const quelt::MethodTrace scope(s_trace, "analyzeToFindOutOperationsStack");
    m_atRoot = 0; // and stays so
    Steps steps(*this);
    QueltEeNodeRef* accumulated = nullptr;
    bool isGroupCreated = false; // never reset, like the next one
    bool isAnalysed = false;
    auto children = group.getChildren().cBegin();
    while (QueltInObject* const child = children.GetGoToNext()) {
        QueltEeNode* const node = findChildNode(child);
        if (node == nullptr) {
            return s_trace.fail("ERROR :unexpected");
        }
        long result = node->acceptVisitor(*this);
        if (result < 0) {
            return s_trace.fail("ERROR : acceptVisitor FAILED.", result);
        }
        result = steps.accumulate(accumulated, isGroupCreated, group);
        if (result < 0) {
            return result;
        }
        if (m_pCurrentOperation == nullptr) {
            continue;
        }
        if (!isAnalysed && accumulated != nullptr) {
            isAnalysed = true;
            m_inEVPart = 1;
            result = analyzePureEVPart(*accumulated->getNode(), 1);
            m_inEVPart = 0;
            if (result < 0) {
                return s_trace.fail("ERROR : analyzePureEVPart FAILED", result);
            }
            accumulated = nullptr;
        }
        result = steps.fileCurrentOperation(!group.isAnd());
        if (result < 0) {
            return result;
        }
    }
    if (accumulated != nullptr) {
        const long result = analyzePureEVPart(*accumulated->getNode(), 1);
        if (result < 0) {
            return s_trace.fail("ERROR : analyzePureEVPart FAILED", result);
        }
    }
    m_p_EV_ChildNodeRef = nullptr;
    m_pCurrentOperation = nullptr;
    return S_OK;
}

long QueltEeGenExprToEeMMExprVisitor::Steps::accumulate(QueltEeNodeRef*& accumulated, bool& isGroupCreated,
                                                        QueltEeGroupOp& group) {
    QueltEeNodeRef* const produced = m_visitor.m_p_EV_ChildNodeRef;
    if (produced == nullptr) {
        return S_OK;
    }
    if (accumulated == nullptr) {
        accumulated = produced;
        m_visitor.m_p_EV_ChildNodeRef = nullptr;
        return S_OK;
    }
    if (!isGroupCreated) {
        if (QueltEeAndOp::isObjectOfThisType(group) == 0 && QueltEeOrOp::isObjectOfThisType(group) == 0) {
            return s_trace.fail("ERROR : Cannot cast this group op into a known op");
        }
        QueltEeGroupOp& joined = m_visitor.m_pBelongings->makeGroup(group.isAnd());
        m_visitor.m_pBelongings->join(joined, *accumulated->getNode());
        accumulated = joined.getNodeRef();
        isGroupCreated = true;
    }
    QueltEeGroupOp* const joined = QueltEeGroupOp::cast(accumulated->getNode());
    if (joined == nullptr) {
        return s_trace.fail("ERROR : unexpected");
    }
    QueltEeGroupOp& extensible = m_visitor.m_pBelongings->makeExtensible(*joined);
    m_visitor.m_pBelongings->join(extensible, *produced->getNode());
    accumulated = extensible.getNodeRef();
    m_visitor.m_p_EV_ChildNodeRef = nullptr;
    return S_OK;
}

long QueltEeGenExprToEeMMExprVisitor::Steps::fileCurrentOperation(bool isAlternative) {
    if (isAlternative) {
        m_visitor.m_pCurrentOperation->m_kind = OperationKind::applyAlternative;
    }
    QueltInObject* object = m_visitor.m_pCurrentOperation->getObject();
    QueltEeEffectivityExpression& target = s_isRenumbering ? history() : evolutionVariant();
    const long result = target.addOperation(m_visitor.m_pCurrentOperation->m_kind, object);
    if (result < 0) {
        return s_trace.fail("ERROR : addOperation FAILED.", result);
    }
    m_visitor.m_pBelongings->destroy(m_visitor.m_pCurrentOperation);
    m_visitor.m_pCurrentOperation = nullptr;
    return result;
}

long QueltEeGenExprToEeMMExprVisitor::analyzePureEVPart(QueltEeNode& node, unsigned char clone) {
    const quelt::MethodTrace scope(s_trace, "analyzePureEVPart");
    Steps steps(*this);
    QueltEeGetApplyingMDsVisitor finder(m_pContext, m_pBasicEff);
    QueltInSet* related = nullptr;
    QueltInSet* notRelated = nullptr;
    long result = steps.findApplyingDictionaries(node, finder, related, notRelated);
    if (result >= 0) {
        result = steps.fileUnderEach(*related, node, clone,
                                     {.unexpected = "ERROR, unexpected", .noCopy = "ERROR, unexpected"});
    }
    delete related;
    delete notRelated;
    return result;
}

long QueltEeGenExprToEeMMExprVisitor::Steps::findApplyingDictionaries(QueltEeNode& node,
                                                                      QueltEeGetApplyingMDsVisitor& finder,
                                                                      QueltInSet*& related,
                                                                      QueltInSet*& notRelated) const {
    if (m_visitor.m_inEVPart == 0) {
        return s_trace.fail("ERROR : this function should be called only in EV Part");
    }
    long result = node.acceptVisitor(finder);
    if (result < 0) {
        return s_trace.fail("ERROR : Accept visitor failed.", result);
    }
    if (finder.succeeded() == 0) {
        return s_trace.fail("ERROR, QueltEeGetApplyingMDsVisitor failed at some point");
    }
    result = finder.getSetOfApplyingMDs(related, notRelated);
    if (result < 0) {
        return s_trace.fail("ERROR : Call to getSetOfApplyingMDs() has Failed.", result);
    }
    if (related == nullptr) {
        return s_trace.fail("ERROR : Null pointer on RelatedMDs has been returned.");
    }
    if (notRelated == nullptr) {
        return s_trace.fail("ERROR : Null pointer on NotRelatedMDs has been returned.");
    }
    return related->IsEmpty() != 0 ? s_trace.fail("ERROR : No common MD Found ?") : result;
}

long QueltEeGenExprToEeMMExprVisitor::Steps::fileUnderEach(const QueltInSet& dictionaries, QueltEeNode& node,
                                                           unsigned char clone, const FilingErrors& errors) {
    makeTarget();
    long result = S_OK;
    auto elements = dictionaries.cBegin();
    for (int left = dictionaries.GetLength(); left > 0; --left) {
        const QueltEeModelDico* const dictionary = QueltEeModelDico::cast(elements.GetGoToNext());
        if (dictionary == nullptr) {
            return s_trace.fail(errors.unexpected);
        }
        QueltEeNodeRef* const own =
            clone != 0 ? m_visitor.m_pBelongings->keep(node.clone()) : node.getNodeRef();
        if (own == nullptr) {
            return s_trace.fail(errors.noCopy);
        }
        result = fileCriterion(*dictionary, own, errors.unexpected);
        if (result < 0) {
            return result;
        }
    }
    return result;
}

QueltEeMultiModelExpression& QueltEeGenExprToEeMMExprVisitor::Steps::makeTarget() {
    if (m_visitor.m_isChange == 0) {
        return evolutionVariant();
    }
    if (m_visitor.m_pChangeExpression == nullptr) {
        m_visitor.m_pChangeExpression = new QueltEeChangeExpression;
    }
    return *m_visitor.m_pChangeExpression;
}

long QueltEeGenExprToEeMMExprVisitor::Steps::fileCriterion(const QueltEeModelDico& dictionary,
                                                           QueltEeNodeRef* own, const char* emptyOwn) {
    if (isEmpty(own)) {
        return s_trace.fail(emptyOwn);
    }
    QueltEeNodeRef* inherited = nullptr;
    if (m_visitor.m_isChange != 0) {
        if (m_visitor.m_listOfBasicEffs.IsEmpty() == 0) {
            return s_trace.fail("ERROR : Change Expression is not supposed to have inherited effectivities");
        }
    } else {
        const long result = m_visitor.generateInheritedNodeRefForDico(dictionary, inherited);
        if (result < 0) {
            return s_trace.fail("ERROR : generateInheritedNodeRefForDico Failed", result);
        }
    }
    m_visitor.m_pBelongings->handOver(own);
    // Kept until it is filed: where a second visit's result is not heeded, what was refused must not be lost.
    auto* const criteria =
        m_visitor.m_pBelongings->keep(new QueltEeMultiModelExpression::ModelCriteria(&inherited, &own));
    const long result = makeTarget().setModelCriteria(dictionary, criteria);
    if (result < 0) {
        return s_trace.fail("ERROR : setModelCriteria failed", result);
    }
    m_visitor.m_pBelongings->handOver(criteria);
    return result;
}
