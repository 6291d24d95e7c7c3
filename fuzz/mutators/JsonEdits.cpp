#include "mutators/JsonEdits.h"

#include "mutators/CompiledMutation.h"

#include "interchange/Base64.h"
#include "interchange/Key.h"

#include <algorithm>

namespace quelt::host::fuzz {

namespace {

using Role = Slot::Role;

/// Deeper documents are left as they are: what walks them here walks on the stack.
constexpr unsigned s_newLevels = 3;

Slot pick(Json& document, Dice& dice) {
    const std::vector<Slot> slots = slotsOf(document);
    std::vector<Slot> nodes;
    std::copy_if(slots.begin(), slots.end(), std::back_inserter(nodes),
                 [](const Slot& slot) { return slot.role != Role::other; });
    return nodes.empty() || dice.onceIn(2) ? dice.oneOf(slots) : dice.oneOf(nodes);
}

} // namespace

void JsonEdits::edit() {
    const Slot slot = pick(m_document, m_dice);
    if (slot.role == Role::criterion && m_dice.onceIn(3)) {
        *slot.value = m_maker.criterion();
    } else if (slot.role == Role::node && !m_dice.onceIn(4)) {
        editNode(*slot.value);
    } else {
        editAny(*slot.value);
    }
}

void JsonEdits::splice(Json& other) {
    const Slot from = pick(other, m_dice);
    const std::vector<Slot> slots = slotsOf(m_document);
    std::vector<Json*> places;
    for (const Slot& slot : slots) {
        if (slot.role == from.role) {
            places.push_back(slot.value);
        }
    }
    if (!places.empty()) {
        *m_dice.oneOf(places) = Json(*from.value, m_memory);
    }
}

void JsonEdits::editNode(Json& value) {
    switch (m_dice.below(5)) {
    case 0:
    case 1:
        value = m_maker.node(s_newLevels);
        return;
    case 2:
        wrap(value);
        return;
    case 3:
        unwrap(value);
        return;
    default: {
        Json copy(*pick(m_document, m_dice).value, m_memory);
        value = copy;
    }
    }
}

/// Puts `value` below an operator, alone or with another.
void JsonEdits::wrap(Json& value) {
    constexpr const char* operators[] = {"and", "or", "not", "notDomain"};
    const unsigned chosen = m_dice.below(std::size(operators));
    Json below;
    if (chosen < 2) {
        below.SetArray();
        below.PushBack(value, m_memory);
        if (!m_dice.onceIn(4)) {
            below.PushBack(m_maker.node(1), m_memory);
        }
        if (below.Size() == 2 && m_dice.onceIn(2)) {
            below[0].Swap(below[1]);
        }
    } else {
        below = value;
    }
    value.SetObject();
    value.AddMember(rapidjson::StringRef(operators[chosen]), below, m_memory);
}

/// Puts one of the values in `value` in its place.
void JsonEdits::unwrap(Json& value) {
    const std::vector<Slot> slots = slotsOf(value);
    if (slots.size() > 1) {
        Json inner(*slots[1 + m_dice.below(slots.size() - 1)].value, m_memory);
        value = inner;
    }
}

void JsonEdits::editAny(Json& value) {
    if (m_dice.onceIn(8)) {
        value = anything();
    } else if (value.IsArray()) {
        editArray(value);
    } else if (value.IsObject()) {
        editObject(value);
    } else if (value.IsString()) {
        editText(value);
    } else if (value.IsInt64()) {
        editNumber(value);
    } else {
        value = value.IsBool() ? Json(!value.GetBool()) : anything();
    }
}

Json JsonEdits::anything() {
    switch (m_dice.below(8)) {
    case 0:
        return Json();
    case 1:
        return Json(m_dice.onceIn(2));
    case 2:
        return m_maker.number();
    case 3:
        return Json(rapidjson::kArrayType);
    case 4:
        return Json(rapidjson::kObjectType);
    case 5:
        return m_texts.empty() ? Json("") : copyOf(m_dice.oneOf(m_texts), m_memory);
    case 6:
        return m_maker.node(1);
    default:
        return Json(*pick(m_document, m_dice).value, m_memory);
    }
}

void JsonEdits::editArray(Json& array) {
    if (array.Empty() || m_dice.onceIn(4)) {
        array.PushBack(anything(), m_memory);
        return;
    }
    Json& item = array[m_dice.below(array.Size())];
    switch (m_dice.below(4)) {
    case 0:
        array.Erase(&item);
        return;
    case 1: {
        Json copy(item, m_memory);
        array.PushBack(copy, m_memory);
        return;
    }
    case 2:
        item.Swap(array[m_dice.below(array.Size())]);
        return;
    default:
        array.PushBack(m_maker.node(1), m_memory);
    }
}

void JsonEdits::editObject(Json& object) {
    const auto key = [&] { return copyOf(m_dice.oneOf(keys::s_names), m_memory); };
    if (object.ObjectEmpty() || m_dice.onceIn(3)) {
        object.AddMember(key(), anything(), m_memory);
        return;
    }
    const auto member = object.MemberBegin() + m_dice.below(object.MemberCount());
    switch (m_dice.below(4)) {
    case 0:
        object.EraseMember(member);
        return;
    case 1:
        member->name = key();
        return;
    case 2:
        object.AddMember(m_dice.onceIn(2) ? Json("branch") : Json("change"), Json(true), m_memory);
        return;
    default:
        member->value = anything();
    }
}

void JsonEdits::editText(Json& text) {
    std::vector<std::uint8_t> bytes;
    if (text.GetStringLength() >= 24 && !decodeBase64(textOf(text), bytes) && !m_dice.onceIn(4)) {
        text = copyOf(encodeBase64(mutatedBinary(std::move(bytes), m_dice.below(1024))), m_memory);
        return;
    }
    if (!m_texts.empty() && !m_dice.onceIn(4)) {
        text = copyOf(m_dice.oneOf(m_texts), m_memory);
        return;
    }
    std::string changed(textOf(text));
    const std::size_t place = m_dice.below(changed.size() + 1);
    m_dice.onceIn(2) ? changed.erase(place) : changed.insert(place, 1, static_cast<char>(m_dice.below(128)));
    text = copyOf(changed, m_memory);
}

void JsonEdits::editNumber(Json& number) {
    constexpr std::int64_t steps[] = {-1, 1, -10, 10, 1000};
    const std::int64_t value = number.GetInt64();
    const bool isSmall = value > INT32_MIN && value < INT32_MAX;
    number = isSmall && m_dice.onceIn(2) ? Json(value + m_dice.oneOf(steps)) : m_maker.number();
}

} // namespace quelt::host::fuzz
