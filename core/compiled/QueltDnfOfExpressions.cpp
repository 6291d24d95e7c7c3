// What expressions do with normal forms. It stands here, not with the expressions, because it needs QueltDnf,
// which is made of their nodes.

#include "compiled/QueltDnf.h"
#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeNode.h"
#include "infrastructure/QueltInMemory.h"
#include "infrastructure/QueltInResult.h"

#include <memory>
#include <utility>
#include <vector>

namespace {

using OwnedTree = std::unique_ptr<QueltEeNodeRef>;

long makeDnf(const QueltEeFilterExpression& filter, bool negated, QueltDnf*& dnf) {
    dnf = nullptr;
    const OwnedTree tree = [&filter] {
        const QueltInHeapScope scratch;
        return OwnedTree(filter.makeTree());
    }();
    return tree != nullptr ? QueltDnf::make(*tree->getNode(), negated, dnf) : E_FAIL;
}

/// The normal form of `part` as a tree.
long developPart(const QueltEeNodeRef& part, OwnedTree& developed) {
    if (part.getNode() == nullptr) {
        return E_INVALIDARG;
    }
    QueltDnf* made = nullptr;
    const long result = [&] {
        const QueltInHeapScope scratch;
        return QueltDnf::make(*part.getNode(), false, made);
    }();
    const std::unique_ptr<QueltDnf> dnf(made);
    if (result < 0) {
        return result;
    }
    developed.reset(dnf->makeTree());
    return developed != nullptr ? S_OK : E_FAIL;
}

/// Puts `tree` in the place of `part`. An aliased tree belongs to another holder and stays.
void replacePart(QueltEeNodeRef*& part, OwnedTree tree) {
    if (part->ownsNode()) {
        part->getNode()->giveWayTo(tree.release());
    } else {
        delete std::exchange(part, tree.release()->takeFor(nullptr));
    }
}

} // namespace

long QueltEeFilterExpression::getDNF(QueltDnf*& dnf) const {
    return makeDnf(*this, false, dnf);
}

long QueltEeFilterExpression::getNotDNF(QueltDnf*& dnf) const {
    return makeDnf(*this, true, dnf);
}

long QueltEeMultiModelExpression::develop() {
    std::vector<QueltEeNodeRef**> parts{&m_pGlobal};
    for (const Filed& filed : m_filed) {
        parts.push_back(&filed.criteria->m_pInherited);
        parts.push_back(&filed.criteria->m_pOwn);
    }
    std::erase_if(parts, [](QueltEeNodeRef** part) { return *part == nullptr; });
    std::vector<OwnedTree> developed(parts.size());
    bool isChanged = false;
    for (std::size_t at = 0; at < parts.size(); ++at) {
        const long result = developPart(**parts[at], developed[at]);
        if (result < 0) {
            return result;
        }
        // Printing is exact: trees that print the same are the same.
        isChanged = isChanged || !(developed[at]->toString() == (*parts[at])->toString());
    }
    // When one part is replaced all are, since one may hold aliases of what stands in another one.
    for (std::size_t at = 0; isChanged && at < parts.size(); ++at) {
        replacePart(*parts[at], std::move(developed[at]));
    }
    return isChanged ? 1 : S_OK;
}
