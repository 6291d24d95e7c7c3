#include "compiled/QueltCompiledBinaryParser.h"

#include "core/compiled/CompiledSamples.h"
#include "core/support/HeapMeter.h"

#include "infrastructure/QueltInMemory.h"

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(PlainChecksum, HasTheCheckValueOfTheStandard) {
    // The check value of CRC-32 is that of the digits 1 to 9; the checksum's own four bytes do not count.
    Bytes bytes = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};
    EXPECT_EQ(plainChecksum(bytes), 0xCBF43926U);
    bytes = {'1', '2', '3', '4', '5', '6', '7', '8', '9', '1', '2', '3', 0, 0, 0, 0, '4'};
    const std::uint32_t checksum = plainChecksum(bytes);
    bytes[13] = 1;
    EXPECT_EQ(plainChecksum(bytes), checksum);
    bytes[16] = '5';
    EXPECT_NE(plainChecksum(bytes), checksum);
}

TEST(QueltCompiledBinaryParser, ReadsAnEffectivityWithoutDomains) {
    long result = E_FAIL;
    const OwnedEffectivity effectivity = readBytes(CompiledBytes().number(0).sealed(), result);
    ASSERT_EQ(result, S_OK);
    EXPECT_EQ(effectivity->getNbDomainEffectivity(), 0U);
}

TEST(QueltCompiledBinaryParser, ReadsEveryPart) {
    CompiledBytes bytes;
    bytes.number(2);
    bytes.number(1).number(0);
    bytes.number(0xFFFFFFFFU).number(2);
    bytes.number(0).number(2).guid(12).number(0).guid(11).number(1).number(0);
    bytes.number(0xFFFFFFFFU).number(0);
    long result = E_FAIL;
    const OwnedEffectivity effectivity = readBytes(bytes.sealed(), result);
    ASSERT_EQ(result, S_OK);
    EXPECT_EQ(effectivity->toString().view(),
              "compiled(1: domain(), 4294967295: domain(0: view(00000000-0000-0000-0000-00000000000c: FALSE, "
              "00000000-0000-0000-0000-00000000000b: TRUE), 4294967295: view()))");
}

TEST(QueltCompiledBinaryParser, MakesOneObjectForEachGuid) {
    CompiledBytes bytes;
    bytes.onlyDnf(2);
    bytes.number(3).effectivity(21).effectivity(22, true).option(21, 1).text("V8");
    bytes.number(2).effectivity(21).option(21, 2, true).text("V6").text("V8");
    long result = E_FAIL;
    const OwnedEffectivity effectivity = readBytes(bytes.sealed(), result);
    ASSERT_EQ(result, S_OK);
    const QueltDnf& dnf = onlyDnfOf(*effectivity);
    ASSERT_EQ(dnf.getConjunctions().size(), 2U);
    const QueltDnf::Conjunction& first = dnf.getConjunctions()[0];
    const QueltDnf::Conjunction& second = dnf.getConjunctions()[1];
    ASSERT_EQ(first.size(), 3U);
    ASSERT_EQ(second.size(), 2U);

    const QueltEeEffLeaf* const leaf = QueltEeEffLeaf::cast(first[0]->getNode());
    ASSERT_NE(leaf, nullptr);
    EXPECT_EQ(leaf->isNegated(), 0);
    EXPECT_EQ(leaf->getReferencedContext(), nullptr);
    EXPECT_NE(QueltEePredefEff::cast(leaf->getTargetEff()), nullptr);
    EXPECT_EQ(leaf->getTargetEff()->getGuid(), guidOf(21));
    EXPECT_EQ(leaf->getTargetEff()->getName().view(), "00000000-0000-0000-0000-000000000015");
    EXPECT_EQ(QueltEeEffLeaf::cast(second[0]->getNode())->getTargetEff(), leaf->getTargetEff());
    EXPECT_NE(QueltEeEffLeaf::cast(first[1]->getNode())->getTargetEff(), leaf->getTargetEff());
    EXPECT_NE(QueltEeEffLeaf::cast(first[1]->getNode())->isNegated(), 0);

    const auto* const option =
        QueltEeOptionEff::cast(QueltEeVarEffLeaf::cast(first[2]->getNode())->getVarEff());
    ASSERT_NE(option, nullptr);
    const auto* const variable = QueltEeCatOptionVar::cast(option->getVar());
    ASSERT_NE(variable, nullptr);
    EXPECT_EQ(variable->getName().view(), "00000000-0000-0000-0000-000000000015");
    EXPECT_EQ(variable->getHolderDico(), nullptr);
    EXPECT_EQ(variable->getValueCount(), 2U);
    EXPECT_EQ(option->toString().view(), "00000000-0000-0000-0000-000000000015 in {V8}");
    const auto* const negated =
        QueltEeOptionEff::cast(QueltEeVarEffLeaf::cast(second[1]->getNode())->getVarEff());
    ASSERT_NE(negated, nullptr);
    EXPECT_EQ(negated->getVar(), variable);
    EXPECT_EQ(negated->toString().view(), "not (00000000-0000-0000-0000-000000000015 in {V6, V8})?");
}

