#include "QueltReconstituteEffectivityFromCompiledBinary.h"

#include "ChangeOperationsRetrieval.h"
#include "CompiledBinaryCore.h"

#include "infrastructure/QueltInTypedDefinition.h"

namespace {

const quelt::MigrationTrace s_trace("QueltReconstituteEffectivityFromCompiledBinary");

} // namespace

using Element = QueltReconstituteEffectivityFromCompiledBinary::OperationStackElement;

template class QueltInTyped<Element, QueltInObject>;

Element::OperationStackElement() = default;
Element::OperationStackElement(const OperationStackElement& other) = default;
Element::OperationStackElement(OperationStackElement&& other) noexcept
    // NOLINTNEXTLINE(performance-move-constructor-init): there is nothing in it that could be moved
    : OperationStackElement(static_cast<const OperationStackElement&>(other)) {}
Element::~OperationStackElement() = default;
Element& Element::operator=(const OperationStackElement& other) = default;
Element& Element::operator=(OperationStackElement&& other) noexcept {
    return *this = static_cast<const OperationStackElement&>(other);
}

long QueltReconstituteEffectivityFromCompiledBinary::RetrieveChangeOperations(
    const QueltBioBuffer& compiledBinary, QueltInList& operations, QueltInList& contextGuids) {
    const quelt::MethodTrace scope(s_trace, "RetrieveChangeOperations");
    const quelt::CompiledBinaryCore core;
    return quelt::ChangeOperationsRetrieval(s_trace, core, compiledBinary, operations, contextGuids).run();
}
