#pragma once

#include "dictionary/QueltEeTreeSeriesVar.h"
#include "infrastructure/QueltInSmallVector.h"

#include <optional>

class QueltEeTreeSeriesSelectionBound;
extern template class QUELT_CORE_API QueltInTyped<QueltEeTreeSeriesSelectionBound, QueltInObject>;

/// One end of a selection: an element (not owned) and whether it belongs to the selection itself.
class QUELT_CORE_API QueltEeTreeSeriesSelectionBound
    : public QueltInTyped<QueltEeTreeSeriesSelectionBound, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltEeTreeSeriesSelectionBound";
    ~QueltEeTreeSeriesSelectionBound() override;

    /// The bound at `element` (not owned; must outlive the bound and what is made of it); the element
    /// itself is in when `included` is not zero.
    QueltEeTreeSeriesSelectionBound(const QueltEeTreeSeriesElement* element, unsigned char included) noexcept
        : m_pElement(element), m_included(included != 0 ? 1 : 0) {}

    /// The element, or null.
    [[nodiscard]] const QueltEeTreeSeriesElement* getElement() const noexcept { return m_pElement; }
    /// 1 when the element itself is in, else 0.
    [[nodiscard]] unsigned char isIncluded() const noexcept { return m_included; }

    /// True when both stand at one and the same element, included in both or in neither.
    friend bool operator==(const QueltEeTreeSeriesSelectionBound& left,
                           const QueltEeTreeSeriesSelectionBound& right) noexcept {
        return left.m_pElement == right.m_pElement && left.m_included == right.m_included;
    }

private:
    const QueltEeTreeSeriesElement* m_pElement;
    unsigned char m_included;
};

class QueltEeTreeSelection;
extern template class QUELT_CORE_API QueltInTyped<QueltEeTreeSelection, QueltInObject>;

/// A selection of elements of some tree.
class QUELT_CORE_API QueltEeTreeSelection : public QueltInTyped<QueltEeTreeSelection, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltEeTreeSelection";
    ~QueltEeTreeSelection() override;
};

class QueltEeTreeSeriesSelection;
extern template class QUELT_CORE_API QueltInTyped<QueltEeTreeSeriesSelection, QueltEeTreeSelection>;

/// A selection of elements of a tree series: a single element; or the elements on the way from one bound to
/// another down the tree, from the root where there is no from-bound, to the leaves below where there is no
/// to-bound. With several to-bounds, the ways to each. Where a to-bound is not the from-bound's own element
/// or below it, there is no way, hence nothing.
class QUELT_CORE_API QueltEeTreeSeriesSelection
    : public QueltInTyped<QueltEeTreeSeriesSelection, QueltEeTreeSelection> {
public:
    static constexpr const char* s_className = "QueltEeTreeSeriesSelection";
    /// A bound as the selection keeps it.
    struct Bound {
        const QueltEeTreeSeriesElement* element; ///< not owned, never null
        bool included;                           ///< whether the element itself is in
        /// True when both stand at one and the same element, included in both or in neither.
        friend bool operator==(const Bound&, const Bound&) = default;
    };

    /// Everything: no bound at all.
    QueltEeTreeSeriesSelection() = default;

    /// Makes it the selection of one element (of none, when the bound is not included). E_POINTER when the
    /// bound has no element, E_ALREADYTHERE when a single element or another bound is set; nothing is changed
    /// then.
    virtual long setSingleSelection(const QueltEeTreeSeriesSelectionBound& bound);
    /// Sets where the way starts. E_POINTER when the bound has no element, E_ALREADYTHERE when a single
    /// element or another from-bound is set; nothing is changed then.
    virtual long setFromBound(const QueltEeTreeSeriesSelectionBound& bound);
    /// Adds an end of the way. E_POINTER when the bound has no element, E_ALREADYTHERE when a single element
    /// is set; nothing is changed then.
    virtual long addToBound(const QueltEeTreeSeriesSelectionBound& bound);

    /// The single element, when it is a selection of one.
    [[nodiscard]] const std::optional<Bound>& getSingle() const noexcept { return m_single; }
    /// Where the way starts; nothing for the root, and for a selection of one.
    [[nodiscard]] const std::optional<Bound>& getFrom() const noexcept { return m_from; }
    /// Where the ways end, in the order added; nothing for the leaves. Valid until the selection changes.
    [[nodiscard]] std::span<const Bound> getTo() const noexcept { return m_to.values(); }
    /// True when `element` belongs to the selection.
    [[nodiscard]] bool contains(const QueltEeTreeSeriesElement& element) const;
    /// "[5]" for a single element, "[7, 9]" for a way, with "-inf" and "+inf" where a bound is missing; round
    /// brackets where it is not included. Several ways stand one behind the other: "[7, 9] | [7, 11]".
    [[nodiscard]] QueltInString toString() const override;

private:
    std::optional<Bound> m_single;
    std::optional<Bound> m_from;
    QueltInSmallVector<Bound, 1> m_to;
};
