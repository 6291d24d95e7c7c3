#include "infrastructure/QueltInMapVal.h"

#include "infrastructure/QueltInContainerTools.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInTypedDefinition.h"
#include "infrastructure/QueltInValueTools.h"

#include <algorithm>
#include <memory>
#include <utility>

template class QueltInTyped<QueltInMapVal, QueltInObjectVal>;

QueltInMapVal::QueltInMapVal(QueltInObjectTypeClass* const& keyType, QueltInObjectTypeClass* const& valueType)
    : m_pKeyType(keyType), m_pValueType(valueType) {}

QueltInMapVal::QueltInMapVal(const QueltInMapVal& other)
    : QueltInMapVal(other.m_pKeyType, other.m_pValueType) {
    m_entries.reserve(other.m_entries.size());
    for (const Entry& entry : other.m_entries) {
        std::unique_ptr<QueltInObjectVal> key(entry.key->clone(nullptr));
        m_entries.push_back({key.get(), entry.value->clone(nullptr)});
        static_cast<void>(key.release());
    }
    m_index = other.m_index;
}

QueltInMapVal::~QueltInMapVal() {
    for (const Entry& entry : m_entries) {
        delete entry.key;
        delete entry.value;
    }
}

long QueltInMapVal::Put(const QueltInObjectVal& key, const QueltInObjectVal& value) {
    if (!quelt::isAdmitted(m_pKeyType, key) || !quelt::isAdmitted(m_pValueType, value)) {
        return E_INVALIDARG;
    }
    std::unique_ptr<QueltInObjectVal> valueCopy(value.clone(nullptr));
    if (const std::uint32_t position = find(key); position != quelt::QueltInHashIndex::s_none) {
        delete std::exchange(m_entries[position].value, valueCopy.release());
        return S_OK;
    }
    std::unique_ptr<QueltInObjectVal> keyCopy(key.clone(nullptr));
    m_entries.reserve(std::size_t{m_entries.size()} + 1);
    m_index.insertInto(m_entries, keyCopy->BinHashFunc(),
                       [](const Entry& entry) { return entry.key->BinHashFunc(); });
    m_entries.push_back({keyCopy.release(), valueCopy.release()});
    return S_OK;
}

QueltInObjectVal* QueltInMapVal::Get(const QueltInObjectVal& key) const {
    const std::uint32_t position = find(key);
    return position != quelt::QueltInHashIndex::s_none ? m_entries[position].value : nullptr;
}

std::uint32_t QueltInMapVal::find(const QueltInObjectVal& key) const {
    return m_index.findIn(
        m_entries, [&] { return key.BinHashFunc(); },
        [&](const Entry& entry) { return entry.key->equals(key) != 0; });
}

QueltInString QueltInMapVal::toString() const {
    quelt::ContainerText text(*this, '{', '}');
    for (const Entry& entry : m_entries) {
        text.entry(entry.key, entry.value);
    }
    return text.take();
}

QueltInObjectVal* QueltInMapVal::clone(QueltInObjectVal* /*reuse*/) const {
    return new QueltInMapVal(*this);
}

int QueltInMapVal::equals(const QueltInObjectVal& other) const {
    const QueltInMapVal* const map = quelt::asSameClass(*this, other);
    if (map == nullptr || map->m_entries.size() != m_entries.size()) {
        return 0;
    }
    const auto isInOther = [&](const Entry& entry) {
        const QueltInObjectVal* const value = map->Get(*entry.key);
        return value != nullptr && value->equals(*entry.value) != 0;
    };
    return std::all_of(m_entries.begin(), m_entries.end(), isInOther) ? 1 : 0;
}

unsigned int QueltInMapVal::hash() const {
    std::uint64_t hash = m_entries.size();
    for (const Entry& entry : m_entries) {
        hash +=
            quelt::hashInOrder(entry.key->BinHashFunc(), entry.value->BinHashFunc()); // a sum tells no order
    }
    return quelt::foldHash(quelt::mixBits(hash));
}

QueltInMapVal::const_iterator::~const_iterator() = default;

QueltInObjectVal* QueltInMapVal::const_iterator::GetKeyGoToNext() {
    return m_position < m_pMap->m_entries.size() ? m_pMap->m_entries[m_position++].key : nullptr;
}
