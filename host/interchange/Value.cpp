#include "interchange/Value.h"

#include <limits>
#include <string>

namespace quelt::host {

namespace {

std::string_view describeType(simdjson::dom::element element) {
    using simdjson::dom::element_type;
    switch (element.type()) {
    case element_type::ARRAY:
        return "an array";
    case element_type::OBJECT:
        return "an object";
    case element_type::STRING:
        return "text";
    case element_type::BOOL:
        return element.get_bool().value_unsafe() ? "true" : "false";
    case element_type::NULL_VALUE:
        return "null";
    case element_type::DOUBLE:
        return "a number with fraction or exponent";
    case element_type::INT64:
    case element_type::UINT64:
        break;
    }
    return "a number";
}

} // namespace

QueltInGuid Value::guid() const {
    QueltInGuid guid;
    if (QueltInGuid::parse(text(), guid) < 0) {
        refuse(inQuotes(text()) + " is no GUID");
    }
    return guid;
}

bool Value::flag() const {
    bool flag = false;
    if (m_element.get_bool().get(flag) != simdjson::SUCCESS) {
        refuseType("true or false");
    }
    return flag;
}

std::int32_t Value::int32() const {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(integer(Limits::min(), Limits::max()));
}

std::uint32_t Value::uint32() const {
    return static_cast<std::uint32_t>(integer(0, std::numeric_limits<std::uint32_t>::max()));
}

void Value::refuseType(std::string_view expected) const {
    std::string what = "expected ";
    what += expected;
    what += ", found ";
    what += describeType(m_element);
    refuse(what);
}

std::int64_t Value::integer(std::int64_t least, std::int64_t greatest) const {
    std::int64_t number = 0;
    const simdjson::error_code error = m_element.get_int64().get(number);
    if (error == simdjson::INCORRECT_TYPE) {
        refuseType("a whole number");
    }
    if (error != simdjson::SUCCESS || number < least || number > greatest) {
        refuse("number out of range (" + std::to_string(least) + " to " + std::to_string(greatest) + ")");
    }
    return number;
}

} // namespace quelt::host
