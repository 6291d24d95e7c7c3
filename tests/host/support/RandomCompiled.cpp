#include "host/support/RandomCompiled.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <set>

namespace quelt::host::test {

namespace {

/// As JSON has them, in the order of their bytes.
constexpr std::array<const char*, 9> s_names{R"("")",     R"("\u0000")",  R"(" ")",
                                             R"("\"\\")", R"("V 6")",     R"("V6")",
                                             R"("V8")",   "\"\xC3\xBC\"", "\"\xF0\x9F\x9A\x9B\""};

std::string joined(const std::vector<std::string>& items) {
    std::string text = "[";
    for (const std::string& item : items) {
        text += (text.size() > 1 ? "," : "") + item;
    }
    return text + "]";
}

} // namespace

template <class Make>
std::string RandomCompiled::array(unsigned most, Make make) {
    std::vector<std::string> items;
    for (unsigned count = m_random.below(most + 1), number = 0; number < count; ++number) {
        items.push_back(make(number));
    }
    return joined(items);
}

std::vector<std::string> RandomCompiled::numbers(unsigned most) {
    std::set<unsigned> numbers;
    for (unsigned count = m_random.below(most + 1); count > 0; --count) {
        numbers.insert(m_random.onceIn(10) ? 4'294'967'295U : m_random.below(5));
    }
    std::vector<std::string> texts;
    for (const unsigned number : numbers) {
        texts.push_back(std::to_string(number));
    }
    return texts;
}

std::string RandomCompiled::next() {
    std::vector<std::string> domains;
    for (const std::string& number : numbers(3)) {
        std::vector<std::string> views;
        for (const std::string& kind : numbers(3)) {
            views.push_back(view(kind));
        }
        domains.push_back(R"({"domain":)" + number + R"(,"views":)" + joined(views) + "}");
    }
    return R"({"domains":)" + joined(domains) + "}";
}

std::string RandomCompiled::view(const std::string& number) {
    return R"({"view":)" + number + R"(,"contexts":)" +
           array(3, [this](unsigned position) { return context(position); }) + "}";
}

std::string RandomCompiled::context(unsigned number) {
    std::string dictionary = guid();
    dictionary[1] = static_cast<char>('0' + number); // different in one view
    return R"({"dictionary":")" + dictionary + R"(","dnf":)" +
           array(3,
                 [this](unsigned /*position*/) {
                     return array(3, [this](unsigned /*position*/) { return literal(); });
                 }) +
           "}";
}

std::string RandomCompiled::literal() {
    std::string text;
    if (m_random.onceIn(2)) {
        text = R"({"eff":")" + guid() + "\"";
    } else {
        std::vector<std::string> names;
        for (const char* const name : s_names) {
            if (m_random.onceIn(3)) {
                names.emplace_back(name);
            }
        }
        text = R"({"option":")" + guid() + R"(","in":)" + joined(names);
    }
    return text + (m_random.onceIn(3) ? R"(,"negated":true})" : "}");
}

/// Of few, so that they come often.
std::string RandomCompiled::guid() {
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%08x-0000-4000-8000-%012x", m_random.below(4) * 0x1000001U,
                  m_random.below(3));
    return text.data();
}

} // namespace quelt::host::test
