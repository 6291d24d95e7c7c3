#include "effectivity/QueltEeTreeSeriesEff.h"

#include "effectivity/QueltEeValueSet.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <algorithm>
#include <vector>

template class QueltInTyped<QueltEeTreeBaseEff, QueltEeVarEff>;
template class QueltInTyped<QueltEeTreeSeriesEff, QueltEeTreeBaseEff>;

namespace {

using Element = QueltEeTreeSeriesElement;
using Selection = QueltEeTreeSeriesSelection;

/// Finds the elements of many selections in one walk over the series: a selection only leaves marks at its ends.
class SelectedElements {
public:
    explicit SelectedElements(const QueltEeTreeSeriesVar& variable)
        : m_elements(variable.getElements()), m_startsBelow(m_elements.size(), false),
          m_waysUp(m_elements.size(), 0), m_selected(static_cast<std::uint32_t>(m_elements.size())) {}

    /// Enters the elements of `selection`.
    void add(const Selection& selection) {
        if (const std::optional<Selection::Bound>& single = selection.getSingle()) {
            if (single->included) {
                m_selected.insert(single->element->getIndex());
            }
        } else if (selection.getTo().empty()) {
            addBranch(selection.getFrom());
        } else {
            for (const Selection::Bound& to : selection.getTo()) {
                addWay(selection.getFrom(), to);
            }
        }
    }

    /// All that was entered.
    [[nodiscard]] quelt::ValueSet take() {
        // Parents stand before their children: branches spread on the way down, ways are walked on the way up.
        for (const auto& element : m_elements) {
            if (const Element* const parent = element->getParent()) {
                if (m_startsBelow[parent->getIndex()]) {
                    m_startsBelow[element->getIndex()] = true;
                    m_selected.insert(element->getIndex());
                }
            }
        }
        for (auto element = m_elements.rbegin(); element != m_elements.rend(); ++element) {
            const std::uint32_t index = (*element)->getIndex();
            if (m_waysUp[index] != 0) {
                m_selected.insert(index);
            }
            if (const Element* const parent = (*element)->getParent()) {
                m_waysUp[parent->getIndex()] += m_waysUp[index];
            }
        }
        return m_selected;
    }

private:
    /// All elements from `from`, or from the root, to the leaves.
    void addBranch(const std::optional<Selection::Bound>& from) {
        if (m_elements.empty()) {
            return;
        }
        const Element& top = from ? *from->element : *m_elements.front();
        m_startsBelow[top.getIndex()] = true;
        if (!from || from->included) {
            m_selected.insert(top.getIndex());
        }
    }

    /// The elements from `from`, or from the root, down to `to`.
    void addWay(const std::optional<Selection::Bound>& from, const Selection::Bound& to) {
        if (from && !from->element->isAtOrAbove(*to.element)) {
            return;
        }
        const Element* const last = to.included ? to.element : to.element->getParent();
        const Element* const end = !from ? nullptr : from->included ? from->element->getParent() : from->element;
        const bool isEmpty = last == nullptr || (end != nullptr && end->getDepth() >= last->getDepth());
        if (isEmpty) {
            return;
        }
        ++m_waysUp[last->getIndex()];
        if (end != nullptr) {
            --m_waysUp[end->getIndex()];
        }
    }

    const std::vector<std::unique_ptr<Element>>& m_elements;
    std::vector<bool> m_startsBelow;     // by index: everything below is selected
    std::vector<std::int64_t> m_waysUp;  // by index: ways that start here on their way up, less those that end before
    quelt::ValueSet m_selected;
};

/// Writes a set of elements as selections: whole branches, ways, and what is left as single elements.
class SelectionWriter {
public:
    SelectionWriter(const QueltEeTreeSeriesVar& variable, const quelt::ValueSet& selected)
        : m_elements(variable.getElements()), m_selected(selected),
          m_wholeBranch(m_elements.size(), true), m_next(m_elements.size(), nullptr) {
        for (auto element = m_elements.rbegin(); element != m_elements.rend(); ++element) {
            note(**element);
        }
    }

    /// Calls `put(selection)` for each selection, in the order of their uppermost elements.
    template <class Put>
    void write(Put put) const {
        for (const auto& element : m_elements) {
            if (startsSelection(*element)) {
                put(makeSelection(*element));
            }
        }
    }

private:
    /// Notes, children first, whether the branch below is selected as a whole, and which child goes on with a way.
    void note(const Element& element) {
        const bool selected = m_selected.contains(element.getIndex());
        m_wholeBranch[element.getIndex()] = m_wholeBranch[element.getIndex()] && selected;
        const Element* const parent = element.getParent();
        if (parent == nullptr) {
            return;
        }
        if (!m_wholeBranch[element.getIndex()]) {
            m_wholeBranch[parent->getIndex()] = false;
            if (selected) {
                m_next[parent->getIndex()] = &element;
            }
        }
    }

    [[nodiscard]] bool startsSelection(const Element& element) const {
        if (!m_selected.contains(element.getIndex())) {
            return false;
        }
        const Element* const parent = element.getParent();
        if (parent == nullptr || !m_selected.contains(parent->getIndex())) {
            return true;
        }
        return !m_wholeBranch[parent->getIndex()] && m_next[parent->getIndex()] != &element;
    }

    [[nodiscard]] Selection makeSelection(const Element& top) const {
        Selection selection;
        const QueltEeTreeSeriesSelectionBound from(&top, 1);
        if (m_wholeBranch[top.getIndex()]) {
            const bool isLeaf = top.getIndex() + 1 == m_elements.size() || !hasChildren(top);
            if (isLeaf) {
                selection.setSingleSelection(from);
            } else if (top.getParent() != nullptr) {
                selection.setFromBound(from);
            }
            return selection;
        }
        const Element* last = &top;
        while (const Element* const next = m_next[last->getIndex()]) {
            last = next;
        }
        if (last == &top) {
            selection.setSingleSelection(from);
            return selection;
        }
        selection.setFromBound(from);
        selection.addToBound(QueltEeTreeSeriesSelectionBound(last, 1));
        return selection;
    }

    const std::vector<std::unique_ptr<Element>>& m_elements;
    const quelt::ValueSet& m_selected;
    std::vector<bool> m_wholeBranch;     // by index
    std::vector<const Element*> m_next;  // by index: the child with which a way goes on
};

} // namespace
