// Bytes that are changed at random hardly ever stay JSON, and hardly ever name what the context has. So most
// inputs are changed as JSON, line by line.

#include "mutators/JsonEdits.h"

#include <algorithm>
#include <optional>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <string>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

/// The context that the target's records are on when it does not stand in the input itself.
[[nodiscard]] std::string_view fixedContext();

namespace {

using namespace quelt::host::fuzz;

constexpr int s_deepest = 300;

/// The text of a document that is parsed by need.
class Lines {
public:
    Lines(const std::uint8_t* data, std::size_t size) {
        const std::string_view text(reinterpret_cast<const char*>(data), size);
        for (std::size_t begin = 0; begin <= text.size();) {
            const std::size_t end = std::min(text.find('\n', begin), text.size());
            m_lines.emplace_back(text.substr(begin, end - begin));
            begin = end + 1;
        }
    }

    [[nodiscard]] std::vector<std::string>& all() { return m_lines; }
    [[nodiscard]] std::string joined() const {
        std::string text;
        for (const std::string& line : m_lines) {
            text += (&line == m_lines.data() ? "" : "\n") + line;
        }
        return text;
    }

private:
    std::vector<std::string> m_lines;
};

bool isShallow(std::string_view text) {
    int depth = 0;
    int deepest = 0;
    for (const char character : text) {
        depth += character == '[' || character == '{' ? 1 : character == ']' || character == '}' ? -1 : 0;
        deepest = std::max(deepest, depth);
    }
    return deepest <= s_deepest;
}

/// `text` in `document`; false when it is no JSON, or too deep for what walks it on the stack.
bool parse(std::string_view text, rapidjson::Document& document) {
    return isShallow(text) &&
           !document.Parse<rapidjson::kParseIterativeFlag>(text.data(), text.size()).HasParseError();
}

std::string compact(const Json& value) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    value.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
}

/// Changes some line of `lines` as JSON, by what stands in `other`, too, when it is given. False when there
/// is nothing to change.
bool mutate(Lines& lines, Lines* other, Dice& dice) {
    rapidjson::Document context;
    const bool hasOwnContext = fixedContext().empty();
    const std::string_view contextText = hasOwnContext ? lines.all().front() : fixedContext();
    if (!parse(contextText, context)) {
        context.SetObject();
    }
    std::vector<std::string>& all = lines.all();
    std::size_t chosen = dice.below(all.size());
    if (hasOwnContext && all.size() > 1 && !dice.onceIn(4)) {
        chosen = 1 + dice.below(all.size() - 1);
    }
    rapidjson::Document document;
    if (!parse(all[chosen], document)) {
        return false;
    }
    std::vector<std::string_view> texts;
    collectTexts(context, texts);
    collectTexts(document, texts);

    JsonEdits edits(document, context, texts, dice, document.GetAllocator());
    rapidjson::Document donor;
    if (other != nullptr && parse(dice.oneOf(other->all()), donor)) {
        edits.splice(donor);
    }
    for (unsigned count = 1 + dice.below(3); count > 0; --count) {
        edits.edit();
    }
    all[chosen] = compact(document);
    if (hasOwnContext && chosen > 0 && dice.onceIn(16)) {
        all.push_back(all[chosen]);
    }
    return isShallow(all[chosen]);
}

std::optional<std::size_t> put(const Lines& lines, std::uint8_t* data, std::size_t maxSize) {
    const std::string text = lines.joined();
    if (text.size() > maxSize) {
        return std::nullopt;
    }
    std::copy(text.begin(), text.end(), data);
    return text.size();
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed) {
    Dice dice(seed);
    Lines lines(data, size);
    if (!dice.onceIn(8) && mutate(lines, nullptr, dice)) {
        if (const auto changed = put(lines, data, maxSize)) {
            return *changed;
        }
    }
    return LLVMFuzzerMutate(data, size, maxSize);
}

extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* data, std::size_t size,
                                                 const std::uint8_t* otherData, std::size_t otherSize,
                                                 std::uint8_t* out, std::size_t maxSize, unsigned int seed) {
    Dice dice(seed);
    Lines lines(data, size);
    Lines other(otherData, otherSize);
    if (mutate(lines, &other, dice)) {
        if (const auto changed = put(lines, out, maxSize)) {
            return *changed;
        }
    }
    const std::size_t kept = std::min(size, maxSize);
    std::copy_n(data, kept, out);
    return kept;
}
