#pragma once

#include "compiled/QueltDnf.h"

namespace quelt {

/// What QueltDnf::make does, with everything on the way in memory of the heap. Uses bounded stack.
class DnfMaker {
public:
    /// `node` must outlive the maker.
    DnfMaker(const QueltEeNode& node, bool negated) noexcept : m_node(node), m_negated(negated) {}

    /// See QueltDnf::make.
    [[nodiscard]] long run(QueltDnf*& dnf) const;

private:
    const QueltEeNode& m_node;
    bool m_negated;
};

} // namespace quelt
