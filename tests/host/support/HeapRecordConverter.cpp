#include "host/support/HeapRecordConverter.h"

#include "QueltEeTarselMigrationServices.h"
#include "QueltReconstituteEffectivityFromCompiledBinary.h"

#include <new>

namespace quelt::host::test {

namespace {

/// What a service hands to its caller, and goes with him.
struct OwnedMap {
    OwnedMap() = default;
    ~OwnedMap() { QueltInDeleteWithObjects(map); }
    OwnedMap(const OwnedMap&) = delete;
    OwnedMap& operator=(const OwnedMap&) = delete;
    QueltInMap* map = nullptr;
};

struct OwnedContent {
    OwnedContent() = default;
    ~OwnedContent() {
        deleteAll(content.operations);
        deleteAll(content.contexts);
    }
    OwnedContent(const OwnedContent&) = delete;
    OwnedContent& operator=(const OwnedContent&) = delete;
    CompiledContent content;

private:
    static void deleteAll(QueltInList& list) {
        for (auto objects = list.cBegin(); const QueltInObject* const object = objects.GetGoToNext();) {
            delete object;
        }
    }
};

} // namespace

HeapRecordConverter::HeapRecordConverter(const LoadedContext& context, ConvertOptions options)
    : m_options(options), m_context(context), m_reader(context, options.branchesAll), m_answerWriter(context),
      m_capture(options.withTrace ? QueltInTraceCapture::Wanted::everything
                                  : QueltInTraceCapture::Wanted::reports) {}

void HeapRecordConverter::convertRecord(simdjson::dom::element root, Counts& counts) {
    const Record record = m_reader.read(root);
    m_capture.clear();
    record.binary != nullptr ? retrieveOperations(record, counts) : convertExpression(record, counts);
}

void HeapRecordConverter::convertExpression(const Record& record, Counts& counts) {
    OwnedMap owned;
    const long result = QueltEeTarselMigrationServices::ConvertEeGenericExprToEeExpr(
        *record.expression, m_context.expressionContext(), record.isChange ? 1 : 0, owned.map,
        record.basicEffectivity);
    std::optional<long> branchResult;
    if (record.isBranched && result >= 0) {
        branchResult = QueltEeTarselMigrationServices::ConvertFromFlatSeriesExprToBranchingExpr(
            m_context.expressionContext(), *owned.map);
    }
    writeAnswer({.id = record.id,
                 .result = result,
                 .branchResult = branchResult,
                 .map = owned.map,
                 .lines = m_capture.lines(),
                 .input = m_options.withInput ? record.expression.get() : nullptr,
                 .showTrace = m_options.withTrace},
                counts);
}

void HeapRecordConverter::retrieveOperations(const Record& record, Counts& counts) {
    OwnedContent owned;
    const long result = QueltReconstituteEffectivityFromCompiledBinary::RetrieveChangeOperations(
        *record.binary, owned.content.operations, owned.content.contexts);
    writeAnswer({.id = record.id,
                 .result = result,
                 .content = &owned.content,
                 .lines = m_capture.lines(),
                 .binaryInput = m_options.withInput ? record.binary.get() : nullptr,
                 .showTrace = m_options.withTrace},
                counts);
}

void HeapRecordConverter::writeAnswer(const Answer& answer, Counts& counts) {
    if (m_capture.isIncomplete()) {
        throw std::bad_alloc();
    }
    m_answerWriter.write(m_writer, answer);
    ++(decisiveResult(answer) < 0 ? counts.failed : counts.converted);
}

} // namespace quelt::host::test
