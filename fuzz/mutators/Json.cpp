#include "mutators/Json.h"

#include <algorithm>

namespace quelt::host::fuzz {

namespace {

bool isOneOf(std::string_view key, std::initializer_list<std::string_view> keys) {
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

Slot::Role roleOfMember(std::string_view key) {
    return isOneOf(key, {"tree", "own", "inherited", "global", "not", "notDomain"}) ? Slot::Role::node
                                                                                    : Slot::Role::other;
}

Slot::Role roleOfItems(std::string_view key) {
    if (isOneOf(key, {"and", "or"})) {
        return Slot::Role::node;
    }
    return key == "list" ? Slot::Role::criterion : Slot::Role::other;
}

} // namespace

std::vector<Slot> slotsOf(Json& document) {
    std::vector<Slot> slots{{&document, Slot::Role::other}};
    std::vector<Slot::Role> itemRoles{Slot::Role::other}; // of what is in each, when that is an array
    for (std::size_t next = 0; next < slots.size(); ++next) {
        Json& value = *slots[next].value;
        if (value.IsArray()) {
            const Slot::Role role = itemRoles[next];
            for (Json& item : value.GetArray()) {
                slots.push_back({&item, role});
                itemRoles.push_back(Slot::Role::other);
            }
        } else if (value.IsObject()) {
            for (auto& member : value.GetObject()) {
                const std::string_view key = textOf(member.name);
                slots.push_back({&member.value, roleOfMember(key)});
                itemRoles.push_back(roleOfItems(key));
            }
        }
    }
    return slots;
}

void collectTexts(Json& document, std::vector<std::string_view>& texts) {
    for (const Slot& slot : slotsOf(document)) {
        if (slot.value->IsString()) {
            texts.push_back(textOf(*slot.value));
        }
    }
}

const Json* findArray(const Json& object, const char* key) {
    if (!object.IsObject()) {
        return nullptr;
    }
    const auto member = object.FindMember(key);
    return member != object.MemberEnd() && member->value.IsArray() ? &member->value : nullptr;
}

const Json* findText(const Json& object, const char* key) {
    if (!object.IsObject()) {
        return nullptr;
    }
    const auto member = object.FindMember(key);
    return member != object.MemberEnd() && member->value.IsString() ? &member->value : nullptr;
}

} // namespace quelt::host::fuzz
