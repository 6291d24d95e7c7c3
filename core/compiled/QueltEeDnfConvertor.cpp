#include "compiled/QueltEeDnfConvertor.h"

#include "compiled/QueltDnfTree.h"
#include "compiled/QueltIDictionaryModelerAccess.h"
#include "effectivity/QueltEeEffectivity.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "expression/QueltEeExpressionContext.h"
#include "expression/QueltEeLeaves.h"

#include <algorithm>
#include <map>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace {

/// An option effectivity on a variable, as far as `leaf` is on one.
const QueltEeOptionEff* optionOf(const QueltEeNode& leaf) {
    const auto* const varEffLeaf = QueltEeVarEffLeaf::cast(&leaf);
    const auto* const option =
        QueltEeOptionEff::cast(varEffLeaf != nullptr ? varEffLeaf->getVarEff() : nullptr);
    return option != nullptr && option->getVar() != nullptr ? option : nullptr;
}

const QueltEeNamedValueVar& variableOf(const QueltEeOptionEff& option) {
    return *static_cast<const QueltEeNamedValueVar*>(option.getVar());
}

/// Makes the leaves of one tree.
class LeafConversion {
public:
    LeafConversion(const QueltEeModelDico& dictionary, QueltEeExpressionContext& context,
                   const QueltIDictionaryModelerAccess* access) noexcept
        : m_dictionary(dictionary), m_context(context), m_pAccess(access) {}

    /// Settles which variable each option of the form is on; before the first convert().
    void settleOptions(const QueltDnf& dnf) {
        ByGuid<std::vector<std::string_view>> named;
        std::vector<const QueltEeOptionEff*> options; // one for each GUID, in the order of the form
        for (const QueltDnf::Conjunction& conjunction : dnf.getConjunctions()) {
            for (const QueltEeNodeRef* const literal : conjunction) {
                if (const QueltEeOptionEff* const option = optionOf(*literal->getNode())) {
                    const auto [names, isNew] = named.try_emplace(variableOf(*option).getGuid().getBytes());
                    if (isNew) {
                        options.push_back(option);
                    }
                    appendNames(*option, names->second);
                }
            }
        }
        for (const QueltEeOptionEff* const option : options) {
            const QueltInGuid& guid = variableOf(*option).getGuid();
            m_options[guid.getBytes()] = variableFor(guid, named[guid.getBytes()]);
        }
    }

    /// The leaf of the tree for a leaf of the form; the caller owns it. Null when it gives no copy.
    QueltEeNodeRef* convert(const QueltEeNode& leaf) {
        if (const QueltEeOptionEff* const option = optionOf(leaf)) {
            return convertOption(*option);
        }
        const auto* const effLeaf = QueltEeEffLeaf::cast(&leaf);
        const QueltEeEffectivity* const target = effLeaf != nullptr ? effLeaf->getTargetEff() : nullptr;
        return target != nullptr ? convertEffectivity(target->getGuid(), effLeaf->isNegated() != 0)
                                 : leaf.clone();
    }

private:
    template <class T>
    using ByGuid = std::map<QueltInGuid::Bytes, T>;

    static void appendNames(const QueltEeOptionEff& option, std::vector<std::string_view>& names) {
        for (const std::uint32_t value : option.getValues()) {
            names.push_back(variableOf(option).getValueName(value));
        }
    }

    QueltEeNodeRef* convertEffectivity(const QueltInGuid& guid, bool isNegated) {
        QueltEeEffectivity*& effectivity = m_effectivities[guid.getBytes()];
        if (effectivity == nullptr) {
            effectivity = effectivityFor(guid);
        }
        auto* const leaf = new QueltEeEffLeaf(effectivity, &m_dictionary);
        if (isNegated) {
            leaf->opNot();
        }
        return leaf->getNodeRef();
    }

    QueltEeNodeRef* convertOption(const QueltEeOptionEff& option) {
        const QueltEeCatOptionVar* const variable = m_options.at(variableOf(option).getGuid().getBytes());
        auto converted = std::make_unique<QueltEeOptionEff>(variable);
        for (const std::uint32_t value : option.getValues()) {
            static_cast<void>(
                converted->addValue(variable->findValue(variableOf(option).getValueName(value)).value()));
        }
        if (option.getNoVar() != 0) {
            converted->switchNoVar();
        }
        if (option.isNegated() != 0) {
            converted->opNot();
        }
        return (new QueltEeVarEffLeaf(converted.release()))->getNodeRef();
    }

    QueltEeEffectivity* effectivityFor(const QueltInGuid& guid) {
        QueltEeEffectivity* const known = m_pAccess != nullptr ? m_pAccess->findEffectivity(guid) : nullptr;
        return known != nullptr ? known
                                : make<QueltEePredefEff>(guid, [](const QueltEePredefEff& /*made*/) {});
    }

    const QueltEeCatOptionVar* variableFor(const QueltInGuid& guid,
                                           const std::vector<std::string_view>& names) {
        const QueltEeCatOptionVar* const known = m_pAccess != nullptr ? m_pAccess->findOption(guid) : nullptr;
        const auto isThere = [known](std::string_view name) { return known->findValue(name).has_value(); };
        if (known != nullptr && std::ranges::all_of(names, isThere)) {
            return known;
        }
        return make<QueltEeCatOptionVar>(guid, [&names](QueltEeCatOptionVar& made) {
            for (const std::string_view name : names) {
                made.addValue(name);
            }
        });
    }

    /// A new object that stands for the GUID; the context owns it, which may outlive the arena that is
    /// current.
    template <class T, class Fill>
    T* make(const QueltInGuid& guid, Fill fill) {
        const QueltInHeapScope heap;
        auto made = std::make_unique<T>(guid.toString(), guid);
        T* const object = made.get();
        fill(*object);
        m_context.adopt(std::move(made));
        return object;
    }

    const QueltEeModelDico& m_dictionary;
    QueltEeExpressionContext& m_context;
    const QueltIDictionaryModelerAccess* m_pAccess;
    ByGuid<QueltEeEffectivity*> m_effectivities;
    ByGuid<const QueltEeCatOptionVar*> m_options;
};

} // namespace

QueltEeNodeRef* QueltEeDnfConvertor::Dnf2NodeRef(const QueltDnf& dnf, QueltEeModelDico& dictionary,
                                                 QueltEeExpressionContext& context,
                                                 const QueltIDictionaryModelerAccess* access) {
    LeafConversion conversion(dictionary, context, access);
    conversion.settleOptions(dnf);
    return quelt::makeDnfTree(dnf,
                              [&conversion](const QueltEeNode& leaf) { return conversion.convert(leaf); });
}
