#pragma once

#include "CompiledBinaryCore.h"
#include "MigrationTrace.h"

#include <memory>

class QueltEeAndOp;
class QueltEeEffLeaf;
class QueltFltEffectivity;
class QueltFltEffectivityView;
class QueltInList;

namespace quelt {

/// Takes a compiled effectivity apart into the changes that it applies and the GUIDs of its contexts. Used
/// once.
class ChangeOperationsRetrieval {
public:
    /// @param trace the lines are written through it.
    /// @param binary is copied before it is read.
    /// @param operations, contextGuids are appended to.
    ChangeOperationsRetrieval(const MigrationTrace& trace, const CompiledBinaryCore& core,
                              const QueltBioBuffer& binary, QueltInList& operations,
                              QueltInList& contextGuids) noexcept
        : m_trace(trace), m_core(core), m_binary(binary), m_operations(operations),
          m_contextGuids(contextGuids) {}

    /// As QueltReconstituteEffectivityFromCompiledBinary::RetrieveChangeOperations, without its trace scope.
    [[nodiscard]] long run();

private:
    // Each of these answers S_OK and has set what it is to find, or has traced why not.
    long retrieve();
    long readEffectivity(std::unique_ptr<QueltFltEffectivity>& effectivity) const;
    long findView(const QueltFltEffectivity& effectivity, const QueltFltEffectivityView*& view) const;
    long addContextGuids(const QueltFltEffectivityView& view, const QueltInGuid*& first);
    long makeDictionary(const QueltInGuid& guid, QueltEeExpressionContext& context,
                        QueltEeModelDico*& dictionary) const;
    long makeTree(const QueltFltEffectivityView& view, QueltEeModelDico& dictionary,
                  const QueltInGuid& contextGuid, QueltEeExpressionContext& context,
                  std::unique_ptr<QueltEeNodeRef>& tree) const;
    long addOperations(const QueltEeNode* node);
    long addConjunction(const QueltEeAndOp& conjunction);
    long addOperation(const QueltEeEffLeaf* leaf);

    long checkLists(long result) const;
    void reportInput(long result) const;

    const MigrationTrace& m_trace;
    const CompiledBinaryCore& m_core;
    const QueltBioBuffer& m_binary;
    QueltInList& m_operations;
    QueltInList& m_contextGuids;
};

} // namespace quelt
