#include "plain/Plain.h"

#include <algorithm>
#include <stdexcept>

namespace plain {

namespace {

struct Literal {
    Guid guid{};
    bool isNegated = false;
    bool isOption = false;
    std::vector<std::string> values;
};
using Conjunction = std::vector<Literal>;
using NormalForm = std::vector<Conjunction>;
using View = std::vector<std::pair<Guid, NormalForm>>;
using Domain = std::map<std::uint32_t, View>;
using Effectivity = std::map<std::uint32_t, Domain>;

[[noreturn]] void refuse() {
    throw std::runtime_error("no compiled change");
}

std::array<std::uint32_t, 256> makeRemainders() {
    std::array<std::uint32_t, 256> remainders{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t remainder = byte;
        for (int bit = 0; bit < 8; ++bit) {
            remainder = (remainder >> 1U) ^ ((remainder & 1U) != 0 ? 0xEDB88320U : 0U);
        }
        remainders[byte] = remainder;
    }
    return remainders;
}

std::uint32_t addToChecksum(std::uint32_t remainder, std::span<const std::uint8_t> bytes) {
    static const std::array<std::uint32_t, 256> remainders = makeRemainders();
    for (const std::uint8_t byte : bytes) {
        remainder = remainders[(remainder ^ byte) & 0xFFU] ^ (remainder >> 8U);
    }
    return remainder;
}

class Reader {
public:
    explicit Reader(std::span<const std::uint8_t> bytes) : m_rest(bytes) {}

    std::span<const std::uint8_t> take(std::size_t size) {
        if (size > m_rest.size()) {
            refuse();
        }
        const auto taken = m_rest.first(size);
        m_rest = m_rest.subspan(size);
        return taken;
    }
    std::uint32_t number() {
        const auto bytes = take(4);
        return bytes[0] | std::uint32_t{bytes[1]} << 8U | std::uint32_t{bytes[2]} << 16U |
               std::uint32_t{bytes[3]} << 24U;
    }
    Guid guid() {
        Guid guid{};
        std::ranges::copy(take(guid.size()), guid.begin());
        return guid;
    }
    std::string text() {
        const auto bytes = take(number());
        return {bytes.begin(), bytes.end()};
    }
    [[nodiscard]] bool isAtEnd() const { return m_rest.empty(); }

private:
    std::span<const std::uint8_t> m_rest;
};

Literal readLiteral(Reader& reader) {
    const std::uint8_t kind = reader.take(1)[0];
    if (kind > 3) {
        refuse();
    }
    Literal literal;
    literal.isNegated = (kind & 1U) != 0;
    literal.isOption = (kind & 2U) != 0;
    literal.guid = reader.guid();
    if (literal.isOption) {
        for (std::uint32_t left = reader.number(); left > 0; --left) {
            literal.values.push_back(reader.text());
        }
    }
    return literal;
}

NormalForm readNormalForm(Reader& reader) {
    NormalForm form;
    for (std::uint32_t left = reader.number(); left > 0; --left) {
        Conjunction conjunction;
        for (std::uint32_t literals = reader.number(); literals > 0; --literals) {
            conjunction.push_back(readLiteral(reader));
        }
        form.push_back(std::move(conjunction));
    }
    return form;
}

View readView(Reader& reader) {
    View view;
    for (std::uint32_t left = reader.number(); left > 0; --left) {
        const Guid dictionary = reader.guid();
        view.emplace_back(dictionary, readNormalForm(reader));
    }
    return view;
}

Effectivity readEffectivity(std::span<const std::uint8_t> binary) {
    Reader reader(binary);
    const bool isKnown =
        reader.number() == 0x544C4651U && reader.number() == 1 && reader.number() == binary.size();
    const std::uint32_t checksum = reader.number();
    const std::uint32_t remainder =
        addToChecksum(addToChecksum(0xFFFFFFFFU, binary.first(12)), binary.subspan(16));
    if (!isKnown || ~remainder != checksum) {
        refuse();
    }
    Effectivity effectivity;
    for (std::uint32_t left = reader.number(); left > 0; --left) {
        const std::uint32_t number = reader.number();
        Domain domain;
        for (std::uint32_t views = reader.number(); views > 0; --views) {
            const std::uint32_t kind = reader.number();
            domain.emplace(kind, readView(reader));
        }
        effectivity.emplace(number, std::move(domain));
    }
    if (!reader.isAtEnd()) {
        refuse();
    }
    return effectivity;
}

} // namespace

Changes decode(std::span<const std::uint8_t> binary) {
    const Effectivity effectivity = readEffectivity(binary);
    const auto domain = effectivity.find(2);
    if (effectivity.size() != 1 || domain == effectivity.end()) {
        refuse();
    }
    const auto view = domain->second.find(0);
    if (view == domain->second.end() || view->second.empty()) {
        refuse();
    }
    Changes changes;
    for (const auto& [guid, form] : view->second) {
        changes.contexts.push_back(guid);
    }
    const NormalForm& form = view->second.front().second;
    if (form.size() != 1 || form.front().empty()) {
        refuse();
    }
    for (const Literal& literal : form.front()) {
        if (literal.isOption) {
            refuse();
        }
        changes.operations.push_back({literal.guid, !literal.isNegated});
    }
    return changes;
}

} // namespace plain
