#pragma once

#include "interchange/Key.h"
#include "interchange/Value.h"

#include <array>
#include <bit>
#include <cstdint>
#include <optional>
#include <string>

namespace quelt::host {

/// Throw the Refusal for a key that an object must not have, has twice, or lacks.
[[noreturn]] void refuseUnknownKey(const Place& object, std::string_view key);
[[noreturn]] void refuseRepeatedKey(const Place& object, std::string_view key);
[[noreturn]] void refuseMissingKey(const Place& object, Key key);

/// The fields of an object that knows the keys `Names`. Every key is looked at before any value is.
template <Key... Names>
class Fields {
    static constexpr std::array<std::uint8_t, keys::s_count> s_slots = keys::placesAmong<Names...>();

public:
    static constexpr std::size_t s_size = sizeof...(Names);
    static_assert(s_size <= 32);
    /// A set of keys.
    using Mask = std::uint32_t;
    /// The set of the keys `Some`, all among `Names`.
    template <Key... Some>
    static constexpr Mask s_mask = ((Mask{1} << s_slots[static_cast<std::size_t>(Some)]) | ... | Mask{0});

    /// Reads the fields of `object`, which must outlive the fields. Refuses anything but an object, a key
    /// that is not known, and one that is given twice.
    explicit Fields(const Value& object) : m_object(object) {
        for (const auto [key, element] : object.object()) {
            const std::uint8_t number = keys::find(key);
            const std::uint8_t slot = number == keys::s_none ? keys::s_none : s_slots[number];
            if (slot == keys::s_none) {
                refuseUnknownKey(object.place(), key);
            }
            const Mask bit = Mask{1} << slot;
            if ((m_given & bit) != 0) {
                refuseRepeatedKey(object.place(), key);
            }
            m_given |= bit;
            m_elements[slot] = element;
        }
    }

    /// The object's own place.
    [[nodiscard]] const Place& place() const noexcept { return m_object.place(); }
    /// The keys that are given.
    [[nodiscard]] Mask given() const noexcept { return m_given; }
    /// The key in `set` that stands first among `Names`; `set` must not be empty.
    [[nodiscard]] static Key firstOf(Mask set) noexcept {
        constexpr std::array<Key, s_size> names{Names...};
        return names[static_cast<std::size_t>(std::countr_zero(set))];
    }

    template <Key Name>
    [[nodiscard]] bool has() const noexcept {
        return (m_given & s_mask<Name>) != 0;
    }
    /// The value of `Name`, if it is given.
    template <Key Name>
    [[nodiscard]] std::optional<Value> find() const noexcept {
        return has<Name>() ? std::optional<Value>(get(Name)) : std::nullopt;
    }
    /// The value of `Name`; refuses the object when it is missing.
    template <Key Name>
    [[nodiscard]] Value need() const {
        if (!has<Name>()) {
            refuseMissingKey(place(), Name);
        }
        return get(Name);
    }
    /// The flag `Name`, or `otherwise` when it is left out.
    template <Key Name>
    [[nodiscard]] bool flag(bool otherwise = false) const {
        return has<Name>() ? get(Name).flag() : otherwise;
    }
    /// The value of a key that is known to be given.
    [[nodiscard]] Value get(Key name) const noexcept {
        return {m_elements[s_slots[static_cast<std::size_t>(name)]], place().child(nameOf(name))};
    }

    /// Refuses the first key of the object that is none of `allowed`: "key 'in' does not belong to ...", with
    /// what `owner()` says.
    template <class Owner>
    void allowOnly(Mask allowed, Owner owner) const {
        if ((m_given & ~allowed) == 0) {
            return;
        }
        for (const auto [key, element] : m_object.object()) {
            if ((allowed & (Mask{1} << s_slots[keys::find(key)])) == 0) {
                place().child(key).refuse("key " + inQuotes(key) + " does not belong to " +
                                          std::string(owner()));
            }
        }
    }

private:
    const Value& m_object;
    Mask m_given = 0;
    std::array<simdjson::dom::element, s_size> m_elements;
};

} // namespace quelt::host
