#pragma once

#include "mutators/Json.h"

namespace quelt::host::fuzz {

/// Makes nodes and criteria on what a context has, so that they are mostly sound.
class NodeMaker {
public:
    /// `context` is a context file's text, parsed; it may be anything.
    NodeMaker(const Json& context, Dice& dice, JsonMemory& memory);

    [[nodiscard]] Json criterion();
    [[nodiscard]] Json node(unsigned levels);
    /// What may stand in an array of texts, numbers or intervals.
    [[nodiscard]] Json number();

private:
    struct Variable {
        const Json* object;
        const Json* dictionary; // its name; null at the top
    };
    void addVariables(const Json& owner, const Json* dictionary);
    [[nodiscard]] Json values(const Json& variable);
    [[nodiscard]] Json intervals(const Json& variable, const char* table);
    [[nodiscard]] Json selections(const Json& variable);
    [[nodiscard]] Json dates();
    [[nodiscard]] Json numberOf(const Json& variable, const char* table);
    [[nodiscard]] Json effectivityLeaf();
    void addFlags(Json& object);
    void add(Json& object, const char* key, Json value) {
        object.AddMember(rapidjson::StringRef(key), value, m_memory);
    }

    Dice& m_dice;
    JsonMemory& m_memory;
    std::vector<Variable> m_variables;
    std::vector<const Json*> m_dictionaries;
    std::vector<const Json*> m_effectivities;
};

} // namespace quelt::host::fuzz
