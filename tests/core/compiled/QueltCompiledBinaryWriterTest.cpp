#include "compiled/QueltCompiledBinaryWriter.h"

#include "core/compiled/CompiledSamples.h"

#include "effectivity/QueltEeSerialEff.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace {

const QueltBioBuffer s_before(std::vector<std::uint8_t>{1, 2, 3});

/// The result of writing what is to be refused.
long writingRefusal(const QueltFltEffectivity& effectivity) {
    QueltBioBuffer buffer = s_before;
    const long result = QueltCompiledBinaryWriter::Write(effectivity, buffer);
    EXPECT_EQ(buffer, s_before);
    return result;
}

/// The result of writing a normal form with this literal alone.
long writingResult(QueltEeNodeElementaryLeaf* leaf) {
    OneView one;
    EXPECT_EQ(one.addContext(guidOf(11)).addLiteral(leaf->getNodeRef()), S_OK);
    QueltBioBuffer buffer;
    return QueltCompiledBinaryWriter::Write(*one.effectivity, buffer);
}

TEST(QueltCompiledBinaryWriter, WritesEveryPart) {
    OneView one;
    QueltEePredefEff change("ECO-1", guidOf(21));
    QueltEeCatOptionVar engine("Engine", guidOf(31));
    engine.addValue("V8");
    engine.addValue("V6");
    QueltDnf& dnf = one.addContext(guidOf(12));
    auto* const notChange = new QueltEeEffLeaf(&change, nullptr);
    notChange->opNot();
    EXPECT_EQ(dnf.addLiteral(notChange->getNodeRef()), S_OK);
    auto* const option = new QueltEeOptionEff(&engine);
    EXPECT_EQ(option->addValue(0), S_OK);
    EXPECT_EQ(option->addValue(1), S_OK);
    EXPECT_EQ(dnf.addLiteral((new QueltEeVarEffLeaf(option))->getNodeRef()), S_OK);
    EXPECT_EQ(dnf.addConjunction(), S_OK);
    EXPECT_EQ(one.view->addContext(guidOf(11), new QueltDnf), S_OK);
    EXPECT_EQ(one.effectivity->addDomain(1, new QueltFltDomainEffectivity), S_OK);

    CompiledBytes bytes;
    bytes.number(2);                               // two domains
    bytes.number(1).number(0);                     // 1, without views
    bytes.number(2).number(1).number(0).number(2); // 2, with view 0 and two contexts
    bytes.guid(12).number(2).number(2);            // two conjunctions, the first of two literals
    bytes.effectivity(21, true);                   // negated
    bytes.option(31, 2).text("V6").text("V8");     // sorted
    bytes.number(0);                               // the second conjunction, empty
    bytes.guid(11).number(0);                      // the second context, FALSE
    EXPECT_EQ(writtenBytes(*one.effectivity), bytes.sealed());
}

TEST(QueltCompiledBinaryWriter, ReplacesWhatTheBufferHeld) {
    QueltBioBuffer buffer = s_before;
    EXPECT_EQ(QueltCompiledBinaryWriter::Write(QueltFltEffectivity(), buffer), S_OK);
    const std::vector<std::uint8_t> expected = CompiledBytes().number(0).sealed();
    EXPECT_EQ(buffer, QueltBioBuffer(expected));
}

TEST(QueltCompiledBinaryWriter, SortsValuesAndWritesEachOnce) {
    QueltEeCatOptionVar paint("Paint", guidOf(31));
    auto* const option = new QueltEeOptionEff(&paint);
    for (const char* const name : {"z", "", "\xC3\xA9", "V", "V6"}) {
        EXPECT_EQ(option->addValue(paint.addValue(name)), S_OK);
    }
    EXPECT_EQ(option->addValue(0), S_OK);
    auto* const leaf = new QueltEeVarEffLeaf(option);
    leaf->opNot();
    OneView one;
    EXPECT_EQ(one.addContext(guidOf(11)).addLiteral(leaf->getNodeRef()), S_OK);
    const std::vector<std::uint8_t> expected = CompiledBytes()
                                                   .onlyDnf(1)
                                                   .number(1)
                                                   .option(31, 5, true)
                                                   .text("")
                                                   .text("V")
                                                   .text("V6")
                                                   .text("z")
                                                   .text("\xC3\xA9")
                                                   .sealed();
    EXPECT_EQ(writtenBytes(*one.effectivity), expected);
}

