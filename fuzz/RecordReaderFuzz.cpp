// Whatever stands on a line, it is read as a record on a rich context, or refused with a reason; what was
// read is written as a record that reads as the same, on the heap as in an arena.

#include "host/support/Samples.h"
#include "interchange/Base64.h"
#include "interchange/CompiledReader.h"
#include "interchange/CompiledWriter.h"
#include "support/Expect.h"
#include "support/RichContext.h"

#include <optional>

namespace {

using namespace quelt::host;

std::string written(const Record& record) {
    TextBuffer buffer;
    JsonWriter writer(buffer);
    writer.beginObject();
    writer.key(Key::id);
    writer.text(record.id);
    if (record.binary != nullptr) {
        writer.key(Key::binary);
        writer.text(encodeBase64(record.binary->getBytes()));
    } else {
        ExpressionWriter(fuzz::richContext()).writeBody(writer, *record.expression);
    }
    writer.endObject();
    return std::string(buffer.view());
}

std::string_view reasonOf(const Refusal& refusal) {
    expect(!refusal.reason().empty(), "a refusal has a reason");
    return refusal.reason();
}

/// The record on `line` as it is written; nothing when it is none.
std::optional<std::string> reread(std::string_view line) {
    static JsonParser s_parser;
    const test::Padded padded(line);
    try {
        return written(RecordReader(fuzz::richContext()).read(s_parser.parse(padded.text())));
    } catch (const SyntaxRefusal& refusal) {
        expect(refusal.position().has_value(), "the fault of a text that is no JSON is found",
               reasonOf(refusal));
    } catch (const Refusal& refusal) {
        static_cast<void>(reasonOf(refusal));
    }
    return std::nullopt;
}

/// The same with all objects in an arena that forgets them.
std::optional<std::string> rereadInArena(std::string_view line) {
    static QueltInArena s_arena;
    s_arena.reset();
    const QueltInArenaScope scope(s_arena);
    return reread(line);
}

/// Spells the binary in `record` out and compiles it again, when it is sound.
void expectSameBytes(const std::string& record) {
    const test::Padded padded(record);
    JsonParser parser;
    const Value value(parser.parse(padded.text()), Place());
    const Fields<Key::id, Key::binary> fields(value);
    const Value text = fields.need<Key::binary>();
    QueltBioBuffer binary = readBinary(text);
    std::unique_ptr<QueltFltEffectivity> effectivity;
    try {
        effectivity = decompile(binary, text);
    } catch (const Refusal& refusal) {
        static_cast<void>(reasonOf(refusal));
        return;
    }
    if (!isWritable(*effectivity)) {
        return;
    }
    TextBuffer buffer;
    JsonWriter writer(buffer);
    writeCompiled(writer, *effectivity);
    const std::string spelt(buffer.view());
    const test::Padded paddedSpelt(spelt);
    JsonParser otherParser;
    const QueltBioBuffer again = compile(Value(otherParser.parse(paddedSpelt.text()), Place()));
    expect(again == readBinary(text), "what is spelt out compiles to the same bytes", record, spelt);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view line(reinterpret_cast<const char*>(data), size);
    const std::optional<std::string> text = reread(line);
    expect(rereadInArena(line) == text, "an arena changes nothing", line);
    if (!text) {
        return 0;
    }
    expect(reread(*text) == text, "what was read is written the same", *text);
    if (text->find(R"(,"binary":")") != std::string::npos && text->find(R"("list":)") == std::string::npos &&
        text->find(R"("tree":)") == std::string::npos) {
        expectSameBytes(*text);
    }
    return 0;
}
