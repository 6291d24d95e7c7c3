#include "compiled/QueltCompiledBinaryParser.h"

#include "compiled/QueltBioBuffer.h"
#include "compiled/QueltCompiledFormat.h"
#include "compiled/QueltFltEffectivity.h"
#include "effectivity/QueltEeEffectivity.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "expression/QueltEeLeaves.h"
#include "infrastructure/QueltInResult.h"

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

namespace {

namespace format = quelt::compiledFormat;

/// Hands out the bytes from first to last. Each operation answers false, and hands nothing out, when not
/// enough of them are left.
class ByteReader {
public:
    explicit ByteReader(std::span<const std::uint8_t> bytes) noexcept : m_left(bytes) {}

    [[nodiscard]] bool isAtEnd() const noexcept { return m_left.empty(); }

    [[nodiscard]] bool take(std::size_t count, std::span<const std::uint8_t>& bytes) noexcept {
        if (count > m_left.size()) {
            return false;
        }
        bytes = m_left.first(count);
        m_left = m_left.subspan(count);
        return true;
    }
    [[nodiscard]] bool takeByte(std::uint8_t& byte) noexcept {
        std::span<const std::uint8_t> bytes;
        if (!take(1, bytes)) {
            return false;
        }
        byte = bytes.front();
        return true;
    }
    [[nodiscard]] bool takeNumber(std::uint32_t& number) noexcept {
        std::span<const std::uint8_t> bytes;
        if (!take(sizeof number, bytes)) {
            return false;
        }
        number = format::numberAt(bytes, 0);
        return true;
    }
    /// Takes how many things follow, of at least `leastSize` bytes each; more than fit are none.
    [[nodiscard]] bool takeCount(std::size_t leastSize, std::uint32_t& count) noexcept {
        return takeNumber(count) && count <= m_left.size() / leastSize;
    }
    [[nodiscard]] bool takeGuid(QueltInGuid& guid) noexcept {
        QueltInGuid::Bytes taken{};
        std::span<const std::uint8_t> bytes;
        if (!take(taken.size(), bytes)) {
            return false;
        }
        std::ranges::copy(bytes, taken.begin());
        guid = QueltInGuid(taken);
        return true;
    }
    [[nodiscard]] bool takeText(std::string_view& text) noexcept {
        std::uint32_t length = 0;
        std::span<const std::uint8_t> bytes;
        if (!takeNumber(length) || !take(length, bytes)) {
            return false;
        }
        text = {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
        return true;
    }

private:
    std::span<const std::uint8_t> m_left;
};

/// How many bytes the shortest of each takes, for telling counts that cannot be true.
constexpr std::size_t s_leastDomain = 8;
constexpr std::size_t s_leastView = 8;
constexpr std::size_t s_leastContext = 20;
constexpr std::size_t s_leastConjunction = 4;
constexpr std::size_t s_leastLiteral = 17;
constexpr std::size_t s_leastValue = 4;

/// Reads what follows the header into an effectivity.
class BinaryReading {
public:
    BinaryReading(std::span<const std::uint8_t> bytes, QueltFltEffectivity& effectivity) noexcept
        : m_reader(bytes), m_effectivity(effectivity) {}

    long run() {
        std::optional<std::uint32_t> number;
        const long result = readEach(s_leastDomain, [&] { return readDomain(number); });
        return result >= 0 && !m_reader.isAtEnd() ? E_INVALIDARG : result;
    }

private:
    /// Reads how many things follow, of at least `leastSize` bytes each, and then each of them.
    template <class ReadOne>
    long readEach(std::size_t leastSize, ReadOne readOne) {
        std::uint32_t count = 0;
        if (!m_reader.takeCount(leastSize, count)) {
            return E_INVALIDARG;
        }
        long result = S_OK;
        for (std::uint32_t position = 0; position < count && result >= 0; ++position) {
            result = readOne();
        }
        return result;
    }

    /// Gives up a part that its whole has taken over, as `result` says, or refused.
    template <class Part>
    static long handOver(std::unique_ptr<Part>& part, long result) noexcept {
        if (result >= 0) {
            static_cast<void>(part.release());
        }
        return result;
    }

    /// Takes a number that must be greater than the one before it, if there is one.
    [[nodiscard]] bool takeAscending(std::optional<std::uint32_t>& previous) noexcept {
        std::uint32_t number = 0;
        if (!m_reader.takeNumber(number) || (previous && number <= *previous)) {
            return false;
        }
        previous = number;
        return true;
    }

    long readDomain(std::optional<std::uint32_t>& number) {
        if (!takeAscending(number)) {
            return E_INVALIDARG;
        }
        auto domain = std::make_unique<QueltFltDomainEffectivity>();
        std::optional<std::uint32_t> kind;
        const long result = readEach(s_leastView, [&] { return readView(*domain, kind); });
        return result >= 0 ? handOver(domain, m_effectivity.addDomain(*number, domain.get())) : result;
    }

