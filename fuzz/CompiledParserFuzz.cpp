// Whatever the bytes are, the parser answers within its bounds; what it reads writes as the same bytes,
// prints, and converts.

#include "core/support/HeapMeter.h"

#include "compiled/QueltBioBuffer.h"
#include "compiled/QueltCompiledBinaryParser.h"
#include "compiled/QueltCompiledBinaryWriter.h"
#include "compiled/QueltEeDnfConvertor.h"
#include "compiled/QueltFltEffectivity.h"
#include "expression/QueltEeExpressionContext.h"
#include "expression/QueltEeNode.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInString.h"
#include "support/Expect.h"

#include <memory>

namespace {

std::unique_ptr<QueltInObject> read(std::span<const std::uint8_t> bytes) {
    QueltBioBuffer buffer(bytes);
    QueltInObject* object = &buffer;
    const std::size_t before = heapBytesAskedFor();
    const long result = QueltCompiledBinaryParser::Read(buffer, object);
    const std::size_t taken = heapBytesAskedFor() - before;
    expect(taken <= 64 * bytes.size() + 65'536, "reading takes memory in proportion to the bytes");
    expect(buffer.getSize() == 0, "reading consumes the buffer");
    expect((result >= 0) == (object != nullptr), "an object comes exactly with success");
    return std::unique_ptr<QueltInObject>(object);
}

void convertAll(const QueltFltEffectivityView& view) {
    QueltInMap::const_iterator iterator = view.m_contexts.cBegin();
    while (const QueltInMapEntry* const entry = iterator.GetEntryGoToNext()) {
        const QueltInGuid& guid = *QueltInGuid::cast(entry->key);
        QueltDnf* dnf = nullptr;
        expect(view.getDnf(guid, dnf) == S_OK && dnf != nullptr, "each context has its normal form");
        QueltEeModelDico dictionary("Truck", guid);
        QueltEeExpressionContext context;
        const std::unique_ptr<QueltEeNodeRef> tree(
            QueltEeDnfConvertor::Dnf2NodeRef(*dnf, dictionary, context, nullptr));
        expect(tree != nullptr && !tree->toString().view().empty(), "each normal form converts");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> bytes(data, size);
    const std::unique_ptr<QueltInObject> object = read(bytes);
    if (object == nullptr) {
        return 0;
    }
    const QueltFltEffectivity* const effectivity = QueltFltEffectivity::cast(object.get());
    expect(effectivity != nullptr, "what is read is a compiled effectivity");
    QueltBioBuffer written;
    expect(QueltCompiledBinaryWriter::Write(*effectivity, written) == S_OK, "what is read can be written");
    expect(written == QueltBioBuffer(bytes), "what is read writes as the same bytes");
    expect(!effectivity->toString().view().empty(), "what is read prints");
    for (const QueltFltEffectivity::Entry& domain : effectivity->getDomains()) {
        for (const QueltFltDomainEffectivity::Entry& view : domain.domain->getViews()) {
            convertAll(*view.view);
        }
    }
    return 0;
}
