// Whatever a context and its records are, every record is answered by one line that keeps the rules of
// answers, in an arena and on the heap, and the context stays as it was.

#include "host/support/Samples.h"
#include "support/AnswerRules.h"
#include "support/ConversionInput.h"
#include "support/Conversions.h"
#include "support/Expect.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quelt::host;
    const fuzz::ConversionInput input = fuzz::readInput(data, size);
    if (input.context == nullptr || input.records.empty()) {
        return 0;
    }
    const std::string before = test::written(*input.context);
    constexpr fuzz::Way everything{.options = {.withInput = true, .withTrace = true}};
    constexpr fuzz::Way branched{.options = {.branchesAll = true}};
    constexpr fuzz::Way onHeap{.options = branched.options, .usesArena = false};
    std::string answers;
    for (const fuzz::Way& way : {everything, branched}) {
        answers = fuzz::answersTo(*input.context, input.records, way);
        fuzz::expectAnswers(*input.context, input.records, answers, way.options);
    }
    const fuzz::Unfailed unfailed = fuzz::withoutFailed(input.records, answers);
    const std::string answersOnHeap = fuzz::answersTo(*input.context, unfailed.records, onHeap);
    expect(answersOnHeap == unfailed.answers, "the heap and an arena give the same answers", unfailed.answers,
           answersOnHeap);
    const std::string after = test::written(*input.context);
    expect(after == before, "converting leaves the context as it is", before, after);
    return 0;
}
