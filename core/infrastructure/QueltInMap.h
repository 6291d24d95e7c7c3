#pragma once

#include "infrastructure/QueltInHashIndex.h"
#include "infrastructure/QueltInObjectVal.h"
#include "infrastructure/QueltInSmallVector.h"

/// One entry of a QueltInMap.
struct QueltInMapEntry {
    /// The map's own copy of the key.
    QueltInObjectVal* key;
    /// The value; not owned.
    QueltInObject* value;
};

class QueltInMap;
extern template class QUELT_CORE_API QueltInTyped<QueltInMap, QueltInObjectVal>;

/// A map from value objects (copied into the map) to objects (held by pointer, never deleted by the map). It
/// iterates in the order of insertion; an entry keeps its place when its value is replaced. Look-up takes
/// constant time.
class QUELT_CORE_API QueltInMap : public QueltInTyped<QueltInMap, QueltInObjectVal> {
public:
    static constexpr const char* s_className = "QueltInMap";

    /// An empty map whose keys and values are of these classes or of derived ones. The type classes are
    /// passed by reference to a pointer, as sType() yields it. Null declares nothing: such a map refuses
    /// everything.
    QueltInMap(QueltInObjectTypeClass* const& keyType, QueltInObjectTypeClass* const& valueType);
    /// As above, with room made ahead for `capacity` entries (0 or less: none; at most 65536); the load
    /// factor is accepted for the callers that give one and has no effect.
    QueltInMap(QueltInObjectTypeClass* const& keyType, QueltInObjectTypeClass* const& valueType, int capacity,
               float loadFactor);
    /// A map with the same classes, copies of the keys, and the same values.
    QueltInMap(const QueltInMap& other);
    QueltInMap& operator=(const QueltInMap&) = delete;
    /// Deletes the copied keys; the values stay.
    ~QueltInMap() override;

    /// Files `value` under a copy of `key`; an equal key keeps its place and gets the new value. The map
    /// hands its values out for change (Get, the iterator), although it takes them as constants. E_INVALIDARG
    /// when key or value is not of the declared class; the map is then unchanged.
    virtual long Put(const QueltInObjectVal& key, const QueltInObject& value);
    /// The value under `key`, or null.
    [[nodiscard]] virtual QueltInObject* Get(const QueltInObjectVal& key) const;
    /// The number of entries.
    [[nodiscard]] int GetLength() const noexcept { return static_cast<int>(m_entries.size()); }
    /// Non-zero when there is no entry.
    [[nodiscard]] int IsEmpty() const noexcept { return m_entries.empty() ? 1 : 0; }
    /// The declared class of the keys; null declares nothing.
    [[nodiscard]] QueltInObjectTypeClass* getKeyType() const noexcept { return m_pKeyType; }
    /// The declared class of the values; null declares nothing.
    [[nodiscard]] QueltInObjectTypeClass* getValueType() const noexcept { return m_pValueType; }

    /// Walks the entries in order; the map must stay unchanged meanwhile.
    class QUELT_CORE_API const_iterator {
    public:
        /// On the first entry of `map`, which must outlive the iterator.
        explicit const_iterator(const QueltInMap& map) noexcept : m_pMap(&map) {}
        virtual ~const_iterator();
        /// At the same place of the same map.
        const_iterator(const const_iterator&) = default;
        /// Goes to the same place of the same map.
        const_iterator& operator=(const const_iterator&) = default;

        /// The current value, then advances; null after the last (and for an entry whose value is null, which
        /// only a map class of a derived kind can hold; IsEnd tells).
        QueltInObject* GetValGoToNext();
        /// The current entry, then advances; null after the last.
        const QueltInMapEntry* GetEntryGoToNext();
        /// The current key, null after the last.
        [[nodiscard]] QueltInObjectVal* GetKey() const;
        /// Advances; nothing happens after the last.
        void Next();
        /// Non-zero on the first entry, and in an empty map.
        [[nodiscard]] int IsBegin() const noexcept { return m_position == 0 ? 1 : 0; }
        /// Non-zero behind the last entry.
        [[nodiscard]] int IsEnd() const noexcept;

    private:
        const QueltInMap* m_pMap;
        std::uint32_t m_position = 0;
    };
    /// An iterator on the first entry.
    [[nodiscard]] const_iterator cBegin() const { return const_iterator(*this); }

    [[nodiscard]] QueltInString toString() const override;
    [[nodiscard]] QueltInObjectVal* clone(QueltInObjectVal* reuse) const override;
    /// Non-zero when `other` holds equal keys with the same value objects, in whatever order.
    [[nodiscard]] int equals(const QueltInObjectVal& other) const override;
    [[nodiscard]] unsigned int hash() const override;

protected:
    /// The entries, for derived classes that append what Put never lets in.
    QueltInSmallVector<QueltInMapEntry, 3> m_entries;

private:
    friend QUELT_CORE_API void QueltInDeleteWithObjects(QueltInMap* map);
    QueltInObjectTypeClass* m_pKeyType;
    QueltInObjectTypeClass* m_pValueType;
    quelt::QueltInHashIndex m_index;   // not needed as long as the keys number the entries
    std::uint32_t m_countNumbered = 0; // so many entries at the beginning have their own position for a key

    /// True when every entry's key is a QueltInIntHolder with the entry's position, as in a list by number.
    [[nodiscard]] bool isNumbered() const noexcept { return m_countNumbered == m_entries.size(); }
    [[nodiscard]] std::uint32_t find(const QueltInObjectVal& key) const;
    friend class QueltQmSpecList;
    /// As Put with the number of entries for a key; all keys must number their entries.
    long append(const QueltInObject& value);
};

/// Deletes the objects that `map` holds, then the map. Null is accepted. For whoever owns both.
QUELT_CORE_API void QueltInDeleteWithObjects(QueltInMap* map);
