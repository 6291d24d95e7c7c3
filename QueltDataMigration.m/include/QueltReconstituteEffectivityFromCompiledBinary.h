#pragma once

#include "QueltDataMigrationExport.h"

#include "infrastructure/QueltInGuid.h"
#include "infrastructure/QueltInObject.h"
#include "infrastructure/QueltInTyped.h"

#include <cstdint>

class QueltBioBuffer;
class QueltInList;

/// Reads compiled change effectivities back into the changes that they apply. It keeps no state between
/// calls; any number of threads may call it at once, each with its own lists.
///
/// Failures are results, but for one: where memory is exhausted, std::bad_alloc comes out, and what the lists
/// have got by then stays in them. A large binary takes some sixty times its bytes while it is read.
class QUELT_DATA_MIGRATION_API QueltReconstituteEffectivityFromCompiledBinary {
public:
    QueltReconstituteEffectivityFromCompiledBinary() = delete;

    class OperationStackElement;

    /// Reads the changes that a compiled effectivity applies, and the dictionaries that it was compiled for.
    ///
    /// The effectivity must have domain 2 and no other, with a full view of at least one context. The changes
    /// come from the first context's normal form, which must be a single change or a conjunction of changes,
    /// each negated or not; the GUIDs come from all contexts.
    ///
    /// @param compiledBinary what QueltCompiledBinaryWriter writes. It stays as it is: a copy is read.
    /// @param operations gets a new OperationStackElement for each change, in the order of the normal form.
    /// @param contextGuids gets a new QueltInGuid for each context, in their order.
    ///        Both lists are appended to, also when the operation fails: with what was found before it did.
    ///        The caller owns the elements. What a list refuses because of its class is deleted.
    /// @return S_OK; E_FAIL when a check of the operation failed, or when one of the lists has refused an
    ///         object, now or ever before; otherwise the negative result of the core's operation that failed,
    ///         as it stands. Every failure is traced, and the input behind it.
    static long RetrieveChangeOperations(const QueltBioBuffer& compiledBinary, QueltInList& operations,
                                         QueltInList& contextGuids);
};

extern template class QUELT_DATA_MIGRATION_API
    QueltInTyped<QueltReconstituteEffectivityFromCompiledBinary::OperationStackElement, QueltInObject>;

/// One change that a compiled effectivity applies, or takes away. A move copies: what was moved from
/// stays as it was.
class QUELT_DATA_MIGRATION_API QueltReconstituteEffectivityFromCompiledBinary::OperationStackElement
    : public QueltInTyped<OperationStackElement, QueltInObject> {
public:
    /// The name of the class, as the type registry shows it.
    static constexpr const char* s_className =
        "QueltReconstituteEffectivityFromCompiledBinary::OperationStackElement";

    /// The empty GUID, applied.
    OperationStackElement();
    /// A copy of both members.
    OperationStackElement(const OperationStackElement& other);
    /// The same copy.
    OperationStackElement(OperationStackElement&& other) noexcept;
    ~OperationStackElement() override;
    /// Copies both members; returns the element itself.
    OperationStackElement& operator=(const OperationStackElement& other);
    /// The same copy.
    OperationStackElement& operator=(OperationStackElement&& other) noexcept;

    /// The GUID of the change.
    QueltInGuid m_Guid;
    /// 1 when the change is applied, 0 when it is negated.
    std::int32_t m_Positive = 1;
};