TEST(QueltCompiledBinaryWriter, RefusesLiteralsThatTheFormatHasNot) {
    QueltEeCatOptionVar engine("Engine", guidOf(31));
    QueltEeSelectionVar package("Package", guidOf(32));
    QueltEePredefEff change("ECO-1", guidOf(21));
    EXPECT_EQ(writingResult(new QueltEeEffLeaf(&change, nullptr)), S_OK);
    EXPECT_EQ(writingResult(new QueltEeVarEffLeaf(new QueltEeOptionEff(&engine))), S_OK);

    EXPECT_EQ(writingResult(new QueltEeVarEffLeaf(new QueltEeOptionEff(nullptr))), E_INVALIDARG);
    EXPECT_EQ(writingResult(new QueltEeVarEffLeaf(new QueltEeSelectionEff(&package))), E_INVALIDARG);
    EXPECT_EQ(writingResult(new QueltEeVarEffLeaf(new QueltEeSerialEff(nullptr))), E_INVALIDARG);
    auto* const withNoVar = new QueltEeOptionEff(&engine);
    withNoVar->switchNoVar();
    EXPECT_EQ(writingResult(new QueltEeVarEffLeaf(withNoVar)), E_INVALIDARG);
}

TEST(QueltCompiledBinaryWriter, LeavesTheBufferAloneWhenItRefuses) {
    OneView one;
    EXPECT_EQ(one.addContext(guidOf(11))
                  .addLiteral((new QueltEeVarEffLeaf(new QueltEeOptionEff(nullptr)))->getNodeRef()),
              S_OK);
    EXPECT_EQ(writingRefusal(*one.effectivity), E_INVALIDARG);
}

TEST(QueltCompiledBinaryWriter, RefusesAContextWithoutGuidOrNormalForm) {
    OneView one;
    one.addContext(guidOf(11));
    auto* const entry = const_cast<QueltInMapEntry*>(one.view->m_contexts.cBegin().GetEntryGoToNext());
    QueltInObject* const dnf = std::exchange(entry->value, nullptr);
    EXPECT_EQ(writingRefusal(*one.effectivity), E_POINTER);
    entry->value = dnf;
    delete std::exchange(entry->key, nullptr);
    EXPECT_EQ(writingRefusal(*one.effectivity), E_POINTER);
}

TEST(QueltCompiledBinaryWriter, RefusesMoreContextsThanTheParserReads) {
    OneView one;
    QueltInGuid::Bytes bytes{};
    for (int number = 0; number <= QueltFltEffectivityView::s_maxContexts; ++number) {
        bytes[0] = static_cast<std::uint8_t>(number / 256);
        bytes[1] = static_cast<std::uint8_t>(number % 256);
        ASSERT_EQ(one.view->m_contexts.Put(QueltInGuid(bytes), *new QueltDnf), S_OK);
    }
    EXPECT_EQ(writingRefusal(*one.effectivity), E_OUTOFMEMORY);
}

TEST(QueltCompiledBinaryWriter, WritesUpToTheLimitAndNoFurther) {
    OneView one;
    QueltEeCatOptionVar engine("Engine", guidOf(31));
    QueltDnf& dnf = one.addContext(guidOf(11));
    const auto addOption = [&](std::size_t length) {
        auto* const option = new QueltEeOptionEff(&engine);
        EXPECT_EQ(option->addValue(engine.addValue(std::string(length, 'x'))), S_OK);
        EXPECT_EQ(dnf.addLiteral((new QueltEeVarEffLeaf(option))->getNodeRef()), S_OK);
    };
    // Header 16, counts and numbers 5 * 4, context 16 + 4, conjunction 4; literal 17 + 4, value 4.
    constexpr std::size_t around = 60 + 25;
    addOption(QueltCompiledBinaryParser::s_maxBytes - around);
    const std::vector<std::uint8_t> largest = writtenBytes(*one.effectivity);
    EXPECT_EQ(largest.size(), QueltCompiledBinaryParser::s_maxBytes);
    long result = E_FAIL;
    EXPECT_NE(readBytes(largest, result), nullptr);
    EXPECT_EQ(result, S_OK);

    addOption(1);
    EXPECT_EQ(writingRefusal(*one.effectivity), E_OUTOFMEMORY);
}

