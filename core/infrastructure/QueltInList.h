#pragma once

#include "infrastructure/QueltInObjectVal.h"
#include "infrastructure/QueltInSmallVector.h"

class QueltInList;
extern template class QUELT_CORE_API QueltInTyped<QueltInList, QueltInObjectVal>;

/// A list of objects, held by pointer and never deleted by the list, in the order of insertion.
class QUELT_CORE_API QueltInList : public QueltInTyped<QueltInList, QueltInObjectVal> {
public:
    static constexpr const char* s_className = "QueltInList";

    /// An empty list of objects of this class or of derived ones. Null declares nothing: such a list refuses
    /// everything.
    explicit QueltInList(QueltInObjectTypeClass* const& elementType);
    /// A list of the same objects; whether one was refused is copied, too.
    QueltInList(const QueltInList& other) = default;
    QueltInList& operator=(const QueltInList&) = delete;
    ~QueltInList() override;

    /// Appends `object`; non-zero when the list took it. An object that is not of the declared class is
    /// refused and raises badCastErr().
    virtual int PutBack(QueltInObject& object);
    /// Non-zero once an object was refused; stays so.
    [[nodiscard]] virtual int badCastErr() const { return m_badCast ? 1 : 0; }
    /// The number of elements.
    [[nodiscard]] int GetLength() const noexcept { return static_cast<int>(m_elements.size()); }
    /// Non-zero when there is no element.
    [[nodiscard]] int IsEmpty() const noexcept { return m_elements.empty() ? 1 : 0; }

    /// Walks the elements in order; the list may grow meanwhile.
    class QUELT_CORE_API const_iterator {
    public:
        /// On the first element of `list`, which must outlive the iterator.
        explicit const_iterator(const QueltInList& list) noexcept : m_pList(&list) {}
        virtual ~const_iterator();
        /// At the same place of the same list.
        const_iterator(const const_iterator&) = default;
        /// Goes to the same place of the same list.
        const_iterator& operator=(const const_iterator&) = default;

        /// The current element, then advances; null after the last.
        QueltInObject* GetGoToNext();

    private:
        const QueltInList* m_pList;
        std::uint32_t m_position = 0;
    };
    /// An iterator on the first element.
    [[nodiscard]] const_iterator cBegin() const { return const_iterator(*this); }

    [[nodiscard]] QueltInString toString() const override;
    [[nodiscard]] QueltInObjectVal* clone(QueltInObjectVal* reuse) const override;
    /// Non-zero when `other` holds the same objects in the same order.
    [[nodiscard]] int equals(const QueltInObjectVal& other) const override;
    [[nodiscard]] unsigned int hash() const override;

private:
    QueltInSmallVector<QueltInObject*, 2> m_elements;
    QueltInObjectTypeClass* m_pElementType;
    bool m_badCast = false;
};
