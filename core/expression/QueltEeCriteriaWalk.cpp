#include "expression/QueltEeCriteriaWalk.h"

#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeVisit.h"
#include "expression/QueltQmSpecList.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInText.h"

#include <memory>

namespace quelt {

namespace {

using OwnedReference = std::unique_ptr<QueltEeNodeRef>;

/// A leaf for the time of a visit. The walk holds it: whoever wants to keep it gets an alias.
OwnedReference makeLeaf(std::unique_ptr<QueltEeVarEff> effectivity) {
    auto* const leaf = new QueltEeVarEffLeaf(effectivity.get());
    effectivity.release();
    return OwnedReference(leaf->getNodeRef()->takeFor(nullptr));
}

/// Puts what the leaf holds after its visit in the place of the criterion, if it still is such a leaf and
/// holds something.
long store(const QueltEeNodeRef& reference, unsigned int position, QueltQmSpecList& list) {
    QueltEeVarEffLeaf* const leaf = QueltEeVarEffLeaf::cast(reference.getNode());
    QueltEeVarEff* const effectivity = leaf != nullptr ? leaf->releaseVarEff() : nullptr;
    return effectivity != nullptr ? list.replaceVarEff(position, *effectivity) : S_OK;
}

/// `target` is null, or `list` itself.
long showVarEffs(const QueltQmSpecList& list, QueltQmSpecList* target, QueltEeNodeVisitor& visitor) {
    const auto length = static_cast<unsigned int>(list.getVarEffs().GetLength());
    long result = S_OK;
    for (unsigned int position = 0; result >= 0 && position < length; ++position) {
        const QueltEeVarEff* const criterion =
            QueltEeVarEff::cast(list.getVarEffs().Get(QueltInIntHolder(position)));
        std::unique_ptr<QueltEeVarEff> copy(criterion != nullptr ? criterion->createVarEffClone() : nullptr);
        if (copy == nullptr) {
            return E_FAIL;
        }
        const OwnedReference reference = makeLeaf(std::move(copy));
        result = visitNodeOf(reference.get(), visitor);
        if (const long stored =
                result >= 0 && target != nullptr ? store(*reference, position, *target) : S_OK;
            stored < 0) {
            return stored;
        }
    }
    return result;
}

long showNamed(const QueltInSet& named, const QueltEeModelDico* dictionary, QueltEeNodeVisitor& visitor) {
    long result = S_OK;
    QueltInSet::const_iterator effectivities = named.cBegin();
    while (QueltInObject* const effectivity = effectivities.GetGoToNext()) {
        result = showEffectivity(QueltEeEffectivity::cast(effectivity), dictionary, visitor);
        if (result < 0) {
            break;
        }
    }
    return result;
}

long show(const QueltQmSpecList* list, QueltQmSpecList* target, const QueltEeModelDico* dictionary,
          QueltEeNodeVisitor& visitor) {
    if (list == nullptr) {
        return S_OK;
    }
    const long result = showVarEffs(*list, target, visitor);
    if (result < 0 || list->getNamedEffectivities().IsEmpty() != 0) {
        return result;
    }
    return showNamed(list->getNamedEffectivities(), dictionary, visitor);
}

} // namespace

long showEffectivity(QueltEeEffectivity* effectivity, const QueltEeModelDico* dictionary,
                     QueltEeNodeVisitor& visitor) {
    auto* const leaf = new QueltEeEffLeaf(effectivity, dictionary);
    const OwnedReference reference(leaf->getNodeRef()->takeFor(nullptr));
    return visitNodeOf(reference.get(), visitor);
}

long showCriteria(const QueltQmSpecList* list, const QueltEeModelDico* dictionary,
                  QueltEeNodeVisitor& visitor) {
    return show(list, nullptr, dictionary, visitor);
}

long showAndStoreCriteria(QueltQmSpecList* list, const QueltEeModelDico* dictionary,
                          QueltEeNodeVisitor& visitor) {
    return show(list, list, dictionary, visitor);
}

QueltInString describeCriteria(std::string_view mode, const QueltQmSpecList* list) {
    const QueltInString criteria = list != nullptr ? list->toString() : QueltInString();
    TextBuilder text;
    text << mode;
    if (!criteria.view().empty()) {
        text << ": " << criteria.view();
    }
    return text.take();
}

} // namespace quelt
