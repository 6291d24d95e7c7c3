#pragma once

#include "infrastructure/QueltInObjectVal.h"
#include "infrastructure/QueltInSmallVector.h"

class QueltInListVal;
extern template class QUELT_CORE_API QueltInTyped<QueltInListVal, QueltInObjectVal>;

/// A list of value objects, copied in and owned by the list, in the order of insertion.
class QUELT_CORE_API QueltInListVal : public QueltInTyped<QueltInListVal, QueltInObjectVal> {
public:
    static constexpr const char* s_className = "QueltInListVal";

    /// An empty list of value objects of this class or of derived ones. Null declares nothing: such a list
    /// refuses everything.
    explicit QueltInListVal(QueltInObjectTypeClass* const& elementType);
    /// A list of copies; whether a value was refused is copied, too.
    QueltInListVal(const QueltInListVal& other);
    QueltInListVal& operator=(const QueltInListVal&) = delete;
    /// Deletes the copies.
    ~QueltInListVal() override;

    /// Appends a copy of `value` and returns it; the list owns it. Null when the value is not of the declared
    /// class; badCastErr() is raised then.
    virtual QueltInObjectVal* PutBack(const QueltInObjectVal& value);
    /// Non-zero once a value was refused; stays so.
    [[nodiscard]] int badCastErr() const noexcept { return m_badCast ? 1 : 0; }
    /// The number of elements.
    [[nodiscard]] int GetLength() const noexcept { return static_cast<int>(m_elements.size()); }
    /// Non-zero when there is no element.
    [[nodiscard]] int IsEmpty() const noexcept { return m_elements.empty() ? 1 : 0; }

    /// Walks the values in order; the list may grow meanwhile.
    class QUELT_CORE_API const_iterator {
    public:
        /// On the first value of `list`, which must outlive the iterator.
        explicit const_iterator(const QueltInListVal& list) noexcept : m_pList(&list) {}
        virtual ~const_iterator();
        /// At the same place of the same list.
        const_iterator(const const_iterator&) = default;
        /// Goes to the same place of the same list.
        const_iterator& operator=(const const_iterator&) = default;

        /// The current value, then advances; null after the last.
        QueltInObjectVal* GetGoToNext();

    private:
        const QueltInListVal* m_pList;
        std::uint32_t m_position = 0;
    };
    /// An iterator on the first value.
    [[nodiscard]] const_iterator cBegin() const { return const_iterator(*this); }

    [[nodiscard]] QueltInString toString() const override;
    [[nodiscard]] QueltInObjectVal* clone(QueltInObjectVal* reuse) const override;
    /// Non-zero when `other` holds equal values in the same order.
    [[nodiscard]] int equals(const QueltInObjectVal& other) const override;
    [[nodiscard]] unsigned int hash() const override;

private:
    QueltInSmallVector<QueltInObjectVal*, 4> m_elements;
    QueltInObjectTypeClass* m_pElementType;
    bool m_badCast = false;
};
