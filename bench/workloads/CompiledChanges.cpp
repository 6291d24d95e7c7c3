#include "QueltReconstituteEffectivityFromCompiledBinary.h"
#include "compiled/QueltCompiledBinaryWriter.h"
#include "compiled/QueltDnf.h"
#include "compiled/QueltFltEffectivity.h"
#include "effectivity/QueltEeEffectivity.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeNode.h"
#include "infrastructure/QueltInList.h"
#include "workloads/Workload.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <stdexcept>

namespace quelt::bench {

namespace {

using Reconstitute = QueltReconstituteEffectivityFromCompiledBinary;
using Element = Reconstitute::OperationStackElement;

constexpr std::size_t s_operations = 5;

/// What is read back.
struct Lists {
    QueltInList operations{Element::sType()};
    QueltInList contexts{QueltInGuid::sType()};
};

/// Five changes, some negated, in each of two dictionaries.
QueltBioBuffer compile(Random& random) {
    QueltFltEffectivity effectivity;
    auto* const view = new QueltFltEffectivityView;
    for (std::uint32_t dictionary = 0; dictionary < 2; ++dictionary) {
        auto* const form = new QueltDnf;
        form->addConjunction();
        for (std::size_t i = 0; i < s_operations; ++i) {
            auto change = std::make_unique<QueltEePredefEff>("change", makeGuid(1 + random() % 100000));
            auto* const leaf = new QueltEeEffLeaf(change.get(), nullptr);
            if (random() % 4 == 0) {
                leaf->opNot();
            }
            form->addLiteral(leaf->getNodeRef());
            effectivity.adopt(std::move(change));
        }
        view->addContext(makeGuid(1000000 + dictionary), form);
    }
    auto* const domain = new QueltFltDomainEffectivity;
    domain->addView(QueltExpressionView::full, view);
    effectivity.addDomain(2, domain);
    QueltBioBuffer binary;
    if (QueltCompiledBinaryWriter::Write(effectivity, binary) < 0) {
        throw std::runtime_error("a change could not be compiled");
    }
    return binary;
}

} // namespace

CompiledChanges::CompiledChanges() {
    Random random;
    for (std::size_t made = 0; made < s_nodes; made += 1 + s_operations) {
        m_binaries.push_back(compile(random));
        m_changes.push_back(plain::decode(m_binaries.back().getBytes()));
        QueltInArena arena;
        const QueltInArenaScope scope(arena);
        check(m_binaries.size() - 1);
    }
}

void CompiledChanges::check(std::size_t record) const {
    Lists lists;
    const plain::Changes& expected = m_changes[record];
    bool areSame =
        Reconstitute::RetrieveChangeOperations(m_binaries[record], lists.operations, lists.contexts) >= 0;
    auto operations = lists.operations.cBegin();
    for (const plain::Operation& operation : expected.operations) {
        const auto* const found = Element::cast(operations.GetGoToNext());
        areSame = areSame && found != nullptr &&
                  std::ranges::equal(found->m_Guid.getBytes(), operation.change) &&
                  (found->m_Positive != 0) == operation.isApplied;
    }
    auto contexts = lists.contexts.cBegin();
    for (const plain::Guid& guid : expected.contexts) {
        const auto* const found = QueltInGuid::cast(contexts.GetGoToNext());
        areSame = areSame && found != nullptr && std::ranges::equal(found->getBytes(), guid);
    }
    if (!areSame || operations.GetGoToNext() != nullptr || contexts.GetGoToNext() != nullptr) {
        throw std::runtime_error("the programs disagree about a compiled change");
    }
}

void CompiledChanges::convert(std::size_t record) {
    Lists lists; // the elements go with the arena
    benchmark::DoNotOptimize(
        Reconstitute::RetrieveChangeOperations(m_binaries[record], lists.operations, lists.contexts));
}

void CompiledChanges::copyOutput(std::size_t record) {
    Lists lists;
    for (const plain::Operation& operation : m_changes[record].operations) {
        auto* const element = new Element;
        element->m_Guid = QueltInGuid(operation.change);
        element->m_Positive = operation.isApplied ? 1 : 0;
        lists.operations.PutBack(*element);
    }
    for (const plain::Guid& guid : m_changes[record].contexts) {
        lists.contexts.PutBack(*new QueltInGuid(guid));
    }
    benchmark::DoNotOptimize(lists.operations.GetLength());
}

void CompiledChanges::convertPlainly(std::size_t record) {
    benchmark::DoNotOptimize(plain::decode(m_binaries[record].getBytes()).operations.data());
}

} // namespace quelt::bench