TEST(QueltCompiledBinaryParser, EmptiesTheBufferAndForgetsTheObject) {
    const Bytes bytes = CompiledBytes().number(0).sealed();
    for (const bool isGood : {true, false}) {
        QueltBioBuffer buffer(bytes);
        if (!isGood) {
            buffer.append(Bytes{0});
        }
        QueltInObject* object = &buffer;
        EXPECT_EQ(QueltCompiledBinaryParser::Read(buffer, object), isGood ? S_OK : E_INVALIDARG);
        EXPECT_EQ(buffer.getSize(), 0U);
        EXPECT_NE(object, &buffer);
        EXPECT_EQ(object != nullptr, isGood);
        delete object;
    }
}

TEST(QueltCompiledBinaryParser, RefusesABadHeader) {
    const Bytes good = CompiledBytes().number(0).sealed();
    EXPECT_EQ(refusalOf({}), E_INVALIDARG);
    EXPECT_EQ(refusalOf(Bytes(15)), E_INVALIDARG);
    EXPECT_EQ(refusalOf(Bytes(16)), E_INVALIDARG);
    EXPECT_EQ(refusalOf(CompiledBytes().number(0).sealed(0)), E_NOTIMPL);
    EXPECT_EQ(refusalOf(CompiledBytes().number(0).sealed(2)), E_NOTIMPL);
    EXPECT_EQ(refusalOf(CompiledBytes().number(0).sealed(0x01000000)), E_NOTIMPL);
    for (const std::size_t position : {0U, 1U, 2U, 3U, 8U, 11U}) { // magic and length, under a true checksum
        Bytes bad = good;
        ++bad[position];
        putNumber(bad, 12, plainChecksum(bad));
        EXPECT_EQ(refusalOf(bad), E_INVALIDARG) << position;
    }
    Bytes bad = good;
    ++bad[12];
    EXPECT_EQ(refusalOf(bad), E_INVALIDARG);
}

