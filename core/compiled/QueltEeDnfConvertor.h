#pragma once

#include "infrastructure/QueltCoreExport.h"

class QueltDnf;
class QueltEeExpressionContext;
class QueltEeModelDico;
class QueltEeNodeRef;
class QueltIDictionaryModelerAccess;

/// Turns the disjunctive normal forms of compiled effectivities into trees of nodes.
class QUELT_CORE_API QueltEeDnfConvertor {
public:
    QueltEeDnfConvertor() = delete;

    /// A new tree that says what `dnf` says; the caller owns it. No conjunction is FALSE, one is what its
    /// literals make, several are an OR of such; no literal is TRUE, one is a leaf, several are an AND of
    /// leaves, each in its order. Null when a literal gives no copy.
    ///
    /// The tree does not depend on what the leaves of `dnf` refer to:
    /// - an effectivity leaf refers, in `dictionary`, to the effectivity with the same GUID that `access`
    ///   knows; where it knows none, and where `access` is null, to a new QueltEePredefEff with that GUID and
    ///   its text as name, one for all leaves of the tree;
    /// - an option leaf is on the option with the same GUID that `access` knows, provided that it has all
    ///   values that `dnf` names for the option; else on a new QueltEeCatOptionVar with that GUID, its text
    ///   as name and those values, in the order in which they are first named, one for all leaves of the
    ///   tree;
    /// - any other leaf is a copy, on the variable that it is on.
    ///
    /// What is new is handed over to `context`, which must outlive the tree, as must `dictionary` and
    /// `access`; it comes from the heap, even where an arena is current. When no tree comes out, what was
    /// handed over stays with the context.
    [[nodiscard]] static QueltEeNodeRef* Dnf2NodeRef(const QueltDnf& dnf, QueltEeModelDico& dictionary,
                                                     QueltEeExpressionContext& context,
                                                     const QueltIDictionaryModelerAccess* access);
};
