#include "compiled/QueltCompiledBinaryWriter.h"

#include "compiled/QueltBioBuffer.h"
#include "compiled/QueltCompiledBinaryParser.h"
#include "compiled/QueltCompiledFormat.h"
#include "compiled/QueltFltEffectivity.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "expression/QueltEeLeaves.h"
#include "infrastructure/QueltInResult.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace {

namespace format = quelt::compiledFormat;

/// Writes one effectivity. Each operation answers with a result code and appends its part to the bytes.
class BinaryWriting {
public:
    long run(const QueltFltEffectivity& effectivity) {
        m_bytes.resize(format::headerSize);
        const long result = writeEffectivity(effectivity);
        return result >= 0 ? writeHeader() : result;
    }

    [[nodiscard]] const std::vector<std::uint8_t>& bytes() const noexcept { return m_bytes; }

private:
    long writeHeader() {
        std::ranges::copy(format::magic, m_bytes.begin());
        format::putNumberAt(m_bytes, format::versionAt, format::version);
        format::putNumberAt(m_bytes, format::lengthAt, static_cast<std::uint32_t>(m_bytes.size()));
        format::putNumberAt(m_bytes, format::checksumAt, format::checksumOf(m_bytes));
        return S_OK;
    }

    long writeEffectivity(const QueltFltEffectivity& effectivity) {
        putNumber(effectivity.getDomains().size());
        for (const QueltFltEffectivity::Entry& entry : effectivity.getDomains()) {
            putNumber(entry.number);
            if (const long result = writeDomain(*entry.domain); result < 0) {
                return result;
            }
        }
        return checkSize();
    }

    long writeDomain(const QueltFltDomainEffectivity& domain) {
        putNumber(domain.getViews().size());
        for (const QueltFltDomainEffectivity::Entry& entry : domain.getViews()) {
            putNumber(static_cast<std::uint32_t>(entry.kind));
            if (const long result = writeView(*entry.view); result < 0) {
                return result;
            }
        }
        return checkSize();
    }

    long writeView(const QueltFltEffectivityView& view) {
        if (view.m_contexts.GetLength() > QueltFltEffectivityView::s_maxContexts) {
            return E_OUTOFMEMORY;
        }
        putNumber(static_cast<std::size_t>(view.m_contexts.GetLength()));
        QueltInMap::const_iterator iterator = view.m_contexts.cBegin();
        while (const QueltInMapEntry* const entry = iterator.GetEntryGoToNext()) {
            if (const long result = writeContext(*entry); result < 0) {
                return result;
            }
        }
        return S_OK;
    }

    long writeContext(const QueltInMapEntry& entry) {
        const QueltInGuid* const guid = QueltInGuid::cast(entry.key);
        const QueltDnf* const dnf = QueltDnf::cast(entry.value);
        if (guid == nullptr || dnf == nullptr) {
            return E_POINTER;
        }
        put(guid->getBytes());
        putNumber(dnf->getConjunctions().size());
        for (const QueltDnf::Conjunction& conjunction : dnf->getConjunctions()) {
            putNumber(conjunction.size());
            for (const QueltEeNodeRef* const literal : conjunction) {
                if (const long result = writeLiteral(literal->getNode()); result < 0) {
                    return result;
                }
            }
        }
        return checkSize();
    }

    long writeLiteral(const QueltEeNode* node) {
        if (const auto* const leaf = QueltEeEffLeaf::cast(node)) {
            return writeEffectivityLiteral(*leaf);
        }
        const auto* const leaf = QueltEeVarEffLeaf::cast(node);
        const auto* const option = QueltEeOptionEff::cast(leaf != nullptr ? leaf->getVarEff() : nullptr);
        return option != nullptr ? writeOptionLiteral(*option) : E_INVALIDARG;
    }

    long writeEffectivityLiteral(const QueltEeEffLeaf& leaf) {
        const QueltEeEffectivity* const target = leaf.getTargetEff();
        if (target == nullptr) {
            return E_INVALIDARG;
        }
        putKind(0, leaf.isNegated() != 0);
        put(target->getGuid().getBytes());
        return checkSize();
    }

    long writeOptionLiteral(const QueltEeOptionEff& option) {
        const auto* const variable = QueltEeCatOptionVar::cast(option.getVar());
        if (variable == nullptr || option.getNoVar() != 0) {
            return E_INVALIDARG;
        }
        std::vector<std::string_view> names;
        for (const std::uint32_t value : option.getValues()) {
            names.push_back(variable->getValueName(value));
        }
        std::ranges::sort(names);
        names.erase(std::unique(names.begin(), names.end()), names.end());
        putKind(format::optionBit, option.isNegated() != 0);
        put(variable->getGuid().getBytes());
        putNumber(names.size());
        for (const std::string_view name : names) {
            putNumber(name.size());
            m_bytes.insert(m_bytes.end(), name.begin(), name.end());
            if (const long result = checkSize(); result < 0) {
                return result;
            }
        }
        return checkSize();
    }

    void putKind(std::uint8_t kind, bool isNegated) {
        m_bytes.push_back(static_cast<std::uint8_t>(kind | (isNegated ? format::negatedBit : 0U)));
    }
    void put(std::span<const std::uint8_t> bytes) {
        m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
    }
    /// Whatever is counted has a limit far below 2^32, or takes as many bytes as it counts.
    void putNumber(std::size_t number) {
        m_bytes.resize(m_bytes.size() + sizeof(std::uint32_t));
        format::putNumberAt(m_bytes, m_bytes.size() - sizeof(std::uint32_t),
                            static_cast<std::uint32_t>(number));
    }
    [[nodiscard]] long checkSize() const noexcept {
        return m_bytes.size() <= QueltCompiledBinaryParser::s_maxBytes ? S_OK : E_OUTOFMEMORY;
    }

    std::vector<std::uint8_t> m_bytes;
};

} // namespace

long QueltCompiledBinaryWriter::Write(const QueltFltEffectivity& effectivity, QueltBioBuffer& buffer) {
    BinaryWriting writing;
    const long result = writing.run(effectivity);
    if (result >= 0) {
        buffer = QueltBioBuffer(writing.bytes());
    }
    return result;
}
