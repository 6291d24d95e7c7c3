#include "conformance/Cases.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <map>
#include <optional>
#include <ostream>
#include <rapidjson/document.h>
#include <rapidjson/error/en.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <sstream>
#include <stdexcept>

namespace quelt::host::test {

namespace {

using Json = rapidjson::Value;

constexpr std::string_view s_settings[] = {"plain", "migRen", "optimization", "both"};

class Problem : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

std::string compact(const Json& value) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    value.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
}

/// Refuses anything but an object with these keys, of which those in `needed` must be there.
void checkKeys(const Json& value, const std::string& what, std::initializer_list<std::string_view> needed,
               std::initializer_list<std::string_view> optional = {}) {
    if (!value.IsObject()) {
        throw Problem(what + " is no object");
    }
    for (const auto& member : value.GetObject()) {
        const std::string_view key(member.name.GetString(), member.name.GetStringLength());
        const bool isKnown = std::find(needed.begin(), needed.end(), key) != needed.end() ||
                             std::find(optional.begin(), optional.end(), key) != optional.end();
        if (!isKnown) {
            throw Problem(what + " has the unknown key '" + std::string(key) + "'");
        }
        const auto sameKey = [&](const auto& other) { return other.name == member.name; };
        if (std::count_if(value.MemberBegin(), value.MemberEnd(), sameKey) != 1) {
            throw Problem(what + " has the key '" + std::string(key) + "' more than once");
        }
    }
    for (const std::string_view key : needed) {
        if (!value.HasMember(std::string(key).c_str())) {
            throw Problem(what + " lacks the key '" + std::string(key) + "'");
        }
    }
}

std::string textOf(const Json& value, const std::string& what) {
    if (!value.IsString() || value.GetStringLength() == 0) {
        throw Problem(what + " is no text");
    }
    return {value.GetString(), value.GetStringLength()};
}

std::vector<std::string> splitAtCommas(const std::string& text) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, ',');) {
        parts.push_back(part);
    }
    return parts;
}

/// The answers in an "expect" or "untraced" object by setting.
std::map<std::string, const Json*, std::less<>> answersBySetting(const Json& value, const std::string& what) {
    if (!value.IsObject()) {
        throw Problem(what + " is no object");
    }
    std::map<std::string, const Json*, std::less<>> answers;
    const auto add = [&](std::string_view setting, const Json& answer) {
        if (!answer.IsObject()) {
            throw Problem(what + " has an answer that is no object");
        }
        if (!answers.emplace(setting, &answer).second) {
            throw Problem(what + " names the setting '" + std::string(setting) + "' twice");
        }
    };
    for (const auto& member : value.GetObject()) {
        for (const std::string& setting : splitAtCommas(textOf(member.name, what + ": a key"))) {
            if (setting == "all") {
                std::for_each(std::begin(s_settings), std::end(s_settings),
                              [&](std::string_view each) { add(each, member.value); });
            } else if (std::find(std::begin(s_settings), std::end(s_settings), setting) !=
                       std::end(s_settings)) {
                add(setting, member.value);
            } else {
                throw Problem(what + " names the unknown setting '" + setting + "'");
            }
        }
    }
    return answers;
}

const Json& answerFor(const Json& value, const std::string& what, std::string_view setting) {
    const auto answers = answersBySetting(value, what);
    const auto found = answers.find(setting);
    if (found == answers.end()) {
        throw Problem(what + " has no answer for the setting '" + std::string(setting) + "'");
    }
    return *found->second;
}

std::string withoutTrace(const Json& answer) {
    rapidjson::Document copy;
    copy.CopyFrom(answer, copy.GetAllocator());
    copy.RemoveMember("trace");
    return compact(copy);
}

std::string contextOf(const Json& value, const Json& contexts) {
    if (value.IsString()) {
        const std::string key = textOf(value, "'context'");
        if (!contexts.HasMember(key.c_str())) {
            throw Problem("there is no context '" + key + "'");
        }
        return compact(contexts[key.c_str()]);
    }
    return compact(value);
}

