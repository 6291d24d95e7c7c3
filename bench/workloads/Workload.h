#pragma once

#include "workloads/Product.h"

#include "compiled/QueltBioBuffer.h"
#include "infrastructure/QueltInMap.h"
#include "infrastructure/QueltInMemory.h"
#include "infrastructure/QueltInTraceSink.h"
#include "plain/Plain.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace quelt::bench {

/// Records of one kind, so many that the branch predictor does not learn them, and what is measured of each.
/// Making one compares what the two programs answer, and throws std::runtime_error where they differ.
class Workload {
public:
    Workload() = default;
    virtual ~Workload() = default;
    Workload(const Workload&) = delete;
    Workload& operator=(const Workload&) = delete;

    [[nodiscard]] virtual std::size_t records() const = 0;
    /// Makes the records anew, for a record is converted once: what its nodes remember of a conversion would
    /// make the next one cheaper than any that a store asks for.
    virtual void renew() {}
    /// Converts a record, in the memory that is current.
    virtual void convert(std::size_t record) = 0;
    /// Copies what the record was converted to.
    virtual void copyOutput(std::size_t record) = 0;
    /// Does what convert() does, in plain C++, on the heap.
    virtual void convertPlainly(std::size_t record) = 0;

    /// How many nodes the records have together, at least.
    static constexpr std::size_t s_nodes = 40000;
};

using MakeTree = std::unique_ptr<Tree> (*)(const Product&, Random&);

/// Trees or lists.
class Expressions : public Workload {
public:
    /// Expressions that `makeTree` makes, of `nodes` nodes each, for a product with so many dictionaries.
    Expressions(MakeTree makeTree, std::size_t nodes, unsigned dictionaries);

    [[nodiscard]] std::size_t records() const override { return m_outputs.size(); }
    void renew() override;
    void convert(std::size_t record) override;
    void copyOutput(std::size_t record) override;
    void convertPlainly(std::size_t record) override;

    [[nodiscard]] const Product& product() const noexcept { return m_product; }
    [[nodiscard]] const plain::Context& plainContext() const noexcept { return m_plainContext; }
    /// What the record was converted to.
    [[nodiscard]] const QueltInMap& output(std::size_t record) const { return *m_outputs[record]; }
    /// The same, where it was a tree.
    [[nodiscard]] const plain::Expression& plainOutput(std::size_t record) const {
        return m_plainOutputs[record];
    }

private:
    [[nodiscard]] QueltInMap* makeOutput(const Tree& tree);
    void add(const Tree& tree);

    MakeTree m_pMakeTree;
    Product m_product;
    // Trees and outputs are in arenas, as they are in the host.
    QueltInArena m_input;
    QueltInArena m_converted;
    std::vector<const Tree*> m_trees;
    std::vector<const QueltInMap*> m_outputs;
    QueltInTraceCapture m_capture{QueltInTraceCapture::Wanted::reports}; // as the host has one
    plain::Context m_plainContext;
    std::vector<std::unique_ptr<plain::Node>> m_plainTrees; // or
    std::vector<plain::Expression> m_plainOutputs;
    std::vector<plain::List> m_plainLists;
};

/// Compiled changes of five operations, for two dictionaries.
class CompiledChanges : public Workload {
public:
    CompiledChanges();

    [[nodiscard]] std::size_t records() const override { return m_binaries.size(); }
    void convert(std::size_t record) override;
    void copyOutput(std::size_t record) override;
    void convertPlainly(std::size_t record) override;

private:
    void check(std::size_t record) const;

    std::vector<QueltBioBuffer> m_binaries;
    std::vector<plain::Changes> m_changes;
};

} // namespace quelt::bench
