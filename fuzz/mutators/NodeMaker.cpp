#include "mutators/NodeMaker.h"

namespace quelt::host::fuzz {

namespace {

constexpr int s_numbers[] = {0,    1,    -1,         2,           10,         2018,
                             2020, 2024, 2000000000, -2000000000, 2147483647, -2147483647 - 1};
constexpr const char* s_dates[] = {"2019-12-31", "2020-01-01", "2024-02-29T12:00:00Z",
                                   "1970-01-01", "9999-12-31", "0001-01-01"};

} // namespace

NodeMaker::NodeMaker(const Json& context, Dice& dice, JsonMemory& memory) : m_dice(dice), m_memory(memory) {
    if (const Json* const dictionaries = findArray(context, "dictionaries")) {
        for (const Json& dictionary : dictionaries->GetArray()) {
            if (const Json* const name = findText(dictionary, "name")) {
                m_dictionaries.push_back(name);
                addVariables(dictionary, name);
            }
        }
    }
    addVariables(context, nullptr);
    if (const Json* const effectivities = findArray(context, "effectivities")) {
        for (const Json& effectivity : effectivities->GetArray()) {
            if (const Json* const name = findText(effectivity, "name")) {
                m_effectivities.push_back(name);
            }
        }
    }
}

void NodeMaker::addVariables(const Json& owner, const Json* dictionary) {
    if (const Json* const variables = findArray(owner, "variables")) {
        for (const Json& variable : variables->GetArray()) {
            if (findText(variable, "name") != nullptr && findText(variable, "kind") != nullptr) {
                m_variables.push_back({&variable, dictionary});
            }
        }
    }
}

Json NodeMaker::criterion() {
    Json result(rapidjson::kObjectType);
    if (m_variables.empty() || m_dice.onceIn(6)) {
        add(result, "date", dates());
        addFlags(result);
        return result;
    }
    const Variable& variable = m_dice.oneOf(m_variables);
    const std::string_view kind = textOf(*findText(*variable.object, "kind"));
    result.AddMember(copyOf(kind, m_memory), Json(*findText(*variable.object, "name"), m_memory), m_memory);
    if (!m_dice.onceIn(8)) {
        add(result, "of", variable.dictionary != nullptr ? Json(*variable.dictionary, m_memory) : Json());
    }
    add(result, "in",
        kind == "serial"       ? intervals(*variable.object, "revisions")
        : kind == "treeSeries" ? selections(*variable.object)
                               : values(*variable.object));
    addFlags(result);
    return result;
}

void NodeMaker::addFlags(Json& object) {
    if (m_dice.onceIn(5)) {
        add(object, "negated", Json(true));
    }
    if (m_dice.onceIn(8)) {
        add(object, "noVar", Json(true));
    }
}

Json NodeMaker::values(const Json& variable) {
    Json result(rapidjson::kArrayType);
    if (const Json* const all = findArray(variable, "values")) {
        for (const Json& value : all->GetArray()) {
            if (m_dice.onceIn(2)) {
                result.PushBack(Json(value, m_memory), m_memory);
            }
        }
    }
    return result;
}

Json NodeMaker::number() {
    return Json(m_dice.oneOf(s_numbers));
}

/// A number that the variable's revisions, or elements, know, mostly.
Json NodeMaker::numberOf(const Json& variable, const char* table) {
    const Json* const known = findArray(variable, table);
    if (known == nullptr || known->Empty() || m_dice.onceIn(5)) {
        return number();
    }
    const Json& row = (*known)[m_dice.below(known->Size())];
    return row.IsObject() && row.HasMember("seq") ? Json(row["seq"], m_memory) : number();
}

Json NodeMaker::intervals(const Json& variable, const char* table) {
    Json result(rapidjson::kArrayType);
    for (unsigned count = m_dice.below(3) + 1; count > 0; --count) {
        Json from = m_dice.onceIn(4) ? Json() : numberOf(variable, table);
        Json to = m_dice.onceIn(4) ? Json() : numberOf(variable, table);
        if (m_dice.onceIn(3)) {
            Json interval(rapidjson::kObjectType);
            add(interval, "from", std::move(from));
            add(interval, "to", std::move(to));
            add(interval, m_dice.onceIn(2) ? "fromIncl" : "toIncl", Json(false));
            result.PushBack(interval, m_memory);
            continue;
        }
        Json interval(rapidjson::kArrayType);
        interval.PushBack(from, m_memory).PushBack(to, m_memory);
        result.PushBack(interval, m_memory);
    }
    return result;
}

Json NodeMaker::selections(const Json& variable) {
    Json result(rapidjson::kArrayType);
    for (unsigned count = m_dice.below(3) + 1; count > 0; --count) {
        Json selection(rapidjson::kObjectType);
        if (m_dice.onceIn(3)) {
            add(selection, "single", numberOf(variable, "elements"));
        } else {
            const unsigned ends = m_dice.below(3);
            if (ends != 0) {
                add(selection, "from", numberOf(variable, "elements"));
            }
            if (ends != 1) {
                add(selection, "to", numberOf(variable, "elements"));
            }
        }
        result.PushBack(selection, m_memory);
    }
    return result;
}

Json NodeMaker::dates() {
    Json result(rapidjson::kArrayType);
    for (unsigned count = m_dice.below(2) + 1; count > 0; --count) {
        Json interval(rapidjson::kArrayType);
        for (int end = 0; end < 2; ++end) {
            interval.PushBack(m_dice.onceIn(4) ? Json() : copyOf(m_dice.oneOf(s_dates), m_memory), m_memory);
        }
        result.PushBack(interval, m_memory);
    }
    return result;
}

Json NodeMaker::effectivityLeaf() {
    Json result(rapidjson::kObjectType);
    add(result, "eff", Json(*m_dice.oneOf(m_effectivities), m_memory));
    if (!m_dictionaries.empty() && m_dice.onceIn(2)) {
        add(result, "of", Json(*m_dice.oneOf(m_dictionaries), m_memory));
    }
    if (m_dice.onceIn(3)) {
        add(result, "negated", Json(true));
    }
    return result;
}

Json NodeMaker::node(unsigned levels) {
    const unsigned form = m_dice.below(levels > 0 ? 20 : 12);
    if (form < 6 || (form < 10 && m_effectivities.empty())) {
        return criterion();
    }
    if (form < 10) {
        return effectivityLeaf();
    }
    Json result(rapidjson::kObjectType);
    switch (form) {
    case 10:
        return Json(m_dice.onceIn(2));
    case 11:
        m_dice.onceIn(2) ? add(result, "empty", Json(true)) : add(result, "restriction", Json("x"));
        return result;
    case 12:
    case 13:
    case 14:
        add(result, form == 12 ? "notDomain" : "not", m_dice.onceIn(8) ? Json() : node(levels - 1));
        return result;
    default:
        break;
    }
    Json children(rapidjson::kArrayType);
    for (unsigned count = m_dice.below(4); count > 0; --count) {
        children.PushBack(node(levels - 1), m_memory);
    }
    add(result, form % 2 == 0 ? "and" : "or", std::move(children));
    return result;
}

} // namespace quelt::host::fuzz
