#pragma once

#include "infrastructure/QueltInObjectVal.h"
#include "infrastructure/QueltInSmallVector.h"

class QueltInLinkList;
extern template class QUELT_CORE_API QueltInTyped<QueltInLinkList, QueltInObjectVal>;

/// A list of objects that is edited by position; it holds them by pointer and never deletes them. Positions
/// are 0-based.
class QUELT_CORE_API QueltInLinkList : public QueltInTyped<QueltInLinkList, QueltInObjectVal> {
public:
    static constexpr const char* s_className = "QueltInLinkList";

    /// An empty list of objects of this class or of derived ones. Null declares nothing: such a list refuses
    /// everything.
    explicit QueltInLinkList(QueltInObjectTypeClass* const& elementType);
    /// A list of the same objects; iterators stay with the original.
    QueltInLinkList(const QueltInLinkList& other);
    QueltInLinkList& operator=(const QueltInLinkList&) = delete;
    ~QueltInLinkList() override;

    /// Makes `object` stand at `position`; those from there on move one place back. A position equal to the
    /// length appends; a greater one, or an object of another class, is E_INVALIDARG and changes nothing.
    virtual long Set(unsigned int position, QueltInObject& object);
    /// Takes the element at `position` out without deleting it; E_INVALIDARG past the end.
    virtual long Remove(unsigned int position);
    /// An object and where it stands.
    struct Placed {
        std::uint32_t position; ///< 0-based
        QueltInObject* object;  ///< not owned
    };
    /// Takes the elements at `positions`, which ascend, out without deleting them, in one pass. E_INVALIDARG,
    /// and nothing is changed, when the positions do not ascend or one is past the end.
    virtual long RemoveEach(std::span<const std::uint32_t> positions);
    /// Makes each object stand at its position, as Set does for one after the other, in one pass: what
    /// RemoveEach took out is put back where it stood. E_INVALIDARG, and nothing is changed, when the
    /// positions do not ascend, one is past the end, or an object is of another class.
    virtual long SetEach(std::span<const Placed> placed);
    /// Takes the last element out and returns it; null when there is none.
    virtual QueltInObject* PopBack();
    /// Appends `object`; E_INVALIDARG when it is of another class.
    long PutBack(QueltInObject& object);
    /// The element at `position`, null past the end.
    [[nodiscard]] QueltInObject* Get(unsigned int position) const noexcept {
        return position < m_elements.size() ? m_elements[position] : nullptr;
    }
    /// The number of elements.
    [[nodiscard]] int GetLength() const noexcept { return static_cast<int>(m_elements.size()); }
    /// Non-zero when there is no element.
    [[nodiscard]] int IsEmpty() const noexcept { return m_elements.empty() ? 1 : 0; }
    /// The elements in order, for walks that change nothing; valid until the next change.
    [[nodiscard]] std::span<QueltInObject* const> elements() const noexcept { return m_elements.values(); }

    /// Stands in front of the next element. An iterator made from a list that is not constant stays right
    /// while elements are set and removed: it survives the removal of one that it has passed, an element set
    /// exactly where it stands comes next, and it stands at the end when the list goes. Such an iterator is
    /// used on the thread that changes the list. One made from a constant list keeps its position whatever
    /// happens, and must not outlive the list.
    class QUELT_CORE_API const_iterator {
    public:
        virtual ~const_iterator();
        const_iterator(const const_iterator&) = delete;
        const_iterator& operator=(const const_iterator&) = delete;

        /// The next element without advancing; null at the end.
        [[nodiscard]] QueltInObject* Get() const noexcept;
        /// The next element, then advances; null at the end.
        QueltInObject* GetGoToNext() noexcept;

    private:
        friend class QueltInLinkList;
        const_iterator(const QueltInLinkList& list, std::uint32_t position) noexcept;
        /// Enters itself with the list, to be told of changes.
        const_iterator(QueltInLinkList& list, std::uint32_t position) noexcept;

        const QueltInLinkList* m_pList;
        QueltInLinkList* m_pFollowed = nullptr;
        const_iterator* m_pNextOfList = nullptr;
        std::uint32_t m_position;
    };
    /// The same for a list that may be changed through it; the module only walks with it.
    class QUELT_CORE_API iterator : public const_iterator {
    public:
        ~iterator() override;

    private:
        friend class QueltInLinkList;
        using const_iterator::const_iterator;
    };
    /// In front of the first element; told of changes.
    [[nodiscard]] iterator Begin() noexcept { return {*this, 0U}; }
    /// In front of the first element; told of changes.
    [[nodiscard]] const_iterator cBegin() noexcept { return {*this, 0U}; }
    /// In front of the first element; not told of changes.
    [[nodiscard]] const_iterator cBegin() const noexcept { return {*this, 0U}; }
    /// In front of the last element, at the end when the list is empty; told of changes.
    [[nodiscard]] const_iterator cLast() noexcept { return {*this, lastPosition()}; }
    /// In front of the last element, at the end when the list is empty; not told of changes.
    [[nodiscard]] const_iterator cLast() const noexcept { return {*this, lastPosition()}; }

    [[nodiscard]] QueltInString toString() const override;
    [[nodiscard]] QueltInObjectVal* clone(QueltInObjectVal* reuse) const override;
    /// Non-zero when `other` holds the same objects in the same order.
    [[nodiscard]] int equals(const QueltInObjectVal& other) const override;
    [[nodiscard]] unsigned int hash() const override;

protected:
    /// Makes room for `wanted` elements in all.
    void reserve(std::size_t wanted) { m_elements.reserve(wanted); }
    /// Appends `object`, which the list admits; no iterator stands behind it.
    void append(QueltInObject& object) { m_elements.push_back(&object); }
    /// True when SetEach can make the objects stand at their positions.
    [[nodiscard]] bool canPlace(std::span<const Placed> placed) const;
    /// Takes every element out for which `isOut(element)` answers true, in one pass; it is asked once for
    /// each, in order, and must leave the list as it is.
    template <class IsOut>
    void removeIf(IsOut isOut) {
        std::uint32_t kept = 0;
        for (QueltInObject* const element : m_elements) {
            if (isOut(element)) {
                noteRemoval(kept);
            } else {
                m_elements[kept++] = element;
            }
        }
        m_elements.truncate(kept);
    }

private:
    [[nodiscard]] std::uint32_t lastPosition() const noexcept {
        return m_elements.empty() ? 0U : m_elements.size() - 1U;
    }
    void noteInsertion(std::uint32_t position) noexcept;
    void noteRemoval(std::uint32_t position) noexcept;

    QueltInSmallVector<QueltInObject*, 4> m_elements;
    QueltInObjectTypeClass* m_pElementType;
    const_iterator* m_pIterators = nullptr;
};
