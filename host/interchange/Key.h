#pragma once

#include "interchange/ShortText.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace quelt::host {

/// Every key of the interchange form.
enum class Key : std::uint8_t {
    and_,
    basicEff,
    binary,
    branch,
    change,
    compiled,
    contexts,
    criteria,
    date,
    dictionaries,
    dictionary,
    dnf,
    domain,
    domains,
    eff,
    effectivities,
    effectivity,
    elements,
    empty,
    expression,
    externalType,
    format,
    from,
    fromIncl,
    global,
    guid,
    id,
    in,
    inherited,
    inheritedIn,
    kind,
    list,
    mode,
    multiModel,
    name,
    named,
    negated,
    noVar,
    not_,
    notDomain,
    number,
    of,
    operations,
    option,
    or_,
    own,
    parent,
    restriction,
    rev,
    revisions,
    selection,
    seq,
    serial,
    single,
    singleIncl,
    to,
    toIncl,
    tree,
    treeSeries,
    values,
    variables,
    view,
    views
};

namespace keys {

/// The keys as they are written, in the order of Key.
inline constexpr std::string_view s_names[] = {
    "and",        "basicEff",      "binary",       "branch",     "change",    "compiled",    "contexts",
    "criteria",   "date",          "dictionaries", "dictionary", "dnf",       "domain",      "domains",
    "eff",        "effectivities", "effectivity",  "elements",   "empty",     "expression",  "externalType",
    "format",     "from",          "fromIncl",     "global",     "guid",      "id",          "in",
    "inherited",  "inheritedIn",   "kind",         "list",       "mode",      "multiModel",  "name",
    "named",      "negated",       "noVar",        "not",        "notDomain", "number",      "of",
    "operations", "option",        "or",           "own",        "parent",    "restriction", "rev",
    "revisions",  "selection",     "seq",          "serial",     "single",    "singleIncl",  "to",
    "toIncl",     "tree",          "treeSeries",   "values",     "variables", "view",        "views"};
inline constexpr std::size_t s_count = std::size(s_names);
/// "Not a key of the interchange form."
inline constexpr std::uint8_t s_none = 0xFF;

/// Tells the keys apart by length, first, middle and last letter; the factors were searched for.
constexpr std::uint8_t slotOf(std::string_view name) {
    const std::size_t first = static_cast<unsigned char>(name.front());
    const std::size_t middle = static_cast<unsigned char>(name[name.size() / 2]);
    const std::size_t last = static_cast<unsigned char>(name.back());
    return static_cast<std::uint8_t>(name.size() * 212 + first * 100 + middle * 190 + last * 25);
}

consteval std::array<std::uint8_t, 256> makeSlots() {
    std::array<std::uint8_t, 256> slots{};
    slots.fill(s_none);
    for (std::size_t key = 0; key < s_count; ++key) {
        std::uint8_t& slot = slots[slotOf(s_names[key])];
        if (slot != s_none) {
            throw "two keys share a slot: search for other factors";
        }
        slot = static_cast<std::uint8_t>(key);
    }
    return slots;
}
inline constexpr std::array<std::uint8_t, 256> s_slots = makeSlots();

/// The number of the key that is written `name`, s_none when there is none.
inline std::uint8_t find(std::string_view name) {
    const std::uint8_t key = name.empty() ? s_none : s_slots[slotOf(name)];
    return key != s_none && isSameText(s_names[key], name) ? key : s_none;
}

/// For every key its place among `Names`, s_none for the others.
template <Key... Names>
consteval std::array<std::uint8_t, s_count> placesAmong() {
    std::array<std::uint8_t, s_count> places{};
    places.fill(s_none);
    std::uint8_t next = 0;
    ((places[static_cast<std::size_t>(Names)] = next++), ...);
    return places;
}

} // namespace keys

/// How `key` is written.
constexpr std::string_view nameOf(Key key) {
    return keys::s_names[static_cast<std::size_t>(key)];
}

} // namespace quelt::host
