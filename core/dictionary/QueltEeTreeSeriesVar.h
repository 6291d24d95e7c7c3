#pragma once

#include "dictionary/QueltEeVariable.h"
#include "infrastructure/QueltInKeyedHash.h"

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

class QueltEeTreeSeriesElement;
extern template class QUELT_CORE_API QueltInTyped<QueltEeTreeSeriesElement, QueltInObject>;

/// A node of a tree series.
class QUELT_CORE_API QueltEeTreeSeriesElement : public QueltInTyped<QueltEeTreeSeriesElement, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltEeTreeSeriesElement";

    /// The sequence number, unique in its series.
    [[nodiscard]] unsigned int getSeqNumber() const noexcept { return m_sequenceNumber; }
    /// The element above, null for the root.
    [[nodiscard]] const QueltEeTreeSeriesElement* getParent() const noexcept { return m_pParent; }
    /// How many elements stand above: 0 for the root.
    [[nodiscard]] std::uint32_t getDepth() const noexcept { return m_depth; }
    /// The place in the series' elements, 0 for the root.
    [[nodiscard]] std::uint32_t getIndex() const noexcept { return m_index; }
    /// True when `other` is this element or stands below it. Takes time in the logarithm of the depth.
    [[nodiscard]] bool isAtOrAbove(const QueltEeTreeSeriesElement& other) const noexcept;
    /// The sequence number as text.
    [[nodiscard]] QueltInString toString() const override;

private:
    friend class QueltEeTreeSeriesVar;
    QueltEeTreeSeriesElement(unsigned int sequenceNumber, const QueltEeTreeSeriesElement* parent,
                             std::uint32_t index);

    unsigned int m_sequenceNumber;
    std::uint32_t m_depth;
    std::uint32_t m_index;
    const QueltEeTreeSeriesElement* m_pParent;
    const QueltEeTreeSeriesElement*
        m_pJump; // far above, so that every ancestor is a few steps away; the root's is itself
};

class QueltEeTreeSeriesVar;
extern template class QUELT_CORE_API QueltInTyped<QueltEeTreeSeriesVar, QueltEeVariable>;

/// A branching series: its elements form a tree. Number 18 is the product series' tree, 19 the manufacturing
/// series'.
class QUELT_CORE_API QueltEeTreeSeriesVar : public QueltInTyped<QueltEeTreeSeriesVar, QueltEeVariable> {
public:
    static constexpr const char* s_className = "QueltEeTreeSeriesVar";

    /// A series without elements.
    QueltEeTreeSeriesVar(const QueltInString& name, const QueltInGuid& guid, unsigned int number);
    ~QueltEeTreeSeriesVar() override;
    QueltEeTreeSeriesVar(const QueltEeTreeSeriesVar&) = delete;
    QueltEeTreeSeriesVar& operator=(const QueltEeTreeSeriesVar&) = delete;

    /// The number by which a dictionary gives the series out.
    [[nodiscard]] unsigned int getNumber() const noexcept { return m_number; }
    /// Adds the root: E_ALREADYTHERE, and nothing is changed, when there is one.
    long addRootElement(unsigned int sequenceNumber);
    /// Adds an element below the one with the number `parent`: E_INVALIDARG when there is none,
    /// E_ALREADYTHERE when `sequenceNumber` is taken; nothing is changed then.
    long addElement(unsigned int sequenceNumber, unsigned int parent);
    /// The element with this sequence number, null when there is none (S_OK all the same); not owned by the
    /// caller.
    virtual long getElement(unsigned int sequenceNumber, QueltEeTreeSeriesElement*& element) const;
    /// The root, null when the series has no elements; not owned by the caller.
    [[nodiscard]] virtual QueltEeTreeSeriesElement* getRootTreeSeriesElement() const;
    /// All elements, parents before their children.
    [[nodiscard]] const std::vector<std::unique_ptr<QueltEeTreeSeriesElement>>& getElements() const noexcept {
        return m_elements;
    }
    /// True when `element` is one of this series' own, not one of another series with the same number.
    [[nodiscard]] bool owns(const QueltEeTreeSeriesElement& element) const noexcept;
    /// True when `other` is the same feature (the same GUID) with the same tree of sequence numbers, added in
    /// whatever order.
    [[nodiscard]] bool agreesWith(const QueltEeTreeSeriesVar& other) const;

private:
    long add(unsigned int sequenceNumber, const QueltEeTreeSeriesElement* parent);

    unsigned int m_number;
    std::vector<std::unique_ptr<QueltEeTreeSeriesElement>> m_elements;
    std::unordered_map<unsigned int, QueltEeTreeSeriesElement*, quelt::KeyedNumberHash> m_byNumber;
};