TEST(QueltCompiledBinaryWriter, WritesWhatReadsEqualAndTheSameBytesAgain) {
    const CompiledSamples samples;
    Random random(7);
    std::size_t longest = 0;
    for (int round = 0; round < 2000; ++round) {
        const OwnedEffectivity effectivity = samples.effectivity(random);
        const std::vector<std::uint8_t> bytes = writtenBytes(*effectivity);
        long result = E_FAIL;
        const OwnedEffectivity read = readBytes(bytes, result);
        ASSERT_EQ(result, S_OK);
        ASSERT_EQ(meaningOf(*read), meaningOf(*effectivity));
        ASSERT_EQ(writtenBytes(*read), bytes);
        longest = std::max(longest, bytes.size());
    }
    EXPECT_GT(longest, 1000U); // else nothing of interest was tried
}

/// The bytes of the worked example in the description of the format: two hexadecimal digits each, in the
/// block that is marked as `hex`, up to the `#` of each line.
std::vector<std::uint8_t> documentedExample() {
    std::ifstream document(QUELT_SOURCE_DIR "/docs/compiled-format.md");
    std::vector<std::uint8_t> bytes;
    std::string line;
    while (std::getline(document, line) && line != "```hex") {
    }
    while (std::getline(document, line) && line != "```") {
        std::istringstream digits(line.substr(0, line.find('#')));
        for (std::string pair; digits >> pair;) {
            bytes.push_back(static_cast<std::uint8_t>(std::stoul(pair, nullptr, 16)));
        }
    }
    return bytes;
}

QueltInGuid guidFrom(const char* text) {
    QueltInGuid guid;
    EXPECT_EQ(QueltInGuid::parse(text, guid), S_OK);
    return guid;
}

TEST(QueltCompiledBinaryWriter, WritesTheDocumentedExample) {
    QueltEePredefEff change("ECO-1", guidFrom("c4a760a8-dbcf-4e14-9f3a-5b2e8d6f7a01"));
    QueltEePredefEff revoked("ECO-2", guidFrom("c4a760a8-dbcf-4e14-9f3a-5b2e8d6f7a02"));
    QueltEeCatOptionVar engine("Engine", guidFrom("7d444840-9dc0-11d1-b245-5ffdce74fad2"));
    auto* const option = new QueltEeOptionEff(&engine);
    for (const char* const name : {"V8", "V6"}) {
        EXPECT_EQ(option->addValue(engine.addValue(name)), S_OK);
    }
    auto* const notRevoked = new QueltEeEffLeaf(&revoked, nullptr);
    notRevoked->opNot();
    OneView one;
    QueltDnf& dnf = one.addContext(guidFrom("0b6e2a51-3f5c-4c8e-9d7b-1a2b3c4d5e6f"));
    EXPECT_EQ(dnf.addLiteral((new QueltEeEffLeaf(&change, nullptr))->getNodeRef()), S_OK);
    EXPECT_EQ(dnf.addLiteral(notRevoked->getNodeRef()), S_OK);
    EXPECT_EQ(dnf.addLiteral((new QueltEeVarEffLeaf(option))->getNodeRef()), S_OK);

    const std::vector<std::uint8_t> documented = documentedExample();
    ASSERT_FALSE(documented.empty());
    EXPECT_EQ(writtenBytes(*one.effectivity), documented);
    long result = E_FAIL;
    const OwnedEffectivity read = readBytes(documented, result);
    ASSERT_EQ(result, S_OK);
    EXPECT_EQ(meaningOf(*read), meaningOf(*one.effectivity));
}

} // namespace
