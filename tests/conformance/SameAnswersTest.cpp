// What is answered does not depend on the platform: the answers to all cases, and to many random records, are
// the same bytes everywhere. One number for each setting, in answers.txt, stands for them: what the answers
// should be is said by the cases, and by the properties that the unit tests check.

#include "conformance/Answers.h"
#include "conformance/Cases.h"

#include "host/support/RandomContext.h"
#include "interchange/ContextWriter.h"

#include <gtest/gtest.h>

#include <array>
#include <charconv>
#include <fstream>

namespace quelt::host::test {
namespace {

/// Fowler, Noll and Vo's hash, 1a, of 64 bits (draft-eastlake-fnv).
class Hash {
public:
    void add(std::string_view text) {
        for (const char character : text) {
            m_value ^= static_cast<unsigned char>(character);
            m_value *= 0x00000100000001B3U;
        }
    }
    [[nodiscard]] std::string text() const {
        std::array<char, 16> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), m_value, 16).ptr;
        return {digits.data(), end};
    }

private:
    std::uint64_t m_value = 0xCBF29CE484222325U;
};

/// The number that answers.txt has for the current setting.
std::string expectedHash() {
    std::ifstream file(QUELT_SOURCE_DIR "/tests/conformance/answers.txt");
    std::string setting;
    std::string hash;
    while (file >> setting >> hash) {
        if (setting == currentSetting()) {
            return hash;
        }
    }
    return "no number for this setting";
}

TEST(SameAnswers, onEveryPlatform) {
    constexpr ConvertOptions everything{.withInput = true, .withTrace = true};
    constexpr unsigned contexts = 400;
    constexpr unsigned recordsEach = 25;
    Hash hash;
    for (const Case& one : loadCases(QUELT_SOURCE_DIR "/tests/conformance")) {
        hash.add(answerTo(*loadContext(one.context), one.record, everything));
    }
    for (unsigned seed = 0; seed < contexts; ++seed) {
        RandomContext random(seed);
        TextBuffer buffer;
        JsonWriter writer(buffer);
        writeContext(writer, random.context());
        hash.add(buffer.view());
        for (unsigned number = 0; number < recordsEach; ++number) {
            hash.add(answerTo(random.context(), random.record(number, number % 4 == 0, number % 3 == 0),
                              everything));
        }
    }
    RecordProperty("hash", hash.text());
    EXPECT_EQ(hash.text(), expectedHash()) << "the hash of the answers of the setting " << currentSetting();
}

} // namespace
} // namespace quelt::host::test
