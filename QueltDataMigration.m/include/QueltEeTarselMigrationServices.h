#pragma once

#include "QueltDataMigrationExport.h"

class QueltEeBasicEff;
class QueltEeExpressionContext;
class QueltEeGenericExpression;
class QueltInMap;

/// The migration services. They keep no state between calls; any number of threads may call them at once,
/// each with its own expressions, and may share a context.
///
/// Failures are results, but for one: where memory is exhausted, std::bad_alloc comes out. What had been
/// built by then and not filed belongs to nobody, as after other failures.
///
/// Visits nest on the calling thread's stack, at most QueltEeNode::s_maxVisitDepth deep. A thread that
/// converts or branches needs 2 MB of it: visits nested that deep took up to 1.5 MB, built without
/// optimisation. Where threads are given less (1 MB is common), a host must ask for more.
///
/// The environment variables CGE_MigRen and CFG_DA_Migration_Optimization are read once, when the module is
/// loaded; only whether they are set counts.
class QUELT_DATA_MIGRATION_API QueltEeTarselMigrationServices {
public:
    /// Returns the object itself; there is nothing to copy.
    QueltEeTarselMigrationServices& operator=(const QueltEeTarselMigrationServices& other);

    /// Converts a generic expression into expressions of the multi-model kind, by domain.
    ///
    /// A specification list becomes at most two QueltEeFilterExpression: under the key 1 the dates, without
    /// dictionary; under 2 all other criteria and the named effectivities, in one dictionary. A tree becomes,
    /// with `change` zero, up to three QueltEeEffectivityExpression: under 2 the evolution/variant part,
    /// under 1 the history part, under 3 an expression that is constant; with `change` non-zero, one
    /// QueltEeChangeExpression under 2.
    ///
    /// @param genericExpr what to convert. Its structure is left as it is; the intervals of serial
    ///        effectivities on series of the external types 12 and 14 are rewritten in place, each finite
    ///        bound one lower, and, with CGE_MigRen, through the model years of the series' revision
    ///        table.
    /// @param context the dictionaries; read only.
    /// @param change non-zero when the tree is a change. Lists ignore it.
    /// @param outputMap receives a new map, from QueltInIntHolder to the expressions, before any other
    ///        work is done, and also when the conversion fails: then with what was filed so far. The
    ///        caller owns the map and the expressions in it (QueltInDeleteWithObjects); what the pointer
    ///        held before is overwritten, never deleted.
    /// @param basicEff the basic effectivity on whose behalf the conversion runs, or null: it confines
    ///        the dictionaries in which features are looked for. Lists ignore it.
    /// @return not negative on success. E_FAIL when a check of the service failed; otherwise the negative
    ///        result of the operation that failed, as it stands: E_NOTIMPL for what is deliberately not
    ///        converted, E_UNEXPECTED for a restriction leaf, the core's own codes for what the core
    ///        refused. Every failure but those two is traced. With the trace activated the map obtained
    ///        from a tree is printed, and a map that cannot be printed makes the call fail with E_FAIL
    ///        although it is complete.
    ///
    /// After a failure, what had been built and not filed belongs to nobody; open a QueltInArenaScope around
    /// the call to get it back.
    static long ConvertEeGenericExprToEeExpr(const QueltEeGenericExpression& genericExpr,
                                             const QueltEeExpressionContext& context, unsigned char change,
                                             QueltInMap*& outputMap, QueltEeBasicEff* basicEff);

    /// Turns the flat series of the expressions in a map into branching series, in place.
    ///
    /// Each serial effectivity on a series of another external type than 13 gives way to a tree-series
    /// effectivity in the dictionary of its series, on the branching series 19 for the external type 14, on
    /// the branching series 18 for the others. Each interval becomes a selection: a single element where both
    /// bounds are equal, else the way down from the lower to the upper bound, which is always included;
    /// 2000000000 is the root as a lower bound and all leaves as an upper one. What stands below a NOT-domain
    /// stays as it is. Effectivities that the expressions refer to have their own expressions rewritten too;
    /// they are changed by the call like the expressions, so threads may share them only when nobody branches
    /// meanwhile. Criteria of lists are stored back in filters of the map, and in no other list.
    ///
    /// @param context where the expressions belong; read only.
    /// @param expressions a map whose values are expressions, as ConvertEeGenericExprToEeExpr makes it; the
    ///        keys are not looked at. Map and expressions stay the caller's.
    /// @return 1 when an interval with equal bounds has become a single element, else 0, also for an empty
    ///         map: both are successes. E_FAIL when a value is no expression, or a check failed; otherwise
    ///         the negative result of the operation that failed, as it stands, E_OUTOFMEMORY for
    ///         effectivities that refer to each other too deep (QueltEeNode::s_maxVisitDepth). Every failure
    ///         is traced.
    ///
    /// The first failure ends the walk: what was rewritten before it stays so. The expressions of the
    /// effectivities on whose way it happened are taken out of them and belong to nobody; open a
    /// QueltInArenaScope around the call to get them back.
    static long ConvertFromFlatSeriesExprToBranchingExpr(const QueltEeExpressionContext& context,
                                                         QueltInMap& expressions);
};