TEST(QueltCompiledBinaryParser, RefusesABadBodyUnderAGoodHeader) {
    constexpr std::uint32_t endless = 0xFFFFFFFFU;
    const std::vector<std::pair<const char*, CompiledBytes>> cases = {
        {"nothing", CompiledBytes()},
        {"half a count", CompiledBytes().byte(0).byte(0)},
        {"a byte behind the end", CompiledBytes().number(0).byte(0)},
        {"a domain that is missing", CompiledBytes().number(1)},
        {"a domain without views", CompiledBytes().number(1).number(2)},
        {"endless domains", CompiledBytes().number(endless).number(2).number(0)},
        {"a domain twice", CompiledBytes().number(2).number(2).number(0).number(2).number(0)},
        {"domains in descending order", CompiledBytes().number(2).number(2).number(0).number(1).number(0)},
        {"endless views", CompiledBytes().number(1).number(2).number(endless).number(0).number(0)},
        {"a view twice",
         CompiledBytes().number(1).number(2).number(2).number(0).number(0).number(0).number(0)},
        {"views in descending order",
         CompiledBytes().number(1).number(2).number(2).number(1).number(0).number(0).number(0)},
        {"endless contexts",
         CompiledBytes().number(1).number(2).number(1).number(0).number(endless).guid(11).number(0)},
        {"a context twice",
         CompiledBytes().number(1).number(2).number(1).number(0).number(2).guid(11).number(0).guid(11).number(
             0)},
        {"half a GUID",
         CompiledBytes().number(1).number(2).number(1).number(0).number(1).number(0).number(0)},
        {"endless conjunctions", CompiledBytes().onlyDnf(endless).number(0)},
        {"endless literals", CompiledBytes().onlyDnf(1).number(endless).effectivity(21)},
        {"a literal that is missing", CompiledBytes().onlyDnf(1).number(2).effectivity(21)},
        {"a kind of literal that there is not", CompiledBytes().onlyDnf(1).number(1).byte(4).guid(21)},
        {"the last kind of all", CompiledBytes().onlyDnf(1).number(1).byte(255).guid(21)},
        {"an option without count", CompiledBytes().onlyDnf(1).number(1).byte(2).guid(31)},
        {"endless values", CompiledBytes().onlyDnf(1).number(1).option(31, endless).text("V6")},
        {"a value that is missing", CompiledBytes().onlyDnf(1).number(1).option(31, 2).text("V6")},
        {"a value of endless length",
         CompiledBytes().onlyDnf(1).number(1).option(31, 1).number(endless).byte('V')},
        {"a value twice", CompiledBytes().onlyDnf(1).number(1).option(31, 2).text("V6").text("V6")},
        {"values in descending order",
         CompiledBytes().onlyDnf(1).number(1).option(31, 2).text("V8").text("V6")},
        {"values sorted as signed bytes",
         CompiledBytes().onlyDnf(1).number(1).option(31, 2).text("\xC3\xA9").text("z")},
    };
    for (const auto& [name, bytes] : cases) {
        EXPECT_EQ(refusalOf(bytes.sealed()), E_INVALIDARG) << name;
    }
}

TEST(QueltCompiledBinaryParser, RefusesEverySingleFlippedBitAndEveryTruncation) {
    const CompiledSamples samples;
    Random random(11);
    std::size_t tried = 0;
    while (tried < 8) {
        const OwnedEffectivity effectivity = samples.effectivity(random);
        const Bytes good = writtenBytes(*effectivity);
        if (good.size() > 700) {
            continue; // every bit of it would take long
        }
        ++tried;
        for (std::size_t bit = 0; bit < good.size() * 8; ++bit) {
            Bytes bad = good;
            bad[bit / 8] = static_cast<std::uint8_t>(bad[bit / 8] ^ (1U << (bit % 8)));
            ASSERT_LT(refusalOf(bad), 0) << "bit " << bit;
        }
        for (std::size_t length = 0; length < good.size(); ++length) {
            ASSERT_LT(refusalOf(std::span(good).first(length)), 0) << "length " << length;
            if (length >= 16) { // also when the header says that this is all
                Bytes shortened(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length));
                repairHeader(shortened);
                ASSERT_LT(refusalOf(shortened), 0) << "length " << length;
            }
        }
        Bytes extended = good;
        extended.push_back(0);
        EXPECT_EQ(refusalOf(extended), E_INVALIDARG);
        repairHeader(extended);
        EXPECT_EQ(refusalOf(extended), E_INVALIDARG);
    }
}

TEST(QueltCompiledBinaryParser, ReadsChangedBytesOnlyWhenTheyWriteTheSameAgain) {
    const CompiledSamples samples;
    Random random(13);
    int accepted = 0;
    for (int round = 0; round < 3000; ++round) {
        Bytes bytes = writtenBytes(*samples.effectivity(random));
        for (unsigned int changes = 1 + random.below(3); changes-- > 0;) {
            bytes[random.below(bytes.size())] = static_cast<std::uint8_t>(random.below(4));
        }
        repairHeader(bytes);
        long result = S_OK;
        if (const OwnedEffectivity read = readBytes(bytes, result)) {
            ASSERT_EQ(writtenBytes(*read), bytes);
            ++accepted;
        }
    }
    EXPECT_GT(accepted, 100); // else nothing was tried
}

/// What stands between the counted things and the beginning of the body, and one of the things.
struct Counted {
    const char* name;
    std::uint32_t limit;
    std::function<CompiledBytes(std::uint32_t count)> begin;
    std::function<void(CompiledBytes& bytes, std::uint32_t number)> append;
};

