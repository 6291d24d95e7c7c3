#pragma once

#include "infrastructure/QueltInHashIndex.h"
#include "infrastructure/QueltInObjectVal.h"
#include "infrastructure/QueltInSmallVector.h"

class QueltInSet;
extern template class QUELT_CORE_API QueltInTyped<QueltInSet, QueltInObjectVal>;

/// A set of objects, held by pointer and never deleted by the set, in the order of insertion. Objects are
/// told apart by their address; value objects (sets whose declared class is a value class) by what they hold.
class QUELT_CORE_API QueltInSet : public QueltInTyped<QueltInSet, QueltInObjectVal> {
public:
    static constexpr const char* s_className = "QueltInSet";

    /// An empty set of objects of this class or of derived ones; null declares nothing: such a set refuses
    /// everything. `capacity` (0 or less: none; at most 65536) makes room ahead, the load factor is accepted
    /// and has no effect.
    explicit QueltInSet(QueltInObjectTypeClass* const& elementType, int capacity = 0,
                        float loadFactor = 0.0F);
    /// A set of the same objects; whether one was refused is copied, too.
    QueltInSet(const QueltInSet& other);
    QueltInSet& operator=(const QueltInSet&) = delete;
    ~QueltInSet() override;

    /// Adds `object`; non-zero when it was added. Zero when it is there already, and when it is not of the
    /// declared class; badCastErr() tells the two apart.
    virtual int Put(QueltInObject& object);
    /// Non-zero when `object` is in the set.
    [[nodiscard]] virtual int Find(const QueltInObject& object) const;
    /// Takes `object` out, the others stay in their order; non-zero when it was there. Takes time in
    /// proportion to the length.
    virtual int Remove(const QueltInObject& object);
    /// Empties the set; the objects stay.
    virtual void Clear();
    /// Adds every element of `other`, in its order, each as by Put.
    virtual void PutSet(const QueltInSet& other);
    /// Non-zero once an insertion met an object that is not of the declared class; stays so.
    [[nodiscard]] virtual int badCastErr() const { return m_badCast ? 1 : 0; }
    /// The number of elements.
    [[nodiscard]] int GetLength() const noexcept { return static_cast<int>(m_elements.size()); }
    /// Non-zero when there is no element.
    [[nodiscard]] int IsEmpty() const noexcept { return m_elements.empty() ? 1 : 0; }
    /// The elements in order, for walks that change nothing; valid until the next change.
    [[nodiscard]] std::span<QueltInObject* const> elements() const noexcept { return m_elements.values(); }
    /// The declared class.
    [[nodiscard]] QueltInObjectTypeClass* getElementType() const noexcept { return m_pElementType; }

    /// Walks the elements in order; the set must stay unchanged meanwhile.
    class QUELT_CORE_API const_iterator {
    public:
        /// On the first element of `set`, which must outlive the iterator.
        explicit const_iterator(const QueltInSet& set) noexcept : m_pSet(&set) {}
        virtual ~const_iterator();
        /// At the same place of the same set.
        const_iterator(const const_iterator&) = default;
        /// Goes to the same place of the same set.
        const_iterator& operator=(const const_iterator&) = default;

        /// The current element without advancing; null after the last and in an empty set.
        [[nodiscard]] QueltInObject* Get() const;
        /// The current element, then advances; null after the last.
        QueltInObject* GetGoToNext();

    private:
        const QueltInSet* m_pSet;
        std::uint32_t m_position = 0;
    };
    /// An iterator on the first element.
    [[nodiscard]] const_iterator cBegin() const { return const_iterator(*this); }

    [[nodiscard]] QueltInString toString() const override;
    [[nodiscard]] QueltInObjectVal* clone(QueltInObjectVal* reuse) const override;
    /// Non-zero when `other` holds the same elements, in whatever order.
    [[nodiscard]] int equals(const QueltInObjectVal& other) const override;
    [[nodiscard]] unsigned int hash() const override;

protected:
    /// The elements, for derived classes that append what Put never lets in.
    QueltInSmallVector<QueltInObject*, 4> m_elements;

private:
    QueltInObjectTypeClass* m_pElementType;
    quelt::QueltInHashIndex m_index;
    bool m_byValue;
    bool m_badCast = false;
    [[nodiscard]] std::uint32_t find(const QueltInObject& object) const;
};

/// Deletes the objects that `set` holds, then the set. Null is accepted. For whoever owns both.
QUELT_CORE_API void QueltInDeleteWithObjects(QueltInSet* set);
