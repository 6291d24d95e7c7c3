#include "effectivity/QueltEeTreeElementSets.h"

#include "infrastructure/QueltInResult.h"

#include <algorithm>
#include <vector>

namespace quelt {

namespace {

using Element = QueltEeTreeSeriesElement;
using Elements = std::vector<std::unique_ptr<QueltEeTreeSeriesElement>>;
using Selection = QueltEeTreeSeriesSelection;
using Bound = QueltEeTreeSeriesSelection::Bound;

/// Finds the elements of many selections: each selection leaves marks at its ends only, and two walks over
/// the series, one down and one up, spread them.
class SelectionReader {
public:
    explicit SelectionReader(const Elements& elements)
        : m_elements(elements), m_isAllBelow(elements.size(), false), m_waysUp(elements.size(), 0),
          m_selected(static_cast<std::uint32_t>(elements.size())) {}

    void read(const Selection& selection) {
        if (const std::optional<Bound>& single = selection.getSingle()) {
            if (single->included) {
                m_selected.insert(single->element->getIndex());
            }
        } else if (selection.getTo().empty()) {
            readBranch(selection.getFrom());
        } else {
            for (const Bound& to : selection.getTo()) {
                readWay(selection.getFrom(), to);
            }
        }
    }

    [[nodiscard]] const ValueSet& finish() {
        spreadBranches();
        walkWays();
        return m_selected;
    }

private:
    void readBranch(const std::optional<Bound>& from) {
        if (m_elements.empty()) {
            return;
        }
        const std::uint32_t top = from ? from->element->getIndex() : 0;
        m_isAllBelow[top] = true;
        if (!from || from->included) {
            m_selected.insert(top);
        }
    }

    void readWay(const std::optional<Bound>& from, const Bound& to) {
        if (from && !from->element->isAtOrAbove(*to.element)) {
            return;
        }
        const Element* const last = to.included ? to.element : to.element->getParent();
        const Element* const above = elementAbove(from);
        if (last == nullptr || (above != nullptr && above->getDepth() >= last->getDepth())) {
            return;
        }
        ++m_waysUp[last->getIndex()];
        if (above != nullptr) {
            --m_waysUp[above->getIndex()];
        }
    }

    /// The element right above the way, null when the way starts at the root.
    static const Element* elementAbove(const std::optional<Bound>& from) noexcept {
        if (!from) {
            return nullptr;
        }
        return from->included ? from->element->getParent() : from->element;
    }

    void spreadBranches() {
        for (const auto& element : m_elements) {
            const Element* const parent = element->getParent();
            if (parent != nullptr && m_isAllBelow[parent->getIndex()]) {
                m_isAllBelow[element->getIndex()] = true;
                m_selected.insert(element->getIndex());
            }
        }
    }

    void walkWays() {
        std::for_each(m_elements.rbegin(), m_elements.rend(), [this](const auto& element) {
            const std::int64_t ways = m_waysUp[element->getIndex()];
            if (ways > 0) {
                m_selected.insert(element->getIndex());
            }
            if (element->getParent() != nullptr) {
                m_waysUp[element->getParent()->getIndex()] += ways;
            }
        });
    }

    const Elements& m_elements;
    std::vector<bool> m_isAllBelow;
    std::vector<std::int64_t> m_waysUp; // how many ways come up to an element from below or start there
    ValueSet m_selected;
};

/// Finds few selections for a set of elements.
class SelectionWriter {
public:
    SelectionWriter(const Elements& elements, const ValueSet& selected)
        : m_selected(selected), m_isLeaf(elements.size(), true), m_isWholeBranch(elements.size(), true),
          m_next(elements.size(), nullptr) {
        // Children stand behind their parents, so that each element knows its branch when its turn comes.
        std::for_each(elements.rbegin(), elements.rend(), [this](const auto& element) { note(*element); });
    }

    /// True when a selection has `element` as its uppermost one.
    [[nodiscard]] bool startsSelection(const Element& element) const {
        if (!m_selected.contains(element.getIndex())) {
            return false;
        }
        const Element* const parent = element.getParent();
        if (parent == nullptr || !m_selected.contains(parent->getIndex())) {
            return true;
        }
        return !m_isWholeBranch[parent->getIndex()] && m_next[parent->getIndex()] != &element;
    }

    /// The selection that has `top` as its uppermost element.
    [[nodiscard]] Selection write(const Element& top) const {
        const Element& last = lastOfWay(top);
        const bool toLeaves = m_isWholeBranch[top.getIndex()];
        Selection selection;
        if (toLeaves ? m_isLeaf[top.getIndex()] : &last == &top) {
            selection.setSingleSelection({&top, 1});
            return selection;
        }
        if (top.getParent() != nullptr) {
            selection.setFromBound({&top, 1});
        }
        if (!toLeaves) {
            selection.addToBound({&last, 1});
        }
        return selection;
    }

private:
    void note(const Element& element) {
        const std::uint32_t index = element.getIndex();
        const bool selected = m_selected.contains(index);
        m_isWholeBranch[index] = m_isWholeBranch[index] && selected;
        if (element.getParent() == nullptr) {
            return;
        }
        const std::uint32_t parent = element.getParent()->getIndex();
        m_isLeaf[parent] = false;
        m_isWholeBranch[parent] = m_isWholeBranch[parent] && m_isWholeBranch[index];
        if (selected && !m_isWholeBranch[index]) {
            m_next[parent] = &element;
        }
    }

    [[nodiscard]] const Element& lastOfWay(const Element& top) const {
        const Element* last = &top;
        while (const Element* const next = m_next[last->getIndex()]) {
            last = next;
        }
        return *last;
    }

    const ValueSet& m_selected;
    std::vector<bool> m_isLeaf;
    std::vector<bool> m_isWholeBranch;  // the element and everything below it are selected
    std::vector<const Element*> m_next; // the child with which a way goes on
};

} // namespace

ValueSet elementsOf(const QueltEeTreeSeriesVar& variable,
                    const QueltInVector<QueltEeTreeSeriesSelection>& selections) {
    SelectionReader reader(variable.getElements());
    for (const Selection& selection : selections) {
        reader.read(selection);
    }
    return reader.finish();
}

long selectionsOf(const QueltEeTreeSeriesVar& variable, const ValueSet& elements,
                  QueltInVector<QueltEeTreeSeriesSelection>& selections) {
    const Elements& all = variable.getElements();
    const SelectionWriter writer(all, elements);
    const auto starts = [&writer](const auto& element) { return writer.startsSelection(*element); };
    const auto count = static_cast<std::size_t>(std::ranges::count_if(all, starts));
    if (count > maxResultLength) {
        return E_OUTOFMEMORY;
    }
    selections.reserve(count);
    selections.clear();
    for (const auto& element : all) {
        if (starts(element)) {
            selections.push_back(writer.write(*element));
        }
    }
    return S_OK;
}

} // namespace quelt
