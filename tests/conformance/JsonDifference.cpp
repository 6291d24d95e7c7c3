#include "conformance/JsonDifference.h"

#include "interchange/Place.h"

#include <algorithm>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace quelt::host::test {

namespace {

using Json = rapidjson::Value;

std::string compact(const Json& value) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    value.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
}

std::string below(const std::string& pointer, std::string_view token) {
    std::string result = pointer;
    appendPointerToken(result, token);
    return result;
}

std::string at(const std::string& pointer) {
    return pointer.empty() ? "at the root: " : "at " + pointer + ": ";
}

std::optional<std::string> compare(const Json& expected, const Json& actual, const std::string& pointer);

std::optional<std::string> compareObjects(const Json& expected, const Json& actual,
                                          const std::string& pointer) {
    for (const auto& member : expected.GetObject()) {
        const std::string name(member.name.GetString(), member.name.GetStringLength());
        const auto found = actual.FindMember(member.name);
        if (found == actual.MemberEnd()) {
            return at(below(pointer, name)) + "missing";
        }
        if (auto difference = compare(member.value, found->value, below(pointer, name))) {
            return difference;
        }
    }
    for (const auto& member : actual.GetObject()) {
        if (expected.FindMember(member.name) == expected.MemberEnd()) {
            const std::string name(member.name.GetString(), member.name.GetStringLength());
            return at(below(pointer, name)) + compact(member.value) + ", not expected";
        }
    }
    return std::nullopt;
}

std::optional<std::string> compareArrays(const Json& expected, const Json& actual,
                                         const std::string& pointer) {
    for (rapidjson::SizeType index = 0; index < std::min(expected.Size(), actual.Size()); ++index) {
        const std::string place = below(pointer, std::to_string(index));
        if (auto difference = compare(expected[index], actual[index], place)) {
            return difference;
        }
    }
    if (expected.Size() == actual.Size()) {
        return std::nullopt;
    }
    return at(pointer) + std::to_string(actual.Size()) + " items, not " + std::to_string(expected.Size());
}

std::optional<std::string> compare(const Json& expected, const Json& actual, const std::string& pointer) {
    if (expected.IsObject() && actual.IsObject()) {
        return compareObjects(expected, actual, pointer);
    }
    if (expected.IsArray() && actual.IsArray()) {
        return compareArrays(expected, actual, pointer);
    }
    if (expected == actual) {
        return std::nullopt;
    }
    return at(pointer) + compact(actual) + ", not " + compact(expected);
}

} // namespace

std::optional<std::string> findDifference(const Json& expected, const Json& actual) {
    return compare(expected, actual, {});
}

std::string pretty(const Json& value) {
    rapidjson::StringBuffer buffer;
    rapidjson::PrettyWriter<rapidjson::StringBuffer> writer(buffer);
    writer.SetIndent(' ', 2);
    value.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
}

} // namespace quelt::host::test
