#pragma once

#include <random>
#include <rapidjson/document.h>
#include <string_view>
#include <vector>

namespace quelt::host::fuzz {

using Json = rapidjson::Value;
using JsonMemory = rapidjson::Document::AllocatorType;

/// Draws what a mutator does next.
class Dice {
public:
    explicit Dice(unsigned seed) : m_engine(seed) {}
    /// A number below `limit`, which is not 0.
    unsigned below(std::size_t limit) { return static_cast<unsigned>(m_engine() % limit); }
    bool onceIn(unsigned often) { return below(often) == 0; }
    template <class Items>
    auto& oneOf(Items& items) {
        return items[below(std::size(items))];
    }

private:
    std::mt19937 m_engine;
};

/// A value of a document and what it stands for there.
struct Slot {
    enum class Role { node, criterion, other };
    Json* value;
    Role role;
};

/// Every value of `document`, the root first.
[[nodiscard]] std::vector<Slot> slotsOf(Json& document);
/// Every text in `document` that is no key.
void collectTexts(Json& document, std::vector<std::string_view>& texts);

[[nodiscard]] inline std::string_view textOf(const Json& value) {
    return {value.GetString(), value.GetStringLength()};
}
[[nodiscard]] inline Json copyOf(std::string_view text, JsonMemory& memory) {
    return {text.data(), static_cast<rapidjson::SizeType>(text.size()), memory};
}
/// The member `key` of `object` when both are there and of these types, else null.
[[nodiscard]] const Json* findArray(const Json& object, const char* key);
[[nodiscard]] const Json* findText(const Json& object, const char* key);

} // namespace quelt::host::fuzz