TEST(QueltCompiledBinaryParser, ReadsUpToEachLimitAndNoFurther) {
    const std::vector<Counted> cases = {
        {"domains", 1'000, [](std::uint32_t count) { return CompiledBytes().number(count); },
         [](CompiledBytes& bytes, std::uint32_t number) { bytes.number(number).number(0); }},
        {"views", 1'000,
         [](std::uint32_t count) { return CompiledBytes().number(1).number(2).number(count); },
         [](CompiledBytes& bytes, std::uint32_t number) { bytes.number(number).number(0); }},
        {"contexts", 10'000,
         [](std::uint32_t count) {
             return CompiledBytes().number(1).number(2).number(1).number(0).number(count);
         },
         [](CompiledBytes& bytes, std::uint32_t number) { bytes.guid(number).number(0); }},
        {"conjunctions", 10'000, [](std::uint32_t count) { return CompiledBytes().onlyDnf(count); },
         [](CompiledBytes& bytes, std::uint32_t /*number*/) { bytes.number(0); }},
        {"literals", 200'000, [](std::uint32_t count) { return CompiledBytes().onlyDnf(1).number(count); },
         [](CompiledBytes& bytes, std::uint32_t number) { bytes.effectivity(number % 3); }},
    };
    for (const Counted& counted : cases) {
        for (const std::uint32_t count : {counted.limit, counted.limit + 1}) {
            CompiledBytes bytes = counted.begin(count);
            for (std::uint32_t number = 0; number < count; ++number) {
                counted.append(bytes, number);
            }
            const Bytes sealed = bytes.sealed();
            long result = S_OK;
            const OwnedEffectivity read = readBytes(sealed, result);
            ASSERT_EQ(result, count > counted.limit ? E_OUTOFMEMORY : S_OK) << counted.name;
            if (read != nullptr) {
                ASSERT_TRUE(writtenBytes(*read) == sealed) << counted.name;
            }
        }
    }
}

TEST(QueltCompiledBinaryParser, RefusesMoreBytesThanTheLimit) {
    Bytes bytes = CompiledBytes().number(0).sealed();
    bytes.resize(QueltCompiledBinaryParser::s_maxBytes + 1);
    EXPECT_EQ(refusalOf(bytes), E_OUTOFMEMORY);
}

