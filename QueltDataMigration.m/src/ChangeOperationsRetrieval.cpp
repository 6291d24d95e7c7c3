#include "ChangeOperationsRetrieval.h"

#include "QueltReconstituteEffectivityFromCompiledBinary.h"

#include "compiled/QueltBioBuffer.h"
#include "compiled/QueltFltEffectivity.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeOperators.h"
#include "infrastructure/QueltInList.h"
#include "infrastructure/QueltInMemory.h"

namespace quelt {

namespace {

using Element = QueltReconstituteEffectivityFromCompiledBinary::OperationStackElement;

// The domain of evolution, variants and changes, by its number, not by its place: there must be one domain
// only, and it must be this one.
constexpr unsigned int s_changeDomain = 2;
constexpr unsigned char s_takeOver = 1;

constexpr const char* s_nullGuid = "ERROR: Retrieve a null ModelDico guid.";
constexpr const char* s_unsupported = "ERROR: Unsupported content of compiled binary.";

/// Appends `object`, which goes when the list refuses it.
void append(QueltInList& list, std::unique_ptr<QueltInObject> object) {
    if (list.PutBack(*object) != 0) {
        static_cast<void>(object.release()); // the list's owner has it now
    }
}

} // namespace

long ChangeOperationsRetrieval::run() {
    const long result = checkLists(retrieve());
    if (result < 0) {
        reportInput(result);
    }
    return result;
}

long ChangeOperationsRetrieval::retrieve() {
    // What is declared later refers to what is declared before.
    std::unique_ptr<QueltFltEffectivity> effectivity;
    const QueltFltEffectivityView* view = nullptr;
    const QueltInGuid* contextGuid = nullptr;
    std::unique_ptr<QueltEeExpressionContext> context;
    QueltEeModelDico* dictionary = nullptr;
    std::unique_ptr<QueltEeNodeRef> tree;

    long result = readEffectivity(effectivity);
    if (result >= 0) {
        result = findView(*effectivity, view);
    }
    if (result >= 0) {
        result = addContextGuids(*view, contextGuid);
    }
    if (result >= 0) {
        const QueltInHeapScope scope; // contexts take over what comes from the heap
        context = m_core.makeContext();
        result = makeDictionary(*contextGuid, *context, dictionary);
    }
    if (result >= 0) {
        result = makeTree(*view, *dictionary, *contextGuid, *context, tree);
    }
    return result < 0 ? result : addOperations(tree->getNode());
}

long ChangeOperationsRetrieval::readEffectivity(std::unique_ptr<QueltFltEffectivity>& effectivity) const {
    if (m_trace.isActivated()) {
        m_trace.inform("Read compiled binary expression ", m_binary.toString().ConvertToChar());
    }
    QueltBioBuffer buffer(m_binary);
    QueltInObject* object = nullptr;
    const long result = m_core.read(buffer, object);
    if (result < 0) {
        return m_trace.fail("ERROR: Call to QueltCompiledBinaryParser::Read() has failed.", result);
    }
    if (object == nullptr) {
        return m_trace.fail(
            "ERROR: Call to QueltCompiledBinaryParser::Read() returned a null QueltInObject pointer.");
    }
    effectivity.reset(QueltFltEffectivity::cast(object));
    if (effectivity == nullptr) {
        return m_trace.fail("ERROR: Unable to cast compiled binary expression into QueltFltEffectivity.");
    }
    return S_OK;
}

long ChangeOperationsRetrieval::findView(const QueltFltEffectivity& effectivity,
                                         const QueltFltEffectivityView*& view) const {
    if (effectivity.getNbDomainEffectivity() != 1) {
        return m_trace.fail("ERROR: Input compiled binary contains more than one domain.");
    }
    const QueltFltDomainEffectivity* const domain = effectivity.getDomainEffectivity(s_changeDomain);
    if (domain == nullptr) {
        return m_trace.fail(
            "ERROR: Unable to cast retrieved domain effectivity into QueltFltDomainEffectivity.");
    }
    view = domain->getEffectivityView(QueltExpressionView::full);
    if (view == nullptr) {
        return m_trace.fail("ERROR: Unable to cast retrieved effectivity view into QueltFltEffectivityView.");
    }
    return S_OK;
}

long ChangeOperationsRetrieval::addContextGuids(const QueltFltEffectivityView& view,
                                                const QueltInGuid*& first) {
    if (view.m_contexts.GetLength() < 1) {
        return m_trace.fail("ERROR: Input compiled binary should contain at least one context.");
    }
    for (auto contexts = view.m_contexts.cBegin(); contexts.IsEnd() == 0; contexts.Next()) {
        const auto* const guid = QueltInGuid::cast(contexts.GetKey());
        if (guid == nullptr) {
            return m_trace.fail(s_nullGuid);
        }
        if (m_trace.isActivated()) {
            m_trace.inform("Retrieved ModelDico guid ", guid->toString().ConvertToChar());
        }
        std::unique_ptr<QueltInObject> copy(guid->clone(nullptr));
        if (copy == nullptr) {
            return m_trace.fail(s_nullGuid);
        }
        append(m_contextGuids, std::move(copy));
        if (contexts.IsBegin() != 0) {
            first = guid;
        }
    }
    return S_OK;
}

/// The dictionary's name is the text of its GUID.
long ChangeOperationsRetrieval::makeDictionary(const QueltInGuid& guid, QueltEeExpressionContext& context,
                                               QueltEeModelDico*& dictionary) const {
    QueltInString name;
    long result = m_core.convertGuidToString(guid, name);
    if (result < 0) {
        return m_trace.fail("ERROR: Call to ConvertGuidToString() failed.", result);
    }
    auto made = std::make_unique<QueltEeModelDico>(name, guid);
    QueltEeModelDico* added = made.get();
    result = context.AddModelDico(added, s_takeOver);
    if (result < 0) {
        return m_trace.fail("ERROR: Unable to add current ModelDico to ExpressionContext.", result);
    }
    static_cast<void>(made.release());
    static_cast<void>(context.GetModelDico(name, dictionary));
    if (dictionary == nullptr) {
        return m_trace.fail("ERROR: Unable to Retrieved created ModelDico from ExpressionContext.");
    }
    return S_OK;
}

long ChangeOperationsRetrieval::makeTree(const QueltFltEffectivityView& view, QueltEeModelDico& dictionary,
                                         const QueltInGuid& contextGuid, QueltEeExpressionContext& context,
                                         std::unique_ptr<QueltEeNodeRef>& tree) const {
    QueltDnf* dnf = nullptr;
    const long result = view.getDnf(contextGuid, dnf);
    if (result < 0) {
        return m_trace.fail("ERROR: Unable to retrieve Dnf for current ModelDico.", result);
    }
    if (dnf == nullptr) {
        return m_trace.fail("ERROR: Retrieve a null pointer on QueltDnf.");
    }
    tree.reset(m_core.dnf2NodeRef(*dnf, dictionary, context));
    if (tree == nullptr) {
        return m_trace.fail(
            "ERROR: Call to QueltEeDnfConvertor::Dnf2NodeRef() returned a null QueltEeNodeRef pointer.");
    }
    if (m_trace.isActivated()) {
        m_trace.inform("Retrieved Dnf : ", tree->toString().ConvertToChar());
    }
    return S_OK;
}

long ChangeOperationsRetrieval::addOperations(const QueltEeNode* node) {
    if (const auto* const conjunction = QueltEeAndOp::cast(node)) {
        return addConjunction(*conjunction);
    }
    return addOperation(QueltEeEffLeaf::cast(node));
}

long ChangeOperationsRetrieval::addConjunction(const QueltEeAndOp& conjunction) {
    QueltInLinkList children(QueltEeNodeRef::sType());
    conjunction.getChildrenRefs(children);
    if (children.IsEmpty() != 0) {
        return m_trace.fail("ERROR: Unexpected to have no child");
    }
    auto remaining = children.cBegin();
    while (const QueltInObject* const child = remaining.GetGoToNext()) {
        const auto* const reference = QueltEeNodeRef::cast(child);
        if (reference == nullptr) {
            return m_trace.fail("ERROR: Retrieved element isn't a QueltEeNodeRef");
        }
        const long result = addOperation(QueltEeEffLeaf::cast(reference->getNode()));
        if (result < 0) {
            return result;
        }
    }
    return S_OK;
}

/// `leaf` is null for every other kind of node.
long ChangeOperationsRetrieval::addOperation(const QueltEeEffLeaf* leaf) {
    const QueltEeEffectivity* const change = leaf != nullptr ? leaf->getTargetEff() : nullptr;
    if (change == nullptr) {
        return m_trace.fail(s_unsupported);
    }
    auto element = std::make_unique<Element>();
    element->m_Guid = change->getGuid();
    element->m_Positive = leaf->isNegated() == 0 ? 1 : 0;
    append(m_operations, std::move(element));
    return S_OK;
}

long ChangeOperationsRetrieval::checkLists(long result) const {
    if (m_operations.badCastErr() != 0 || m_contextGuids.badCastErr() != 0) {
        return m_trace.fail("ERROR: Input lists don't accept required object types.");
    }
    return result;
}

void ChangeOperationsRetrieval::reportInput(long result) const {
    QueltInString text("DEBUG: Input compiled binary ");
    text.append(m_binary.toString().view());
    m_trace.fail(text.ConvertToChar(), result);
}

} // namespace quelt
