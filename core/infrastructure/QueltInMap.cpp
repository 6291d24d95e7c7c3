#include "infrastructure/QueltInMap.h"

#include "infrastructure/QueltInContainerTools.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInTypedDefinition.h"
#include "infrastructure/QueltInValueTools.h"

#include <algorithm>
#include <functional>
#include <memory>

template class QueltInTyped<QueltInMap, QueltInObjectVal>;

namespace {

/// `key` as a number; null when it is of another class, a derived one included, which may compare otherwise.
const QueltInIntHolder* asNumber(const QueltInObjectVal& key) {
    return QueltInTypeTable::find(typeid(key)) == QueltInIntHolder::sType()
               ? static_cast<const QueltInIntHolder*>(&key)
               : nullptr;
}

} // namespace

QueltInMap::QueltInMap(QueltInObjectTypeClass* const& keyType, QueltInObjectTypeClass* const& valueType)
    : m_pKeyType(keyType), m_pValueType(valueType) {}

QueltInMap::QueltInMap(QueltInObjectTypeClass* const& keyType, QueltInObjectTypeClass* const& valueType,
                       int capacity, float /*loadFactor*/)
    : QueltInMap(keyType, valueType) {
    m_entries.reserve(quelt::roomAhead(capacity));
}

QueltInMap::QueltInMap(const QueltInMap& other) : QueltInMap(other.m_pKeyType, other.m_pValueType) {
    m_entries.reserve(other.m_entries.size());
    for (const QueltInMapEntry& entry : other.m_entries) {
        m_entries.push_back({entry.key != nullptr ? entry.key->clone(nullptr) : nullptr, entry.value});
    }
    m_index = other.m_index;
    m_countNumbered = other.m_countNumbered;
}

QueltInMap::~QueltInMap() {
    for (const QueltInMapEntry& entry : m_entries) {
        delete entry.key;
    }
}

long QueltInMap::Put(const QueltInObjectVal& key, const QueltInObject& value) {
    if (!quelt::isAdmitted(m_pKeyType, key) || !quelt::isAdmitted(m_pValueType, value)) {
        return E_INVALIDARG;
    }
    // The map hands its values out for change, so a caller that files an object gives up its constness.
    auto* const held = const_cast<QueltInObject*>(&value);
    if (const std::uint32_t position = find(key); position != quelt::QueltInHashIndex::s_none) {
        m_entries[position].value = held;
        return S_OK;
    }
    std::unique_ptr<QueltInObjectVal> copy(key.clone(nullptr));
    m_entries.reserve(std::size_t{m_entries.size()} + 1);
    const QueltInIntHolder* const number = isNumbered() ? asNumber(key) : nullptr;
    if (number != nullptr && number->m_value == m_entries.size()) {
        m_entries.push_back({copy.release(), held});
        ++m_countNumbered;
        return S_OK;
    }
    m_index.insertInto(m_entries, copy->BinHashFunc(), [](const QueltInMapEntry& entry) {
        return entry.key != nullptr ? entry.key->BinHashFunc() : 0;
    });
    m_entries.push_back({copy.release(), held});
    return S_OK;
}

long QueltInMap::append(const QueltInObject& value) {
    if (!quelt::isAdmitted(m_pValueType, value)) {
        return E_INVALIDARG;
    }
    m_entries.reserve(std::size_t{m_entries.size()} + 1);
    m_entries.push_back({new QueltInIntHolder(m_countNumbered), const_cast<QueltInObject*>(&value)});
    ++m_countNumbered;
    return S_OK;
}

QueltInObject* QueltInMap::Get(const QueltInObjectVal& key) const {
    const std::uint32_t position = find(key);
    return position != quelt::QueltInHashIndex::s_none ? m_entries[position].value : nullptr;
}

std::uint32_t QueltInMap::find(const QueltInObjectVal& key) const {
    if (isNumbered()) {
        const QueltInIntHolder* const number = asNumber(key);
        if (number != nullptr) {
            return number->m_value < m_entries.size() ? number->m_value : quelt::QueltInHashIndex::s_none;
        }
    }
    return m_index.findIn(
        m_entries, [&] { return key.BinHashFunc(); },
        [&](const QueltInMapEntry& entry) { return entry.key != nullptr && entry.key->equals(key) != 0; });
}

QueltInString QueltInMap::toString() const {
    quelt::ContainerText text(*this, '{', '}');
    for (const QueltInMapEntry& entry : m_entries) {
        text.entry(entry.key, entry.value);
    }
    return text.take();
}

QueltInObjectVal* QueltInMap::clone(QueltInObjectVal* /*reuse*/) const {
    return new QueltInMap(*this);
}

int QueltInMap::equals(const QueltInObjectVal& other) const {
    const QueltInMap* const map = quelt::asSameClass(*this, other);
    if (map == nullptr || map->m_entries.size() != m_entries.size()) {
        return 0;
    }
    const auto isInOther = [&](const QueltInMapEntry& entry) {
        const std::uint32_t position =
            entry.key != nullptr ? map->find(*entry.key) : quelt::QueltInHashIndex::s_none;
        return position != quelt::QueltInHashIndex::s_none && map->m_entries[position].value == entry.value;
    };
    return std::all_of(m_entries.begin(), m_entries.end(), isInOther) ? 1 : 0;
}

unsigned int QueltInMap::hash() const {
    std::uint64_t hash = m_entries.size();
    for (const QueltInMapEntry& entry : m_entries) {
        const std::uint64_t ofKey = entry.key != nullptr ? entry.key->BinHashFunc() : 0;
        hash +=
            quelt::hashInOrder(ofKey, quelt::hashOfAddress(entry.value)); // a sum, for it does not tell order
    }
    return quelt::foldHash(quelt::mixBits(hash));
}

QueltInMap::const_iterator::~const_iterator() = default;

QueltInObject* QueltInMap::const_iterator::GetValGoToNext() {
    const QueltInMapEntry* const entry = GetEntryGoToNext();
    return entry != nullptr ? entry->value : nullptr;
}

const QueltInMapEntry* QueltInMap::const_iterator::GetEntryGoToNext() {
    return IsEnd() == 0 ? &m_pMap->m_entries[m_position++] : nullptr;
}

QueltInObjectVal* QueltInMap::const_iterator::GetKey() const {
    return IsEnd() == 0 ? m_pMap->m_entries[m_position].key : nullptr;
}

void QueltInMap::const_iterator::Next() {
    if (IsEnd() == 0) {
        ++m_position;
    }
}

int QueltInMap::const_iterator::IsEnd() const noexcept {
    return m_position >= m_pMap->m_entries.size() ? 1 : 0;
}

void QueltInDeleteWithObjects(QueltInMap* map) {
    if (map == nullptr) {
        return;
    }
    // One object may be filed under several keys. The entries themselves are sorted, because what is deleted
    // while memory is exhausted must not ask for any.
    std::sort(map->m_entries.begin(), map->m_entries.end(),
              [](const QueltInMapEntry& left, const QueltInMapEntry& right) {
                  return std::less<const QueltInObject*>()(left.value, right.value);
              });
    const QueltInObject* last = nullptr;
    for (const QueltInMapEntry& entry : map->m_entries) {
        if (entry.value != last) {
            last = entry.value;
            delete last;
        }
    }
    delete map;
}