    long readView(QueltFltDomainEffectivity& domain, std::optional<std::uint32_t>& kind) {
        if (!takeAscending(kind)) {
            return E_INVALIDARG;
        }
        auto view = std::make_unique<QueltFltEffectivityView>();
        const long result = readEach(s_leastContext, [&] { return readContext(*view); });
        return result >= 0
                   ? handOver(view, domain.addView(static_cast<QueltExpressionView>(*kind), view.get()))
                   : result;
    }

    long readContext(QueltFltEffectivityView& view) {
        QueltInGuid guid;
        if (!m_reader.takeGuid(guid)) {
            return E_INVALIDARG;
        }
        auto dnf = std::make_unique<QueltDnf>();
        long result = readEach(s_leastConjunction, [&] { return readConjunction(*dnf); });
        if (result >= 0) {
            result = handOver(dnf, view.addContext(guid, dnf.get()));
        }
        return result == E_ALREADYTHERE ? E_INVALIDARG : result;
    }

    long readConjunction(QueltDnf& dnf) {
        const long result = dnf.addConjunction();
        return result >= 0 ? readEach(s_leastLiteral, [&] { return readLiteral(dnf); }) : result;
    }

    long readLiteral(QueltDnf& dnf) {
        std::uint8_t kind = 0;
        QueltInGuid guid;
        if (!m_reader.takeByte(kind) || kind > (format::optionBit | format::negatedBit) ||
            !m_reader.takeGuid(guid)) {
            return E_INVALIDARG;
        }
        const bool isOption = (kind & format::optionBit) != 0;
        QueltEeNodeElementaryLeaf* const leaf = isOption ? readOption(guid) : makeEffectivityLeaf(guid);
        if (leaf == nullptr) {
            return E_INVALIDARG;
        }
        std::unique_ptr<QueltEeNodeRef> literal(leaf->getNodeRef());
        if ((kind & format::negatedBit) != 0) {
            leaf->opNot();
        }
        return handOver(literal, dnf.addLiteral(literal.get()));
    }

    QueltEeNodeElementaryLeaf* makeEffectivityLeaf(const QueltInGuid& guid) {
        return new QueltEeEffLeaf(find(m_effectivities, guid), nullptr);
    }

    /// The leaf of an option literal, of which kind and GUID have been read; null when it is malformed.
    QueltEeNodeElementaryLeaf* readOption(const QueltInGuid& guid) {
        std::uint32_t count = 0;
        if (!m_reader.takeCount(s_leastValue, count)) {
            return nullptr;
        }
        QueltEeCatOptionVar& variable = *find(m_options, guid);
        auto values = std::make_unique<QueltEeOptionEff>(&variable);
        std::optional<std::string_view> previous;
        for (std::uint32_t position = 0; position < count; ++position) {
            std::string_view name;
            if (!m_reader.takeText(name) || (previous && name <= *previous)) {
                return nullptr;
            }
            static_cast<void>(values->addValue(variable.addValue(name))); // the variable has it now
            previous = name;
        }
        return new QueltEeVarEffLeaf(values.release());
    }

    // Ordered, for whoever made the bytes may have chosen GUIDs that a hash table would suffer from.
    template <class T>
    using ByGuid = std::map<QueltInGuid::Bytes, T*>;

    /// The object that stands for the GUID, which the effectivity owns.
    template <class T>
    T* find(ByGuid<T>& known, const QueltInGuid& guid) {
        const auto [place, isNew] = known.try_emplace(guid.getBytes(), nullptr);
        if (isNew) {
            auto made = std::make_unique<T>(guid.toString(), guid);
            place->second = made.get();
            m_effectivity.adopt(std::move(made));
        }
        return place->second;
    }

    ByteReader m_reader;
    QueltFltEffectivity& m_effectivity;
    ByGuid<QueltEePredefEff> m_effectivities;
    ByGuid<QueltEeCatOptionVar> m_options;
};

long checkHeader(std::span<const std::uint8_t> bytes) noexcept {
    if (bytes.size() > QueltCompiledBinaryParser::s_maxBytes) {
        return E_OUTOFMEMORY;
    }
    if (bytes.size() < format::headerSize ||
        !std::ranges::equal(bytes.first(format::magic.size()), format::magic)) {
        return E_INVALIDARG;
    }
    if (format::numberAt(bytes, format::versionAt) != format::version) {
        return E_NOTIMPL;
    }
    const bool isWhole = format::numberAt(bytes, format::lengthAt) == bytes.size() &&
                         format::numberAt(bytes, format::checksumAt) == format::checksumOf(bytes);
    return isWhole ? S_OK : E_INVALIDARG;
}

} // namespace

long QueltCompiledBinaryParser::Read(QueltBioBuffer& buffer, QueltInObject*& object) {
    object = nullptr;
    const QueltBioBuffer consumed = std::exchange(buffer, {});
    if (const long result = checkHeader(consumed.getBytes()); result < 0) {
        return result;
    }
    auto effectivity = std::make_unique<QueltFltEffectivity>();
    const long result = BinaryReading(consumed.getBytes().subspan(format::headerSize), *effectivity).run();
    if (result >= 0) {
        object = effectivity.release();
    }
    return result;
}
