#include "workloads/Workload.h"

#include "QueltEeTarselMigrationServices.h"
#include "expression/QueltEeNode.h"
#include "plain/FromCore.h"
#include "workloads/OutputCopy.h"

#include <benchmark/benchmark.h>

#include <stdexcept>

namespace quelt::bench {

Expressions::Expressions(MakeTree makeTree, std::size_t nodes, unsigned dictionaries)
    : m_pMakeTree(makeTree), m_product(dictionaries),
      m_plainContext(plain::contextFrom(m_product.context())) {
    Random random;
    for (std::size_t made = 0; made < s_nodes; made += nodes) {
        add(*makeTree(m_product, random));
    }
}

void Expressions::renew() {
    m_trees.clear();
    m_input.reset();
    const QueltInArenaScope scope(m_input);
    Random random;
    while (m_trees.size() < m_outputs.size()) {
        m_trees.push_back(m_pMakeTree(m_product, random).release()); // goes with the arena
    }
}

void Expressions::add(const Tree& tree) {
    std::string expected;
    if (tree.IsList() != 0) {
        const QueltQmSpecList* list = nullptr;
        tree.GetList(list);
        m_plainLists.push_back(plain::listFrom(*list));
        expected = plain::describe(plain::convert(m_plainLists.back(), m_plainContext));
    } else {
        m_plainTrees.push_back(plain::nodeFrom(*tree.GetNodeRef()->getNode()));
        m_plainOutputs.push_back(plain::convert(*m_plainTrees.back(), m_plainContext));
        expected = plain::describe(m_plainOutputs.back());
    }
    {
        const QueltInArenaScope scope(m_converted);
        m_outputs.push_back(makeOutput(tree));
    }
    if (const std::string found = describeOutput(*m_outputs.back()); found != expected) {
        throw std::runtime_error("the programs disagree:\n" + found + expected);
    }
}

QueltInMap* Expressions::makeOutput(const Tree& tree) {
    m_capture.clear();
    QueltInMap* map = nullptr;
    const long result = QueltEeTarselMigrationServices::ConvertEeGenericExprToEeExpr(
        tree, m_product.context(), 0, map, nullptr);
    if (result < 0) {
        throw std::runtime_error("a conversion failed");
    }
    benchmark::DoNotOptimize(m_capture.lines().data());
    return map;
}

void Expressions::convert(std::size_t record) {
    benchmark::DoNotOptimize(makeOutput(*m_trees[record]));
}

void Expressions::copyOutput(std::size_t record) {
    benchmark::DoNotOptimize(bench::copyOutput(*m_outputs[record]));
}

void Expressions::convertPlainly(std::size_t record) {
    if (m_plainTrees.empty()) {
        benchmark::DoNotOptimize(plain::convert(m_plainLists[record], m_plainContext).criteria.data());
    } else {
        benchmark::DoNotOptimize(plain::convert(*m_plainTrees[record], m_plainContext).history.get());
    }
}

} // namespace quelt::bench
