#include "interchange/CompiledReader.h"

#include "host/support/RandomCompiled.h"
#include "host/support/Samples.h"
#include "interchange/Base64.h"
#include "interchange/CompiledWriter.h"

#include <gtest/gtest.h>

namespace quelt::host {
namespace {

using test::Padded;
using test::repeated;

constexpr const char* s_guid = "7a6c0001-0000-4000-8000-000000000001";
constexpr const char* s_change = "ec000001-0000-4000-8000-000000000001";

/// What `read` makes of the document `json`; the reason when it refuses it.
template <class Read>
std::string tryOn(std::string_view json, Read read) {
    const Padded padded(json);
    JsonParser parser;
    const Value value(parser.parse(padded.text()), Place());
    try {
        return read(value);
    } catch (const Refusal& refusal) {
        return refusal.reason();
    }
}

std::string writtenOut(const QueltFltEffectivity& effectivity) {
    TextBuffer buffer;
    JsonWriter writer(buffer);
    writeCompiled(writer, effectivity);
    return std::string(buffer.view());
}
/// The effectivity as it is written when it is read, compiled, decompiled.
std::string throughBytes(std::string_view json) {
    return tryOn(json, [](const Value& value) { return writtenOut(*decompile(compile(value), value)); });
}
std::string refusalOfCompiled(std::string_view json) {
    return tryOn(json, [](const Value& value) { return "accepted: " + writtenOut(*readCompiled(value)); });
}
std::string refusalOfBinary(std::string_view json) {
    return tryOn(json, [](const Value& value) {
        return "accepted: " + writtenOut(*decompile(readBinary(value), value));
    });
}

std::string withDnf(const std::string& dnf) {
    return R"({"domains":[{"domain":2,"views":[{"view":0,"contexts":[{"dictionary":")" + std::string(s_guid) +
           R"(","dnf":)" + dnf + "}]}]}]}";
}
std::string withLiteral(const std::string& literal) {
    return withDnf("[[" + literal + "]]");
}

TEST(CompiledReaderTest, everyFormComesBackThroughItsBytes) {
    for (unsigned seed = 0; seed < 50; ++seed) {
        test::RandomCompiled random(seed);
        for (int number = 0; number < 20; ++number) {
            const std::string form = random.next();
            EXPECT_EQ(throughBytes(form), form);
        }
    }
}

TEST(CompiledReaderTest, compilingWhatWasDecompiledGivesTheSameBytes) {
    for (unsigned seed = 0; seed < 50; ++seed) {
        test::RandomCompiled random(seed);
        const std::string form = random.next();
        const auto compiled = [](std::string_view json) {
            return tryOn(json, [](const Value& value) { return encodeBase64(compile(value).getBytes()); });
        };
        const std::string binary = compiled(form);
        EXPECT_EQ(compiled(refusalOfBinary("\"" + binary + "\"").substr(std::string("accepted: ").size())),
                  binary);
    }
}

TEST(CompiledReaderTest, bytesHaveTheOrderOfTheFormat) {
    const std::string guid(s_guid);
    const std::string given =
        R"({"domains":[{"domain":3,"views":[]},{"domain":1,"views":[{"view":9,"contexts":[]},)"
        R"({"view":0,"contexts":[{"dictionary":")" +
        guid + R"(","dnf":[[{"option":")" + guid + R"(","in":["V8","V6","V8"],"negated":false}],[]]}]}]}]})";
    EXPECT_EQ(throughBytes(given),
              R"({"domains":[{"domain":1,"views":[{"view":0,"contexts":[{"dictionary":")" + guid +
                  R"(","dnf":[[{"option":")" + guid +
                  R"(","in":["V6","V8"]}],[]]}]},{"view":9,"contexts":[]}]},{"domain":3,"views":[]}]})");
}

TEST(CompiledReaderTest, refusesWhatIsNoEffectivity) {
    const std::string guid(s_guid);
    EXPECT_EQ(refusalOfCompiled("[]"), "expected an object, found an array at the root");
    EXPECT_EQ(refusalOfCompiled("{}"), "missing key 'domains' at the root");
    EXPECT_EQ(refusalOfCompiled(R"({"domain":[]})"), "unknown key 'domain' at /domain");
    EXPECT_EQ(refusalOfCompiled(R"({"domains":{}})"), "expected an array, found an object at /domains");
    EXPECT_EQ(refusalOfCompiled(R"({"domains":[{"domain":2}]})"), "missing key 'views' at /domains/0");
    EXPECT_EQ(refusalOfCompiled(R"({"domains":[{"views":[]}]})"), "missing key 'domain' at /domains/0");
    EXPECT_EQ(refusalOfCompiled(R"({"domains":[{"domain":2,"views":[]},{"domain":2,"views":[]}]})"),
              "domain 2 given twice at /domains/1/domain");
    EXPECT_EQ(refusalOfCompiled(R"({"domains":[{"domain":2,"views":[{"view":0,"contexts":[]},)"
                                R"({"view":0,"contexts":[]}]}]})"),
              "view 0 given twice at /domains/0/views/1/view");
    EXPECT_EQ(refusalOfCompiled(R"({"domains":[{"domain":2,"views":[{"view":0,"contexts":[{"dictionary":")" +
                                guid + R"(","dnf":[]},{"dictionary":")" + guid + R"(","dnf":[]}]}]}]})"),
              "dictionary '" + guid + "' given twice at /domains/0/views/0/contexts/1/dictionary");
    EXPECT_EQ(refusalOfCompiled(R"({"domains":[{"domain":2,"views":[{"view":0,"contexts":)"
                                R"([{"dictionary":"Truck","dnf":[]}]}]}]})"),
              "'Truck' is no GUID at /domains/0/views/0/contexts/0/dictionary");
}

