#pragma once

#include "infrastructure/QueltInGuid.h"
#include "interchange/Place.h"

#include <cstdint>
#include <simdjson.h>
#include <string_view>
#include <utility>

namespace quelt::host {

/// A JSON value with its place. What it is asked for it must be: anything else is refused by a Refusal that
/// names the place.
class Value {
public:
    /// The value `element` at `place`.
    Value(simdjson::dom::element element, const Place& place) noexcept : m_element(element), m_place(place) {}

    [[nodiscard]] const Place& place() const noexcept { return m_place; }
    [[nodiscard]] bool isNull() const noexcept { return m_element.is_null(); }
    [[nodiscard]] bool isObject() const noexcept { return m_element.is_object(); }
    [[nodiscard]] bool isArray() const noexcept { return m_element.is_array(); }
    [[nodiscard]] bool isFlag() const noexcept { return m_element.is_bool(); }

    /// Text; valid until the parser reads the next document.
    [[nodiscard]] std::string_view text() const {
        std::string_view text;
        if (m_element.get_string().get(text) != simdjson::SUCCESS) {
            refuseType("text");
        }
        return text;
    }
    /// A GUID in its 8-4-4-4-12 form.
    [[nodiscard]] QueltInGuid guid() const;
    /// true or false.
    [[nodiscard]] bool flag() const;
    /// Whole numbers, written without fraction and exponent.
    [[nodiscard]] std::int32_t int32() const;
    [[nodiscard]] std::uint32_t uint32() const;
    [[nodiscard]] simdjson::dom::object object() const {
        simdjson::dom::object object;
        if (m_element.get_object().get(object) != simdjson::SUCCESS) {
            refuseType("an object");
        }
        return object;
    }
    [[nodiscard]] simdjson::dom::array array() const {
        simdjson::dom::array array;
        if (m_element.get_array().get(array) != simdjson::SUCCESS) {
            refuseType("an array");
        }
        return array;
    }
    /// Calls `visit` with each item of the array, in order.
    template <class Visit>
    void eachItem(Visit visit) const {
        std::size_t index = 0;
        for (const simdjson::dom::element item : array()) {
            visit(Value(item, m_place.item(index++)));
        }
    }

    /// Throws a Refusal for this place.
    [[noreturn]] void refuse(std::string_view what) const { m_place.refuse(what); }
    /// Throws a Refusal: "expected ..., found a number".
    [[noreturn]] void refuseType(std::string_view expected) const;

private:
    [[nodiscard]] std::int64_t integer(std::int64_t least, std::int64_t greatest) const;

    simdjson::dom::element m_element;
    Place m_place;
};

} // namespace quelt::host