/// Binaries that ask for much with few bytes.
std::vector<std::pair<const char*, Bytes>> greedyBinaries() {
    constexpr std::uint32_t count = 5'000;
    std::vector<std::pair<const char*, Bytes>> all;
    const auto add = [&all](const char* name, CompiledBytes bytes, std::uint32_t things, const auto& append) {
        for (std::uint32_t number = 0; number < things; ++number) {
            append(bytes, number);
        }
        all.emplace_back(name, bytes.sealed());
    };
    add("nothing", CompiledBytes(), 0, [](CompiledBytes&, std::uint32_t) {});
    add("a count without things", CompiledBytes().number(0xFFFFFFFFU), 0,
        [](CompiledBytes&, std::uint32_t) {});
    add("domains", CompiledBytes().number(1'000), 1'000,
        [](CompiledBytes& bytes, std::uint32_t number) { bytes.number(number).number(0); });
    add("views", CompiledBytes().number(1).number(2).number(1'000), 1'000,
        [](CompiledBytes& bytes, std::uint32_t number) { bytes.number(number).number(0); });
    add("contexts", CompiledBytes().number(1).number(2).number(1).number(0).number(count), count,
        [](CompiledBytes& bytes, std::uint32_t number) { bytes.guid(number).number(0); });
    add("empty conjunctions", CompiledBytes().onlyDnf(count), count,
        [](CompiledBytes& bytes, std::uint32_t) { bytes.number(0); });
    add("short conjunctions of changes", CompiledBytes().onlyDnf(count), count,
        [](CompiledBytes& bytes, std::uint32_t number) { bytes.number(1).effectivity(number); });
    add("changes", CompiledBytes().onlyDnf(1).number(count), count,
        [](CompiledBytes& bytes, std::uint32_t number) { bytes.effectivity(number, true); });
    add("options without values", CompiledBytes().onlyDnf(1).number(count), count,
        [](CompiledBytes& bytes, std::uint32_t number) { bytes.option(number, 0); });
    add("options with one value", CompiledBytes().onlyDnf(1).number(count), count,
        [](CompiledBytes& bytes, std::uint32_t number) { bytes.option(number, 1).text("x"); });
    add("values", CompiledBytes().onlyDnf(1).number(1).option(31, 60'000), 60'000,
        [](CompiledBytes& bytes, std::uint32_t number) {
            const char name[] = {static_cast<char>(number / 256), static_cast<char>(number % 256)};
            bytes.text({name, 2});
        });
    add("values of many options", CompiledBytes().onlyDnf(1).number(300), 300,
        [](CompiledBytes& bytes, std::uint32_t number) {
            bytes.option(number, 256);
            for (int value = 0; value < 256; ++value) {
                const char name = static_cast<char>(value);
                bytes.text({&name, 1});
            }
        });
    add("options, and a few more that are missing", CompiledBytes().onlyDnf(1).number(count + 100), count,
        [](CompiledBytes& bytes, std::uint32_t number) { bytes.option(number, 0); });
    return all;
}

TEST(QueltCompiledBinaryParser, AllocatesInProportionToTheBytes) {
    if (!heapIsMetered()) {
        GTEST_SKIP() << "the sanitizer's own operators are in use";
    }
    std::size_t all = 0;
    for (const auto& [name, bytes] : greedyBinaries()) {
        QueltBioBuffer buffer(bytes);
        QueltInObject* object = nullptr;
        const std::size_t before = heapBytesAskedFor();
        static_cast<void>(QueltCompiledBinaryParser::Read(buffer, object));
        const std::size_t taken = heapBytesAskedFor() - before;
        delete object;
        all += taken;
        EXPECT_LE(taken, 64 * bytes.size() + 65'536)
            << name << ": " << static_cast<double>(taken) / static_cast<double>(bytes.size())
            << " for a byte";
    }
    EXPECT_GT(all, 1'000'000U); // else nothing was counted
}

TEST(QueltCompiledBinaryParser, TakesNoMoreThanThatOfAnArena) {
    for (const auto& [name, bytes] : greedyBinaries()) {
        QueltBioBuffer buffer(bytes);
        QueltInArena arena;
        const QueltInArenaScope scope(arena);
        QueltInObject* object = nullptr;
        static_cast<void>(QueltCompiledBinaryParser::Read(buffer, object));
        EXPECT_LE(arena.bytesInUse(), 64 * bytes.size() + 65'536) << name;
        EXPECT_EQ(object == nullptr, bytes.size() < 100 || std::string_view(name).ends_with("missing"))
            << name;
    }
}

TEST(QueltCompiledBinaryParser, ReadsTheFuzzCorpusAsItsNamesSay) {
    std::size_t valid = 0;
    std::size_t broken = 0;
    for (const auto& file : std::filesystem::directory_iterator(QUELT_SOURCE_DIR "/fuzz/corpus/compiled")) {
        std::ifstream stream(file.path(), std::ios::binary);
        const std::string content{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
        const Bytes bytes(content.begin(), content.end());
        const std::string name = file.path().filename().string();
        ++(name.starts_with("valid-") ? valid : broken);
        long result = S_OK;
        EXPECT_EQ(readBytes(bytes, result) != nullptr, name.starts_with("valid-")) << name;
    }
    EXPECT_GE(valid, 10U);
    EXPECT_GE(broken, 10U);
}

TEST(QueltCompiledBinaryParser, LeavesNothingOnTheHeapInAnArena) {
    const CompiledSamples samples;
    Random random(17);
    for (int round = 0; round < 20; ++round) {
        const Bytes bytes = writtenBytes(*samples.effectivity(random));
        QueltInArena arena;
        const QueltInArenaScope scope(arena);
        QueltBioBuffer buffer(bytes);
        QueltInObject* object = nullptr;
        // Nobody deletes the object; the leak check would see what it kept on the heap.
        ASSERT_EQ(QueltCompiledBinaryParser::Read(buffer, object), S_OK);
        EXPECT_EQ(QueltInMemory::arenaOf(object), &arena);
    }
}

} // namespace