TEST(CompiledReaderTest, refusesNumbersOutOfRange) {
    const auto domain = [](const std::string& number) {
        return refusalOfCompiled(R"({"domains":[{"domain":)" + number + R"(,"views":[]}]})");
    };
    EXPECT_EQ(domain("4294967295"), R"(accepted: {"domains":[{"domain":4294967295,"views":[]}]})");
    EXPECT_NE(domain("4294967296").find("at /domains/0/domain"), std::string::npos);
    EXPECT_NE(domain("-1").find("at /domains/0/domain"), std::string::npos);
    EXPECT_NE(domain("1.0").find("at /domains/0/domain"), std::string::npos);
}

TEST(CompiledReaderTest, refusesWhatIsNoLiteral) {
    const std::string guid(s_guid);
    const std::string at = " at /domains/0/views/0/contexts/0/dnf/0/0";
    EXPECT_EQ(refusalOfCompiled(withDnf(R"([{"eff":")" + guid + R"("}])")),
              "expected an array, found an object at /domains/0/views/0/contexts/0/dnf/0");
    EXPECT_EQ(refusalOfCompiled(withLiteral("true")), "expected an object, found true" + at);
    EXPECT_EQ(refusalOfCompiled(withLiteral("{}")), "expected 'eff' or 'option'" + at);
    EXPECT_EQ(refusalOfCompiled(withLiteral(R"({"negated":true})")), "expected 'eff' or 'option'" + at);
    EXPECT_EQ(refusalOfCompiled(withLiteral(R"({"eff":"ECO-1"})")), "'ECO-1' is no GUID" + at + "/eff");
    EXPECT_EQ(refusalOfCompiled(withLiteral(R"({"eff":")" + guid + R"(","in":[]})")),
              "key 'in' does not belong to 'eff'" + at + "/in");
    EXPECT_EQ(refusalOfCompiled(withLiteral(R"({"eff":")" + guid + R"(","option":")" + guid + R"("})")),
              "key 'option' does not belong to 'eff'" + at + "/option");
    EXPECT_EQ(refusalOfCompiled(withLiteral(R"({"option":")" + guid + R"("})")), "missing key 'in'" + at);
    EXPECT_EQ(refusalOfCompiled(withLiteral(R"({"option":")" + guid + R"(","in":["V6",6]})")),
              "expected text, found a number" + at + "/in/1");
    EXPECT_EQ(refusalOfCompiled(withLiteral(R"({"option":")" + guid + R"(","in":[],"noVar":true})")),
              "unknown key 'noVar'" + at + "/noVar");
    EXPECT_EQ(refusalOfCompiled(withLiteral(R"({"eff":")" + guid + R"(","negated":1})")),
              "expected true or false, found a number" + at + "/negated");
}

TEST(CompiledReaderTest, refusesWhatIsTooLarge) {
    const std::string literal = R"({"eff":")" + std::string(s_change) + R"("})";
    const std::string literals = literal + repeated("," + literal, QueltDnf::s_maxLiterals - 1);
    EXPECT_EQ(refusalOfCompiled(withLiteral(literals)).substr(0, 9), "accepted:");
    EXPECT_EQ(refusalOfCompiled(withLiteral(literals + "," + literal)),
              "more literals than a normal form may have, or more values in them at "
              "/domains/0/views/0/contexts/0/dnf/0/" +
                  std::to_string(QueltDnf::s_maxLiterals));
    const std::string conjunctions = "[]" + repeated(",[]", QueltDnf::s_maxConjunctions - 1);
    EXPECT_EQ(refusalOfCompiled(withDnf("[" + conjunctions + "]")).substr(0, 9), "accepted:");
    EXPECT_EQ(refusalOfCompiled(withDnf("[" + conjunctions + ",[]]")),
              "more than 10000 conjunctions at /domains/0/views/0/contexts/0/dnf/10000");
    std::string domains;
    for (std::size_t number = 0; number <= QueltFltEffectivity::s_maxDomains; ++number) {
        domains += (number > 0 ? "," : "") + (R"({"domain":)" + std::to_string(number)) + R"(,"views":[]})";
    }
    EXPECT_EQ(refusalOfCompiled(R"({"domains":[)" + domains + "]}"),
              "more than 1000 domains at /domains/1000/domain");
}

/// An option with a value of 17 MiB makes the binary larger than one may be.
TEST(CompiledReaderTest, refusesToCompileWhatIsTooLarge) {
    const std::string form = withLiteral(R"({"option":")" + std::string(s_guid) + R"(","in":[")" +
                                         std::string(std::size_t{17} << 20U, 'x') + R"("]})");
    EXPECT_EQ(throughBytes(form), "larger than a compiled binary may be at the root");
}

TEST(CompiledReaderTest, refusesWhatIsNoBinary) {
    EXPECT_EQ(refusalOfBinary("5"), "expected text, found a number at the root");
    EXPECT_EQ(refusalOfBinary(R"("AAA")"), "not base64: 3 characters are no groups of four at the root");
    EXPECT_EQ(refusalOfBinary(R"("")"), "no compiled binary, or a damaged one (0x80070057) at the root");
    EXPECT_EQ(refusalOfBinary(R"("AAAA")"), "no compiled binary, or a damaged one (0x80070057) at the root");
}

} // namespace
} // namespace quelt::host