/// Reads one case into `one`; throws a Problem.
void readCase(const Json& value, const Json& contexts, std::string_view setting, Case& one) {
    checkKeys(value, "the case", {"name", "why", "context", "record", "expect"}, {"untraced"});
    one.name = textOf(value["name"], "'name'");
    one.why = textOf(value["why"], "'why'");
    one.context = contextOf(value["context"], contexts);
    one.record = compact(value["record"]);
    const Json& expected = answerFor(value["expect"], "'expect'", setting);
    one.expected = compact(expected);
    one.untraced = value.HasMember("untraced") ? compact(answerFor(value["untraced"], "'untraced'", setting))
                                               : withoutTrace(expected);
}

/// `text` with an underscore for every run of other characters than letters and digits.
std::string toIdentifier(std::string_view text) {
    std::string result;
    for (const char character : text) {
        if (std::isalnum(static_cast<unsigned char>(character)) != 0) {
            result += character;
        } else if (!result.empty() && result.back() != '_') {
            result += '_';
        }
    }
    return result;
}

std::vector<Case> problemWith(const std::string& file, const std::string& problem) {
    Case one;
    one.file = file;
    one.name = "the file itself";
    one.problem = problem;
    one.testName = toIdentifier(file) + "_itself";
    return {one};
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace

std::ostream& operator<<(std::ostream& out, const Case& one) {
    return out << one.file << ": " << one.name;
}

std::string_view currentSetting() {
    const bool migRen = std::getenv("CGE_MigRen") != nullptr;
    const bool optimization = std::getenv("CFG_DA_Migration_Optimization") != nullptr;
    return s_settings[(migRen ? 1 : 0) + (optimization ? 2 : 0)];
}

std::vector<Case> readCases(const std::string& file, const std::string& text, std::string_view setting) {
    rapidjson::Document document;
    document.Parse(text.data(), text.size());
    if (document.HasParseError()) {
        return problemWith(file, std::string(rapidjson::GetParseError_En(document.GetParseError())) +
                                     " At byte " + std::to_string(document.GetErrorOffset()));
    }
    const Json none(rapidjson::kObjectType);
    try {
        checkKeys(document, "the file", {"cases"}, {"contexts"});
        if (!document["cases"].IsArray() || document["cases"].Empty()) {
            throw Problem("the file has no cases");
        }
        if (document.HasMember("contexts") && !document["contexts"].IsObject()) {
            throw Problem("'contexts' is no object");
        }
    } catch (const Problem& problem) {
        return problemWith(file, problem.what());
    }
    const Json& contexts = document.HasMember("contexts") ? document["contexts"] : none;
    std::vector<Case> cases;
    for (const Json& value : document["cases"].GetArray()) {
        Case one;
        one.file = file;
        try {
            readCase(value, contexts, setting, one);
        } catch (const Problem& problem) {
            one.problem = problem.what();
        }
        one.testName = toIdentifier(file) + "_" + (one.name.empty() ? "case" : toIdentifier(one.name));
        cases.push_back(std::move(one));
    }
    return cases;
}

std::vector<Case> loadCases(const std::string& folder) {
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == ".json") {
            paths.push_back(entry.path());
        }
    }
    std::sort(paths.begin(), paths.end());
    std::vector<Case> cases;
    for (const std::filesystem::path& path : paths) {
        std::vector<Case> more = readCases(path.stem().string(), readFile(path), currentSetting());
        cases.insert(cases.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
    }
    std::map<std::string, int> uses;
    for (Case& one : cases) { // the framework wants every name once
        const int use = ++uses[one.testName];
        one.testName += use > 1 ? "_" + std::to_string(use) : "";
    }
    return cases;
}

} // namespace quelt::host::test
