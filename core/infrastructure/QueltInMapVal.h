#pragma once

#include "infrastructure/QueltInHashIndex.h"
#include "infrastructure/QueltInObjectVal.h"
#include "infrastructure/QueltInSmallVector.h"

class QueltInMapVal;
extern template class QUELT_CORE_API QueltInTyped<QueltInMapVal, QueltInObjectVal>;

/// A map from value objects to value objects; both are copied in and belong to the map. Order and look-up as
/// QueltInMap.
class QUELT_CORE_API QueltInMapVal : public QueltInTyped<QueltInMapVal, QueltInObjectVal> {
public:
    static constexpr const char* s_className = "QueltInMapVal";

    /// An empty map whose keys and values are of these classes or of derived ones. Null declares nothing:
    /// such a map refuses everything.
    QueltInMapVal(QueltInObjectTypeClass* const& keyType, QueltInObjectTypeClass* const& valueType);
    /// A map with the same classes and copies of all keys and values.
    QueltInMapVal(const QueltInMapVal& other);
    QueltInMapVal& operator=(const QueltInMapVal&) = delete;
    /// Deletes the copies.
    ~QueltInMapVal() override;

    /// Files a copy of `value` under a copy of `key`; an equal key keeps its place and gets the new value.
    /// E_INVALIDARG when key or value is not of the declared class; the map is then unchanged.
    long Put(const QueltInObjectVal& key, const QueltInObjectVal& value);
    /// The map's own value under `key`, or null.
    [[nodiscard]] QueltInObjectVal* Get(const QueltInObjectVal& key) const;
    /// The number of entries.
    [[nodiscard]] int GetLength() const noexcept { return static_cast<int>(m_entries.size()); }
    /// Non-zero when there is no entry.
    [[nodiscard]] int IsEmpty() const noexcept { return m_entries.empty() ? 1 : 0; }

    /// Walks the keys in order; the map must stay unchanged meanwhile.
    class QUELT_CORE_API const_iterator {
    public:
        /// On the first entry of `map`, which must outlive the iterator.
        explicit const_iterator(const QueltInMapVal& map) noexcept : m_pMap(&map) {}
        virtual ~const_iterator();
        /// At the same place of the same map.
        const_iterator(const const_iterator&) = default;
        /// Goes to the same place of the same map.
        const_iterator& operator=(const const_iterator&) = default;

        /// The current key, then advances; null after the last.
        QueltInObjectVal* GetKeyGoToNext();

    private:
        const QueltInMapVal* m_pMap;
        std::uint32_t m_position = 0;
    };
    /// An iterator on the first entry.
    [[nodiscard]] const_iterator cBegin() const { return const_iterator(*this); }

    [[nodiscard]] QueltInString toString() const override;
    [[nodiscard]] QueltInObjectVal* clone(QueltInObjectVal* reuse) const override;
    /// Non-zero when `other` holds equal keys with equal values, in whatever order.
    [[nodiscard]] int equals(const QueltInObjectVal& other) const override;
    [[nodiscard]] unsigned int hash() const override;

private:
    struct Entry {
        QueltInObjectVal* key;
        QueltInObjectVal* value;
    };
    QueltInSmallVector<Entry, 3> m_entries;
    QueltInObjectTypeClass* m_pKeyType;
    QueltInObjectTypeClass* m_pValueType;
    quelt::QueltInHashIndex m_index;
    [[nodiscard]] std::uint32_t find(const QueltInObjectVal& key) const;
};
