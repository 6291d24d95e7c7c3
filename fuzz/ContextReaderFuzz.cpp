// Whatever a context file holds, it is read, or refused with a reason; what was read is written as a context
// file that reads as the same.

#include "host/support/Samples.h"
#include "support/Expect.h"

namespace {

using quelt::host::LoadedContext;
using namespace quelt::host::test;

std::unique_ptr<LoadedContext> read(std::string_view text) {
    try {
        return contextOf(text);
    } catch (const quelt::host::SyntaxRefusal& refusal) {
        expect(refusal.position().has_value(), "the fault of a text that is no JSON is found",
               refusal.reason());
        expect(!refusal.reason().empty(), "a refusal has a reason");
    } catch (const quelt::host::Refusal& refusal) {
        expect(!refusal.reason().empty(), "a refusal has a reason");
    }
    return nullptr;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::unique_ptr<LoadedContext> context = read({reinterpret_cast<const char*>(data), size});
    if (context == nullptr) {
        return 0;
    }
    const std::string text = written(*context);
    const std::unique_ptr<LoadedContext> again = read(text);
    expect(again != nullptr, "what was written can be read", text);
    const std::string textAgain = written(*again);
    expect(textAgain == text, "what was read is written the same", text, textAgain);
    return 0;
}
